// The drawing widget and the totals pass, which run twice a second. The peer of
// a paint is what Qt itself needs to draw the same points as a line; the peer of
// the layout alone is the plain way of splitting, converting and looking through
// all points again after each shrink; the peer of the totals is a loop over the
// same numbers.

#include "core/records.h"
#include "presentation/drawing_layout.h"
#include "presentation/graphic_widget.h"
#include "presentation/selection_totals.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStandardItemModel>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr QSize widget_size(841, 601);
constexpr int all_points = 100'000;

/// A track of `points` points about a field: strips to and fro, a little uneven,
/// as somebody walks who measures.
QString track(int points, double longitude, double latitude)
{
    QString text;
    text.reserve(qsizetype{points} * 34);
    constexpr int strip = 500;
    for (int i = 0; i < points; ++i) {
        const int along = (i / strip) % 2 == 0 ? i % strip : strip - 1 - i % strip;
        const double x = longitude + along * 1e-5 + 1e-6 * std::sin(i * 0.7);
        const int line = i / strip;
        const double y = latitude + line * 2e-5 + 1e-6 * std::cos(i * 1.3);
        if (i > 0)
            text += u',';
        text += QString::number(x, 'f', 12) + u',' + QString::number(y, 'f', 12);
    }
    return text;
}

/// Points anywhere, so that each line crosses much of the widget: what costs is
/// the pixels then.
QStringList scattered()
{
    QString text;
    for (int i = 0; i < all_points; ++i) {
        text += QString::number(126.65 + 0.01 * std::sin(i * 12.9898), 'f', 12) + u',';
        text += QString::number(45.75 + 0.01 * std::sin(i * 78.233), 'f', 12) + u',';
    }
    return {text};
}

/// `figures` tracks in rows of about equal width, all_points points together.
QStringList tracks(int figures)
{
    QStringList texts;
    const int side = static_cast<int>(std::ceil(std::sqrt(figures)));
    for (int i = 0; i < figures; ++i) {
        const int row = i / side;
        texts.append(track(all_points / figures, 126.65 + 0.006 * (i % side), 45.75 + 0.006 * row));
    }
    return texts;
}

void fill(graphic_widget& widget, const QStringList& texts)
{
    widget.resize(widget_size);
    widget.draw_data = texts;
    widget.draw_rows.clear();
    for (int i = 0; i < texts.size(); ++i)
        widget.draw_rows.append({i, i});
}

/// The first paint of a selection.
void paint(benchmark::State& state, const QStringList& texts)
{
    QImage image(widget_size, QImage::Format_RGB32);
    for (auto _ : state) {
        state.PauseTiming();
        auto widget = std::make_unique<graphic_widget>();
        fill(*widget, texts);
        state.ResumeTiming();
        widget->render(&image);
        state.PauseTiming();
        widget.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * all_points);
}
BENCHMARK_CAPTURE(paint, one_figure, tracks(1))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(paint, thousand_figures, tracks(1000))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(paint, scattered, scattered())->Unit(benchmark::kMillisecond);

/// Those after it, each after the totals pass has filled in the same again.
void repaint(benchmark::State& state, const QStringList& texts)
{
    QImage image(widget_size, QImage::Format_RGB32);
    graphic_widget widget;
    fill(widget, texts);
    widget.render(&image);
    for (auto _ : state) {
        fill(widget, texts);
        widget.render(&image);
    }
    state.SetItemsProcessed(state.iterations() * all_points);
}
BENCHMARK_CAPTURE(repaint, one_figure, tracks(1))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, thousand_figures, tracks(1000))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, scattered, scattered())->Unit(benchmark::kMillisecond);

