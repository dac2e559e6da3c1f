#pragma once

#include "exchange/export_record.h"
#include "exchange/file_coordinates.h"

#include <QIODevice>
#include <QList>
#include <QString>

class QXmlStreamReader;

// The KML of this program and of others, apart from dialogs and message boxes.
// The readers open the device that they get and close it again: a QFile, or a
// QBuffer over bytes.

/// Writes one document with a Placemark for each record: the values as text in
/// the description, always in Chinese, and the stored degrees as geometry. The
/// place of the unit price holds `hd`. `mode` changes nothing.
void write_kml(QIODevice& device, const QList<exportRecord>& records, int mode);

/// How a reading ended; the numbers are those of parse_kml_own().
enum kml_result
{
    kml_plain = 0, ///< Placemarks of another program, read by parse_kml_placemarks()
    kml_own = 1,   ///< the program's own form, or what parse_kml_fallback() found
    kml_failed = 2,
};

struct kml_reading
{
    kml_result result = kml_failed;
    QList<exportRecord> records; ///< empty if it failed
};

/// Reads a file by the pass that fits it: the own form, plain Placemarks, and
/// where these leave a record without points or kind, parse_kml_fallback().
[[nodiscard]] kml_reading read_kml(QIODevice& file, const file_coordinates& form);

/// First pass: the own form, whose descriptions are CDATA. At a description that
/// is not, everything is left to parse_kml_placemarks(). A record that takes its
/// identity from the name of its Placemark ends the reading.
kml_result parse_kml_own(QIODevice& file, const file_coordinates& form,
                         QList<exportRecord>& records);

/// Reads the values in the description on whose start element `xml` stands. 0,
/// or 1 if it is not CDATA.
int parse_kml_description(QXmlStreamReader& xml, exportRecord& record);

/// Appends the points of the element `coordinates` on which `xml` stands. If the
/// record's name is empty it takes name, time and counts from the name of the
/// Placemark, and the result is 1, otherwise 0.
int parse_kml_coordinates(QXmlStreamReader& xml, const file_coordinates& form, exportRecord& record,
                          const QString& placemark_name);

/// Second pass: Placemarks as other programs write them, one tuple on a line. If
/// the file cannot be opened the records stay as they are.
void parse_kml_placemarks(QIODevice& file, const file_coordinates& form,
                          QList<exportRecord>& records);

/// One geometry of the second pass, on whose start element `xml` stands. A
/// polygon of another program becomes a track.
void parseGeometry(QXmlStreamReader& xml, const file_coordinates& form, exportRecord& record);

/// Last resort: any text in which something looks like the elements `coordinates`
/// or `Track` with degrees in them; each becomes a record. Whether there was one.
bool parse_kml_fallback(QIODevice& file, QList<exportRecord>& records);

/// The same for a text that is read and decoded already.
[[nodiscard]] QList<exportRecord> find_kml_coordinates(const QString& text);
