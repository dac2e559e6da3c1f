#pragma once

#include "core/records.h"

#include <QList>
#include <QString>
#include <QStringList>

class QStandardItemModel;

/// What the information panels show, as numbers in text: the words "点" and "条"
/// behind points and records are the caller's, who translates them.
struct selection_totals
{
    QString checked = QStringLiteral("0");   ///< number of ticked measurements
    QString areameter = QStringLiteral("0"); ///< their area, whole square metres
    QString areamu = QStringLiteral("0");    ///< their area in mu, six significant digits
    QString length = QStringLiteral("0");    ///< their length in metres, six significant digits
    QString points = QStringLiteral("0");    ///< points of all measurements, ticked or not
    QString records = QStringLiteral("0");   ///< number of all measurements, ticked or not
    QList<widgetData> checked_data;          ///< the ticked measurements in the order of the rows
};

/// Totals over the rows of `model` whose check cell (column 0) is ticked. Row i
/// of the model is entry i of the lists; a ticked row behind the end of a list
/// counts as ticked and adds nothing.
///
/// With no row ticked everything is "0", points and records too, whatever the
/// lists hold. The square metres of a record count as whole numbers only, so a
/// value with a decimal point adds 0.
[[nodiscard]] selection_totals totals_of(const QStandardItemModel& model,
                                         const QList<measuringData>& table_list,
                                         const QStringList& data_msg);
