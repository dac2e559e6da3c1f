// Import and export of KML, GPX and CSV beside GDAL and GPSBabel on the same files:
// CPU seconds, wall seconds and memory, for a tenth of a million, one and four
// million points in measurements of 1,000. The message boxes are left out, the four
// lists of an import are not. The names are WORK/WHO/MEASUREMENTS.
//
// Each figure is taken in a process of its own, ours in the program's own process
// from before the work to behind it, a peer's from its start to its end. Where a
// peer can only convert, the time that it takes to read is taken off.

#include "exchange/csv.h"
#include "exchange/file_import_thread.h"
#include "exchange/gpx.h"
#include "exchange/kml.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <map>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ; // NOLINT

namespace {

constexpr int points_each = 1000;

struct cost
{
    double cpu = 0.0;    ///< seconds
    double wall = 0.0;   ///< seconds
    double memory = 0.0; ///< MiB at the peak
    bool good = false;
};

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double cpu_seconds(const rusage& used)
{
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

rusage own_usage()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return used;
}

/// A number of a line of /proc/self/status, MiB.
double own_memory(const QByteArray& line)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    for (const QByteArray& one : status.readAll().split('\n')) {
        if (one.startsWith(line))
            return one.mid(line.size()).trimmed().split(' ')[0].toDouble() / 1024;
    }
    return 0.0;
}

/// Measurements around Chengdu. When uneven, of 500 to 1,500 points, otherwise of
/// 1,000.
QList<exportRecord> measurements(int count, bool uneven)
{
    const QString methods[] = {QStringLiteral("面积"), QStringLiteral("航迹")}; // tracks in GPX
    QList<exportRecord> list;
    for (int m = 0; m < count; ++m) {
        exportRecord record;
        const int points = uneven ? 500 + m * 617 % 1001 : points_each;
        record.method = methods[m % 2];
        record.name = QStringLiteral("m%1").arg(m);
        record.time = QStringLiteral("2024-03-05 07:08:09");
        record.numpoint = QString::number(points);
        record.numrecord = QString::number(count);
        record.coordinates.reserve(qsizetype{points} * 40);
        for (int i = 0; i < points; ++i)
            record.coordinates += QString::number(104.0 + m * 1e-3 + i * 1.234e-6, 'f', 12) + u',' +
                                  QString::number(30.0 + m * 1e-4 + i * 1.765e-6, 'f', 12) + u',' +
                                  QString::number(500.0 + i % 97 * 0.25, 'f', 2) + u'\n';
        list.append(record);
    }
    return list;
}

bool open_for_writing(QFile& file)
{
    return file.open(QIODevice::WriteOnly | QIODevice::Text);
}

/// What a work does before its measured part, and the measured part; `folder` has
/// the files.
struct work
{
    using part = std::function<bool()>;
    const char* name;
    part (*prepare)(const QString& folder, int count);
};

template <typename Write>
work::part writing(const QString& path, int count, Write write)
{
    return [path, list = measurements(count, false), write] {
        QFile file(path);
        return open_for_writing(file) && (write(file, list), file.flush());
    };
}

/// From the file to the four lists.
template <typename Parse>
work::part importing(const QString& path, Parse parse)
{
    return [path, parse] {
        // Never given back: the program keeps the lists.
        auto* importer = new file_import_thread;
        QFile file(path);
        return parse(file, *importer) && !importer->table_list.isEmpty();
    };
}

work::part import_kml(const QString& path)
{
    return importing(path, [](QFile& file, file_import_thread& importer) {
        importer.working_list = read_kml(file, {}).records;
        importer.append_to_results({});
        return true;
    });
}

const work works[] = {
    {"write-kml",
     [](const QString& folder, int count) {
         return writing(folder + "/out.kml", count,
                        [](QFile& file, const auto& list) { write_kml(file, list, 0); });
     }},
    {"write-gpx",
     [](const QString& folder, int count) {
         return writing(folder + "/out.gpx", count,
                        [](QFile& file, const auto& list) { write_gpx_merged(file, list, 0); });
     }},
    {"write-csv",
     [](const QString& folder, int count) {
         return writing(folder + "/out.csv", count, [](QFile& file, const auto& list) {
             write_csv_merged(file, list, {}, 0);
             file.open(QIODevice::Append); // which closed it
         });
     }},
    {"write-bytes",
     [](const QString& folder, int) -> work::part {
         QFile source(folder + "/in.kml");
         if (!source.open(QIODevice::ReadOnly))
             return [] { return false; };
         return [folder, bytes = source.readAll()] {
             QFile file(folder + "/out.bytes");
             return open_for_writing(file) && file.write(bytes) == bytes.size();
         };
     }},
    {"read-kml", [](const QString& folder, int) { return import_kml(folder + "/in.kml"); }},
    {"read-uneven-kml",
     [](const QString& folder, int) { return import_kml(folder + "/uneven.kml"); }},
    {"read-kml-fallback",
     [](const QString& folder, int) { return import_kml(folder + "/one_line.kml"); }},
    {"read-gpx",
     [](const QString& folder, int) {
         return importing(folder + "/in.gpx", [](QFile& file, file_import_thread& importer) {
             const bool read = parse_gpx(file, importer.working_list);
             importer.append_to_results({.drop_duplicates = false, .take_areamu = false});
             return read;
         });
     }},
    {"read-csv",
     [](const QString& folder, int) {
         return importing(folder + "/in.csv", [](QFile& file, file_import_thread& importer) {
             csv_rows rows;
             return read_csv_rows(file.fileName(), rows) && importer.take_csv_rows(rows);
         });
     }},
};

