#pragma once

#include "instrument/host_frame.h"
#include "instrument/memory.h"
#include "instrument/protocol.h"
#include "instrument/reply.h"

#include <QByteArray>

#include <cstdint>

namespace instrument {

/// The binary frame protocol from the instrument's side: the read of the whole
/// memory.
///
/// A read probe is answered with the token and starts the export over. Each
/// export request with that token brings the next frame: a measurement's head,
/// then its points, at most 51 to a frame, then the next head. Behind the last
/// comes a reply with status 0, as often as it is asked for. An export request
/// with another token is refused with status 1. Everything else, text commands
/// among them, meets silence.
class frame_responder final : public protocol
{
public:
    /// `stored` must outlive the responder.
    explicit frame_responder(const memory& stored, frame_identity identity = {},
                             fault_list faults = {});

    [[nodiscard]] QList<chunk> receive(QByteArrayView bytes) override;

private:
    [[nodiscard]] QList<chunk> answer(const host_frame& request);
    [[nodiscard]] QList<chunk> next_frame();
    /// Where the export goes on once the frame at this place has been sent.
    void advance();
    [[nodiscard]] QList<chunk> reply(int number, std::uint8_t answered, std::uint8_t status) const;

    const memory& m_stored;
    frame_identity m_identity;
    fault_list m_faults;
    QByteArray m_buffer;
    std::uint8_t m_sequence = 0; ///< of the request being answered

    // The place of the export: a head not yet sent, or points from m_point on.
    qsizetype m_measurement = 0;
    qsizetype m_point = 0;
    bool m_head_sent = false;
    int m_number = 1;  ///< of the next frame of the export
    int m_attempt = 0; ///< requests already made for this place
};

} // namespace instrument
