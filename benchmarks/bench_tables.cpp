// The window's tables: rebuild, ticking all rows, and what a read of 200
// measurements delivers. The peer of the rebuild is the same rows put into
// plain models one by one.

#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/thread_key.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QLoggingCategory>
#include <QStandardItemModel>

#include <benchmark/benchmark.h>

namespace {

application_objects objects{};

QList<measuringData> records(qsizetype count)
{
    QList<measuringData> all;
    for (qsizetype at = 0; at < count; ++at) {
        measuringData record;
        record.method =
            measurement_kinds[static_cast<size_t>(at) % measurement_kinds.size()].method.toString();
        record.name = QStringLiteral("2024-3-5 7:8:%1").arg(at % 60);
        record.time = record.name;
        record.areameter = QStringLiteral("12345");
        record.numpoint = QStringLiteral("2");
        all.append(record);
    }
    return all;
}

void set_rows(qsizetype count)
{
    objects.window->reset_table_data(
        records(count), QStringList(count, QStringLiteral("126.6,45.7,126.7,45.8")),
        QStringList(count, QStringLiteral("126.6,45.7,1.00\n126.7,45.8,1.00\n")),
        QList<QList<point_msg>>(count, QList<point_msg>(2)));
}

void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void rebuild_tables(benchmark::State& state)
{
    set_rows(state.range(0));
    settle();
    for (auto _ : state) {
        objects.window->rebuild_tables();
        settle();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(rebuild_tables)
    ->Arg(20)
    ->Arg(1000)
    ->Arg(10'000)
    ->Arg(20'000)
    ->Arg(40'000)
    ->Unit(benchmark::kMillisecond);

/// The peer: the main table alone, each cell set by itself in a model that no
/// view shows.
void plain_model(benchmark::State& state)
{
    const QList<measuringData> all = records(state.range(0));
    for (auto _ : state) {
        QStandardItemModel model;
        for (int row = 0; row < all.size(); ++row) {
            model.setItem(row, 0, new QStandardItem);
            model.setItem(row, 1, new QStandardItem(QString::number(row + 1)));
            model.setItem(row, 2, new QStandardItem(all[row].name));
            model.setItem(row, 3, new QStandardItem(all[row].time));
            model.setItem(row, 4, new QStandardItem(all[row].method));
        }
        benchmark::DoNotOptimize(model.rowCount());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(plain_model)->Arg(1000)->Arg(10'000)->Arg(20'000)->Unit(benchmark::kMillisecond);

/// Ticks of 20,000 rows set and cleared by the hub, scripts made and dropped.
void tick_all_in_the_hub(benchmark::State& state)
{
    set_rows(state.range(0));
    MainWindow* window = objects.window;
    QObject::disconnect(objects.key, &thread_key::draw_map_signal, window, &MainWindow::draw_map);
    bool ticked = false;
    for (auto _ : state) {
        ticked = !ticked;
        emit window->send_check_all(ticked, window->model, window->model_area,
                                    window->model_distance, window->model_point,
                                    window->model_airline, window->model_track,
                                    window->model_fangyang, window->table_list, window->data_msg);
        settle();
    }
    QObject::connect(objects.key, &thread_key::draw_map_signal, window, &MainWindow::draw_map);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(tick_all_in_the_hub)->Arg(1000)->Arg(10'000)->Arg(20'000)->Unit(benchmark::kMillisecond);

/// The same through the box over the table, scripts run in the page.
void tick_all_by_the_box(benchmark::State& state)
{
    set_rows(state.range(0));
    for (auto _ : state) {
        objects.window->ui->checkBox->toggle();
        settle();
    }
    objects.window->ui->checkBox->setChecked(false);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(tick_all_by_the_box)->Arg(1000)->Arg(20'000)->Unit(benchmark::kMillisecond);

/// What the timer does twice a second: the window asks, the hub sums, the window
/// writes the labels and fills the drawing. Every second row is ticked.
void totals_pass(benchmark::State& state)
{
    set_rows(state.range(0));
    MainWindow* window = objects.window;
    for (int row = 0; row < window->model->rowCount(); row += 2)
        window->model->item(row, 0)->setData(true, Qt::EditRole);
    settle();
    for (auto _ : state)
        emit window->send_check_sign_to_threadkey_other(window->model, window->table_list,
                                                        window->data_msg);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(totals_pass)->Arg(1000)->Arg(20'000)->Unit(benchmark::kMillisecond);

/// Peak resident memory of this process in MiB, from the kernel's own count.
double peak_memory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').constFirst().toDouble() / 1024;
    }
    return 0;
}

/// 200 measurements of 100 points: delivery k brings k of them, and nothing is
/// reconciled, so 20,100 rows stand in the end.
void whole_read(benchmark::State& state)
{
    constexpr int measurements = 200;
    constexpr int points = 100;
    const QList<measuringData> all = records(measurements);
    const QString plain = QStringLiteral("126.650000000000,45.750000000000,").repeated(points);
    const QString lines =
        QStringLiteral("126.650000000000,45.750000000000,120.50\n").repeated(points);
    for (auto _ : state) {
        set_rows(0);
        for (int done = 1; done <= measurements; ++done) {
            emit objects.key->data_finished(
                0, all.first(done), QStringList(done, plain), QStringList(done, lines),
                QList<QList<point_msg>>(done, QList<point_msg>(points)));
            settle();
        }
    }
    state.counters["rows"] = static_cast<double>(objects.window->table_list.size());
    state.counters["peak_MiB"] = peak_memory();
}
BENCHMARK(whole_read)->Unit(benchmark::kSecond)->Iterations(1);

} // namespace

int main(int argc, char* argv[])
{
    qputenv("PATH", ""); // without adb nothing else runs in this process
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QApplication application(argc, argv);
    install_default_font();
    objects = make_application_objects();
    objects.window->show();
    settle();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
