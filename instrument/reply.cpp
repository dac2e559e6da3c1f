#include "instrument/reply.h"

#include "device/frame.h"

namespace instrument {

QByteArray reply_data(const frame_identity& identity, std::uint8_t answered, std::uint8_t status)
{
    QByteArray data = identity.token;
    data.append(static_cast<char>(answered));
    data.append(static_cast<char>(status));
    return data;
}

QList<chunk> send(frame_draft& draft, const frame_identity& identity, std::uint8_t sequence,
                  const fault_list& faults)
{
    apply(faults, draft);
    if (draft.drop)
        return {};
    frame_bytes out{
        .number = draft.number,
        .bytes = frame::build_frame(draft.command, sequence, draft.data, identity.device_type)};
    apply(faults, out);
    return to_chunks(out);
}

} // namespace instrument
