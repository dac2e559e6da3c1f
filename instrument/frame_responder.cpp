#include "instrument/frame_responder.h"

#include "device/frame.h"
#include "instrument/measurement_frames.h"

#include <algorithm>
#include <utility>

namespace instrument {

frame_responder::frame_responder(const memory& stored, frame_identity identity, fault_list faults)
    : m_stored(stored), m_identity(std::move(identity)), m_faults(std::move(faults))
{
}

QList<chunk> frame_responder::receive(QByteArrayView bytes)
{
    m_buffer.append(bytes.data(), bytes.size());
    QList<chunk> chunks;
    host_frame request;
    while (take_host_frame(m_buffer, request))
        chunks += answer(request);
    return chunks;
}

QList<chunk> frame_responder::answer(const host_frame& request)
{
    m_sequence = request.sequence;
    switch (request.command) {
    case frame::reply: {
        // The same code is the host's read probe.
        if (request.data != QByteArray(4, '\xFF'))
            return {};
        m_measurement = 0;
        m_point = 0;
        m_head_sent = false;
        m_number = 1;
        m_attempt = 0;
        return reply(0, frame::reply, status_done);
    }
    case frame::export_request: {
        if (request.data == m_identity.token)
            return next_frame();
        return reply(m_number, frame::export_request, status_refused);
    }
    default: return {};
    }
}

QList<chunk> frame_responder::next_frame()
{
    frame_draft draft{.number = m_number, .attempt = m_attempt};
    if (m_measurement == m_stored.size()) {
        draft.command = frame::reply;
        draft.data = reply_data(m_identity, frame::export_request, status_done);
    } else if (!m_head_sent) {
        draft.command = frame::measurement_head;
        draft.data = head_data(m_stored[m_measurement], m_stored.size());
    } else {
        const stored_measurement& measured = m_stored[m_measurement];
        draft.points_left = measured.points.size() - m_point;
        draft.command = frame::measurement_points;
        draft.data =
            points_data(measured, m_point, std::min<qsizetype>(points_in_frame, draft.points_left));
    }
    QList<chunk> chunks = send(draft, m_identity, m_sequence, m_faults);
    if (!draft.drop)
        ++m_number;
    if (draft.drop || draft.hold) {
        ++m_attempt;
    } else {
        m_attempt = 0;
        advance();
    }
    return chunks;
}

void frame_responder::advance()
{
    if (m_measurement == m_stored.size())
        return;
    if (m_head_sent)
        m_point = std::min(m_point + points_in_frame, m_stored[m_measurement].points.size());
    m_head_sent = true;
    if (m_point == m_stored[m_measurement].points.size()) {
        ++m_measurement;
        m_point = 0;
        m_head_sent = false;
    }
}

QList<chunk> frame_responder::reply(int number, std::uint8_t answered, std::uint8_t status) const
{
    frame_draft draft{.number = number,
                      .command = frame::reply,
                      .data = reply_data(m_identity, answered, status)};
    return send(draft, m_identity, m_sequence, m_faults);
}

} // namespace instrument
