#include "instrument/text_responder.h"

#include <utility>

namespace instrument {

namespace {

const QByteArray text_command = QByteArrayLiteral("~\r\n");
/// A draft's command that is none of a frame.
constexpr std::uint8_t no_frame = '~';

} // namespace

text_responder::text_responder(const memory& stored, text_form form, fault_list faults)
    : m_stored(stored), m_form(form), m_faults(std::move(faults))
{
}

QList<chunk> text_responder::receive(QByteArrayView bytes)
{
    m_buffer.append(bytes.data(), bytes.size());
    QList<chunk> chunks;
    for (qsizetype at = m_buffer.indexOf(text_command); at >= 0;
         at = m_buffer.indexOf(text_command)) {
        m_buffer.remove(0, at + text_command.size());
        chunks += all_records();
    }
    // The beginning of a command may have come.
    m_buffer = m_buffer.last(qMin(m_buffer.size(), text_command.size() - 1));
    return chunks;
}

QList<chunk> text_responder::all_records() const
{
    QList<chunk> chunks;
    int number = 0;
    for (const stored_measurement& measured : m_stored) {
        ++number;
        QByteArray text = record_text(measured, m_stored.size(), m_form);
        if (number > 1)
            text.prepend("\r\n");
        frame_draft draft{.number = number, .command = no_frame, .data = text};
        apply(m_faults, draft);
        if (draft.drop)
            continue;
        frame_bytes out{.number = number, .bytes = draft.data};
        apply(m_faults, out);
        chunks += to_chunks(out);
    }
    return chunks;
}

} // namespace instrument
