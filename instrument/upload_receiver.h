#pragma once

#include "instrument/host_frame.h"
#include "instrument/protocol.h"
#include "instrument/reply.h"
#include "instrument/storage.h"

#include <QByteArray>

namespace instrument {

/// Takes uploads in packets.
///
/// The upload probe is answered with status 0. A head is answered with 0, with 2
/// where its kind is none of the six, or with 1 where its start is no date; points
/// with 0, or with 1 where they belong to no head, are more than it announced, or
/// carry another mode. A measurement is stored, with the instrument's own
/// identity, once all its points are there. Everything else meets silence.
///
/// Faults count the answers of an upload: 0 to the probe, 1 to the first head. What
/// is answered with another status than 0, or not at all, is not kept.
class upload_receiver final : public protocol
{
public:
    /// `where` must outlive the receiver.
    explicit upload_receiver(storage& where, frame_identity identity = {}, fault_list faults = {});

    [[nodiscard]] QList<chunk> receive(QByteArrayView bytes) override;

private:
    [[nodiscard]] QList<chunk> answer(const host_frame& request);
    [[nodiscard]] std::uint8_t judge(const host_frame& request) const;
    void keep(const host_frame& request);

    storage& m_where;
    frame_identity m_identity;
    fault_list m_faults;
    QByteArray m_buffer;
    int m_number = 0;            ///< of the next answer
    stored_measurement m_coming; ///< its points are not all there yet
    qsizetype m_missing_points = 0;
};

} // namespace instrument
