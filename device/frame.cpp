#include "device/frame.h"

#include <QDebug>
#include <QtEndian>

#include <array>
#include <cstring>

namespace frame {

namespace {

constexpr std::array<std::uint8_t, 256> make_crc_table()
{
    std::array<std::uint8_t, 256> table{};
    for (unsigned value = 0; value < table.size(); ++value) {
        unsigned crc = value;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x80U) != 0 ? (crc << 1U) ^ 0x07U : crc << 1U;
        table[value] = static_cast<std::uint8_t>(crc);
    }
    return table;
}

constexpr auto crc_table = make_crc_table();

} // namespace

std::uint8_t crc8(QByteArrayView bytes)
{
    std::uint8_t crc = 0;
    for (const char byte : bytes)
        crc = crc_table[crc ^ static_cast<std::uint8_t>(byte)];
    return crc;
}

QByteArray build_frame(std::uint8_t command, std::uint8_t sequence, QByteArrayView data,
                       std::uint8_t marker)
{
    QByteArray bytes;
    bytes.reserve(data.size() + overhead);
    bytes.append(header);
    bytes.append(static_cast<char>(command));
    bytes.append(static_cast<char>(marker));
    bytes.append(static_cast<char>(sequence));
    const auto length = static_cast<std::uint16_t>(data.size());
    bytes.append(static_cast<char>(length >> 8U));
    bytes.append(static_cast<char>(length & 0xFFU));
    bytes.append(data.data(), data.size());
    bytes.append(static_cast<char>(crc8(bytes)));
    return bytes;
}

bool extract_frame(QByteArray& buffer, QByteArray& out)
{
    // A cursor walks over what is dropped; the buffer itself is cut once.
    const QByteArrayView bytes(buffer);
    qsizetype start = 0;
    for (;;) {
        const void* found = start < bytes.size()
                                ? std::memchr(bytes.data() + start, header,
                                              static_cast<size_t>(bytes.size() - start))
                                : nullptr;
        if (found == nullptr) {
            buffer.clear();
            return false;
        }
        start = static_cast<const char*>(found) - bytes.data();
        const qsizetype available = bytes.size() - start;
        if (available < header_size)
            break;
        const int length = read_u16(bytes, start + 4);
        if (length >= length_limit) {
            ++start;
            continue;
        }
        const qsizetype size = length + overhead;
        if (available < size)
            break;
        const QByteArrayView candidate = bytes.sliced(start, size);
        if (crc8(candidate.chopped(1)) == read_u8(candidate, size - 1)) {
            out = candidate.toByteArray();
            buffer.remove(0, start + size);
            return true;
        }
        qWarning() << "serial protocol CRC error, length:" << size;
        ++start;
    }
    buffer.remove(0, start);
    return false;
}

std::uint16_t read_u16(QByteArrayView bytes, qsizetype offset)
{
    return qFromBigEndian<quint16>(bytes.data() + offset);
}

std::uint32_t read_u32(QByteArrayView bytes, qsizetype offset)
{
    return qFromBigEndian<quint32>(bytes.data() + offset);
}

} // namespace frame
