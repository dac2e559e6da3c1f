// Least squares in the convention of the program's own forward step.

#include "calculation_server/parameter_solver.h"

#include <QTest>

#include <array>
#include <random>

using calculation::parameters;
using calculation::point_pair;
using calculation::solution;

namespace {

constexpr double arc_second = 4.84813681095679e-06;

/// The formulas of the forward step, written out once more.
Eigen::Vector3d forward(const parameters& p, const Eigen::Vector3d& at)
{
    const double s = p.k + 1.0;
    return {s * at[0] + p.dx + p.rz * arc_second * at[1] - p.ry * arc_second * at[2],
            p.dy - p.rz * arc_second * at[0] + s * at[1] + p.rx * arc_second * at[2],
            p.ry * arc_second * at[0] + p.dz - p.rx * arc_second * at[1] + s * at[2]};
}

std::vector<point_pair> pairs_of(const std::vector<Eigen::Vector3d>& sources, const parameters& p)
{
    std::vector<point_pair> pairs;
    for (const Eigen::Vector3d& source : sources)
        pairs.push_back({source, forward(p, source)});
    return pairs;
}

/// Six points around a place near Wuhan, `extent` metres apart.
std::vector<Eigen::Vector3d> field(double extent)
{
    const Eigen::Vector3d centre(-2267700.0, 5009300.0, 3220900.0);
    const std::array<Eigen::Vector3d, 6> corners{{{1.0, 0.0, 0.2},
                                                  {0.1, 1.0, -0.3},
                                                  {-0.8, 0.3, 0.5},
                                                  {0.4, -0.9, 0.1},
                                                  {-0.3, -0.2, -1.0},
                                                  {0.6, 0.5, 0.9}}};
    std::vector<Eigen::Vector3d> all;
    for (const Eigen::Vector3d& corner : corners)
        all.emplace_back(centre + extent * corner);
    return all;
}

const parameters typical{-24.1, 123.4, 94.3, -0.02, 0.26, 0.13, 1.1e-6};

} // namespace

class test_parameter_solver : public QObject
{
    Q_OBJECT

private slots:
    void each_parameter_has_its_sign_and_unit_data();
    void each_parameter_has_its_sign_and_unit();
    void known_parameters_come_back();
    void a_small_field_maps_within_a_hundredth_of_a_millimetre();
    void four_points_are_enough();
    void least_squares_balance_what_does_not_fit();
    void a_better_set_is_not_found_nearby();
    void what_does_not_determine_them_is_refused_data();
    void what_does_not_determine_them_is_refused();
    void points_in_a_plane_are_enough();
};

void test_parameter_solver::each_parameter_has_its_sign_and_unit_data()
{
    // Points on the axes at 1000 km and what one parameter alone makes of them,
    // worked out by hand: 206264.806247096... arc-seconds are a radian, so
    // 0.206264806247 arc-seconds move a point at 1e6 m by one metre.
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("which");
    QTest::addColumn<QList<double>>("moves"); // of (1e6,0,0), (0,1e6,0), (0,0,1e6)
    constexpr double metre = 0.20626480624709636;
    using list = QList<double>;
    QTest::newRow("dx") << 5.0 << 0 << list{5, 0, 0, 5, 0, 0, 5, 0, 0};
    QTest::newRow("dy") << 5.0 << 1 << list{0, 5, 0, 0, 5, 0, 0, 5, 0};
    QTest::newRow("dz") << 5.0 << 2 << list{0, 0, 5, 0, 0, 5, 0, 0, 5};
    QTest::newRow("rx") << metre << 3 << list{0, 0, 0, 0, 0, -1, 0, 1, 0};
    QTest::newRow("ry") << metre << 4 << list{0, 0, 1, 0, 0, 0, -1, 0, 0};
    QTest::newRow("rz") << metre << 5 << list{0, -1, 0, 1, 0, 0, 0, 0, 0};
    QTest::newRow("k") << 1e-6 << 6 << list{1, 0, 0, 0, 1, 0, 0, 0, 1};
}