/// Runs one work and prints what it cost.
int run_work(const QString& name, const QString& folder, int count)
{
    const auto* found = std::ranges::find_if(
        works, [&](const work& one) { return name == QLatin1String(one.name); });
    if (found == std::end(works))
        return 1;
    const work::part part = found->prepare(folder, count);
    const double memory = own_memory("VmRSS:");
    const double cpu = cpu_seconds(own_usage());
    QElapsedTimer wall;
    wall.start();
    const bool good = part();
    const double used = cpu_seconds(own_usage()) - cpu;
    std::printf("%f %f %f\n", used, static_cast<double>(wall.nsecsElapsed()) / 1e9,
                std::max(own_memory("VmHWM:") - memory, 0.0));
    return good ? 0 : 1;
}

/// Runs a program, its output into a file of the folder, and measures all of it.
cost run_program(const QString& folder, const QStringList& words)
{
    QList<QByteArray> bytes;
    for (const QString& word : words)
        bytes.append(word.toLocal8Bit());
    QList<char*> arguments;
    for (QByteArray& word : bytes)
        arguments.append(word.data());
    arguments.append(nullptr);

    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    const QByteArray output = (folder + "/output").toLocal8Bit();
    for (const int stream : {1, 2})
        posix_spawn_file_actions_addopen(&actions, stream,
                                         stream == 1 ? output.data() : "/dev/null",
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
    cost spent;
    QElapsedTimer wall;
    wall.start();
    pid_t child = 0;
    if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
        return spent;
    int status = 0;
    rusage used{};
    wait4(child, &status, 0, &used);
    posix_spawn_file_actions_destroy(&actions);
    spent.wall = static_cast<double>(wall.nsecsElapsed()) / 1e9;
    spent.cpu = cpu_seconds(used);
    spent.memory = static_cast<double>(used.ru_maxrss) / 1024;
    spent.good = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return spent;
}

cost run_own(const QString& folder, const QString& name, int count)
{
    cost spent = run_program(folder, {QCoreApplication::applicationFilePath(), "--work", name,
                                      folder, QString::number(count)});
    QFile output(folder + "/output");
    if (!output.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> numbers = output.readAll().trimmed().split(' ');
    if (numbers.size() != 3)
        return {};
    spent.cpu = numbers[0].toDouble();
    spent.wall = numbers[1].toDouble();
    spent.memory = numbers[2].toDouble();
    return spent;
}

/// The files that are read, and a plain table of the points for peers, which cannot
/// read our CSV.
bool make_files(const QString& folder, int count)
{
    const QList<exportRecord> list = measurements(count, false);
    QFile kml(folder + "/in.kml");
    QFile gpx(folder + "/in.gpx");
    QFile csv(folder + "/in.csv");
    QFile uneven(folder + "/uneven.kml");
    QFile one_line(folder + "/one_line.kml");
    QFile table(folder + "/points.csv");
    for (QFile* file : {&kml, &gpx, &csv, &uneven, &one_line, &table}) {
        if (!open_for_writing(*file))
            return false;
    }
    write_kml(kml, list, 0);
    write_gpx_merged(gpx, list, 0);
    write_csv_merged(csv, list, {}, 0);
    write_kml(uneven, measurements(count, true), 0);
    one_line.write("<kml>");
    table.write("lon,lat,alt\n");
    for (const exportRecord& record : list) {
        one_line.write("<Placemark><LineString><coordinates>" +
                       QString(record.coordinates).replace(u'\n', u' ').toUtf8() +
                       "</coordinates></LineString></Placemark>");
        table.write(record.coordinates.toUtf8());
    }
    one_line.write("</kml>");
    return true;
}

struct peer
{
    const char* work;
    const char* name;
    QStringList command;
    QStringList without; ///< what is taken off
};

/// Commands in the folder of the files.
const QList<peer>& peers()
{
    static const QStringList babel_gpx{"gpsbabel", "-i", "gpx", "-f", "in.gpx"};
    static const QStringList gdal_kml{"ogrinfo", "-al", "-so", "in.kml"};
    static const QStringList gdal_rows{"ogrinfo", "-al", "-so", "points.csv"};
    static const QList<peer> all{
        {"read-kml", "GDAL", gdal_kml, {}},
        {"read-kml", "GPSBabel", {"gpsbabel", "-i", "kml", "-f", "in.kml"}, {}},
        {"read-gpx", "GPSBabel", babel_gpx, {}},
        {"read-gpx", "GDAL", {"ogrinfo", "-so", "in.gpx", "track_points"}, {}},
        {"read-csv", "GDAL_rows", gdal_rows, {}},
        {"read-csv",
         "GDAL_points",
         {"ogrinfo", "-al", "-so", "-oo", "X_POSSIBLE_NAMES=lon", "-oo", "Y_POSSIBLE_NAMES=lat",
          "points.csv"},
         {}},
        {"read-csv", "GPSBabel", {"gpsbabel", "-i", "unicsv", "-f", "points.csv"}, {}},
        {"write-gpx", "GPSBabel", babel_gpx + QStringList{"-o", "gpx", "-F", "-"}, babel_gpx},
        {"write-kml", "GDAL", {"ogr2ogr", "-f", "KML", "/vsistdout/", "in.kml"}, gdal_kml},
        {"write-csv", "GDAL", {"ogr2ogr", "-f", "CSV", "/vsistdout/", "points.csv"}, gdal_rows},
    };
    return all;
}

/// The files of the measurements in a folder of their own, made when first asked for;
/// null where there is no room.
const QTemporaryDir* folder_of(int count)
{
    static std::map<int, QTemporaryDir> folders;
    if (const auto made = folders.find(count); made != folders.end())
        return &made->second;
    const QTemporaryDir& folder = folders[count];
    // In a process of its own: a child begins with the memory of its parent.
    const QStringList command{QCoreApplication::applicationFilePath(), "--files", folder.path(),
                              QString::number(count)};
    if (folder.isValid() && run_program(folder.path(), command).good)
        return &folder;
    folders.erase(count);
    return nullptr;
}

/// One benchmark, whose time is the CPU time of the process that does the work.
void measure(benchmark::State& state, const std::function<cost(const QString&, int)>& run)
{
    const auto count = static_cast<int>(state.range(0));
    const QTemporaryDir* folder = folder_of(count);
    if (folder == nullptr || !QDir::setCurrent(folder->path())) {
        state.SkipWithError("no room for the files");
        return;
    }
    for (auto _ : state) {
        const cost spent = run(folder->path(), count);
        if (!spent.good) {
            state.SkipWithError("it failed");
            break;
        }
        const double points = static_cast<double>(count) * points_each;
        state.SetIterationTime(spent.cpu);
        state.counters["wall_s"] = spent.wall;
        state.counters["peak_MiB"] = spent.memory;
        state.counters["bytes_a_point"] = spent.memory * 1024 * 1024 / points;
    }
    QDir::setCurrent(QDir::rootPath()); // so that the folder can go
}

void add(const QString& name, const std::function<cost(const QString&, int)>& run)
{
    benchmark::RegisterBenchmark(name.toUtf8().constData(),
                                 [run](benchmark::State& state) { measure(state, run); })
        ->Arg(100)
        ->Arg(1000)
        ->Arg(4000)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kSecond);
}

cost run_peer(const QString& folder, const peer& one)
{
    cost spent = run_program(folder, one.command);
    if (!one.without.isEmpty()) {
        const cost reading = run_program(folder, one.without);
        spent.cpu = std::max(spent.cpu - reading.cpu, 0.0);
        spent.wall -= reading.wall;
        spent.good = spent.good && reading.good;
    }
    return spent;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.value(0) == QLatin1String("--work"))
        return run_work(words.value(1), words.value(2), words.value(3).toInt());
    if (words.value(0) == QLatin1String("--files"))
        return make_files(words.value(1), words.value(2).toInt()) ? 0 : 1;
    for (const work& one : works) {
        const QString name = QLatin1String(one.name);
        add(name + "/ours",
            [name](const QString& folder, int count) { return run_own(folder, name, count); });
    }
    for (const peer& one : peers()) {
        add(QLatin1String(one.work) + u'/' + QLatin1String(one.name),
            [one](const QString& folder, int) { return run_peer(folder, one); });
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
