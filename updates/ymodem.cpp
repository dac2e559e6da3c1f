#include "updates/ymodem.h"

#include <algorithm>
#include <utility>

namespace ymodem {

namespace {

/// A block around a data field of 128 or 1024 bytes.
QByteArray block(std::uint8_t sequence, const QByteArray& data)
{
    const std::uint16_t crc = crc16(data);
    QByteArray whole;
    whole.reserve(3 + data.size() + 2);
    whole.append(data.size() == short_size ? short_block : long_block);
    whole.append(static_cast<char>(sequence));
    whole.append(static_cast<char>(~sequence));
    whole.append(data);
    whole.append(static_cast<char>(crc >> 8));
    whole.append(static_cast<char>(crc & 0xFF));
    return whole;
}

} // namespace

std::uint16_t crc16(QByteArrayView data)
{
    constexpr unsigned polynomial = 0x1021;
    unsigned crc = 0;
    for (const char byte : data) {
        crc ^= static_cast<unsigned>(static_cast<std::uint8_t>(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) != 0 ? (crc << 1) ^ polynomial : crc << 1;
    }
    return static_cast<std::uint16_t>(crc);
}

QByteArray header_block(const QString& name, qint32 length)
{
    const QByteArray digits = QByteArray::number(length);
    const qsizetype room = short_size - digits.size() - 2; // a zero byte behind each
    QByteArray data = name.toUtf8().left(std::min(name.size(), room));
    data.append('\0').append(digits);
    data.resize(short_size, '\0');
    return block(0, data);
}

QByteArray data_block(std::uint8_t sequence, QByteArrayView rest)
{
    const qsizetype size = rest.size() <= short_size ? short_size : long_size;
    QByteArray data = rest.first(std::min(rest.size(), size)).toByteArray();
    data.append(size - data.size(), padding);
    return block(sequence, data);
}

QByteArray closing_block()
{
    return block(0, QByteArray(short_size, '\0'));
}

sender::sender(QString name, QByteArrayView image) : m_name(std::move(name)), m_image(image) {}

qint32 sender::percent() const
{
    return m_offset * 100 / static_cast<qint32>(m_image.size());
}

sender::step sender::take(char byte)
{
    const step unexpected{.goes_on = false};
    switch (m_stage) {
    case idle: return byte == asked ? begin() : step{};
    case header_sent:
        if (byte != acknowledged)
            return unexpected;
        m_stage = header_taken;
        return {};
    case header_taken:
        if (byte != asked)
            return unexpected;
        m_stage = data_sent;
        return next_data();
    case data_sent:
        if (byte == refused)
            return {.send = m_last_block};
        if (byte != acknowledged)
            return unexpected;
        if (m_offset < m_image.size())
            return next_data();
        m_stage = end_sent;
        return {.send = QByteArray(1, end_of_transmission)};
    case end_sent:
        // The receiver makes sure: it takes the end only when it comes twice.
        if (byte != refused)
            return unexpected;
        m_stage = end_refused;
        return {.send = QByteArray(1, end_of_transmission)};
    case end_refused:
        if (byte != acknowledged)
            return unexpected;
        m_stage = end_taken;
        return {};
    case end_taken:
        if (byte != asked)
            return unexpected;
        m_stage = closing_sent;
        return {.send = closing_block()};
    case closing_sent:
        if (byte != acknowledged)
            return unexpected;
        m_stage = idle;
        return {.what = event::finished, .goes_on = false};
    }
    return unexpected;
}

sender::step sender::begin()
{
    m_sequence = 0;
    m_offset = 0;
    m_stage = header_sent;
    return {.send = header_block(m_name, static_cast<qint32>(m_image.size())),
            .what = event::header_sent};
}

sender::step sender::next_data()
{
    const QByteArrayView rest = m_image.sliced(m_offset);
    m_last_block = data_block(++m_sequence, rest);
    m_offset += static_cast<qint32>(
        std::min(rest.size(), rest.size() <= short_size ? short_size : long_size));
    return {.send = m_last_block, .what = event::data_sent};
}

} // namespace ymodem
