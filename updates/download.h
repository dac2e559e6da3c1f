#pragma once

#include <QByteArray>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

/// What the two updates share in fetching files from the update host.
namespace download {

/// A request that is given up when nothing has moved for 30 s.
[[nodiscard]] QNetworkRequest request_for(const QUrl& url);
/// The same for a list on the update host, with the name that the host expects.
[[nodiscard]] QNetworkRequest list_request(const QUrl& url);

/// The last segment of the URL's path, as the name of a file in one folder: it
/// holds nothing that would lead out of the folder, on any platform. Empty where
/// nothing is left.
[[nodiscard]] QString file_name(const QUrl& url);

/// Writes a file as a whole or not at all; what stood there before stays when it
/// fails.
[[nodiscard]] bool write_file(const QString& path, const QByteArray& content);

} // namespace download
