#pragma once

#include "instrument/memory.h"
#include "instrument/protocol.h"

#include <QTimeZone>

/// A memory of two measurements and the frames in which it leaves. The bytes
/// were written down from the frame's layout field by field, their CRCs
/// computed with a bit-by-bit CRC-8/SMBUS in another language.
namespace golden {

inline const QByteArray token = QByteArray::fromHex("01020304");

inline const QByteArray probe = QByteArray::fromHex("5A00FD000004FFFFFFFFE1");
inline const QByteArray probe_reply = QByteArray::fromHex("5A00010000060102030400006A");
inline const QByteArray request = QByteArray::fromHex("5A2DFD000004010203048A");
inline const QByteArray wrong_request = QByteArray::fromHex("5A2DFD000004010203058D");
inline const QByteArray refusal = QByteArray::fromHex("5A0001000006010203042D012A");
inline const QByteArray end = QByteArray::fromHex("5A0001000006010203042D002D");

/// A distance of two points.
inline const QByteArray first_head =
    QByteArray::fromHex("5A2F01000024" // header, command, device type, sequence, length 36
                        "01020304"     // identity
                        "00000002"     // points
                        "00010203"     // area
                        "000A0B0C"     // length
                        "01"           // kind
                        "240305070809" // start 2024-03-05 07:08:09
                        "241231235958" // end 2024-12-31 23:59:58
                        "0002"         // measurements
                        "0930204104"   // time zone, mode, width, price, currency
                        "AA");         // CRC
inline const QByteArray first_points =
    QByteArray::fromHex("5A300100002B" // length 43
                        "FFFFFFFF"     //
                        "4B7D41A0"     // longitude 126.65
                        "1B44E560"     // latitude 45.75
                        "00003750"     // altitude 141.60 m
                        "2D1234"       // speed 4.5, 4660 s
                        "01670AFF"     // heading 359, hdop 1.0, status unknown
                        "FFFFFFFF"     // longitude -0.0000001
                        "FFFFFFFE"     // latitude -0.0000002
                        "FFFFC45A"     // altitude -152.70 m
                        "000000"       //
                        "00000609"     // hdop 0.6, status 9
                        "30"           // mode
                        "18");         // CRC
/// A staking-out without points, and nothing set that can be left unset.
inline const QByteArray second_head = QByteArray::fromHex("5A2F01000024"
                                                          "01020304"
                                                          "00000000"
                                                          "00000000"
                                                          "00000000"
                                                          "05"
                                                          "240305070809"
                                                          "240305070809"
                                                          "0002"
                                                          "FFFFFFFFFF"
                                                          "63");

inline instrument::memory stored()
{
    using namespace instrument;
    const QDateTime start(QDate(2024, 3, 5), QTime(7, 8, 9), QTimeZone::utc());
    stored_measurement first;
    first.identity = 0x01020304;
    first.area = 0x00010203;
    first.length = 0x000A0B0C;
    first.kind = measurement_kind::distance;
    first.start = start;
    first.end = QDateTime(QDate(2024, 12, 31), QTime(23, 59, 58), QTimeZone::utc());
    first.time_zone = 9;
    first.mode = 0x30;
    first.width = 0x20;
    first.price = 0x41;
    first.currency = 4;
    first.points = {{1266500000, 457500000, 14160, 45, 0x1234, 359, 10, 255},
                    {-1, -2, -15270, 0, 0, 0, 6, 9}};
    stored_measurement second;
    second.identity = 0x01020304;
    second.kind = measurement_kind::staking_out;
    second.start = start;
    second.end = start;
    return {first, second};
}

/// All bytes of an answer.
inline QByteArray joined(const QList<instrument::chunk>& chunks)
{
    QByteArray bytes;
    for (const instrument::chunk& one : chunks)
        bytes += one.bytes;
    return bytes;
}

} // namespace golden
