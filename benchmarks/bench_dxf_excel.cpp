// Drawings and workbooks out and in, each job in a process of its own, beside
// what the library alone costs for the same file and beside other programs. CPU
// seconds and peak memory are the kernel's count for that process.
//
//   bench_dxf_excel [--benchmark_filter=REGEX]
//
// Without arguments all jobs at all sizes, measurements by points of each; those of
// a million points take some minutes each. A file that is read is written by the
// job before it.

#include "exchange/excel_workbook.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"

#include <QApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>
#include <dxflib/dl_creationadapter.h>
#include <dxflib/dl_dxf.h>

#include <memory>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The measurements

constexpr double longitude_of(int measurement, int point)
{
    return 104.0 + measurement * 1e-3 + point * 1.25e-6;
}

constexpr double latitude_of(int measurement, int point)
{
    return 30.0 + measurement * 1e-3 - point * 1.5e-6;
}

QString point_time(int point)
{
    return QStringLiteral("2025-01-05 %1:%2:%3")
        .arg(point / 3600 % 24, 2, 10, QLatin1Char('0'))
        .arg(point / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(point % 60, 2, 10, QLatin1Char('0'));
}

QList<exportRecord> tracks(int measurements, int points)
{
    QList<exportRecord> records;
    for (int m = 0; m < measurements; ++m) {
        exportRecord track;
        track.method = QStringLiteral("航迹");
        track.numpoint = QString::number(points);
        track.time = track.endtime = point_time(m);
        track.timezone = QStringLiteral("11");
        track.id = QStringLiteral("24081530");
        track.jd = QStringLiteral("1");
        track.distance = QStringLiteral("1234.5");
        for (int p = 0; p < points; ++p) {
            track.coordinates += QString::number(longitude_of(m, p), 'f', 12) + QLatin1Char(',') +
                                 QString::number(latitude_of(m, p), 'f', 12) +
                                 QStringLiteral(",512.30\n");
            track.points.append({QStringLiteral("0.8"), QStringLiteral("1.5"), QStringLiteral("90"),
                                 point_time(p), QStringLiteral("1")});
        }
        records.append(track);
    }
    return records;
}

// What the program does

double cpu_seconds(const rusage& used)
{
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// CPU seconds of this process so far.
double cpu_seconds()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return cpu_seconds(used);
}

/// What the measurements cost that are made up for an export is not the
/// export's.
double made_up = 0;

void export_tracks(int measurements, int points, const QString& path,
                   void (file_export_thread::*write)(int, model_param, QString))
{
    file_export_thread exporter;
    exporter.language = 1;
    const double before = cpu_seconds();
    exporter.export_list = tracks(measurements, points);
    made_up = cpu_seconds() - before;
    exporter.export_file_check_flag(QList<int>(12, 1), QStringLiteral("WGS - 84"));
    (exporter.*write)(0, {}, path);
}

void import_tracks(const QString& path, int measurements,
                   void (file_import_thread::*read)(const QString&))
{
    file_import_thread importer;
    (importer.*read)(path);
    if (importer.table_list.size() != measurements)
        qFatal("%lld measurements read", static_cast<long long>(importer.table_list.size()));
}

/// A workbook that an import takes: all measurements in one sheet.
void write_importable(int measurements, int points, const QString& path)
{
    excel_workbook workbook(1, 0);
    excel_sheet sheet = workbook.add_sheet(excel_kinds[4], true, true);
    for (int m = 0; m < measurements; ++m) {
        for (int p = 0; p < points; ++p, ++sheet.rows) {
            if (p == 0) {
                workbook.write(sheet, 0, QString::number(m + 1));
                workbook.write(sheet, 2, point_time(m));
            }
            workbook.write(sheet, 10, QString::number(p + 1));
            workbook.write(sheet, 11, point_time(p));
            workbook.write(sheet, 13, QString::number(longitude_of(m, p), 'f', 12));
            workbook.write(sheet, 14, QString::number(latitude_of(m, p), 'f', 12));
            workbook.write(sheet, 15, QStringLiteral("512.30"));
            workbook.write(sheet, 16, QStringLiteral("0.8"));
        }
    }
    workbook.save(path);
}

// What the libraries cost alone

void dxflib_writes(int measurements, int points, const QString& path)
{
    DL_Dxf dxf;
    const std::unique_ptr<DL_WriterA> writer(
        dxf.out(QFile::encodeName(path).constData(), DL_Codes::AC1015));
    const DL_Attributes attributes("mainlayer", 7, -1, -1, "BYLAYER");
    writer->sectionEntities();
    for (int m = 0; m < measurements; ++m) {
        dxf.writePolyline(*writer, {points, 0, 0, 0}, attributes);
        for (int p = 0; p < points; ++p)
            dxf.writeVertex(*writer, {longitude_of(m, p) * 1e6, latitude_of(m, p) * 1e6});
    }
    writer->sectionEnd();
    writer->dxfEOF();
    writer->close();
}

void dxflib_reads(const QString& path)
{
    struct counter : DL_CreationAdapter
    {
        long vertices = 0;
        void addVertex(const DL_VertexData& /*data*/) override { ++vertices; }
    } count;
    DL_Dxf().in(QFile::encodeName(path).toStdString(), &count);
    if (count.vertices == 0)
        qFatal("no vertices");
}

void qxlsx_writes(int measurements, int points, const QString& path)
{
    QXlsx::Document document;
    QXlsx::Format format;
    format.setFontName(QStringLiteral("Noto Sans"));
    format.setFontSize(15);
    for (int m = 0; m < measurements; ++m) {
        document.addSheet(QStringLiteral("Track%1").arg(m + 1));
        for (int p = 0; p < points; ++p) {
            const auto write = [&](int column, const QString& text) {
                document.write(p + 2, column, text, format);
            };
            write(11, QString::number(p + 1));
            write(12, point_time(p));
            write(14, QString::number(longitude_of(m, p), 'f', 12));
            write(15, QString::number(latitude_of(m, p), 'f', 12));
            write(16, QStringLiteral("512.30"));
            write(17, QStringLiteral("0.8"));
        }
    }
    document.saveAs(path);
}

void qxlsx_reads(const QString& path)
{
    QXlsx::Document document(path);
    document.selectSheet(document.sheetNames().constFirst());
    const QXlsx::CellRange size = document.dimension();
    qsizetype characters = 0;
    for (int row = 1; row <= size.rowCount(); ++row) {
        for (int column = 1; column <= size.columnCount(); ++column)
            characters += document.read(row, column).toString().size();
    }
    if (characters == 0)
        qFatal("no cells");
}

// Jobs

constexpr char openpyxl_writes[] = R"(
import sys, openpyxl
book = openpyxl.Workbook(write_only=True)
measurements, points, path = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
for m in range(measurements):
    sheet = book.create_sheet("Track%d" % (m + 1))
    for p in range(points):
        sheet.append([None] * 10 + [str(p + 1), "2025-01-05 00:%02d:%02d" % (p // 60 % 60, p % 60),
                      None, "%.12f" % (104 + m * 1e-3 + p * 1.25e-6),
                      "%.12f" % (30 + m * 1e-3 - p * 1.5e-6), "512.30", "0.8"])
book.save(path)
)";

constexpr char openpyxl_reads[] = R"(
import sys, openpyxl
book = openpyxl.load_workbook(sys.argv[3], read_only=True)
assert sum(len(c) for s in book.worksheets for r in s.values for c in r if c)
)";

