#include "device/binary_records.h"

#include "core/code_tables.h"
#include "device/frame.h"

#include <algorithm>
#include <array>

namespace binary_records {

namespace {

constexpr std::uint8_t unknown_byte = 255;
constexpr qsizetype first_point = 10;

int packed_decimal(QByteArrayView bytes, qsizetype offset)
{
    const unsigned byte = frame::read_u8(bytes, offset);
    return static_cast<int>((byte >> 4U) * 10U + (byte & 0xFU));
}

QString time_text(QByteArrayView bytes, qsizetype offset)
{
    return QStringLiteral("%1-%2-%3 %4:%5:%6")
        .arg(2000 + packed_decimal(bytes, offset))
        .arg(packed_decimal(bytes, offset + 1))
        .arg(packed_decimal(bytes, offset + 2))
        .arg(packed_decimal(bytes, offset + 3))
        .arg(packed_decimal(bytes, offset + 4))
        .arg(packed_decimal(bytes, offset + 5));
}

std::int32_t read_i32(QByteArrayView bytes, qsizetype offset)
{
    return static_cast<std::int32_t>(frame::read_u32(bytes, offset));
}

/// `value` divided by 10 to the `decimals`, as a decimal text with `zeros` more
/// decimals. The same text as QString::number of the quotient with 'f', which a
/// double holds far more exactly than it shows, in a fraction of the time: a
/// point has five such numbers.
QString fixed_text(std::int64_t value, int decimals, int zeros = 0)
{
    std::array<char16_t, 32> text{};
    size_t at = text.size();
    for (; zeros > 0; --zeros)
        text[--at] = u'0';
    auto rest = static_cast<std::uint64_t>(value < 0 ? -value : value);
    for (int digit = 0; digit <= decimals || rest > 0; ++digit) {
        if (digit == decimals)
            text[--at] = u'.';
        text[--at] = static_cast<char16_t>(u'0' + rest % 10);
        rest /= 10;
    }
    if (value < 0)
        text[--at] = u'-';
    return QStringView(text).sliced(static_cast<qsizetype>(at)).toString();
}

QString tenths_text(std::uint32_t tenths)
{
    return fixed_text(tenths, 1);
}

QString method_of(std::uint8_t kind)
{
    const auto row = std::find_if(measurement_kinds.begin(), measurement_kinds.end(),
                                  [kind](const auto& one) { return one.number == kind; });
    return row != measurement_kinds.end() ? row->method.toString() : QStringLiteral("0");
}

} // namespace

measurement_head read_head(QByteArrayView frame)
{
    return {
        .id = frame::read_u32(frame, 6),
        .points = frame::read_u32(frame, 10),
        .square_metres = frame::read_u32(frame, 14),
        .length_tenths = frame::read_u32(frame, 18),
        .kind = frame::read_u8(frame, 22),
        .start = time_text(frame, 23),
        .end = time_text(frame, 29),
        .records = frame::read_u16(frame, 35),
        .timezone = frame::read_u8(frame, 37),
        .mode = frame::read_u8(frame, 38),
        .width_tenths = frame::read_u8(frame, 39),
        .price = frame::read_u8(frame, 40),
        .currency = frame::read_u8(frame, 41),
    };
}

measuringData to_record(const measurement_head& head)
{
    measuringData record;
    record.numpoint = QString::number(head.points);
    record.method = method_of(head.kind);
    record.distance = tenths_text(head.length_tenths);
    record.areamu = QString::number(head.square_metres / 667.0, 'f', 2);
    record.areameter = QString::number(head.square_metres);
    record.time = head.start;
    record.endtime = head.end;
    record.numrecord = QString::number(head.records);
    record.name = head.start;
    record.timezone = timezone_device_to_code(head.timezone);
    record.mode = mode_device_to_code(head.mode);
    if (head.width_tenths != unknown_byte)
        record.width = tenths_text(head.width_tenths);
    if (head.price != unknown_byte)
        record.price = QString::number(head.price);
    record.hd = currency_device_to_code(head.currency);
    record.id = QString::number(head.id);
    return record;
}

measured_point read_point(QByteArrayView frame, int index)
{
    const qsizetype start = first_point + qsizetype{point_size} * index;
    return {
        .longitude = read_i32(frame, start),
        .latitude = read_i32(frame, start + 4),
        .altitude_cm = read_i32(frame, start + 8),
        .speed_tenths = frame::read_u8(frame, start + 12),
        .seconds = frame::read_u16(frame, start + 13),
        .heading = frame::read_u16(frame, start + 15),
        .hdop_tenths = frame::read_u8(frame, start + 17),
        .status = frame::read_u8(frame, start + 18),
    };
}

std::uint8_t points_mode(QByteArrayView frame, int points)
{
    return frame::read_u8(frame, first_point + qsizetype{point_size} * points);
}

QString degrees_text(std::int32_t degrees_e7)
{
    return fixed_text(degrees_e7, 7, 5);
}

QString altitude_text(std::int32_t centimetres)
{
    return fixed_text(centimetres, 2);
}

point_msg to_point_msg(const measured_point& point, const QString& time)
{
    return {
        .hdop = tenths_text(point.hdop_tenths),
        .speed = tenths_text(point.speed_tenths),
        .angle = QString::number(point.heading),
        .time = time,
        .status = QString::number(point.status),
    };
}

} // namespace binary_records
