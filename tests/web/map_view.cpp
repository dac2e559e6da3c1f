#include "map_view.h"

#include "core/map_page.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <memory>

namespace map_view {

void give_program_settings(QWebEngineView& view)
{
    for (const QWebEngineSettings::WebAttribute attribute :
         {QWebEngineSettings::JavascriptEnabled,
          QWebEngineSettings::LocalContentCanAccessRemoteUrls,
          QWebEngineSettings::LocalContentCanAccessFileUrls, QWebEngineSettings::AutoLoadImages,
          QWebEngineSettings::PluginsEnabled, QWebEngineSettings::AllowRunningInsecureContent})
        view.settings()->setAttribute(attribute, true);
}

bool load(QWebEngineView& view, const QString& page)
{
    QEventLoop loop;
    bool loaded = false;
    const auto connection =
        QObject::connect(view.page(), &QWebEnginePage::loadFinished, &loop, [&](bool ok) {
            loaded = ok;
            loop.quit();
        });
    QTimer::singleShot(30'000, &loop, &QEventLoop::quit);
    view.page()->load(map_page::url_of(page));
    loop.exec();
    QObject::disconnect(connection);
    return loaded;
}

QVariant value_of(QWebEngineView& view, const QString& expression)
{
    // Outlives this call: the answer may come after the wait has ended.
    struct answer
    {
        QVariant value;
        bool came = false;
    };
    const auto seen = std::make_shared<answer>();
    view.page()->runJavaScript(expression, [seen](const QVariant& value) {
        seen->value = value;
        seen->came = true;
    });
    QElapsedTimer elapsed;
    elapsed.start();
    while (!seen->came && elapsed.elapsed() < 10'000)
        QTest::qWait(2);
    return seen->value;
}

bool comes_true(QWebEngineView& view, const QString& expression, int timeout_ms)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!value_of(view, expression).toBool()) {
        if (elapsed.elapsed() > timeout_ms)
            return false;
        QTest::qWait(20);
    }
    return true;
}

void send_figure(QWebEngineView& view, const QString& id, const QString& kind,
                 const QString& numbers)
{
    view.page()->runJavaScript(QStringLiteral("beginLocatedCityPacket(\"%1\",%2)").arg(id, kind));
    view.page()->runJavaScript(
        QStringLiteral("appendLocatedCityPacket(\"%1\",[%2])").arg(id, numbers));
    view.page()->runJavaScript(QStringLiteral("finishLocatedCityPacket(\"%1\")").arg(id));
}

QPoint pixel_of(QWebEngineView& view, double longitude, double latitude)
{
    const QVariantList place = value_of(view, QStringLiteral("VelmoMap.pixelOf(%1, %2)")
                                                  .arg(longitude, 0, 'f', 12)
                                                  .arg(latitude, 0, 'f', 12))
                                   .toList();
    return place.size() == 2 ? QPoint(qRound(place[0].toDouble()), qRound(place[1].toDouble()))
                             : QPoint(-1, -1);
}

QImage picture(QWebEngineView& view)
{
    QImage image(view.size(), QImage::Format_RGB32);
    view.render(&image);
    return image;
}

bool shows_now(QWebEngineView& view, const QPoint& place, const QColor& colour, int reach)
{
    constexpr int likeness = 24; // of each component, for soft edges
    const QImage image = picture(view);
    for (int y = place.y() - reach; y <= place.y() + reach; ++y) {
        for (int x = place.x() - reach; x <= place.x() + reach; ++x) {
            if (!image.valid(x, y))
                continue;
            const QColor here = image.pixelColor(x, y);
            if (qAbs(here.red() - colour.red()) <= likeness &&
                qAbs(here.green() - colour.green()) <= likeness &&
                qAbs(here.blue() - colour.blue()) <= likeness)
                return true;
        }
    }
    return false;
}

bool shows(QWebEngineView& view, const QPoint& place, const QColor& colour, int reach,
           int timeout_ms)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!shows_now(view, place, colour, reach)) {
        if (elapsed.elapsed() > timeout_ms)
            return false;
        QTest::qWait(30);
    }
    return true;
}

} // namespace map_view