// With the option it keeps no more than a row in memory.
constexpr char xlsxwriter_writes[] = R"(
import sys, xlsxwriter
measurements, points, path = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
book = xlsxwriter.Workbook(path, {"constant_memory": path.endswith("lean.xlsx")})
style = book.add_format({"font_name": "Noto Sans", "font_size": 15})
for m in range(measurements):
    sheet = book.add_worksheet("Track%d" % (m + 1))
    for p in range(points):
        for column, text in ((10, str(p + 1)),
                             (11, "2025-01-05 00:%02d:%02d" % (p // 60 % 60, p % 60)),
                             (13, "%.12f" % (104 + m * 1e-3 + p * 1.25e-6)),
                             (14, "%.12f" % (30 + m * 1e-3 - p * 1.5e-6)),
                             (15, "512.30"), (16, "0.8")):
            sheet.write_string(p + 1, column, text, style)
book.close()
)";

// The same lines from points in memory: what reading them costs is not counted.
constexpr char gdal_writes[] = R"(
import sys
from osgeo import ogr
measurements, points, path = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
file = ogr.GetDriverByName("DXF").CreateDataSource(path)
layer = file.CreateLayer("entities")
kind = layer.GetLayerDefn()
for m in range(measurements):
    line = ogr.Geometry(ogr.wkbLineString)
    for p in range(points):
        line.AddPoint_2D((104 + m * 1e-3 + p * 1.25e-6) * 1e6, (30 + m * 1e-3 - p * 1.5e-6) * 1e6)
    feature = ogr.Feature(kind)
    feature.SetGeometryDirectly(line)
    layer.CreateFeature(feature)
file = layer = None
)";

struct job
{
    const char* name;
    void (*run)(int measurements, int points, const QString& path); ///< null: a script
    const char* script;
    const char* file;
};

