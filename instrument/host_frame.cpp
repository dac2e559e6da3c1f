#include "instrument/host_frame.h"

#include "device/frame.h"
#include "instrument/measurement_frames.h"

namespace instrument {

namespace {

/// Whether a host sends frames of this command with so many bytes of data.
bool is_host_frame(std::uint8_t command, qsizetype length)
{
    switch (command) {
    case frame::reply: // the same code is the read probe
    case frame::export_request:
    case frame::upload_probe: return length == 4;
    case frame::upload_item: return length == head_data_size;
    case frame::upload_points:
        return length >= points_data_overhead && (length - points_data_overhead) % point_size == 0;
    default: return false;
    }
}

} // namespace

bool take_host_frame(QByteArray& buffer, host_frame& out)
{
    const QByteArrayView bytes(buffer);
    qsizetype start = 0;
    for (;; ++start) {
        start = bytes.indexOf(frame::header, start);
        if (start < 0) {
            buffer.clear();
            return false;
        }
        const QByteArrayView rest = bytes.sliced(start);
        if (rest.size() > 2 && frame::read_u8(rest, 2) != frame::host_marker)
            continue;
        if (rest.size() < frame::header_size)
            break;
        const qsizetype length = frame::read_u16(rest, 4);
        if (!is_host_frame(frame::read_u8(rest, 1), length))
            continue;
        if (rest.size() < length + frame::overhead)
            break;
        const qsizetype covered = frame::header_size + length;
        if (frame::crc8(rest.first(covered)) != frame::read_u8(rest, covered))
            continue;
        out = {.command = frame::read_u8(rest, 1),
               .sequence = frame::read_u8(rest, 3),
               .data = rest.sliced(frame::header_size, length).toByteArray()};
        buffer.remove(0, start + covered + 1);
        return true;
    }
    buffer.remove(0, start);
    return false;
}

} // namespace instrument
