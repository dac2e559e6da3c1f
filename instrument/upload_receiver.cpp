#include "instrument/upload_receiver.h"

#include "device/frame.h"
#include "instrument/measurement_frames.h"

#include <utility>

namespace instrument {

namespace {

constexpr int kinds = 6;
/// Place of the status in a reply's data.
constexpr qsizetype status_at = 5;

qsizetype points_in(const QByteArray& data)
{
    return (data.size() - points_data_overhead) / point_size;
}

} // namespace

upload_receiver::upload_receiver(storage& where, frame_identity identity, fault_list faults)
    : m_where(where), m_identity(std::move(identity)), m_faults(std::move(faults))
{
}

QList<chunk> upload_receiver::receive(QByteArrayView bytes)
{
    m_buffer.append(bytes.data(), bytes.size());
    QList<chunk> chunks;
    host_frame request;
    while (take_host_frame(m_buffer, request)) {
        if (request.command == frame::upload_probe || request.command == frame::upload_item ||
            request.command == frame::upload_points)
            chunks += answer(request);
    }
    return chunks;
}

QList<chunk> upload_receiver::answer(const host_frame& request)
{
    if (request.command == frame::upload_probe)
        m_number = 0;
    frame_draft draft{.number = m_number++,
                      .command = frame::reply,
                      .data = reply_data(m_identity, request.command, judge(request))};
    const QList<chunk> chunks = send(draft, m_identity, request.sequence, m_faults);
    if (!draft.drop && draft.data.size() > status_at && draft.data[status_at] == status_done)
        keep(request);
    return chunks;
}

std::uint8_t upload_receiver::judge(const host_frame& request) const
{
    if (request.command == frame::upload_item) {
        const stored_measurement head = read_head(request.data);
        if (static_cast<int>(head.kind) >= kinds)
            return status_unsupported;
        return head.start.isValid() ? status_done : status_refused;
    }
    if (request.command == frame::upload_points) {
        const bool fits = points_in(request.data) <= m_missing_points &&
                          frame::read_u8(request.data, request.data.size() - 1) == m_coming.mode;
        return fits ? status_done : status_refused;
    }
    return status_done;
}

void upload_receiver::keep(const host_frame& request)
{
    if (request.command == frame::upload_item) {
        m_coming = read_head(request.data);
        m_coming.identity = own_identity;
        m_missing_points = frame::read_u32(request.data, head_point_count);
    } else if (request.command == frame::upload_points) {
        m_coming.points += read_points(request.data);
        m_missing_points -= points_in(request.data);
        if (m_missing_points == 0)
            m_where.take({.measured = m_coming, .name = {}});
    }
}

} // namespace instrument
