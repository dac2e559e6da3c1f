// Whole reads of the simulated instrument through a pseudo-terminal, the serial
// port, the hub and the window. The peer is the wire: what the same bytes take
// at 115200 baud, ten bits a byte.

#include "core/application.h"
#include "core/main_window.h"
#include "device/serial_thread.h"
#include "support/instrument_process.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPushButton>
#include <QSerialPort>

#include <benchmark/benchmark.h>

#include <ctime>
#include <sys/resource.h>

namespace {

application_objects objects{};

double cpu_seconds()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// CPU seconds of this thread, in which all of the program runs.
double thread_seconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double peak_memory_mib()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_maxrss) / 1024;
}

void turn_until(const std::function<bool()>& done)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!done() && elapsed.elapsed() < 600'000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
}

/// Bytes that the instrument has sent, from its log behind `from`.
struct wire
{
    double bytes = 0;
    double frames = 0;
};

wire wire_of(const QString& log, qint64 from)
{
    wire seen;
    QFile file(log);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(from))
        return seen;
    for (const QByteArray& line : file.readAll().split('\n')) {
        // time, line, "out", count of bytes, the bytes
        const QList<QByteArray> words = line.split(' ');
        if (words.size() < 5 || words[2] != "out")
            continue;
        seen.bytes += words[3].toDouble();
        seen.frames += words[4] == "5A" ? 1 : 0;
    }
    return seen;
}

void whole_read(benchmark::State& state, const QStringList& memory, bool warm)
{
    const QString log = QStringLiteral("bench_read.log");
    instrument_process instrument;
    if (!instrument.start(QStringList{"--pty", "--log", log} + memory)) {
        state.SkipWithError("the instrument did not start");
        return;
    }
    bool ended = false;
    objects.serial->available_ports = [&] {
        return QList<serial_thread::listed_port>{
            {instrument.serial_path(), instrument.serial_path(), "USB serial"}};
    };
    objects.serial->show_box = [&](QMessageBox::Icon, const QString& title, const QString&) {
        ended = ended || title == QStringLiteral("数据读取");
    };
    turn_until([] { return objects.serial->port_connected; });
    const auto read_once = [&] {
        objects.window->reset_table_data({}, {}, {}, {});
        ended = false;
        objects.window->on_data_read_clicked();
        turn_until([&] { return ended; });
    };
    // The start of the process (page, fonts, libraries) is not the read's.
    if (warm)
        read_once();
    // Time within the slot that takes what the port has, from a slot connected
    // before it to one connected after it, which is once the export has begun:
    // the first frames are left out.
    constexpr int export_has_begun = 4;
    int announced = 0;
    double in_slot = 0;
    double entered = 0;
    QMetaObject::Connection after;
    const QMetaObject::Connection before_slot =
        QObject::connect(objects.serial->port, &QSerialPort::readyRead, objects.window, [&] {
            if (++announced == export_has_begun)
                after =
                    QObject::connect(objects.serial->port, &QSerialPort::readyRead, objects.window,
                                     [&] { in_slot += thread_seconds() - entered; });
            entered = thread_seconds();
        });
    for (auto _ : state) {
        const qint64 already_sent = QFileInfo(log).size();
        const double before = cpu_seconds();
        read_once();
        const double used = cpu_seconds() - before;

        const wire sent = wire_of(log, already_sent);
        const double wire_seconds = sent.bytes * 10 / 115200;
        state.counters["rows"] = static_cast<double>(objects.window->table_list.size());
        state.counters["frames"] = sent.frames;
        state.counters["cpu_s"] = used;
        state.counters["cpu_ms_per_frame"] = used * 1000 / sent.frames;
        state.counters["wire_ms_per_frame"] = wire_seconds * 1000 / sent.frames;
        state.counters["cpu_to_wire"] = used / wire_seconds;
        state.counters["slot_ms_per_frame"] = in_slot * 1000 / sent.frames;
        state.counters["slot_to_wire"] = in_slot / wire_seconds;
        state.counters["peak_MiB"] = peak_memory_mib();
    }
    QObject::disconnect(before_slot);
    QObject::disconnect(after);
    objects.serial->port->close();
    objects.serial->detect_ports();
    objects.serial->available_ports = [] { return QList<serial_thread::listed_port>(); };
}

void usual_memory(benchmark::State& state)
{
    whole_read(state, {}, true);
}
BENCHMARK(usual_memory)->Unit(benchmark::kSecond)->Iterations(1);

/// Delivers 20,100 rows.
void two_hundred_measurements(benchmark::State& state)
{
    whole_read(state, {"--measurements", "200", "--points", "102"}, false);
}
BENCHMARK(two_hundred_measurements)->Unit(benchmark::kSecond)->Iterations(1);

} // namespace

int main(int argc, char* argv[])
{
    qputenv("PATH", ""); // without adb nothing else runs in this process
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QApplication application(argc, argv);
    install_default_font();
    objects = make_application_objects();
    objects.window->show();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
