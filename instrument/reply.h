#pragma once

#include "instrument/faults.h"
#include "instrument/protocol.h"

#include <QByteArray>

#include <cstdint>

namespace instrument {

/// How an instrument introduces itself in its frames.
struct frame_identity
{
    QByteArray token = QByteArray::fromHex("1A2B3C4D"); ///< 4 bytes
    std::uint8_t device_type = 0x01;
};

/// Status bytes of a reply.
enum reply_status : std::uint8_t
{
    status_done = 0,
    status_refused = 1,
    status_unsupported = 2, ///< a kind of measurement that the instrument does not know
};

/// Data of a reply to the command `answered`.
[[nodiscard]] QByteArray reply_data(const frame_identity& identity, std::uint8_t answered,
                                    std::uint8_t status);

/// The draft as chunks, with all faults. `draft` tells afterwards whether it was
/// dropped or held, and what its data became.
[[nodiscard]] QList<chunk> send(frame_draft& draft, const frame_identity& identity,
                                std::uint8_t sequence, const fault_list& faults);

} // namespace instrument
