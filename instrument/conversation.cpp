#include "instrument/conversation.h"

#include <utility>

namespace instrument {

conversation::conversation(QString line, std::unique_ptr<protocol> spoken, byte_log* log,
                           std::function<bool(const QByteArray&)> write, QObject* parent)
    : QObject(parent), m_line(std::move(line)), m_protocol(std::move(spoken)), m_log(log),
      m_write(std::move(write))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_waiting.head().delay = std::chrono::milliseconds::zero();
        write_due();
    });
}

void conversation::receive(QByteArrayView bytes)
{
    if (m_log != nullptr)
        m_log->in(m_line, bytes);
    m_waiting += m_protocol->receive(bytes);
    if (!m_timer.isActive())
        write_due();
}

void conversation::write_due()
{
    while (!m_waiting.isEmpty()) {
        if (m_waiting.head().delay > std::chrono::milliseconds::zero()) {
            m_timer.start(m_waiting.head().delay);
            return;
        }
        const chunk due = m_waiting.dequeue();
        if (m_write(due.bytes) && m_log != nullptr)
            m_log->out(m_line, due.bytes);
    }
}

} // namespace instrument
