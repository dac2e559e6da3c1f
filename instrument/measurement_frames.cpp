#include "instrument/measurement_frames.h"

#include "device/frame.h"

#include <QTimeZone>
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

QDateTime read_time(QByteArrayView data, qsizetype at)
{
    const QString digits = QString::fromLatin1(data.sliced(at, 6).toByteArray().toHex());
    QDateTime when = QDateTime::fromString(QStringLiteral("20") + digits, u"yyyyMMddHHmmss");
    when.setTimeZone(QTimeZone::utc());
    return when;
}

std::int32_t read_i32(QByteArrayView data, qsizetype at)
{
    return static_cast<std::int32_t>(frame::read_u32(data, at));
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

stored_measurement read_head(QByteArrayView data)
{
    stored_measurement measured;
    measured.identity = frame::read_u32(data, head_identity);
    measured.area = frame::read_u32(data, head_area);
    measured.length = frame::read_u32(data, head_length);
    measured.kind = static_cast<measurement_kind>(frame::read_u8(data, head_kind));
    measured.start = read_time(data, head_start);
    measured.end = read_time(data, head_end);
    measured.time_zone = frame::read_u8(data, head_time_zone);
    measured.mode = frame::read_u8(data, head_mode);
    measured.width = frame::read_u8(data, head_width);
    measured.price = frame::read_u8(data, head_price);
    measured.currency = frame::read_u8(data, head_currency);
    return measured;
}

QList<stored_point> read_points(QByteArrayView data)
{
    QList<stored_point> points;
    for (qsizetype at = points_begin; at + point_size < data.size(); at += point_size) {
        points.append({.longitude = read_i32(data, at),
                       .latitude = read_i32(data, at + 4),
                       .altitude = read_i32(data, at + 8),
                       .speed = frame::read_u8(data, at + 12),
                       .seconds = frame::read_u16(data, at + 13),
                       .heading = frame::read_u16(data, at + 15),
                       .hdop = frame::read_u8(data, at + 17),
                       .status = frame::read_u8(data, at + point_status)});
    }
    return points;
}

} // namespace instrument
