#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>

/// The real adb with a server of the test's own: on a free port, with a home
/// and a log of its own, killed at the end. While the object lives,
/// ANDROID_ADB_SERVER_PORT names it to every adb and every simulated instrument
/// that the test starts. The user's own server is never spoken to.
class adb_server
{
public:
    adb_server();
    ~adb_server();
    adb_server(const adb_server&) = delete;
    adb_server& operator=(const adb_server&) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// Starts the server and waits for it.
    [[nodiscard]] bool start();
    void kill();

    /// Output of adb with these arguments, white space at the ends removed.
    QString run(const QStringList& arguments);
    /// The state in which adb lists a device, empty when it does not.
    [[nodiscard]] QString state_of(const QString& serial_number);

private:
    QTemporaryDir m_home;
    std::uint16_t m_port = 0;
    bool m_started = false;
};