void test_parameter_solver::each_parameter_has_its_sign_and_unit()
{
    QFETCH(double, value);
    QFETCH(int, which);
    QFETCH(QList<double>, moves);
    std::vector<point_pair> pairs;
    for (qsizetype axis = 0; axis < 3; ++axis) {
        const Eigen::Vector3d source = 1e6 * Eigen::Vector3d::Unit(axis);
        const Eigen::Vector3d moved(moves[3 * axis], moves[3 * axis + 1], moves[3 * axis + 2]);
        pairs.push_back({source, source + moved});
    }
    const std::optional<solution> solved = calculation::solve(pairs);
    QVERIFY(solved);
    const parameters& p = solved->found;
    const std::array<double, 7> found{p.dx, p.dy, p.dz, p.rx, p.ry, p.rz, p.k};
    const std::array<double, 7> tolerance{1e-7, 1e-7, 1e-7, 1e-10, 1e-10, 1e-10, 1e-14};
    for (size_t i = 0; i < found.size(); ++i) {
        const double expected = static_cast<int>(i) == which ? value : 0.0;
        QVERIFY2(std::abs(found[i] - expected) < tolerance[i],
                 qPrintable(QString("%1: %2").arg(i).arg(found[i], 0, 'g', 17)));
    }
}

void test_parameter_solver::known_parameters_come_back()
{
    // Points around the whole Earth determine the parameters themselves.
    const std::vector<Eigen::Vector3d> sources{
        {6378137, 0, 0}, {0, 6378137, 0}, {0, 0, 6356752}, {-4e6, 3e6, 4e6}, {3e6, -4e6, -4e6}};
    const std::optional<solution> solved = calculation::solve(pairs_of(sources, typical));
    QVERIFY(solved);
    const parameters& p = solved->found;
    QVERIFY(std::abs(p.dx - typical.dx) < 1e-6);
    QVERIFY(std::abs(p.dy - typical.dy) < 1e-6);
    QVERIFY(std::abs(p.dz - typical.dz) < 1e-6);
    QVERIFY(std::abs(p.rx - typical.rx) < 1e-8);
    QVERIFY(std::abs(p.ry - typical.ry) < 1e-8);
    QVERIFY(std::abs(p.rz - typical.rz) < 1e-8);
    QVERIFY(std::abs(p.k - typical.k) < 1e-13);
    QVERIFY(solved->rms < 1e-8);
}

void test_parameter_solver::a_small_field_maps_within_a_hundredth_of_a_millimetre()
{
    // A field of a hundred metres, 6.4e6 m from the origin: the translation is not
    // well determined, but what is found must carry the points.
    const std::vector<point_pair> pairs = pairs_of(field(100.0), typical);
    const std::optional<solution> solved = calculation::solve(pairs);
    QVERIFY(solved);
    for (const point_pair& one : pairs)
        QVERIFY((forward(solved->found, one.source) - one.target).norm() < 1e-5);
}

void test_parameter_solver::four_points_are_enough()
{
    std::vector<point_pair> pairs = pairs_of(field(5000.0), typical);
    pairs.resize(4);
    const std::optional<solution> solved = calculation::solve(pairs);
    QVERIFY(solved);
    for (const point_pair& one : pairs)
        QVERIFY((forward(solved->found, one.source) - one.target).norm() < 1e-6);
}

void test_parameter_solver::least_squares_balance_what_does_not_fit()
{
    // The same point twice, a metre apart in the target: the middle fits best.
    std::vector<point_pair> pairs = pairs_of(field(1000.0), parameters{});
    pairs.push_back(pairs[0]);
    pairs[0].target[0] += 0.5;
    pairs.back().target[0] -= 0.5;
    const std::optional<solution> solved = calculation::solve(pairs);
    QVERIFY(solved);
    QVERIFY((forward(solved->found, pairs[0].source) - pairs[0].source).norm() < 1e-6);
    // Two of 21 coordinates are off by half a metre.
    QVERIFY(std::abs(solved->rms - std::sqrt(2 * 0.25 / 21)) < 1e-6);
}

