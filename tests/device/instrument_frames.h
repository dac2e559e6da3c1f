#pragma once

#include "device/frame.h"

#include <QByteArray>
#include <QList>

#include <cstdint>

/// Frames as the instrument sends them, put together byte by byte from the
/// protocol's layout, for tests.
namespace instrument_frames {

/// Appends the low `size` bytes of `value`, big-endian.
inline void append(QByteArray& bytes, quint64 value, int size)
{
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes.append(static_cast<char>(value >> shift));
}

inline QByteArray token()
{
    return QByteArray::fromHex("01020304");
}

/// The reply to `command`: device token, command answered, status.
inline QByteArray reply(std::uint8_t command, std::uint8_t status)
{
    QByteArray data = token();
    data.append(static_cast<char>(command));
    data.append(static_cast<char>(status));
    return frame::build_frame(0x00, 0, data, 0x07);
}

/// A head frame's values; the defaults are a good area of two points.
struct head
{
    quint32 id = 20240017;
    quint32 points = 2;
    quint32 square_metres = 1334;
    quint32 length_tenths = 1234;
    int kind = 0;
    QByteArray start = QByteArray::fromHex("240305070809");
    QByteArray end = QByteArray::fromHex("241231235958");
    quint16 records = 1;
    int timezone = 9;
    int mode = 0x10;
    int width = 35;
    int price = 12;
    int currency = 0;

    [[nodiscard]] QByteArray data() const
    {
        QByteArray bytes;
        append(bytes, id, 4);
        append(bytes, points, 4);
        append(bytes, square_metres, 4);
        append(bytes, length_tenths, 4);
        append(bytes, static_cast<quint64>(kind), 1);
        bytes += start + end;
        append(bytes, records, 2);
        for (const int byte : {timezone, mode, width, price, currency})
            append(bytes, static_cast<quint64>(byte), 1);
        return bytes;
    }
    [[nodiscard]] QByteArray frame() const { return frame::build_frame(0x2F, 0, data(), 0x07); }
};

/// One point's values.
struct point
{
    qint32 longitude = 1040534722;
    qint32 latitude = -305000001;
    qint32 altitude_cm = 51234;
    int speed = 15;
    int seconds = 3;
    int heading = 359;
    int hdop = 8;
    int status = 4;

    [[nodiscard]] QByteArray bytes() const
    {
        QByteArray all;
        append(all, static_cast<quint32>(longitude), 4);
        append(all, static_cast<quint32>(latitude), 4);
        append(all, static_cast<quint32>(altitude_cm), 4);
        append(all, static_cast<quint64>(speed), 1);
        append(all, static_cast<quint64>(seconds), 2);
        append(all, static_cast<quint64>(heading), 2);
        append(all, static_cast<quint64>(hdop), 1);
        append(all, static_cast<quint64>(status), 1);
        return all;
    }
};

/// A point frame with the record's measurement mode behind the points.
inline QByteArray points(const QList<point>& all, int mode = 0x10)
{
    QByteArray data = QByteArray::fromHex("FFFFFFFF");
    for (const point& one : all)
        data += one.bytes();
    append(data, static_cast<quint64>(mode), 1);
    return frame::build_frame(0x30, 0, data, 0x07);
}

} // namespace instrument_frames
