#pragma once

#include "instrument/protocol.h"
#include "instrument/storage.h"

#include <QByteArray>

namespace instrument {

/// Takes uploads as Mode text, without ever an answer: a head line
///
///     Mode:5,A:1334,D:123.5,n:2,T:20240305070809,N:name
///
/// and a line of longitude, latitude and altitude for each point, degrees and
/// metres; ";" behind the last one ends the measurement, and so does the next head.
/// What does not read like that is passed over. A measurement without a time begins
/// at 2000-01-01 00:00:00, and none has an end of its own.
class mode_text_receiver final : public protocol
{
public:
    /// `where` must outlive the receiver.
    explicit mode_text_receiver(storage& where);

    [[nodiscard]] QList<chunk> receive(QByteArrayView bytes) override;

private:
    storage& m_where;
    QByteArray m_buffer;
};

} // namespace instrument