void test_parameter_solver::a_better_set_is_not_found_nearby()
{
    // Around the whole Earth each parameter counts by itself; with centimetres of
    // noise no step in one of them may make the sum of squares smaller.
    std::vector<point_pair> pairs = pairs_of({{6378137, 0, 0},
                                              {0, 6378137, 0},
                                              {0, 0, 6356752},
                                              {-4e6, 3e6, 4e6},
                                              {3e6, -4e6, -4e6},
                                              {-3e6, -4e6, 4e6}},
                                             typical);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> noise(-0.05, 0.05);
    for (point_pair& one : pairs) {
        for (double& coordinate : one.target)
            coordinate += noise(random);
    }
    const auto sum = [&pairs](const parameters& p) {
        double squares = 0.0;
        for (const point_pair& one : pairs)
            squares += (forward(p, one.source) - one.target).squaredNorm();
        return squares;
    };
    const std::optional<solution> solved = calculation::solve(pairs);
    QVERIFY(solved);
    const double least = sum(solved->found);
    QVERIFY(std::abs(solved->rms - std::sqrt(least / 18)) < 1e-9);
    QVERIFY(least < sum(typical));
    struct step
    {
        double parameters::*which;
        double size;
    };
    const step steps[] = {{&parameters::dx, 1e-3}, {&parameters::dy, 1e-3}, {&parameters::dz, 1e-3},
                          {&parameters::rx, 1e-4}, {&parameters::ry, 1e-4}, {&parameters::rz, 1e-4},
                          {&parameters::k, 1e-10}};
    for (const step& one : steps) {
        for (const double sign : {-1.0, 1.0}) {
            parameters beside = solved->found;
            beside.*one.which += sign * one.size;
            QVERIFY(sum(beside) > least);
        }
    }
}

void test_parameter_solver::what_does_not_determine_them_is_refused_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("target");
    // 0 a field, 1 one place, 2 one line, 3 all but one line, 4 mirrored
    QTest::newRow("source in one place") << 1 << 0;
    QTest::newRow("target in one place") << 0 << 1;
    QTest::newRow("both in one place") << 1 << 1;
    QTest::newRow("source in one line") << 2 << 0;
    QTest::newRow("target in one line") << 0 << 2;
    QTest::newRow("a tenth of a millimetre beside the line") << 3 << 3;
    QTest::newRow("mirrored") << 0 << 4;
}

void test_parameter_solver::what_does_not_determine_them_is_refused()
{
    QFETCH(int, source);
    QFETCH(int, target);
    const auto shape = [](int kind, int i) -> Eigen::Vector3d {
        const Eigen::Vector3d real = field(100.0)[static_cast<size_t>(i)];
        const Eigen::Vector3d line = field(0.0)[0] + Eigen::Vector3d(10.0, 20.0, -5.0) * i;
        switch (kind) {
        case 0: return real;
        case 1: return {0.0, 0.0, 0.0};
        case 2: return line;
        case 3: return line + Eigen::Vector3d(1e-4 * (i % 2), 0.0, 0.0);
        default: return -real;
        }
    };
    std::vector<point_pair> pairs;
    for (int i = 0; i < 6; ++i)
        pairs.push_back({shape(source, i), shape(target, i)});
    QVERIFY(!calculation::solve(pairs));
    QVERIFY(!calculation::solve({}));
}

void test_parameter_solver::points_in_a_plane_are_enough()
{
    std::vector<Eigen::Vector3d> sources = field(1000.0);
    for (Eigen::Vector3d& one : sources)
        one[2] = 3220900.0;
    const std::vector<point_pair> pairs = pairs_of(sources, typical);
    const std::optional<solution> solved = calculation::solve(pairs);
    QVERIFY(solved);
    for (const point_pair& one : pairs)
        QVERIFY((forward(solved->found, one.source) - one.target).norm() < 1e-6);
}

QTEST_APPLESS_MAIN(test_parameter_solver)
#include "test_parameter_solver.moc"
