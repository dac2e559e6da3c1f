#include "presentation/selection_totals.h"

#include "presentation/quick_number.h"

#include <QStandardItemModel>

selection_totals totals_of(const QStandardItemModel& model, const QList<measuringData>& table_list,
                           const QStringList& data_msg)
{
    // Sums in 64 bits: the values are 32-bit numbers, their sum need not be one.
    qint64 square_metres = 0;
    double mu = 0.0;
    double metres = 0.0;
    selection_totals totals;

    // One walk over the records, ticked or not: they are spread over more memory
    // than the caches hold.
    qint64 points = 0;
    const int rows = model.rowCount();
    const qsizetype records = table_list.size();
    totals.checked_data.reserve(rows);
    for (int row = 0; row < rows; ++row) {
        if (row < records)
            points += table_list.at(row).numpoint.toInt();
        if (!model.index(row, 0).data(Qt::DisplayRole).toBool())
            continue;
        if (row < records) {
            const measuringData& record = table_list.at(row);
            square_metres += record.areameter.toInt();
            mu += quick_to_double(record.areamu);
            metres += quick_to_double(record.distance);
        }
        totals.checked_data.append({data_msg.value(row), row});
    }
    if (totals.checked_data.isEmpty())
        return totals;
    for (qsizetype behind = rows; behind < records; ++behind)
        points += table_list.at(behind).numpoint.toInt();

    totals.checked = QString::number(totals.checked_data.size());
    totals.areameter = QString::number(square_metres);
    totals.areamu = QString::number(mu, 'g', 6);
    totals.length = QString::number(metres, 'g', 6);
    totals.points = QString::number(points);
    totals.records = QString::number(table_list.size());
    return totals;
}
