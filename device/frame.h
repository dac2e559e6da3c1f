#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>

/// The instrument's binary frame, the same in both directions. All multi-byte
/// fields are big-endian:
///
///     offset 0    header 0x5A
///     offset 1    command
///     offset 2    marker 0xFD from the host, device type from the instrument
///     offset 3    sequence
///     offset 4-5  length L of the data
///     offset 6    L bytes of data
///     offset 6+L  CRC-8 over everything before it
namespace frame {

inline constexpr char header = 0x5A;
inline constexpr std::uint8_t host_marker = 0xFD;
/// Bytes of a frame beside its data.
inline constexpr qsizetype overhead = 7;
/// Bytes that must be there before the length of a frame can be read.
inline constexpr qsizetype header_size = 6;
/// A length of this or more at a supposed header is taken for noise. Only the
/// reader of instrument frames has this limit.
inline constexpr int length_limit = 1194;

/// Commands, from either side.
enum command : std::uint8_t
{
    reply = 0x00, ///< read probe from the host, reply from the instrument
    export_request = 0x2D,
    upload_probe = 0x2E,
    measurement_head = 0x2F,
    measurement_points = 0x30,
    upload_item = 0x31,
    upload_points = 0x32,
};

/// CRC-8/SMBUS of `bytes`: polynomial 0x07, initial value 0, most significant
/// bit first, no reflection, no final XOR. "123456789" gives 0xF4.
[[nodiscard]] std::uint8_t crc8(QByteArrayView bytes);

/// One host frame with its CRC. The length field holds the low 16 bits of the
/// size of `data`.
[[nodiscard]] QByteArray build_frame(std::uint8_t command, std::uint8_t sequence,
                                     QByteArrayView data, std::uint8_t marker = host_marker);

/// Takes the first whole good frame out of `buffer`. What is no frame is
/// dropped: bytes before a header, a header whose length reaches `length_limit`,
/// and the first byte of a frame whose CRC does not match, so that a good frame
/// inside a damaged one is still found. Up to length_limit + overhead - 2 bytes
/// of an unfinished frame stay in `buffer`.
///
/// Returns true with the frame's bytes in `out`, or false when more bytes are
/// needed; `out` is untouched then. Time grows linearly with the bytes given.
[[nodiscard]] bool extract_frame(QByteArray& buffer, QByteArray& out);

/// Unsigned big-endian numbers at `offset` of `bytes`, which must hold them.
[[nodiscard]] std::uint16_t read_u16(QByteArrayView bytes, qsizetype offset);
[[nodiscard]] std::uint32_t read_u32(QByteArrayView bytes, qsizetype offset);
[[nodiscard]] inline std::uint8_t read_u8(QByteArrayView bytes, qsizetype offset)
{
    return static_cast<std::uint8_t>(bytes[offset]);
}

} // namespace frame
