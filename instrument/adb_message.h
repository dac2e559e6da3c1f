#pragma once

#include <QByteArray>

#include <cstdint>

namespace instrument {

/// Commands of the adb protocol that a daemon without authentication meets.
enum class adb_command : std::uint32_t
{
    connect = 0x4E584E43, ///< "CNXN"
    open = 0x4E45504F,    ///< "OPEN"
    okay = 0x59414B4F,    ///< "OKAY"
    close = 0x45534C43,   ///< "CLSE"
    write = 0x45545257,   ///< "WRTE"
};

/// One message of the adb protocol: a header of six little-endian words
/// (command, two arguments, payload length, payload checksum, the command's
/// complement) and the payload.
struct adb_message
{
    adb_command command{};
    std::uint32_t argument0 = 0;
    std::uint32_t argument1 = 0;
    QByteArray payload;
};

inline constexpr qsizetype adb_header_size = 24;
/// From this protocol version on the checksum is no longer looked at.
inline constexpr std::uint32_t adb_version_without_checksum = 0x01000001;
inline constexpr std::uint32_t adb_oldest_version = 0x01000000;
/// Payload bytes that this daemon takes in one message.
inline constexpr std::uint32_t adb_largest_payload = 256 * 1024;

/// The message as bytes. The checksum, the sum of the payload's bytes, is
/// always filled in: a host of any version takes that.
[[nodiscard]] QByteArray to_bytes(const adb_message& message);

enum class adb_parse
{
    incomplete, ///< more bytes are needed
    whole,      ///< a message was taken out of the buffer
    broken,     ///< this is no adb, the connection is lost
};

/// Takes the first message out of `buffer`. The checksum is compared where
/// `check` asks for it, and always in a connect message of the oldest version.
[[nodiscard]] adb_parse take_adb_message(QByteArray& buffer, bool check, adb_message& out);

} // namespace instrument
