#include "device/adb_string_channel.h"

#include <QDebug>
#include <QProcess>
#include <QTcpSocket>

namespace {

constexpr int start_timeout = 3000;    // ms, for any adb process
constexpr int forward_timeout = 10000; // ms
constexpr int remove_timeout = 3000;   // ms
constexpr int connect_timeout = 3000;  // ms

/// Bytes that wait in the socket while nobody reads; more stay with adb.
constexpr qint64 read_buffer_size = 1 << 20;

QString tcp(quint16 port)
{
    return QStringLiteral("tcp:%1").arg(port);
}

} // namespace

AdbStringChannel::AdbStringChannel(const QString& host_name, quint16 port, const QString& serial,
                                   const QString& adb, QObject* parent)
    : QObject(parent), host(host_name), local_port(port), device_serial(serial), adb_path(adb)
{
    qInfo() << "[AdbStringChannel" << device_serial << "] created, target:" << host << ":"
            << local_port;
    qInfo() << "[AdbStringChannel] adb path:" << adb_path;
}

bool AdbStringChannel::open()
{
    if (closing || socket != nullptr)
        return socket != nullptr;
    return forward_some_port() && connect_socket();
}

bool AdbStringChannel::forward_some_port()
{
    QString last_error;
    for (const quint16 port : {local_port, quint16{22345}, quint16{32345}, quint16{42345},
                               quint16{52345}, quint16{54321}}) {
        remove_forward(adb_path, device_serial, port);
        switch (forward(port, last_error)) {
        case forward_result::ready:
            local_port = port;
            qDebug() << "[AdbStringChannel] adb forward ready, localPort:" << local_port
                     << "devicePort:" << device_port;
            return true;
        case forward_result::port_taken: break;
        case forward_result::failed: return false;
        }
    }
    qWarning() << "[AdbStringChannel] no local adb forward port available, last stderr:"
               << last_error;
    return false;
}

AdbStringChannel::forward_result AdbStringChannel::forward(quint16 port, QString& error_text)
{
    const QStringList arguments{QStringLiteral("-s"), device_serial, QStringLiteral("forward"),
                                tcp(port), tcp(device_port)};
    qInfo() << "[AdbStringChannel] run:" << adb_path << arguments;
    QProcess adb;
    adb.start(adb_path, arguments, QIODevice::ReadWrite);
    if (!adb.waitForStarted(start_timeout)) {
        qWarning() << "[AdbStringChannel] failed to start adb forward:" << adb.errorString();
        return forward_result::failed;
    }
    if (!adb.waitForFinished(forward_timeout)) {
        qWarning() << "[AdbStringChannel] adb forward timeout:" << adb_path << arguments;
        adb.kill();
        adb.waitForFinished(3000);
        return forward_result::failed;
    }
    if (adb.exitStatus() == QProcess::NormalExit && adb.exitCode() == 0)
        return forward_result::ready;
    error_text = QString::fromLocal8Bit(adb.readAllStandardError());
    qWarning() << "[AdbStringChannel] adb forward failed, localPort:" << port
               << "devicePort:" << device_port << "exitCode:" << adb.exitCode()
               << "stderr:" << error_text;
    return error_text.contains(u"cannot bind", Qt::CaseInsensitive) ? forward_result::port_taken
                                                                    : forward_result::failed;
}

bool AdbStringChannel::connect_socket()
{
    auto* const connecting = new QTcpSocket(this);
    socket = connecting;
    socket->setReadBufferSize(read_buffer_size);
    connect(socket, &QTcpSocket::errorOccurred, this, &AdbStringChannel::onSocketError);
    connect(socket, &QTcpSocket::connected, this,
            [] { qDebug() << "[AdbStringChannel] TCP connected"; });
    socket->connectToHost(host, local_port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
    if (connecting->waitForConnected(connect_timeout)) {
        qInfo() << "[AdbStringChannel] TCP ready:" << host << ":" << local_port;
        return true;
    }
    // An error, other than a time-out, has closed the channel already and taken
    // its pointer; the socket itself lives on until the event loop comes round.
    qWarning() << "[AdbStringChannel] TCP connect failed:" << connecting->errorString();
    connecting->deleteLater();
    socket = nullptr;
    remove_forward(adb_path, device_serial, local_port);
    return false;
}

void AdbStringChannel::close()
{
    if (closing)
        return;
    closing = true;
    if (socket == nullptr)
        return;
    qInfo() << "[AdbStringChannel] close";
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
    socket = nullptr;
    remove_forward(adb_path, device_serial, local_port);
    emit channelClosed();
}

void AdbStringChannel::remove_forward(const QString& adb, const QString& serial, quint16 port)
{
    QProcess process;
    process.start(adb,
                  {QStringLiteral("-s"), serial, QStringLiteral("forward"),
                   QStringLiteral("--remove"), tcp(port)},
                  QIODevice::ReadWrite);
    if (process.waitForStarted(start_timeout) && !process.waitForFinished(remove_timeout)) {
        process.kill();
        process.waitForFinished(1000);
    }
}

void AdbStringChannel::onReadyRead()
{
    if (socket == nullptr)
        return;
    QByteArray bytes = socket->readAll();
    emit stringReceived(bytes.data());
}

void AdbStringChannel::onSocketError(QAbstractSocket::SocketError error)
{
    // A wait in which nothing came says so with an error; the connection is sound.
    if (closing || error == QAbstractSocket::SocketTimeoutError)
        return;
    qWarning() << "[AdbStringChannel] socket error:" << error
               << "message:" << (socket != nullptr ? socket->errorString() : QString());
    close();
}
