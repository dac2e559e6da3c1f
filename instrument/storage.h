#pragma once

#include "instrument/memory.h"

#include <QString>

#include <functional>

namespace instrument {

/// A measurement that a host has sent.
struct received_measurement
{
    stored_measurement measured;
    QString name;           ///< Mode text alone carries one
    bool by_packets = true; ///< otherwise as Mode text
};

/// The memory of an instrument together with what it has been sent. A read gives
/// all of it, what was sent last at the end.
struct storage
{
    memory stored;
    QList<received_measurement> received;
    /// Called after each measurement that came in; may be empty.
    std::function<void(const received_measurement&)> on_received;

    void take(const received_measurement& one);
};

/// What was received as a JSON array, as in the memory's, with "name" and
/// "packets".
[[nodiscard]] QByteArray to_json(const QList<received_measurement>& received);

} // namespace instrument
