#include "updates/download.h"

#include <QSaveFile>

#include <algorithm>

namespace download {

namespace {

constexpr int idle_limit_ms = 30'000;

} // namespace

QNetworkRequest request_for(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(idle_limit_ms);
    return request;
}

QNetworkRequest list_request(const QUrl& url)
{
    QNetworkRequest request = request_for(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("RT-Thread ART"));
    return request;
}

QString file_name(const QUrl& url)
{
    // A backslash parts folders and a colon drives where "/" alone does not.
    const QString path = url.path(QUrl::FullyDecoded);
    const auto is_separator = [](QChar c) { return c == u'/' || c == u'\\' || c == u':'; };
    const auto last = std::find_if(path.crbegin(), path.crend(), is_separator);
    const QString name(last.base(), path.cend() - last.base());
    const bool is_a_folder =
        std::all_of(name.cbegin(), name.cend(), [](QChar c) { return c == u'.' || c == u' '; });
    return is_a_folder || name.contains(QChar::Null) ? QString() : name;
}

bool write_file(const QString& path, const QByteArray& content)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
           file.commit();
}

} // namespace download
