#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// One measurement. Every value is text: a number stays the decimal string in
/// which it was first formatted, a unit or mode is a code of the tables in
/// code_tables.h. "0" means that the value was not supplied, and a fresh record
/// holds "0" in all twenty fields.
struct measuringData
{
    QString numpoint = QStringLiteral("0");    ///< number of points
    QString method = QStringLiteral("0");      ///< kind, always the Chinese word
    QString slope = QStringLiteral("0");       ///< degrees
    QString price = QStringLiteral("0");       ///< unit price
    QString distance = QStringLiteral("0");    ///< length or perimeter, metres
    QString jd = QStringLiteral("0");          ///< length unit, code
    QString areamu = QStringLiteral("0");      ///< area, mu (square metres / 667.0)
    QString areameter = QStringLiteral("0");   ///< area, square metres
    QString md = QStringLiteral("0");          ///< area unit, code
    QString hd = QStringLiteral("0");          ///< currency, code
    QString totalprices = QStringLiteral("0"); ///< total price
    QString time = QStringLiteral("0");        ///< start time
    QString endtime = QStringLiteral("0");     ///< end time
    QString numrecord = QStringLiteral("0");   ///< measurements in the download or file
    QString name = QStringLiteral("0");        ///< data name, editable by the user
    QString timezone = QStringLiteral("0");    ///< time zone, code
    QString mode = QStringLiteral("0");        ///< measurement mode, code
    QString width = QStringLiteral("0");       ///< parameter of the mode, metres
    QString id = QStringLiteral("0");          ///< identity of the instrument
    QString zj = QStringLiteral("0");          ///< straight-line distance, metres

    bool operator==(const measuringData&) const = default;
};

/// One measured point, beside its coordinates in the coordinate texts.
struct point_msg
{
    QString hdop;                         ///< accuracy factor, one decimal
    QString speed;                        ///< speed
    QString angle;                        ///< heading, degrees
    QString time;                         ///< "yyyy-MM-dd HH:mm:ss", or seconds since the start
    QString status = QStringLiteral("0"); ///< positioning status, "255" for unknown

    bool operator==(const point_msg&) const = default;
};

/// One ticked measurement, as the totals pass hands it to the drawing.
struct widgetData
{
    QString data;   ///< copy of the measurement's plain coordinate text
    qint32 row = 0; ///< its row in the main table, and its index in the lists

    bool operator==(const widgetData&) const = default;
};

/// (row in a per-type table, row in the main table), ascending.
using relation_list = QList<std::pair<int, int>>;
