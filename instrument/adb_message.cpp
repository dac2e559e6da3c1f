#include "instrument/adb_message.h"

#include <QtEndian>

#include <numeric>

namespace instrument {

namespace {

std::uint32_t checksum(QByteArrayView payload)
{
    return std::accumulate(
        payload.begin(), payload.end(), std::uint32_t{0},
        [](std::uint32_t sum, char byte) { return sum + static_cast<std::uint8_t>(byte); });
}

} // namespace

QByteArray to_bytes(const adb_message& message)
{
    const auto command = static_cast<std::uint32_t>(message.command);
    QByteArray bytes;
    bytes.reserve(adb_header_size + message.payload.size());
    for (const std::uint32_t word : {command, message.argument0, message.argument1,
                                     static_cast<std::uint32_t>(message.payload.size()),
                                     checksum(message.payload), ~command}) {
        const std::uint32_t little = qToLittleEndian(word);
        bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
    }
    return bytes + message.payload;
}

adb_parse take_adb_message(QByteArray& buffer, bool check, adb_message& out)
{
    if (buffer.size() < adb_header_size)
        return adb_parse::incomplete;
    const auto word = [&buffer](qsizetype index) {
        return qFromLittleEndian<std::uint32_t>(buffer.constData() + 4 * index);
    };
    const std::uint32_t length = word(3);
    if (word(5) != ~word(0) || length > adb_largest_payload)
        return adb_parse::broken;
    if (buffer.size() < adb_header_size + static_cast<qsizetype>(length))
        return adb_parse::incomplete;

    adb_message message{.command = static_cast<adb_command>(word(0)),
                        .argument0 = word(1),
                        .argument1 = word(2),
                        .payload = buffer.mid(adb_header_size, length)};
    if (message.command == adb_command::connect)
        check = message.argument0 < adb_version_without_checksum;
    if (check && word(4) != checksum(message.payload))
        return adb_parse::broken;
    buffer.remove(0, adb_header_size + static_cast<qsizetype>(length));
    out = std::move(message);
    return adb_parse::whole;
}

} // namespace instrument
