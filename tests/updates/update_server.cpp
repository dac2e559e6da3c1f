#include "update_server.h"

#include "support/own_certificate.h"

#include <QSslSocket>
#include <QTimer>

#include <memory>

update_server::update_server(const QString& names, QObject* parent) : QObject(parent)
{
    m_server.setSslConfiguration(own_certificate(names));
    connect(&m_server, &QSslServer::startedEncryptionHandshake, this, [this] { ++connections; });
    connect(&m_server, &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection())
            serve(socket);
    });
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("the update server cannot listen");
}

QUrl update_server::address(const QString& path) const
{
    return QUrl(QStringLiteral("https://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

void update_server::trust() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(m_server.sslConfiguration().localCertificateChain());
    QSslConfiguration::setDefaultConfiguration(configuration);
}

void update_server::serve(QTcpSocket* socket)
{
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    auto header = std::make_shared<QByteArray>();
    const auto read = [this, socket, header] {
        *header += socket->readAll();
        if (!header->contains("\r\n\r\n"))
            return;
        const QString path = QString::fromLatin1(header->split(' ').value(1));
        requests.append({path, *header});
        header->clear();
        send(socket, answers.value(path, {.body = "nothing here", .status = "404 Not Found"}));
    };
    connect(socket, &QTcpSocket::readyRead, this, read);
    read();
}

void update_server::send(QTcpSocket* socket, const answer& what)
{
    if (what.never)
        return;
    QByteArray head = "HTTP/1.1 " + what.status + "\r\nConnection: close\r\n" + what.more_header;
    if (what.with_length)
        head += "Content-Length: " + QByteArray::number(what.body.size()) + "\r\n";
    socket->write(head + "\r\n");
    const QByteArray body = what.cut_after < 0 ? what.body : what.body.left(what.cut_after);
    if (what.piece_delay_ms == 0) {
        socket->write(body);
        socket->disconnectFromHost();
        return;
    }
    const qsizetype piece = body.size() / 10 + 1;
    auto* timer = new QTimer(socket);
    connect(timer, &QTimer::timeout, socket, [socket, body, piece, at = qsizetype(0)]() mutable {
        socket->write(body.mid(at, piece));
        at += piece;
        if (at >= body.size())
            socket->disconnectFromHost();
    });
    timer->start(what.piece_delay_ms);
}
