#include "support/own_certificate.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTemporaryDir>

QSslConfiguration own_certificate(const QString& names)
{
    const QTemporaryDir folder;
    const QString key = folder.filePath(QStringLiteral("key.pem"));
    const QString certificate = folder.filePath(QStringLiteral("certificate.pem"));
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                   "-nodes", "-days", "1", "-subj", "/CN=test.example", "-addext",
                   "subjectAltName=" + names, "-keyout", key, "-out", certificate});
    if (!openssl.waitForFinished(30'000) || openssl.exitCode() != 0)
        qFatal("openssl made no certificate: %s", openssl.readAllStandardError().constData());
    QFile key_file(key);
    if (!key_file.open(QIODevice::ReadOnly))
        qFatal("no key was written");
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setPrivateKey(QSslKey(&key_file, QSsl::Ec));
    configuration.setLocalCertificateChain(QSslCertificate::fromPath(certificate));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}
