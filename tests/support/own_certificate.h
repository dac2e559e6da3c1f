#pragma once

#include <QSslConfiguration>
#include <QString>

/// A server's configuration with a certificate of the day, signed by itself.
/// `names` is what openssl takes for subjectAltName, as in "IP:127.0.0.1".
[[nodiscard]] QSslConfiguration own_certificate(const QString& names);
