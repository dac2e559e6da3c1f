#pragma once

#include <QAbstractSocket>
#include <QObject>
#include <QString>

class QTcpSocket;

/// One adb forward and one TCP socket for one Android instrument.
///
/// The instrument serves its port 12345; adb forwards the first free one of a
/// few local ports to it. All calls of adb block.
class AdbStringChannel : public QObject
{
    Q_OBJECT

public:
    /// The port that the instrument serves, and the first local port tried.
    static constexpr quint16 device_port = 12345;

    /// A channel that is not open yet to the device `serial`.
    AdbStringChannel(const QString& host_name, quint16 port, const QString& serial,
                     const QString& adb, QObject* parent = nullptr);

    /// Forwards a local port and connects the socket. Does nothing on an open
    /// channel, so that it also tells whether the channel can be written to, and
    /// nothing on a closed one, which is never opened again.
    ///
    /// Returns whether the channel has a connection. Only adb's "cannot bind"
    /// leads on to the next local port; every other failure gives up, after a
    /// warning. Blocks up to 16 s for each local port and 3 s for the socket.
    bool open();
    /// Drops the connection and the forward for good. Only the first call acts.
    void close();
    /// Takes the forward of local `port` away, if there is one. No result.
    static void remove_forward(const QString& adb, const QString& serial, quint16 port);

    QString host;                 ///< always "127.0.0.1"
    quint16 local_port;           ///< after a successful open the port that worked
    QString device_serial;        ///< as "adb devices" names the device
    QString adb_path;             ///< copy of the manager's path
    bool closing = false;         ///< set by the first close, never cleared
    QTcpSocket* socket = nullptr; ///< the connection, or null

signals:
    /// What onReadyRead read, closed by a zero byte; valid during the signal only.
    void stringReceived(char* text);
    void channelClosed();

public slots:
    /// Reads everything and emits stringReceived. Connected to nothing: a read
    /// takes the bytes from the socket itself.
    void onReadyRead();
    void onSocketError(QAbstractSocket::SocketError error);

private:
    /// What became of one try to forward a local port.
    enum class forward_result
    {
        ready,
        port_taken,
        failed,
    };
    forward_result forward(quint16 port, QString& error_text);
    bool forward_some_port();
    bool connect_socket();
};
