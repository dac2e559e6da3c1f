#pragma once

#include "instrument/memory.h"

#include <QByteArray>
#include <QByteArrayView>

namespace instrument {

/// Data bytes of a measurement head: the frame without its six bytes of header
/// and its CRC. All numbers are big-endian, times are packed decimal.
inline constexpr qsizetype head_data_size = 36;
/// Bytes of one point in a points frame.
inline constexpr qsizetype point_size = 19;
/// Data bytes of a points frame beside its points: four before, the mode after.
inline constexpr qsizetype points_data_overhead = 5;
/// Points that the instrument puts into one frame at most.
inline constexpr qsizetype points_in_frame = 51;

/// Where a field of a head begins, counted in the data; the frame's first byte
/// lies six before.
enum head_offset : qsizetype
{
    head_identity = 0,
    head_point_count = 4,
    head_area = 8,
    head_length = 12,
    head_kind = 16,
    head_start = 17,
    head_end = 23,
    head_measurement_count = 29,
    head_time_zone = 31,
    head_mode = 32,
    head_width = 33,
    head_price = 34,
    head_currency = 35,
};

/// Where the points begin in the data of a points frame, and the status in a point.
inline constexpr qsizetype points_begin = 4;
inline constexpr qsizetype point_status = 18;

/// The data of a head, always head_data_size bytes. `measurements` counts the
/// export's measurements; its low 16 bits are sent.
[[nodiscard]] QByteArray head_data(const stored_measurement& measured, qsizetype measurements);

/// The data of a points frame with `count` points from index `first` on, which
/// the measurement must hold.
[[nodiscard]] QByteArray points_data(const stored_measurement& measured, qsizetype first,
                                     qsizetype count);

/// What a head's data says of a measurement, without points: the reverse of
/// head_data. Times are invalid where their digits are none.
[[nodiscard]] stored_measurement read_head(QByteArrayView data);

/// The points in the data of a points frame, whose size must be that of whole
/// points.
[[nodiscard]] QList<stored_point> read_points(QByteArrayView data);

} // namespace instrument
