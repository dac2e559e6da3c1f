#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// The two JSON files of the update host. A member that is missing, or of another
/// type, reads as an empty text.
namespace feeds {

/// What /software_update.json says.
struct new_version
{
    QString latest; ///< version text
    QString url;    ///< of the file
    QString time;
    QString note;
};

/// An entry of /hardware_update.json.
struct image
{
    QString key; ///< "Url1" to "Url5"
    QString url;
};

/// Without a result `error` holds the parser's words, or nothing when the text is
/// JSON but no object.
[[nodiscard]] std::optional<new_version> read_version(const QByteArray& text, QString& error);

/// The images for an instrument of that version, in the order of their keys.
/// Without a result `error` holds the parser's words, or nothing when the list
/// does not know the version.
[[nodiscard]] std::optional<QList<image>>
read_images(const QByteArray& text, const QString& device_version, QString& error);

} // namespace feeds
