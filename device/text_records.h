#pragma once

#include "core/records.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <optional>

/// The text records of older instruments: a head ("n" number of points, a kind
/// letter, date and time, "N" count of records), point lines with longitude
/// first, and a closing "!". A record comes in a short form or, from later
/// instruments, in a long one with more fields.
namespace text_records {

enum class kind
{
    area,
    distance,
    waypoint,
    route,
    track,
    staking,
};

/// How a record is to be read.
struct recognised
{
    kind what;
    const QRegularExpression& record_pattern;
    const QRegularExpression& point_pattern;
};

/// Whether `text` begins as a record, with "n" after an optional "\r\n".
[[nodiscard]] bool begins_as_record(const QString& text);

/// Kind and patterns of a record: the letter of its second part tells the kind,
/// a fifth part that begins with "t" ("time") the long form. Nothing where the
/// letter is of no kind. The patterns live as long as the process.
[[nodiscard]] std::optional<recognised> recognise(const QString& text);

/// One measurement as it goes into the four lists.
struct measurement
{
    measuringData record;
    QString plain; ///< "longitude,latitude,..." in degrees, twelve decimals
    QString lines; ///< "longitude,latitude,altitude\n" for each point, metres
    QList<point_msg> points;
};

/// Reads a record. Nothing where the head does not match, where it has neither
/// the six groups of the short form nor the count that its kind has in the long
/// form, or where a point line has no altitude in the short form.
///
/// Two things stay as the instruments' readers have always had them: points are
/// looked for behind the first 50 characters, so that one that begins earlier is
/// lost; and a long waypoint record has ten groups where eight are expected, so
/// that it is never read.
[[nodiscard]] std::optional<measurement> read(kind what, const QRegularExpression& record_pattern,
                                              const QRegularExpression& point_pattern,
                                              const QString& text);

/// Degrees of a text such as 104d3'12.5" (degrees, minutes, seconds, without a
/// sign). A part that is no number counts as 0.
[[nodiscard]] double parse_dms(const QString& text);

} // namespace text_records
