#include "instrument/boot_loader.h"

#include <QCryptographicHash>

#include <utility>

namespace instrument {

namespace {

constexpr char short_block = 0x01;
constexpr char long_block = 0x02;
constexpr char end_of_transmission = 0x04;
constexpr char good = 0x06;
constexpr char bad = 0x15;
constexpr char next = 'C';

constexpr qsizetype head_size = 3; ///< kind, number, its complement
constexpr qsizetype crc_size = 2;

const QByteArray version_text = "version";
const QByteArray start_text = "iapstart";

/// CRC-16/XMODEM by long division of the bits: x^16 + x^12 + x^5 + 1.
std::uint16_t remainder(QByteArrayView data)
{
    std::uint32_t rest = 0;
    const auto shift_in = [&rest](unsigned bit) {
        rest = (rest << 1) | bit;
        if ((rest & 0x10000) != 0)
            rest ^= 0x11021;
    };
    for (const char byte : data) {
        for (int bit = 7; bit >= 0; --bit)
            shift_in((static_cast<unsigned>(static_cast<std::uint8_t>(byte)) >> bit) & 1U);
    }
    for (int bit = 0; bit < 16; ++bit)
        shift_in(0);
    return static_cast<std::uint16_t>(rest);
}

std::uint8_t byte_at(QByteArrayView bytes, qsizetype place)
{
    return static_cast<std::uint8_t>(bytes[place]);
}

} // namespace

QByteArray firmware::sha256() const
{
    return QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
}

boot_loader::boot_loader(std::unique_ptr<protocol> otherwise, boot_settings settings,
                         receiver taken)
    : m_otherwise(std::move(otherwise)), m_settings(std::move(settings)), m_taken(std::move(taken))
{
}

QList<chunk> boot_loader::receive(QByteArrayView bytes)
{
    m_buffer.append(bytes.data(), bytes.size());
    return m_stage == stage::normal ? take_text() : take_upgrade();
}

QList<chunk> boot_loader::take_text()
{
    QList<chunk> answers;
    while (!m_buffer.isEmpty()) {
        if (m_line_end_due && (m_buffer.front() == '\r' || m_buffer.front() == '\n')) {
            m_line_end_due = m_buffer.front() == '\r';
            m_buffer.remove(0, 1);
        } else if (m_buffer.startsWith(version_text)) {
            m_buffer.remove(0, version_text.size());
            m_passed_on = 0;
            m_line_end_due = true;
            QByteArray text = m_settings.version;
            if (!text.isEmpty() && m_settings.version_ends_with_zero)
                text.append('\0');
            if (!text.isEmpty())
                answers.append({text});
        } else if (m_buffer.startsWith(start_text)) {
            m_buffer.remove(0, start_text.size());
            m_passed_on = 0;
            return answers + begin() + take_upgrade();
        } else {
            answers += m_otherwise->receive(QByteArrayView(m_buffer).sliced(m_passed_on));
            m_passed_on = m_buffer.size();
            if (version_text.startsWith(m_buffer) || start_text.startsWith(m_buffer))
                return answers; // a text may come of it yet
            m_line_end_due = false;
            m_passed_on = 0;
            m_buffer.clear();
        }
    }
    return answers;
}

QList<chunk> boot_loader::begin()
{
    m_stage = stage::header;
    ++m_upgrade;
    m_message = 0;
    m_blocks = 0;
    m_to_refuse = m_settings.refused;
    m_firmware = {};
    return say({next});
}

QList<chunk> boot_loader::take_upgrade()
{
    QList<chunk> answers;
    while (m_stage != stage::normal && take_message(answers)) {
    }
    return answers;
}

bool boot_loader::take_message(QList<chunk>& answers)
{
    if (m_buffer.isEmpty())
        return false;
    const char kind = m_buffer.front();
    if (kind == short_block || kind == long_block) {
        const qsizetype size = kind == short_block ? 128 : 1024;
        const qsizetype whole = head_size + size + crc_size;
        if (m_buffer.size() < whole)
            return false;
        const QByteArray block = m_buffer.first(whole);
        m_buffer.remove(0, whole);
        const QByteArrayView data = QByteArrayView(block).sliced(head_size, size);
        const unsigned crc = byte_at(block, whole - 2) * 256U + byte_at(block, whole - 1);
        const bool whole_and_true =
            byte_at(block, 1) + byte_at(block, 2) == 0xFF && remainder(data) == crc;
        answers += whole_and_true ? take_block(byte_at(block, 1), data) : say({bad});
        return true;
    }
    if (kind == end_of_transmission) {
        m_buffer.remove(0, 1);
        answers += take_end();
        return true;
    }
    if (m_buffer.startsWith(start_text)) {
        m_buffer.remove(0, start_text.size());
        answers += begin();
        return true;
    }
    if (start_text.startsWith(m_buffer))
        return false;
    m_buffer.remove(0, 1); // noise
    return true;
}

QList<chunk> boot_loader::take_block(std::uint8_t number, QByteArrayView data)
{
    switch (m_stage) {
    case stage::header: return number == 0 ? take_header(data) : say({bad});
    case stage::data:
        if (m_blocks > 0 && number == (m_blocks & 0xFF))
            return say({good}); // once more: the answer was lost
        if (number != ((m_blocks + 1) & 0xFF) || m_firmware.image.size() >= m_length ||
            m_to_refuse.removeOne(m_blocks + 1))
            return say({bad});
        ++m_blocks;
        m_firmware.image.append(data.first(qMin(data.size(), m_length - m_firmware.image.size())));
        return say({good});
    case stage::closing: {
        if (number != 0 || data.front() != '\0')
            return say({bad});
        QList<chunk> answer = say({good});
        if (!answer.isEmpty()) {
            m_stage = stage::normal;
            m_taken(m_firmware);
        }
        return answer;
    }
    case stage::normal:
    case stage::end: break;
    }
    return say({bad});
}

QList<chunk> boot_loader::take_header(QByteArrayView data)
{
    const qsizetype name_end = data.indexOf('\0');
    const QByteArrayView rest = data.sliced(name_end + 1);
    const qsizetype length_end = rest.indexOf('\0');
    bool is_number = false;
    const int length = rest.first(qMax(length_end, 0)).toByteArray().toInt(&is_number);
    if (name_end < 0 || !is_number || length < 0)
        return say({bad});
    m_firmware.name = QString::fromUtf8(data.first(name_end));
    m_length = length;
    m_stage = stage::data;
    return say({good, next});
}

QList<chunk> boot_loader::take_end()
{
    if (m_stage == stage::data && m_firmware.image.size() == m_length) {
        m_stage = stage::end;
        return say({bad}); // it might be noise: once more
    }
    if (m_stage == stage::end) {
        m_stage = stage::closing;
        return say({good, next});
    }
    return say({bad});
}

QList<chunk> boot_loader::say(std::initializer_list<char> bytes)
{
    const bool strikes = m_settings.silent_upgrades == 0 || m_upgrade <= m_settings.silent_upgrades;
    const bool silent =
        strikes && m_settings.silent_from >= 0 && m_message >= m_settings.silent_from;
    ++m_message;
    QList<chunk> answer;
    if (!silent) {
        for (const char byte : bytes)
            answer.append({QByteArray(1, byte)});
    }
    return answer;
}

} // namespace instrument
