#pragma once

#include <QByteArray>

#include <cstdint>

namespace instrument {

/// What a frame from the host holds.
struct host_frame
{
    std::uint8_t command = 0;
    std::uint8_t sequence = 0;
    QByteArray data;
};

/// Takes the first whole good host frame out of `buffer`, dropping what is no
/// frame before it. Host frames carry the marker 0xFD and, as uploads over TCP
/// are long, have no limit of length but that of the two length bytes; so a
/// header without the marker is taken for noise. A frame with a wrong CRC costs
/// its first byte.
///
/// Returns false when more bytes are needed; `out` is untouched then.
[[nodiscard]] bool take_host_frame(QByteArray& buffer, host_frame& out);

} // namespace instrument
