#pragma once

#include "instrument/byte_log.h"
#include "instrument/protocol.h"

#include <QObject>
#include <QQueue>
#include <QTimer>

#include <functional>
#include <memory>

namespace instrument {

/// One line with the protocol spoken on it: hands over what arrives, and writes
/// the answers one after the other, each after its delay.
class conversation : public QObject
{
    Q_OBJECT

public:
    /// `write` takes each chunk as one write; false when the line has lost it, which
    /// the log then does not show as sent. `log` may be null, otherwise it
    /// must outlive the conversation; `line` names it there.
    conversation(QString line, std::unique_ptr<protocol> spoken, byte_log* log,
                 std::function<bool(const QByteArray&)> write, QObject* parent = nullptr);

    void receive(QByteArrayView bytes);

private:
    void write_due();

    QString m_line;
    std::unique_ptr<protocol> m_protocol;
    byte_log* m_log;
    std::function<bool(const QByteArray&)> m_write;
    QQueue<chunk> m_waiting;
    QTimer m_timer; ///< runs for the first of m_waiting
};

} // namespace instrument
