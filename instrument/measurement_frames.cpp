#include "instrument/measurement_frames.h"

#include <QtEndian>

namespace instrument {

namespace {

template <typename Number>
void append(QByteArray& bytes, Number value)
{
    const Number big = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char*>(&big), sizeof big);
}

void append_packed_decimal(QByteArray& bytes, int value)
{
    append(bytes, static_cast<std::uint8_t>(value / 10 * 16 + value % 10));
}

/// Year within the century, month, day, hour, minute, second.
void append_time(QByteArray& bytes, const QDateTime& when)
{
    const QDate date = when.date();
    const QTime time = when.time();
    for (const int part :
         {date.year() % 100, date.month(), date.day(), time.hour(), time.minute(), time.second()}) {
        append_packed_decimal(bytes, part);
    }
}

} // namespace

QByteArray head_data(const stored_measurement& measured, qsizetype measurements)
{
    QByteArray data;
    data.reserve(head_data_size);
    append(data, measured.identity);
    append(data, static_cast<std::uint32_t>(measured.points.size()));
    append(data, measured.area);
    append(data, measured.length);
    append(data, static_cast<std::uint8_t>(measured.kind));
    append_time(data, measured.start);
    append_time(data, measured.end);
    append(data, static_cast<std::uint16_t>(measurements));
    append(data, measured.time_zone);
    append(data, measured.mode);
    append(data, measured.width);
    append(data, measured.price);
    append(data, measured.currency);
    Q_ASSERT(data.size() == head_data_size);
    return data;
}

QByteArray points_data(const stored_measurement& measured, qsizetype first, qsizetype count)
{
    QByteArray data;
    data.reserve(points_data_overhead + point_size * count);
    data.append(points_begin, '\xFF');
    for (const stored_point& point : measured.points.sliced(first, count)) {
        append(data, point.longitude);
        append(data, point.latitude);
        append(data, point.altitude);
        append(data, point.speed);
        append(data, point.seconds);
        append(data, point.heading);
        append(data, point.hdop);
        append(data, point.status);
    }
    append(data, measured.mode);
    return data;
}

} // namespace instrument
