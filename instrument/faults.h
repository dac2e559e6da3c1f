#pragma once

#include "instrument/protocol.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace instrument {

/// A frame that the instrument is about to send, before it is put into bytes.
struct frame_draft
{
    int number = 0;  ///< within a read: 0 answers the probe, the export begins at 1
    int attempt = 0; ///< how often the host has asked for this frame before
    std::uint8_t command = 0;
    QByteArray data{};
    std::int64_t points_left = 0; ///< points of the measurement not sent before this frame

    bool drop = false; ///< send nothing; the next request is for this frame again
    bool hold = false; ///< send it, and the next request is for the same place again
};

/// The same frame in bytes, on its way out.
struct frame_bytes
{
    int number = 0;
    QByteArray bytes{};
    std::chrono::milliseconds delay{0};
    int piece_size = 0; ///< bytes written at a time, 0 for the whole frame in one write
};

struct fault;

/// One kind of fault. A fault acts on the draft of a frame or on its bytes.
struct fault_kind
{
    const char* name;
    const char* argument; ///< what the value means, null when the fault takes none
    int lowest;
    int highest;
    int usual; ///< the value when none is given
    const char* help;
    void (*on_draft)(const fault& what, frame_draft& draft);
    void (*on_bytes)(const fault& what, frame_bytes& frame);
};

/// A fault as asked for.
struct fault
{
    const fault_kind* kind = nullptr;
    int value = 0;
    std::optional<int> only_frame; ///< act in this frame alone

    [[nodiscard]] bool fits(int frame_number) const
    {
        return !only_frame || *only_frame == frame_number;
    }
};

/// All that can go wrong on request.
[[nodiscard]] const QList<fault_kind>& fault_kinds();

/// Reads "name", "name=value", "name@frame" or "name=value@frame". Values are
/// decimal, or hexadecimal after "0x". Without a result `error` says what is
/// wrong.
[[nodiscard]] std::optional<fault> parse_fault(const QString& text, QString& error);

/// The kinds of fault as lines of help, two columns.
[[nodiscard]] QString fault_help();

/// The faults of one instrument, each applied to every frame that it fits.
using fault_list = QList<fault>;

void apply(const fault_list& faults, frame_draft& draft);
void apply(const fault_list& faults, frame_bytes& frame);

/// Cuts a frame into the chunks that the faults want.
[[nodiscard]] QList<chunk> to_chunks(const frame_bytes& frame);

} // namespace instrument
