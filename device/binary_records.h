#pragma once

#include "core/records.h"

#include <QByteArrayView>
#include <QString>

#include <cstdint>

/// The measurement frames of an export, 0x2F (head) and 0x30 (points), as the
/// instrument sends them. Offsets count from the frame's first byte; all
/// multi-byte values are big-endian. Nothing here judges a value.
namespace binary_records {

/// Size of a head frame, header and CRC included.
inline constexpr qsizetype head_frame_size = 43;
/// Data bytes of a point frame beside its points: four that are not read before
/// the points, and the record's measurement mode after them.
inline constexpr int points_overhead = 5;
inline constexpr int point_size = 19;
/// The instrument never sends more points in a frame.
inline constexpr int max_points = 51;

/// A head frame.
///
///     offset 6   4  instrument identity
///     offset 10  4  number of points
///     offset 14  4  area, square metres
///     offset 18  4  length, tenths of a metre
///     offset 22  1  kind
///     offset 23  6  start: year - 2000, month, day, hour, minute, second, each
///                   one packed-decimal byte whose digits are not checked
///     offset 29  6  end, same form
///     offset 35  2  number of measurements in this export
///     offset 37  1  time zone
///     offset 38  1  measurement mode
///     offset 39  1  width, tenths of a metre
///     offset 40  1  unit price
///     offset 41  1  currency
struct measurement_head
{
    std::uint32_t id;
    std::uint32_t points;
    std::uint32_t square_metres;
    std::uint32_t length_tenths;
    std::uint8_t kind;
    QString start; ///< "2024-3-5 7:8:9", without padding
    QString end;
    std::uint16_t records;
    std::uint8_t timezone;
    std::uint8_t mode;
    std::uint8_t width_tenths;
    std::uint8_t price;
    std::uint8_t currency;
};

/// Reads a head frame, which must have head_frame_size bytes.
[[nodiscard]] measurement_head read_head(QByteArrayView frame);

/// The record of `head` with all its texts. What the frame does not carry stays
/// "0", and so does a value whose byte is 255. Time zone, mode and currency must
/// be bytes of the code tables.
[[nodiscard]] measuringData to_record(const measurement_head& head);

/// One point of a point frame.
///
///     offset 0   4  longitude, 1e-7 degrees, signed
///     offset 4   4  latitude, 1e-7 degrees, signed
///     offset 8   4  altitude, centimetres, signed
///     offset 12  1  speed, tenths
///     offset 13  2  seconds since the start time
///     offset 15  2  heading, degrees
///     offset 17  1  accuracy factor, tenths
///     offset 18  1  positioning status
struct measured_point
{
    std::int32_t longitude;
    std::int32_t latitude;
    std::int32_t altitude_cm;
    std::uint8_t speed_tenths;
    std::uint16_t seconds;
    std::uint16_t heading;
    std::uint8_t hdop_tenths;
    std::uint8_t status;
};

/// Reads point `index` of a point frame, which must hold it.
[[nodiscard]] measured_point read_point(QByteArrayView frame, int index);

/// The measurement mode byte behind `points` points of a point frame.
[[nodiscard]] std::uint8_t points_mode(QByteArrayView frame, int points);

/// 1e-7 degrees as decimal degrees with twelve decimals.
[[nodiscard]] QString degrees_text(std::int32_t degrees_e7);
/// Centimetres as metres with two decimals.
[[nodiscard]] QString altitude_text(std::int32_t centimetres);

/// The texts of `point`, with `time` as its positioning time.
[[nodiscard]] point_msg to_point_msg(const measured_point& point, const QString& time);

} // namespace binary_records
