#pragma once

#include "exchange/export_record.h"

#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringView>

class QXmlStreamReader;
class QXmlStreamWriter;

// GPX 1.1 with a record's values as elements in `desc`. Always the stored degrees;
// `mode` changes nothing. Apart from dialogs and message boxes.

/// Writes one document with an element for each record; kinds without a shape are
/// left out. Logs whether the device took everything.
void write_gpx_merged(QIODevice& device, const QList<exportRecord>& records, int mode);

/// The same with one record.
void write_gpx_single(QIODevice& device, const exportRecord& record, int mode);

/// Writes the values of a record; the place of the unit price holds `hd`.
void write_gpx_desc(QXmlStreamWriter& xml, const exportRecord& record);

/// The texts of a point; one that its line does not have is empty.
struct gpx_point
{
    QStringView lat, lon, ele;
};

/// The points of lines of "longitude,latitude,altitude", valid as long as the
/// lines are.
[[nodiscard]] QList<gpx_point> split_point_lines(const QString& coordinates);

/// Opens the device, reads a document that this program wrote, and closes it.
/// False if it cannot be opened, is of another program or is damaged; `records`
/// then holds what came before.
[[nodiscard]] bool parse_gpx(QIODevice& file, QList<exportRecord>& records);

/// Reads the element `desc` on whose start `xml` stands.
void parse_gpx_desc(QXmlStreamReader& xml, exportRecord& record);
