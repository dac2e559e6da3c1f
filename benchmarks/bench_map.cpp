// Figures on the map page: from the first script to the drawn frame, and from a
// move of the view to the next frame. A frame is taken for drawn when the second
// one after it begins. Without a network, as on the plain background.

#include "core/map_page.h"
#include "core/thread_key.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTimer>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

QWebEngineView* view = nullptr;

QVariant value_of(const QString& expression)
{
    QEventLoop loop;
    QVariant result;
    view->page()->runJavaScript(expression, [&](const QVariant& value) {
        result = value;
        loop.quit();
    });
    loop.exec();
    return result;
}

void turn_until(const QString& expression)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!value_of(expression).toBool() && elapsed.elapsed() < 60'000) {
        QEventLoop loop;
        QTimer::singleShot(2, &loop, &QEventLoop::quit);
        loop.exec();
    }
}

/// Waits until `condition` holds in the page and what it tells is on the screen.
void turn_until_drawn(const QString& condition)
{
    turn_until(condition);
    value_of(QStringLiteral("window.framed = false; requestAnimationFrame(() => "
                            "requestAnimationFrame(() => window.framed = true))"));
    turn_until(QStringLiteral("window.framed"));
}

/// A track that wanders as a person or a tractor does.
QString track(int points, QRandomGenerator& random)
{
    double longitude = 126 + random.bounded(0.5);
    double latitude = 45 + random.bounded(0.4);
    double heading = random.bounded(6.28);
    constexpr double step = 0.00003; // degrees, some three metres
    QStringList numbers;
    numbers.reserve(qsizetype{2} * points);
    for (int i = 0; i < points; ++i) {
        heading += random.bounded(0.6) - 0.3;
        longitude += step * std::cos(heading);
        latitude += step * std::sin(heading);
        numbers += QString::number(longitude, 'f', 12);
        numbers += QString::number(latitude, 'f', 12);
    }
    return numbers.join(QLatin1Char(','));
}

void figures(benchmark::State& state, const QString& kind)
{
    const auto count = static_cast<int>(state.range(0));
    const auto points = static_cast<int>(state.range(1));
    QRandomGenerator random(7);
    QStringList texts;
    for (int i = 0; i < count; ++i)
        texts += track(points, random);
    thread_key key;
    QObject::connect(&key, &thread_key::draw_map_signal, view,
                     [](const QString& script) { view->page()->runJavaScript(script); });
    const QString drawn = QStringLiteral("VelmoMap.drawn() === %1");
    double pan = 0;
    double zoom = 0;
    for (auto _ : state) {
        QElapsedTimer elapsed;
        elapsed.start();
        for (int row = 0; row < count; ++row)
            key.draw_row(row, kind, texts);
        turn_until_drawn(drawn.arg(count));
        state.SetIterationTime(static_cast<double>(elapsed.nsecsElapsed()) / 1e9);

        const auto seconds = [&](const QString& move) {
            QElapsedTimer moved;
            moved.start();
            view->page()->runJavaScript(move);
            turn_until_drawn(QStringLiteral("true"));
            return static_cast<double>(moved.nsecsElapsed()) / 1e9;
        };
        pan += seconds(QStringLiteral("VelmoMap.pan(200, 150)"));
        zoom += seconds(QStringLiteral("VelmoMap.zoomTo(VelmoMap.zoom() + 1)"));
        view->page()->runJavaScript(QStringLiteral("clearMap()"));
        turn_until_drawn(drawn.arg(0));
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["points"] = count * points;
    state.counters["pan_s"] = pan / iterations;
    state.counters["zoom_s"] = zoom / iterations;
}

void lines(benchmark::State& state)
{
    figures(state, QStringLiteral("2"));
}

void areas(benchmark::State& state)
{
    figures(state, QStringLiteral("1"));
}

BENCHMARK(lines)
    ->Args({1, 2})
    ->Args({1000, 500})
    ->Args({1, 200'000})
    ->UseManualTime()
    ->Unit(benchmark::kSecond)
    ->Iterations(3);
BENCHMARK(areas)
    ->Args({1000, 500})
    ->Args({1, 200'000})
    ->UseManualTime()
    ->Unit(benchmark::kSecond)
    ->Iterations(3);

} // namespace

/// To be started in the folder of the pages.
int main(int argc, char* argv[])
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\njs=false"));
    const QApplication application(argc, argv);
    QWebEngineView own_view;
    view = &own_view;
    view->setPage(new map_page(view));
    view->settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    view->resize(1270, 680);
    view->show();
    view->page()->load(map_page::url_of(QStringLiteral("/index.html")));
    turn_until(QStringLiteral("typeof VelmoMap === 'object'"));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
