// The search for frames in a stream, on clean streams and on hostile noise, and
// the CRC by table beside the CRC bit by bit, which is the peer.

#include "device/frame.h"

#include <QLoggingCategory>

#include <benchmark/benchmark.h>

#include <random>

namespace {

QByteArray clean_stream(qsizetype size)
{
    QByteArray stream;
    while (stream.size() < size)
        stream += frame::build_frame(frame::measurement_points, 0, QByteArray(974, 'p'));
    return stream;
}

/// Every third byte a header, random lengths: most headers are worth a CRC.
QByteArray hostile_noise(qsizetype size)
{
    std::mt19937 random(7);
    QByteArray noise(size, Qt::Uninitialized);
    for (char& byte : noise)
        byte = random() % 3 == 0 ? frame::header : static_cast<char>(random() % 5);
    return noise;
}

void take_all(const QByteArray& stream, benchmark::State& state)
{
    constexpr qsizetype piece = 4096; // what a port hands over at once
    qsizetype frames = 0;
    for (auto _ : state) {
        QByteArray buffer;
        QByteArray out;
        for (qsizetype at = 0; at < stream.size(); at += piece) {
            buffer += stream.mid(at, piece);
            while (frame::extract_frame(buffer, out))
                ++frames;
        }
        benchmark::DoNotOptimize(frames);
    }
    state.SetBytesProcessed(state.iterations() * stream.size());
}

void extract_clean(benchmark::State& state)
{
    take_all(clean_stream(state.range(0)), state);
}
BENCHMARK(extract_clean)->RangeMultiplier(4)->Range(1 << 16, 1 << 22);

/// The whole stream in the buffer at once.
void extract_clean_whole(benchmark::State& state)
{
    const QByteArray stream = clean_stream(state.range(0));
    for (auto _ : state) {
        QByteArray buffer = stream;
        QByteArray out;
        while (frame::extract_frame(buffer, out))
            benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(state.iterations() * stream.size());
}
BENCHMARK(extract_clean_whole)->RangeMultiplier(4)->Range(1 << 16, 1 << 22);

void extract_noise(benchmark::State& state)
{
    take_all(hostile_noise(state.range(0)), state);
}
BENCHMARK(extract_noise)->RangeMultiplier(4)->Range(1 << 14, 1 << 18);

void crc_by_table(benchmark::State& state)
{
    const QByteArray bytes = hostile_noise(1 << 16);
    for (auto _ : state)
        benchmark::DoNotOptimize(frame::crc8(bytes));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(crc_by_table);

void crc_bit_by_bit(benchmark::State& state)
{
    const QByteArray bytes = hostile_noise(1 << 16);
    for (auto _ : state) {
        unsigned crc = 0;
        for (const char byte : bytes) {
            crc ^= static_cast<std::uint8_t>(byte);
            for (int bit = 0; bit < 8; ++bit)
                crc = ((crc & 0x80U) != 0 ? (crc << 1U) ^ 0x07U : crc << 1U) & 0xFFU;
        }
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(crc_bit_by_bit);

} // namespace

int main(int argc, char* argv[])
{
    // The line of a damaged frame costs far more than the frame.
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
