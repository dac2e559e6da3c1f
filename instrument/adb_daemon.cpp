#include "instrument/adb_daemon.h"

#include <QHostAddress>

#include <algorithm>
#include <utility>

namespace instrument {

namespace {

constexpr std::chrono::milliseconds announce_interval{1000};

/// A request to the adb server: four hexadecimal digits of length, then the text.
QByteArray server_request(const QByteArray& text)
{
    return QByteArray::number(text.size(), 16).rightJustified(4, '0') + text;
}

} // namespace

adb_daemon::adb_daemon(adb_settings settings, protocol_factory make_protocol, byte_log* log,
                       QObject* parent)
    : QObject(parent), m_settings(settings), m_make_protocol(std::move(make_protocol)), m_log(log)
{
    connect(&m_server, &QTcpServer::newConnection, this, &adb_daemon::accept);
    m_timer.setInterval(announce_interval);
    connect(&m_timer, &QTimer::timeout, this, &adb_daemon::announce);

    const auto first_outcome = [this](bool reached) {
        if (std::exchange(m_first_announcement, false))
            emit announced(reached);
    };
    connect(&m_announcer, &QTcpSocket::connected, this, [this, first_outcome] {
        m_announcer.write(server_request("host:emulator:" + QByteArray::number(port())));
        m_announcer.disconnectFromHost();
        first_outcome(true);
    });
    connect(&m_announcer, &QTcpSocket::errorOccurred, this, [this, first_outcome] {
        m_announcer.abort();
        first_outcome(false);
    });
}

bool adb_daemon::start(QString& error)
{
    if (!m_server.listen(QHostAddress::LocalHost, m_settings.port)) {
        error = m_server.errorString();
        return false;
    }
    if (m_settings.server_port != 0) {
        m_timer.start();
        announce();
    }
    return true;
}

void adb_daemon::detach()
{
    m_timer.stop();
    m_announcer.abort();
    m_server.close();
    m_settings.server_port = 0;
    while (!m_connections.isEmpty())
        drop(m_connections.constFirst());
}

QString adb_daemon::serial_number() const
{
    // adb names an emulator by its console's port, which is the one below.
    return QStringLiteral("emulator-%1").arg(port() - 1);
}

bool adb_daemon::is_online() const
{
    return std::any_of(m_connections.cbegin(), m_connections.cend(),
                       [](const adb_connection* one) { return one->is_online(); });
}

void adb_daemon::accept()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        auto* connection =
            new adb_connection(socket, "tcp:" + QByteArray::number(m_settings.device_port),
                               m_make_protocol, m_log, this);
        m_connections.append(connection);
        connect(connection, &adb_connection::online, this, [this] {
            m_timer.stop();
            emit online();
        });
        connect(connection, &adb_connection::ended, this, [this, connection] { drop(connection); });
    }
}

void adb_daemon::announce()
{
    // A server that is just connecting would only be told twice.
    if (m_connections.isEmpty() && m_announcer.state() == QAbstractSocket::UnconnectedState)
        m_announcer.connectToHost(QHostAddress(QHostAddress::LocalHost), m_settings.server_port);
}

void adb_daemon::drop(adb_connection* connection)
{
    const bool was_online = is_online();
    m_connections.removeOne(connection);
    connection->disconnect(this);
    connection->deleteLater();
    if (was_online && !is_online())
        emit offline();
    if (m_connections.isEmpty() && m_settings.server_port != 0)
        m_timer.start();
}

} // namespace instrument
