#pragma once

#include <QByteArray>
#include <QObject>
#include <QSslServer>
#include <QString>
#include <QStringList>
#include <QTcpServer>

#include <functional>
#include <memory>

class QTcpSocket;

/// A web server on this computer that notes what it is asked for and answers
/// everything with a picture, or with "503" while it is closed, or not at all
/// while it is silent.
class local_server : public QObject
{
    Q_OBJECT

public:
    enum class kind
    {
        plain,
        tls
    };

    explicit local_server(kind wanted, QObject* parent = nullptr);

    [[nodiscard]] quint16 port() const { return m_server->serverPort(); }
    /// "http://127.0.0.1:PORT" or the same with https.
    [[nodiscard]] QString address() const;

    /// Ends all connections, also those that a browser keeps for later.
    void hang_up();

    bool open = true;
    bool silent = false;
    /// The body of every answer, unless each request has its own.
    QByteArray body;
    std::function<QByteArray(const QString& request)> body_for;
    QByteArray body_type = "image/png";
    /// Host and path of each request, as in "webrd01.is.autonavi.com/appmaptile?x=1".
    QStringList requests;
    /// Connections, with or without a request.
    int connections = 0;

private:
    void serve(QTcpSocket* socket);

    std::unique_ptr<QTcpServer> m_server;
    kind m_kind;
};
