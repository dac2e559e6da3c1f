// A point through the transforms, forward and back, with and without the change of
// datum, beside PROJ doing the same on the same points in the same run. Both have
// their coordinates in memory; the log is silent unless a name says otherwise.

#include "coordinates/transforms.h"

#include <QLoggingCategory>

#include <benchmark/benchmark.h>
#include <proj.h>

#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr double krassovsky_a = 6378245.0;
constexpr double krassovsky_b = 6356863.018773047;
constexpr double krassovsky_f = 0.00335233;
constexpr double wgs84_a = 6378137.0;
constexpr double wgs84_b = 6356752.314245179;
constexpr double wgs84_f = 0.003352811;

CoordinateSystem gauss_system(bool shifted)
{
    CoordinateSystem system;
    system.type = 1; // PROJ has no four-parameter step
    system.ellipsoid = shifted ? 0 : 2;
    system.changzhou = shifted ? krassovsky_a : wgs84_a;
    system.duanzhou = shifted ? krassovsky_b : wgs84_b;
    system.pianlv = shifted ? krassovsky_f : wgs84_f;
    system.l0 = 117.0;
    if (shifted)
        system.param7 = {-12.5, 113.25, 38.75, 0.0, 0.0, 0.0, 1.5e-6};
    return system;
}

/// Points of a zone's width between 20 and 50 degrees north.
std::vector<geodetic_position> points()
{
    std::mt19937 random(4);
    std::uniform_real_distribution<double> latitude(20.0, 50.0);
    std::uniform_real_distribution<double> longitude(115.5, 118.5);
    std::uniform_real_distribution<double> height(0.0, 100.0);
    std::vector<geodetic_position> all(4096);
    for (geodetic_position& one : all)
        one = {latitude(random), longitude(random), height(random)};
    return all;
}

void forward(benchmark::State& state, const CoordinateSystem& system)
{
    const std::vector<geodetic_position> all = points();
    model_param param = flat_parameters(system);
    for (auto _ : state) {
        for (geodetic_position one : all) {
            benchmark::DoNotOptimize(
                wgs84_to_plane(one, param, system.changzhou, system.duanzhou, system.pianlv));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}

void back(benchmark::State& state, const CoordinateSystem& system)
{
    model_param param = flat_parameters(system);
    std::vector<plane_position> all;
    for (geodetic_position one : points())
        all.push_back(wgs84_to_plane(one, param, system.changzhou, system.duanzhou, system.pianlv));
    for (auto _ : state) {
        for (const plane_position& one : all) {
            benchmark::DoNotOptimize(
                plane_to_wgs84(one, param, system.changzhou, system.duanzhou, system.pianlv));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}

void velmo_forward(benchmark::State& state)
{
    forward(state, gauss_system(false));
}
BENCHMARK(velmo_forward);

void velmo_back(benchmark::State& state)
{
    back(state, gauss_system(false));
}
BENCHMARK(velmo_back);

void velmo_forward_shifted(benchmark::State& state)
{
    forward(state, gauss_system(true));
}
BENCHMARK(velmo_forward_shifted);

void velmo_back_shifted(benchmark::State& state)
{
    back(state, gauss_system(true));
}
BENCHMARK(velmo_back_shifted);

/// What a logged point costs when its lines are made and thrown away.
void velmo_forward_logged(benchmark::State& state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("velmo.transforms=true"));
    const QtMessageHandler usual =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            benchmark::DoNotOptimize(text.size());
        });
    forward(state, gauss_system(false));
    qInstallMessageHandler(usual);
    QLoggingCategory::setFilterRules(QStringLiteral("velmo.transforms=false"));
}
BENCHMARK(velmo_forward_logged);

/// PROJ with the given definition, a point at a time or the whole array at once.
void proj(benchmark::State& state, const char* definition, PJ_DIRECTION direction, bool at_once)
{
    PJ* const operation = proj_create(nullptr, definition);
    if (operation == nullptr) {
        state.SkipWithError("PROJ does not know the definition");
        return;
    }
    std::vector<PJ_COORD> all;
    for (const geodetic_position& one : points())
        all.push_back(proj_coord(proj_torad(one.l), proj_torad(one.b), one.h, 0.0));
    if (direction == PJ_INV)
        proj_trans_array(operation, PJ_FWD, all.size(), all.data());

    for (auto _ : state) {
        if (at_once) {
            std::vector<PJ_COORD> copy = all;
            proj_trans_array(operation, direction, copy.size(), copy.data());
            benchmark::DoNotOptimize(copy.data());
        } else {
            for (const PJ_COORD& one : all)
                benchmark::DoNotOptimize(proj_trans(operation, direction, one));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
    proj_destroy(operation);
}

#define VELMO_TMERC "+proj=tmerc +lon_0=117 +x_0=500000 "
#define VELMO_WGS84 "+a=6378137 +b=6356752.314245179 "
#define VELMO_KRASSOVSKY "+a=6378245 +b=6356863.018773047 "

constexpr char exact[] = VELMO_TMERC VELMO_WGS84;
constexpr char series[] = VELMO_TMERC VELMO_WGS84 "+approx";
constexpr char shifted[] =
    "+proj=pipeline +step +proj=cart " VELMO_WGS84
    "+step +proj=helmert +x=-12.5 +y=113.25 +z=38.75 +s=1.5 "
    "+step +inv +proj=cart " VELMO_KRASSOVSKY "+step " VELMO_TMERC VELMO_KRASSOVSKY;

BENCHMARK_CAPTURE(proj, forward, exact, PJ_FWD, false);
BENCHMARK_CAPTURE(proj, forward_array, exact, PJ_FWD, true);
BENCHMARK_CAPTURE(proj, forward_series, series, PJ_FWD, false);
BENCHMARK_CAPTURE(proj, back, exact, PJ_INV, false);
BENCHMARK_CAPTURE(proj, back_array, exact, PJ_INV, true);
BENCHMARK_CAPTURE(proj, back_series, series, PJ_INV, false);
BENCHMARK_CAPTURE(proj, forward_shifted, shifted, PJ_FWD, false);
BENCHMARK_CAPTURE(proj, forward_shifted_array, shifted, PJ_FWD, true);
BENCHMARK_CAPTURE(proj, back_shifted, shifted, PJ_INV, false);
BENCHMARK_CAPTURE(proj, back_shifted_array, shifted, PJ_INV, true);

} // namespace

int main(int argc, char** argv)
{
    QLoggingCategory::setFilterRules(QStringLiteral("velmo.transforms=false"));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
