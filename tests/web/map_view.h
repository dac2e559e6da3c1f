#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QString>
#include <QVariant>

class QWebEngineView;

/// Looks at a map page from outside: through its pixels and through scripts.
namespace map_view {

/// The settings that the program gives its own view.
void give_program_settings(QWebEngineView& view);
/// Loads a page of the program, such as "/index.html", and waits for it.
[[nodiscard]] bool load(QWebEngineView& view, const QString& page);
/// What an expression gives in the page; invalid after some seconds.
[[nodiscard]] QVariant value_of(QWebEngineView& view, const QString& expression);
/// Waits until an expression holds in the page.
[[nodiscard]] bool comes_true(QWebEngineView& view, const QString& expression,
                              int timeout_ms = 30'000);
/// Sends a figure as the hub does, in one packet.
void send_figure(QWebEngineView& view, const QString& id, const QString& kind,
                 const QString& numbers);
/// Where a place of the map's own system is in the view, in degrees.
[[nodiscard]] QPoint pixel_of(QWebEngineView& view, double longitude, double latitude);
/// Waits until a pixel within `reach` of a place has nearly this colour.
[[nodiscard]] bool shows(QWebEngineView& view, const QPoint& place, const QColor& colour,
                         int reach = 2, int timeout_ms = 20'000);
/// The same at once.
[[nodiscard]] bool shows_now(QWebEngineView& view, const QPoint& place, const QColor& colour,
                             int reach = 2);
[[nodiscard]] QImage picture(QWebEngineView& view);

} // namespace map_view
