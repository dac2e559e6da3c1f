#include "presentation/selection_totals.h"

#include <QStandardItemModel>

selection_totals totals_of(const QStandardItemModel& model, const QList<measuringData>& table_list,
                           const QStringList& data_msg)
{
    // Sums in 64 bits: the values are 32-bit numbers, their sum need not be one.
    qint64 square_metres = 0;
    double mu = 0.0;
    double metres = 0.0;
    selection_totals totals;

    const int rows = model.rowCount();
    for (int row = 0; row < rows; ++row) {
        if (!model.index(row, 0).data(Qt::DisplayRole).toBool())
            continue;
        if (row < table_list.size()) {
            const measuringData& record = table_list.at(row);
            square_metres += record.areameter.toInt();
            mu += record.areamu.toDouble();
            metres += record.distance.toDouble();
        }
        totals.checked_data.append({data_msg.value(row), row});
    }
    if (totals.checked_data.isEmpty())
        return totals;

    qint64 points = 0;
    for (const measuringData& record : table_list)
        points += record.numpoint.toInt();

    totals.checked = QString::number(totals.checked_data.size());
    totals.areameter = QString::number(square_metres);
    totals.areamu = QString::number(mu, 'g', 6);
    totals.length = QString::number(metres, 'g', 6);
    totals.points = QString::number(points);
    totals.records = QString::number(table_list.size());
    return totals;
}
