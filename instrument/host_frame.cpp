#include "instrument/host_frame.h"

#include "device/frame.h"

namespace instrument {

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
