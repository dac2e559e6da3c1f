#pragma once

#include <QByteArrayView>
#include <QString>

#include <span>

/// Firmware images as files. They are read into a buffer of fixed size, which no
/// file overruns.
namespace firmware_image {

inline constexpr qsizetype image_limit = 0x400000; ///< bytes of the largest image
inline constexpr qint64 hex_file_limit = 0xC00000; ///< bytes of the largest .hex file

enum class outcome
{
    loaded,
    not_opened,
    too_large,
    malformed,
};

struct result
{
    outcome what = outcome::loaded;
    qint32 length = 0; ///< bytes of the image
};

/// Copies the whole file.
[[nodiscard]] result load_binary(const QString& path, std::span<char> image);
/// Reads an Intel HEX file and decodes it.
[[nodiscard]] result load_hex(const QString& path, std::span<char> image);

/// Packs the data of all records of type 0 one behind the other in file order.
/// Addresses and checksums are not looked at; other records, and lines that are
/// none, are skipped. A record without a readable count or type is malformed, and so
/// is a data record with fewer digits than it announces, or with other characters
/// among them: an image with a hole in it is worse than none.
[[nodiscard]] result decode_hex(QByteArrayView text, std::span<char> image);

} // namespace firmware_image
