#pragma once

#include "instrument/byte_log.h"
#include "instrument/conversation.h"
#include "instrument/protocol.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>

namespace instrument {

/// A serial instrument on a pseudo-terminal: the host opens its path like a
/// serial port. At another speed than the instrument's the host is not
/// understood, and what the instrument sends is lost.
class pseudo_terminal : public QObject
{
    Q_OBJECT

public:
    /// `baud` is the instrument's speed in bits a second. `log` may be null.
    pseudo_terminal(int baud, protocol_factory make_protocol, byte_log* log,
                    QObject* parent = nullptr);
    ~pseudo_terminal() override;

    /// Makes the terminal and, where `link` is not empty, a symbolic link to
    /// it, replacing a link that stands there but nothing else; the link goes
    /// with the terminal. Returns false with the reason in `error`.
    [[nodiscard]] bool start(const QString& link, QString& error);

    /// Whether the line can run at `baud` bits a second.
    [[nodiscard]] static bool has_speed(int baud);
    /// The path that the host opens, such as "/dev/pts/3".
    [[nodiscard]] QString path() const { return m_path; }
    /// The speed that the host has set, in bits a second; 0 for an unusual one.
    [[nodiscard]] int host_baud() const;

private:
    void read();
    bool write(const QByteArray& bytes);
    void write_waiting();
    /// Whether host and instrument run at the same speed; a change of the host's
    /// is noted in the log.
    [[nodiscard]] bool is_understood();
    [[nodiscard]] bool make_link(const QString& link, QString& error);

    int m_baud;
    byte_log* m_log;
    int m_noted_baud; ///< the host's speed as the log knows it, at first the instrument's
    conversation m_talk;
    int m_master = -1;
    int m_slave = -1; ///< kept open, so that the line stays when a host closes it
    QString m_path;
    QString m_link;
    QByteArray m_waiting; ///< what the terminal had no room for
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
};

} // namespace instrument
