#pragma once

#include <QByteArray>
#include <QString>

#include <qrgb.h>

/// Stands in for the map providers: tiles that show a little land, with the
/// numbers of each tile, in the colours of the provider that is asked.
namespace tiles {

/// The picture for a request such as "mt1.google.com/vt/lyrs=m&x=3&y=1&z=2".
[[nodiscard]] QByteArray picture_for(const QString& request);

/// Land on the tiles of all providers.
constexpr QRgb land = qRgb(0xf3, 0xef, 0xe6);

} // namespace tiles
