#include "exchange/file_import_thread.h"
#include "exchange/gpx.h"
#include "exchange/kml.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <ctime>
#include <cstdio>
#include <malloc.h>
#include <sys/resource.h>

namespace {
double cpu()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}
double peak()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_maxrss) / 1024;
}
QList<exportRecord> sample(int measurements, int points)
{
    QList<exportRecord> list;
    for (int m = 0; m < measurements; ++m) {
        exportRecord r;
        r.method = m % 3 == 0 ? "面积" : m % 3 == 1 ? "航线" : "航迹";
        r.name = QString("m%1").arg(m);
        r.numpoint = QString::number(points);
        for (int i = 0; i < points; ++i)
            r.coordinates += QString("%1,%2,%3\n").arg(126.65 + m * 0.001 + i * 1e-6, 0, 'f', 12).arg(45.75 + i * 1.7e-6, 0, 'f', 12).arg(120 + i % 10 * 0.25, 0, 'f', 2);
        list.append(r);
    }
    return list;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules("*.debug=false");
    const QString what = argv[1];
    const int n = atoi(argv[2]);
    double t = cpu(), p = peak();
    auto lap = [&](const char* name) { printf("%-20s cpu %.3f peak +%.0f MiB\n", name, cpu() - t, peak() - p); t = cpu(); };
    if (what == "w") {
        auto list = sample(n, 1000);
        lap("sample");
        { QFile f("o.kml"); f.open(QIODevice::WriteOnly | QIODevice::Text); write_kml(f, list, 0); f.close(); }
        lap("kml write");
        { QFile f("o.gpx"); f.open(QIODevice::WriteOnly | QIODevice::Text); write_gpx_merged(f, list, 0); f.close(); }
        lap("gpx write");
    } else {
        file_import_thread im;
        if (what == "k") { QFile f("o.kml"); auto r = read_kml(f, {}); im.working_list = std::move(r.records); }
        else if (what == "f") { QFile f("o.kml"); if (parse_kml_fallback(f, im.working_list)) {} }
        else { QFile f("o.gpx"); if (!parse_gpx(f, im.working_list)) puts("failed"); }
        lap("parse");
        im.append_to_results({});
        lap("tail");
        im.working_list.clear();
        lap("free");
        printf("%lld\n", (long long)im.table_list.size());
    }
}
