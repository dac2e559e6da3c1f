#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSslConfiguration>
#include <QSslServer>
#include <QString>
#include <QStringList>
#include <QUrl>

class QTcpSocket;

/// An update host on this computer: HTTPS with a certificate made for the test,
/// which this process trusts while `trusted()` is in force. Each path has an
/// answer of its own; others are not found.
class update_server : public QObject
{
    Q_OBJECT

public:
    struct answer
    {
        QByteArray body;
        QByteArray status = "200 OK";
        QByteArray more_header{}; ///< whole lines with their ends
        bool with_length = true;  ///< send Content-Length
        qsizetype cut_after = -1; ///< bytes of the body after which the line breaks
        int piece_delay_ms = 0;   ///< send the body in ten pieces, so far apart
        bool never = false;       ///< keep the line and say nothing
    };
    struct request
    {
        QString path;
        QByteArray header; ///< all of it
    };

    /// `names` are those in the certificate, as openssl takes them.
    explicit update_server(const QString& names = QStringLiteral("IP:127.0.0.1"),
                           QObject* parent = nullptr);

    [[nodiscard]] QUrl address(const QString& path) const;
    /// Makes every connection of this process trust this server's certificate.
    void trust() const;

    QHash<QString, answer> answers;
    QList<request> requests;
    int connections = 0; ///< attempts, also those that TLS has ended

private:
    void serve(QTcpSocket* socket);
    void send(QTcpSocket* socket, const answer& what);

    QSslServer m_server;
};