const job jobs[] = {
    // What starting a process costs, to be taken off the others.
    {"start", [](int /*m*/, int /*p*/, const QString& /*path*/) {}, nullptr, "none"},
    {"start_python", nullptr, "import openpyxl, xlsxwriter", "none"},
    {"start_gdal", nullptr, "exec ogrinfo --version >/dev/null", "none"},
    {"dxf_write",
     [](int m, int p, const QString& path) {
         export_tracks(m, p, path, &file_export_thread::one_dxf_export);
     },
     nullptr, "a.dxf"},
    {"dxf_write_dxflib", dxflib_writes, nullptr, "b.dxf"},
    {"dxf_write_gdal", nullptr, gdal_writes, "c.dxf"},
    {"dxf_read",
     [](int m, int /*p*/, const QString& path) {
         import_tracks(path, m, &file_import_thread::import_dxf);
     },
     nullptr, "a.dxf"},
    {"dxf_read_dxflib", [](int /*m*/, int /*p*/, const QString& path) { dxflib_reads(path); },
     nullptr, "a.dxf"},
    {"dxf_read_gdal", nullptr, "exec ogrinfo -ro -al -so $3 >/dev/null", "a.dxf"},
    {"excel_write",
     [](int m, int p, const QString& path) {
         export_tracks(m, p, path, &file_export_thread::excel_export);
     },
     nullptr, "a.xlsx"},
    {"excel_write_qxlsx", qxlsx_writes, nullptr, "b.xlsx"},
    {"excel_write_openpyxl", nullptr, openpyxl_writes, "c.xlsx"},
    {"excel_write_xlsxwriter", nullptr, xlsxwriter_writes, "d.xlsx"},
    {"excel_write_xlsxwriter_lean", nullptr, xlsxwriter_writes, "lean.xlsx"},
    {"excel_make", write_importable, nullptr, "e.xlsx"},
    {"excel_read",
     [](int m, int /*p*/, const QString& path) {
         import_tracks(path, m, &file_import_thread::import_excel);
     },
     nullptr, "e.xlsx"},
    {"excel_read_qxlsx", [](int /*m*/, int /*p*/, const QString& path) { qxlsx_reads(path); },
     nullptr, "e.xlsx"},
    {"excel_read_openpyxl", nullptr, openpyxl_reads, "e.xlsx"},
    {"excel_read_gdal", nullptr, "exec ogrinfo -ro -al -so $3 >/dev/null", "e.xlsx"},
};

const QString made_up_suffix = QStringLiteral(".made_up");

/// The job in this process, with somebody who answers the boxes.
int run_here(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->accept();
    });
    answer.start(1);
    const QStringList words = QApplication::arguments();
    for (const job& one : jobs) {
        if (words[2] == QLatin1String(one.name))
            one.run(words[3].toInt(), words[4].toInt(), words[5]);
    }
    QFile spent(words[5] + made_up_suffix);
    if (made_up > 0 && spent.open(QIODevice::WriteOnly))
        spent.write(QByteArray::number(made_up));
    return 0;
}

/// The job in a process of its own.
void measure(benchmark::State& state, const job& one, const QString& folder, const char* program)
{
    const QByteArray measurements = QByteArray::number(static_cast<int>(state.range(0)));
    const QByteArray points = QByteArray::number(static_cast<int>(state.range(1)));
    const QByteArray path = QFile::encodeName(QStringLiteral("%1/%2-%3-%4")
                                                  .arg(folder)
                                                  .arg(state.range(0))
                                                  .arg(state.range(1))
                                                  .arg(QLatin1String(one.file)));
    for (auto _ : state) {
        const pid_t child = fork();
        if (child == 0) {
            if (one.run != nullptr)
                execl(program, program, "--job", one.name, measurements.constData(),
                      points.constData(), path.constData(), nullptr);
            else if (QByteArray(one.script).startsWith("exec"))
                execl("/bin/sh", "sh", "-c", one.script, "sh", measurements.constData(),
                      points.constData(), path.constData(), nullptr);
            else
                execl("/usr/bin/python3", "python3", "-c", one.script, measurements.constData(),
                      points.constData(), path.constData(), nullptr);
            _exit(127);
        }
        int status = 0;
        rusage used{};
        wait4(child, &status, 0, &used);
        if (status != 0) {
            state.SkipWithError("the job failed");
            return;
        }
        QFile spent(QFile::decodeName(path) + made_up_suffix);
        const double not_counted =
            spent.open(QIODevice::ReadOnly) ? spent.readAll().toDouble() : 0.0;
        spent.remove();
        state.SetIterationTime(cpu_seconds(used) - not_counted);
        state.counters["peak_MiB"] = static_cast<double>(used.ru_maxrss) / 1024;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc == 6 && QByteArray(argv[1]) == "--job")
        return run_here(argc, argv);
    const QTemporaryDir folder(QDir::currentPath() + QStringLiteral("/bench_dxf_excel-XXXXXX"));
    for (const job& one : jobs) {
        benchmark::RegisterBenchmark(
            one.name,
            [&](benchmark::State& state) { measure(state, one, folder.path(), "/proc/self/exe"); })
            ->Args({100, 100})
            ->Args({100, 1000})
            ->Args({1000, 100})
            ->Args({1000, 1000})
            ->Iterations(1)
            ->UseManualTime()
            ->Unit(benchmark::kSecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
