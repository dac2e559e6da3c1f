#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <cstdint>

namespace instrument {

/// Kinds of measurement, numbered as on the wire.
enum class measurement_kind : std::uint8_t
{
    area = 0,
    distance = 1,
    waypoint = 2,
    track = 3,
    route = 4,
    staking_out = 5,
};

/// Identity of the simulated instrument.
inline constexpr std::uint32_t own_identity = 20231107;

/// A byte that the instrument has no value for.
inline constexpr std::uint8_t not_set = 255;

/// One measured point, in the units of the wire.
struct stored_point
{
    std::int32_t longitude = 0;    ///< degrees x 10 000 000, east positive
    std::int32_t latitude = 0;     ///< degrees x 10 000 000, north positive
    std::int32_t altitude = 0;     ///< centimetres
    std::uint8_t speed = 0;        ///< tenths of a km/h
    std::uint16_t seconds = 0;     ///< since the start of the measurement
    std::uint16_t heading = 0;     ///< degrees, 0 to 359
    std::uint8_t hdop = 0;         ///< accuracy factor in tenths
    std::uint8_t status = not_set; ///< positioning status, 0 to 9, or 255 for unknown

    bool operator==(const stored_point&) const = default;
};

/// One measurement, in the units of the wire.
struct stored_measurement
{
    std::uint32_t identity = 0; ///< of the instrument that measured
    std::uint32_t area = 0;     ///< square metres
    std::uint32_t length = 0;   ///< tenths of a metre; perimeter of an area
    measurement_kind kind = measurement_kind::area;
    QDateTime start; ///< as the instrument's clock showed it, years 2000 to 2099
    QDateTime end;
    std::uint8_t time_zone = not_set; ///< 0 to 25, or 255
    std::uint8_t mode = not_set;      ///< measurement mode byte
    std::uint8_t width = not_set;     ///< tenths of a metre
    std::uint8_t price = not_set;     ///< for one unit of area or length
    std::uint8_t currency = not_set;  ///< 0 to 4, or 255
    QList<stored_point> points;

    bool operator==(const stored_measurement&) const = default;
};

/// What the instrument has stored, in the order of measuring. The wire counts
/// measurements in 16 bits, so there are at most 65 535.
using memory = QList<stored_measurement>;

/// "area", "distance", "waypoint", "track", "route" or "staking-out"; "kind N"
/// for a number outside the six.
[[nodiscard]] QString kind_name(measurement_kind value);

/// The memory as a table for people: a heading and one line a measurement.
[[nodiscard]] QString to_table(const memory& stored);

/// The memory as a JSON array of objects, all numbers in the units of the
/// wire, times as "yyyy-MM-ddTHH:mm:ss". A point is an array in the order of
/// `stored_point`: longitude, latitude, altitude, speed, seconds, heading,
/// hdop, status.
[[nodiscard]] QByteArray to_json(const memory& stored);

/// One line of the table, without a line end.
[[nodiscard]] QString table_line(const stored_measurement& measured, qsizetype number);

/// A measurement as one object of the JSON array.
[[nodiscard]] QJsonObject to_json_object(const stored_measurement& measured);

} // namespace instrument
