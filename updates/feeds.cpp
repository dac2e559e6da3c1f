#include "updates/feeds.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace feeds {

namespace {

std::optional<QJsonDocument> parse(const QByteArray& text, QString& error)
{
    QJsonParseError outcome{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &outcome);
    if (outcome.error == QJsonParseError::NoError)
        return document;
    error = outcome.errorString();
    return {};
}

} // namespace

std::optional<new_version> read_version(const QByteArray& text, QString& error)
{
    const std::optional<QJsonDocument> document = parse(text, error);
    if (!document || !document->isObject())
        return {};
    // The host spells it so.
    const QJsonObject version = document->object()[QStringLiteral("VerisonObj")].toObject();
    return new_version{version[QStringLiteral("LatestVersion")].toString(),
                       version[QStringLiteral("Url_64")].toString(),
                       version[QStringLiteral("UpdateTime")].toString(),
                       version[QStringLiteral("ReleaseNote")].toString()};
}

std::optional<QList<image>> read_images(const QByteArray& text, const QString& device_version,
                                        QString& error)
{
    const std::optional<QJsonDocument> document = parse(text, error);
    if (!document || !document->object().contains(device_version))
        return {};
    const QJsonObject entry = document->object()[device_version].toObject();
    QList<image> images;
    for (const char* key : {"Url1", "Url2", "Url3", "Url4", "Url5"}) {
        if (const QJsonValue url = entry[QLatin1String(key)]; url.isString())
            images.append({QLatin1String(key), url.toString()});
    }
    return images;
}

} // namespace feeds
