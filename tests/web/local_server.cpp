#include "local_server.h"

#include "support/own_certificate.h"

#include <QBuffer>
#include <QImage>
#include <QSslConfiguration>
#include <QTcpSocket>

local_server::local_server(kind wanted, QObject* parent) : QObject(parent), m_kind(wanted)
{
    QImage tile(256, 256, QImage::Format_RGB32);
    tile.fill(QColor(0xb8, 0xe0, 0xb0));
    QBuffer buffer(&body);
    tile.save(&buffer, "PNG");

    if (wanted == kind::tls) {
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(own_certificate(QStringLiteral("DNS:tiles.example")));
        // Qt keeps a socket whose handshake has failed.
        connect(server.get(), &QSslServer::errorOccurred, server.get(),
                [](QSslSocket* socket) { socket->deleteLater(); });
        m_server = std::move(server);
    } else {
        m_server = std::make_unique<QTcpServer>();
    }
    // For TLS once the handshake is done.
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket* socket = m_server->nextPendingConnection()) {
            ++connections;
            serve(socket);
        }
    });
    if (!m_server->listen(QHostAddress::LocalHost))
        qFatal("the local server cannot listen");
}

QString local_server::address() const
{
    return QStringLiteral("%1://127.0.0.1:%2")
        .arg(m_kind == kind::tls ? QStringLiteral("https") : QStringLiteral("http"))
        .arg(port());
}

void local_server::hang_up()
{
    for (auto* const socket : m_server->findChildren<QTcpSocket*>())
        socket->abort();
}

void local_server::serve(QTcpSocket* socket)
{
    if (socket->state() == QAbstractSocket::UnconnectedState) {
        socket->deleteLater(); // it has gone while it was waiting
        return;
    }
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    const auto answer = [this, socket] {
        while (socket->canReadLine()) {
            const QByteArray line = socket->readLine().trimmed();
            const QVariant path = socket->property("path");
            if (line.startsWith("GET ") || line.startsWith("POST ") || line.startsWith("OPTIONS "))
                socket->setProperty("path", line.split(' ').value(1));
            else if (line.toLower().startsWith("host:"))
                socket->setProperty("host", line.mid(5).trimmed());
            else if (line.isEmpty() && path.isValid()) {
                const QString request = socket->property("host").toString() + path.toString();
                requests += request;
                socket->setProperty("path", QVariant());
                if (silent)
                    continue;
                const QByteArray sent = !open ? QByteArray() : body_for ? body_for(request) : body;
                socket->write(QByteArray(open ? "HTTP/1.1 200 OK" : "HTTP/1.1 503 Closed") +
                              "\r\nContent-Type: " + body_type +
                              "\r\nCache-Control: no-store\r\nAccess-Control-Allow-Origin: *" +
                              "\r\nConnection: close\r\nContent-Length: " +
                              QByteArray::number(sent.size()) + "\r\n\r\n" + sent);
                socket->disconnectFromHost();
            }
        }
    };
    connect(socket, &QTcpSocket::readyRead, this, answer);
    answer();
}
