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
/// frame before it. A header counts only with the host's marker 0xFD, a known
/// command and a length that this command can have; so nothing that merely looks
/// like a header keeps the instrument waiting for a frame that never ends. A
/// frame with a wrong CRC costs its first byte.
///
/// Returns false when more bytes are needed; `out` is untouched then.
[[nodiscard]] bool take_host_frame(QByteArray& buffer, host_frame& out);

} // namespace instrument
