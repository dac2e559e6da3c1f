// The text download: a stream of records of 500 points each, as it goes through
// decoding, counting, recognition and the lists. CPU seconds of the thread; the
// pause that ends a download is not among them. The peer is the point pattern
// alone, run over the same text.

#include "device/serial_thread.h"
#include "instrument/measurement_text.h"
#include "instrument/sample_memory.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSerialPort>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

using instrument::text_form;

constexpr int points = 500;

/// Records of the four kinds with many points that both forms have: four of six.
QByteArray stream(int records, text_form form)
{
    QByteArray text;
    int count = 0;
    for (const auto& measured : instrument::synthetic_memory(records * 3 / 2 + 6, points)) {
        const bool has_form = measured.kind != instrument::measurement_kind::waypoint &&
                              measured.kind != instrument::measurement_kind::staking_out;
        if (has_form && count++ < records)
            text += instrument::record_text(measured, records, form) + "\r\n";
        if (count == records)
            break;
    }
    return text;
}

void download(benchmark::State& state)
{
    const auto form = static_cast<text_form>(state.range(0));
    const auto records = static_cast<int>(state.range(1));
    const QByteArray text = stream(records, form);
    serial_thread reader;
    reader.available_ports = [] { return QList<serial_thread::listed_port>(); };
    for (auto _ : state) {
        reader.recv_cmd_from_key(0, {}, {}, {}, {});
        reader.text_loop(text);
    }
    if (reader.table_list.size() != records || reader.point_msg_all.constLast().size() != points) {
        state.SkipWithError("not all was read");
        return;
    }
    state.counters["MiB"] = static_cast<double>(text.size()) / (1 << 20);
}

void point_pattern_alone(benchmark::State& state)
{
    const auto form = static_cast<text_form>(state.range(0));
    const auto records = static_cast<int>(state.range(1));
    const QString text = QString::fromLatin1(stream(records, form));
    const QRegularExpression pattern(
        QStringLiteral(R"re(([+-])?(\d+d\d+'\d+.\d+"),([+-])?(\d+d\d+'\d+.\d+")(,(\d+))?)re") +
        (form == text_form::short_record
             ? QStringLiteral(";")
             : QStringLiteral(",hdop(\\d+),speed(\\d+),angle(\\d+),t(\\d{8})(\\d{4,6});")));
    for (auto _ : state) {
        qsizetype found = 0;
        for (auto matches = pattern.globalMatch(text); matches.hasNext(); matches.next())
            ++found;
        if (found != qsizetype{records} * points)
            state.SkipWithError("not all was found");
    }
}

void sizes(benchmark::internal::Benchmark* one)
{
    for (const text_form form : {text_form::short_record, text_form::long_record}) {
        for (const int records : {250, 500, 1000, 2000})
            one->Args({static_cast<int>(form), records});
    }
    one->ArgNames({"long", "records"})->Unit(benchmark::kSecond)->Iterations(1);
}
BENCHMARK(download)->Apply(sizes);
BENCHMARK(point_pattern_alone)->Apply(sizes);

} // namespace

int main(int argc, char* argv[])
{
    qputenv("PATH", ""); // without adb nothing else runs in this process
    // The log, in which every byte stands twice, as it is written to nowhere.
    if (std::freopen("/dev/null", "w", stderr) == nullptr)
        return 1;
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