/// The peer: the points, already laid out, drawn as lines and nothing else.
void lines_alone(benchmark::State& state, const QStringList& texts)
{
    const drawing_layout layout = lay_out_drawing(texts, widget_size, true);
    QImage image(widget_size, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(image.rect(), Qt::white);
        painter.setPen(QPen(Qt::black, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
        for (std::size_t i = 0; i < layout.ends.size(); ++i) {
            const auto figure = layout.figure(i);
            painter.drawPolyline(figure.data(), static_cast<int>(figure.size()));
        }
    }
    state.SetItemsProcessed(state.iterations() * all_points);
}
BENCHMARK_CAPTURE(lines_alone, one_figure, tracks(1))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(lines_alone, thousand_figures, tracks(1000))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(lines_alone, scattered, scattered())->Unit(benchmark::kMillisecond);

void layout(benchmark::State& state)
{
    const QStringList texts = tracks(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(lay_out_drawing(texts, widget_size, true));
    state.SetItemsProcessed(state.iterations() * all_points);
}
BENCHMARK(layout)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond);

/// The peer: each step over all points, looking for one outside from the start
/// after each shrink.
void layout_the_plain_way(benchmark::State& state)
{
    const QStringList texts = tracks(static_cast<int>(state.range(0)));
    const QPointF centre = drawing_centre(widget_size, true);
    const auto shrink = [](double value, double middle) {
        return value < middle ? middle - (middle - value) * 0.9 : (value - middle) * 0.9 + middle;
    };
    for (auto _ : state) {
        std::vector<QPointF> points;
        for (const QString& text : texts) {
            const QStringList parts = text.split(u',', Qt::SkipEmptyParts);
            for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
                points.emplace_back(parts[i].toDouble() * 1e6, parts[i + 1].toDouble() * 1e6);
        }
        const QPointF base = points.front();
        QPointF least = centre;
        QPointF largest = centre;
        for (QPointF& point : points) {
            point = {(point.x() - base.x()) * 100.0 + centre.x(),
                     (point.y() - base.y()) * 100.0 + centre.y()};
            least = {std::min(least.x(), point.x()), std::min(least.y(), point.y())};
            largest = {std::max(largest.x(), point.x()), std::max(largest.y(), point.y())};
        }
        const QPointF move = (least + largest) * 0.5 - centre;
        for (QPointF& point : points)
            point -= move;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const QPointF& one = points[i];
            if (one.x() >= 0 && one.x() <= widget_size.width() && one.y() >= 0 &&
                one.y() <= widget_size.height())
                continue;
            for (QPointF& point : points)
                point = {shrink(point.x(), centre.x()), shrink(point.y(), centre.y())};
            i = static_cast<std::size_t>(-1);
        }
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(state.iterations() * all_points);
}
BENCHMARK(layout_the_plain_way)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond);

void totals(benchmark::State& state)
{
    const auto rows = static_cast<int>(state.range(0));
    QStandardItemModel model;
    QList<measuringData> records;
    QStringList texts;
    for (int row = 0; row < rows; ++row) {
        auto* check = new QStandardItem;
        check->setData(row % 2 == 0, Qt::EditRole);
        model.appendRow({check, new QStandardItem(QString::number(row + 1))});
        measuringData record;
        record.areameter = QString::number(1000 + row);
        record.areamu = QString::number(1.5 + row, 'f', 2);
        record.distance = QString::number(130.5 + row, 'f', 1);
        record.numpoint = QString::number(row % 100);
        records.append(record);
        texts.append(QStringLiteral("126.650000000000,45.750000000000"));
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(totals_of(model, records, texts));
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(totals)->Arg(1000)->Arg(20'000)->Unit(benchmark::kMillisecond);

/// The peer: the numbers as numbers in a vector.
void totals_of_numbers(benchmark::State& state)
{
    struct numbers
    {
        bool ticked;
        int square_metres;
        double mu;
        double metres;
        int points;
    };
    std::vector<numbers> all;
    all.reserve(static_cast<size_t>(state.range(0)));
    for (int row = 0; row < state.range(0); ++row)
        all.push_back({row % 2 == 0, 1000 + row, 1.5 + row, 130.5 + row, row % 100});
    for (auto _ : state) {
        qint64 square_metres = 0;
        qint64 points = 0;
        double mu = 0;
        double metres = 0;
        for (const numbers& one : all) {
            points += one.points;
            if (!one.ticked)
                continue;
            square_metres += one.square_metres;
            mu += one.mu;
            metres += one.metres;
        }
        benchmark::DoNotOptimize(square_metres + points);
        benchmark::DoNotOptimize(mu + metres);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(totals_of_numbers)->Arg(1000)->Arg(20'000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
