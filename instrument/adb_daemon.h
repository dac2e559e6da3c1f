#pragma once

#include "instrument/adb_connection.h"
#include "instrument/byte_log.h"
#include "instrument/protocol.h"

#include <QList>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <cstdint>

namespace instrument {

/// Where the daemon of a simulated Android instrument is found.
struct adb_settings
{
    std::uint16_t port = 5555;         ///< on 127.0.0.1, 0 for any free one
    std::uint16_t device_port = 12345; ///< the instrument's port, as "adb forward" names it
    std::uint16_t server_port = 5037;  ///< the adb server to announce to, 0 for none
};

/// An Android instrument as the adb server sees it: an emulator's daemon on a
/// local port, with the instrument's port behind it. It announces itself to the
/// adb server about every second until a server has connected, and again when
/// that one is gone.
class adb_daemon : public QObject
{
    Q_OBJECT

public:
    /// `log` may be null.
    adb_daemon(adb_settings settings, protocol_factory make_protocol, byte_log* log,
               QObject* parent = nullptr);

    /// Starts listening and announcing. Returns false with the reason in `error`.
    [[nodiscard]] bool start(QString& error);
    /// Drops every connection and is no longer there, as when the cable is pulled.
    void detach();

    /// The port in use once started.
    [[nodiscard]] std::uint16_t port() const { return m_server.serverPort(); }
    /// The name under which adb lists the device.
    [[nodiscard]] QString serial_number() const;
    /// Whether an adb server counts the device as present.
    [[nodiscard]] bool is_online() const;

signals:
    /// The first announcement has been made, or found no server.
    void announced(bool reached);
    /// An adb server counts the device as present.
    void online();
    /// The last adb server is gone.
    void offline();

private:
    void accept();
    void announce();
    void drop(adb_connection* connection);

    adb_settings m_settings;
    protocol_factory m_make_protocol;
    byte_log* m_log;
    QTcpServer m_server;
    QList<adb_connection*> m_connections;
    QTcpSocket m_announcer;
    QTimer m_timer;
    bool m_first_announcement = true;
};

} // namespace instrument
