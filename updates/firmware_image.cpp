#include "updates/firmware_image.h"

#include <QFile>

#include <algorithm>
#include <optional>

namespace firmware_image {

namespace {

// Columns of a record: ":CCAAAATTDD...", count, address, type, data.
constexpr qsizetype count_column = 1;
constexpr qsizetype type_column = 7;
constexpr qsizetype data_column = 9;
constexpr int data_type = 0;

std::optional<int> digit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return {};
}

/// The byte whose two digits begin at `column`.
std::optional<int> byte_at(QByteArrayView line, qsizetype column)
{
    if (line.size() < column + 2)
        return {};
    const std::optional<int> high = digit(line[column]);
    const std::optional<int> low = digit(line[column + 1]);
    if (!high || !low)
        return {};
    return *high * 16 + *low;
}

/// Reads a file of at most `limit` bytes, whatever its size is said to be.
outcome read_file(const QString& path, qint64 limit, QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return outcome::not_opened;
    if (file.size() > limit)
        return outcome::too_large;
    content = file.read(limit + 1);
    return content.size() > limit ? outcome::too_large : outcome::loaded;
}

} // namespace

result load_binary(const QString& path, std::span<char> image)
{
    QByteArray content;
    const outcome read = read_file(path, static_cast<qint64>(image.size()), content);
    if (read != outcome::loaded)
        return {read};
    std::copy(content.cbegin(), content.cend(), image.begin());
    return {outcome::loaded, static_cast<qint32>(content.size())};
}

result load_hex(const QString& path, std::span<char> image)
{
    QByteArray content;
    const outcome read = read_file(path, hex_file_limit, content);
    return read == outcome::loaded ? decode_hex(content, image) : result{read};
}

result decode_hex(QByteArrayView text, std::span<char> image)
{
    std::size_t length = 0;
    while (!text.isEmpty()) {
        const qsizetype end = text.indexOf('\n');
        const QByteArrayView line = end < 0 ? text : text.first(end);
        text = end < 0 ? QByteArrayView() : text.sliced(end + 1);

        const std::optional<int> count = byte_at(line, count_column);
        if (count.value_or(-1) == 0)
            continue;
        const std::optional<int> type = byte_at(line, type_column);
        if (line.startsWith(':') && (!count || !type))
            return {outcome::malformed};
        if (!count || type != data_type)
            continue;
        if (image.size() - length < static_cast<std::size_t>(*count))
            return {outcome::too_large};
        for (qsizetype i = 0; i < *count; ++i) {
            const std::optional<int> byte = byte_at(line, data_column + 2 * i);
            if (!byte)
                return {outcome::malformed};
            image[length++] = static_cast<char>(*byte);
        }
    }
    return {outcome::loaded, static_cast<qint32>(length)};
}

} // namespace firmware_image
