#include "coordinates/transforms.h"

#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using triple = std::array<double, 3>;

/// One line of worked_values.csv.
struct worked_value
{
    QByteArray routine;
    model_param param;
    double a = 0;
    double b = 0;
    double f = 0;
    int state = 0;
    triple given = {};
    triple result = {};
};

QList<worked_value> worked_values()
{
    QFile file(QStringLiteral(WORKED_VALUES));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no worked values");
    QList<worked_value> all;
    file.readLine(); // the headings
    while (!file.atEnd()) {
        const QList<QByteArray> fields = file.readLine().trimmed().split(',');
        qsizetype at = 1;
        const auto number = [&] {
            bool ok = false;
            const double value = fields.value(at++).toDouble(&ok);
            if (!ok)
                qFatal("no number in the worked values");
            return value;
        };
        CoordinateSystem system;
        for (int* field : {&system.type, &system.ellipsoid, &system.utm_mode, &system.method})
            *field = static_cast<int>(number());
        seven_parameters& seven = system.param7;
        four_parameters& four = system.param4;
        for (double* field :
             {&system.l0, &system.k0, &system.east, &system.north, &seven.dx, &seven.dy, &seven.dz,
              &seven.rx, &seven.ry, &seven.rz, &seven.k, &four.dx, &four.dy, &four.rt, &four.k})
            *field = number();
        worked_value one;
        one.routine = fields[0];
        one.param = flat_parameters(system);
        for (double* field : {&one.a, &one.b, &one.f})
            *field = number();
        one.state = static_cast<int>(number());
        for (triple* three : {&one.given, &one.result}) {
            for (double& field : *three)
                field = number();
        }
        all.append(one);
    }
    return all;
}

geodetic_position geodetic(const triple& t)
{
    return {t[0], t[1], t[2]};
}
cartesian_position cartesian(const triple& t)
{
    return {t[0], t[1], t[2]};
}
plane_position plane(const triple& t)
{
    return {t[0], t[1], t[2]};
}
triple of(const geodetic_position& p)
{
    return {p.b, p.l, p.h};
}
triple of(const cartesian_position& p)
{
    return {p.x, p.y, p.z};
}
triple of(const plane_position& p)
{
    return {p.x, p.y, p.h};
}

triple run(const worked_value& v)
{
    const QByteArray& routine = v.routine;
    const model_param::projection_block& block = v.param.projection;
    if (routine == "wgs84_to_plane") {
        geodetic_position position = geodetic(v.given);
        model_param param = v.param;
        return of(wgs84_to_plane(position, param, v.a, v.b, v.f));
    }
    if (routine == "plane_to_wgs84")
        return of(plane_to_wgs84(plane(v.given), v.param, v.a, v.b, v.f));
    if (routine == "BLH2XYZ")
        return of(BLH2XYZ(geodetic(v.given), v.a, v.b));
    if (routine == "XYZ2BLH") {
        longitude_sign = static_cast<std::int8_t>(v.state);
        return of(XYZ2BLH(cartesian(v.given), v.a, v.b));
    }
    if (routine == "BL2XY")
        return of(BL2XY(block, geodetic(v.given), v.a, v.f));
    if (routine == "UTMBL2XY")
        return of(UTMBL2XY(block, geodetic(v.given), v.a, v.f, static_cast<std::uint8_t>(v.state)));
    if (routine == "XY2BL")
        return of(XY2BL(block, plane(v.given), v.a, v.f));
    if (routine == "UTMXY2BL")
        return of(UTMXY2BL(block, plane(v.given), v.a, v.f));
    if (routine == "By7Param")
        return of(By7Param(v.param.param7, cartesian(v.given)));
    if (routine == "By7ParamInverse")
        return of(By7ParamInverse(v.param.param7, cartesian(v.given)));
    if (routine == "By4Param") {
        skip_four_param = static_cast<std::uint8_t>(v.state);
        return of(By4Param(v.param.param4, plane(v.given)));
    }
    if (routine == "By4ParamInverse")
        return of(By4ParamInverse(v.param.param4, plane(v.given)));
    qFatal("unknown routine in the worked values");
}

/// What double precision leaves of a result in metres or degrees. A height is the
/// difference of two lengths of an earth's radius, and the y of a plane position
/// carries, or has carried, up to 255 millions.
double tolerance(const QByteArray& routine, std::size_t place, double value)
{
    const bool plane = routine.contains("plane") ? routine.endsWith("plane")
                                                 : routine.contains("4") || routine.endsWith("XY");
    const double least = place == 2 ? 6e-9 : plane && place == 1 ? 6e-8 : 1e-9;
    return least + 12.0 * std::numeric_limits<double>::epsilon() * std::fabs(value);
}

/// A Gauss system on WGS-84 that changes nothing but the projection.
CoordinateSystem gauss_system()
{
    CoordinateSystem system;
    system.type = 1;
    system.ellipsoid = 2;
    system.changzhou = 6378137.0;
    system.duanzhou = 6356752.314245179;
    system.pianlv = 0.003352811;
    system.l0 = 117.0;
    return system;
}

CoordinateSystem utm_system()
{
    CoordinateSystem system = gauss_system();
    system.utm_mode = 2;
    system.k0 = 0.0;
    system.north = 10000000.0;
    return system;
}

plane_position forward(const CoordinateSystem& system, geodetic_position position)
{
    model_param param = flat_parameters(system);
    return wgs84_to_plane(position, param, system.changzhou, system.duanzhou, system.pianlv);
}

geodetic_position back(const CoordinateSystem& system, const plane_position& position)
{
    return plane_to_wgs84(position, flat_parameters(system), system.changzhou, system.duanzhou,
                          system.pianlv);
}

constexpr geodetic_position city{30.5, 117.75, 20.0};

} // namespace

class test_transforms : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(u"velmo.transforms=false"_s); }

    void worked_values_agree();

    void height_comes_back_times_ten();
    void record_comes_back_as_it_was();
    void zone_120_for_no_meridian();
    void meridian_snaps_to_its_zone();
    void meridian_is_narrowed();
    void zone_60_keeps_its_number();
    void zone_of_a_negative_y();
    void any_other_mode_is_utm();
    void equator_counts_as_north_in_utm();
    void east_of_zero();
    void k0_of_zero();
    void shift_depends_on_the_ellipsoid_alone();
    void type_skips_forward_only();
    void plane_step_without_scale();
    void plane_step_turns_by_half_a_turn_more();
    void plane_step_loses_the_sign();
    void last_term_lacks_its_factor();
    void rotations_back_are_degrees();
    void equator_has_height_zero();
    void south_stops_after_one_pass();
    void sign_of_longitude_is_the_last_ones();
    void south_in_utm();
    void utm_degrees_to_the_nanometre();
    void utm_cuts_x_to_metres();
    void fixed_degrees();
    void meridians_to_the_last_bit_data();
    void meridians_to_the_last_bit();
    void nonsense_has_an_end();
    void flat_record();

    void minutes_as_text_data();
    void minutes_as_text();
    void seconds_as_text_data();
    void seconds_as_text();
    void text_as_degrees_data();
    void text_as_degrees();
};

void test_transforms::worked_values_agree()
{
    QHash<QByteArray, int> count;
    double worst = 0.0;
    for (const worked_value& one : worked_values()) {
        ++count[one.routine];
        const triple got = run(one);
        for (std::size_t i = 0; i < got.size(); ++i) {
            const double off = std::fabs(got[i] - one.result[i]);
            worst = std::max(worst, off / tolerance(one.routine, i, one.result[i]));
            if (!(off <= tolerance(one.routine, i, one.result[i]))) {
                QFAIL(qPrintable(u"%1 number %2, value %3: %4 instead of %5"_s
                                     .arg(QString::fromLatin1(one.routine))
                                     .arg(count[one.routine])
                                     .arg(i)
                                     .arg(got[i], 0, 'g', 17)
                                     .arg(one.result[i], 0, 'g', 17)));
            }
        }
    }
    qInfo() << "largest part of the tolerance used:" << worst;
    const QHash<QByteArray, int> expected{
        {"wgs84_to_plane", 127}, {"plane_to_wgs84", 127}, {"BLH2XYZ", 32},
        {"XYZ2BLH", 64},         {"BL2XY", 96},           {"UTMBL2XY", 96},
        {"XY2BL", 108},          {"UTMXY2BL", 132},       {"By7Param", 12},
        {"By7ParamInverse", 12}, {"By4Param", 126},       {"By4ParamInverse", 63}};
    QCOMPARE(count, expected);
}

void test_transforms::height_comes_back_times_ten()
{
    const CoordinateSystem system = gauss_system();
    model_param param = flat_parameters(system);
    geodetic_position position = city;
    const plane_position result =
        wgs84_to_plane(position, param, system.changzhou, system.duanzhou, system.pianlv);
    QCOMPARE(position.h, 200.0);
    QCOMPARE(result.h, 200.0);
    QCOMPARE(position.b, city.b);
    QCOMPARE(position.l, city.l);
    QCOMPARE(back(system, {result.x, result.y, 7.5}).h, 7.5);
}

void test_transforms::record_comes_back_as_it_was()
{
    CoordinateSystem system = gauss_system();
    system.east = 500000.25;
    system.north = -1234567.5;
    model_param param = flat_parameters(system);
    geodetic_position position = city;
    wgs84_to_plane(position, param, system.changzhou, system.duanzhou, system.pianlv);
    QCOMPARE(param.projection.east, 500000.25);
    QCOMPARE(param.projection.north, -1234567.5);
    QCOMPARE(param.projection.l0, 117.0F);
}

void test_transforms::zone_120_for_no_meridian()
{
    CoordinateSystem system = gauss_system();
    system.l0 = 0.0;
    const plane_position far = forward(system, {30.0, 104.0, 0.0});
    QVERIFY(std::fabs(far.y - 120500000.0) > 10000000.0); // useless, and nobody says so
    const plane_position near = forward(system, {30.0, -0.5, 0.0});
    QCOMPARE(std::floor(near.y / 1000000.0), 120.0);
    system.l0 = 1.5;
    QCOMPARE(std::floor(forward(system, {30.0, 3.5, 0.0}).y / 1000000.0), 1.0);
}

void test_transforms::meridian_snaps_to_its_zone()
{
    CoordinateSystem system = gauss_system();
    const plane_position standard = forward(system, city);
    QCOMPARE(std::floor(standard.y / 1000000.0), 39.0);
    for (const double l0 : {115.5, 116.0, 117.3, 118.4}) {
        system.l0 = l0;
        QCOMPARE(forward(system, city).y, standard.y);
    }
    system.l0 = 118.5;
    QCOMPARE(std::floor(forward(system, city).y / 1000000.0), 40.0);
    system.method = 6;
    QCOMPARE(std::floor(forward(system, city).y / 1000000.0), 20.0);
    system.l0 = 363.0; // zone 61, written as 1
    QCOMPARE(std::floor(forward(system, {30.0, 362.5, 0.0}).y / 1000000.0), 1.0);
}

/// In single precision there is nothing between this meridian and the next zone.
void test_transforms::meridian_is_narrowed()
{
    CoordinateSystem system = gauss_system();
    system.l0 = 118.499999;
    QCOMPARE(std::floor(forward(system, city).y / 1000000.0), 40.0);
    system.l0 = 118.4999;
    QCOMPARE(std::floor(forward(system, city).y / 1000000.0), 39.0);
}

void test_transforms::zone_60_keeps_its_number()
{
    CoordinateSystem system = gauss_system();
    system.method = 6;
    system.l0 = 357.0;
    QCOMPARE(std::floor(forward(system, {30.0, -3.5, 0.0}).y / 1000000.0), 60.0);
}

void test_transforms::zone_of_a_negative_y()
{
    const CoordinateSystem system = gauss_system();
    model_param::projection_block block = flat_parameters(system).projection;
    const geodetic_position negative =
        XY2BL(block, {3000000.0, -1000001.0, 0.0}, system.changzhou, system.pianlv);
    // The same distance from the meridian of zone 1.
    block.east += 3000000.0;
    const geodetic_position positive =
        XY2BL(block, {3000000.0, 1999999.0, 0.0}, system.changzhou, system.pianlv);
    QCOMPARE(negative.b, positive.b);
    QCOMPARE(negative.l, positive.l);
}

void test_transforms::any_other_mode_is_utm()
{
    const plane_position utm = forward(utm_system(), city);
    const geodetic_position utm_back = back(utm_system(), utm);
    for (const int mode : {0, 3, 255}) {
        CoordinateSystem system = utm_system();
        system.utm_mode = mode;
        QCOMPARE(forward(system, city).x, utm.x);
        QCOMPARE(forward(system, city).y, utm.y);
        QCOMPARE(back(system, utm).b, utm_back.b);
        QCOMPARE(back(system, utm).l, utm_back.l);
    }
}

void test_transforms::equator_counts_as_north_in_utm()
{
    QCOMPARE(forward(utm_system(), {0.0, 117.0, 0.0}).x, 0.0);
    QCOMPARE(forward(utm_system(), {-0.0, 117.0, 0.0}).x, 0.0);
    QVERIFY(std::fabs(forward(utm_system(), {-1e-9, 117.0, 0.0}).x - 10000000.0) < 0.001);
}

void test_transforms::east_of_zero()
{
    CoordinateSystem system = gauss_system();
    const plane_position usual = forward(system, city);
    system.east = 0.0;
    QCOMPARE(forward(system, city).y, usual.y);
    // And back again it is 0: half a million metres.
    const geodetic_position with_east = back(gauss_system(), usual);
    const geodetic_position without = back(system, {usual.x, usual.y - 500000.0, 0.0});
    QVERIFY(std::fabs(with_east.l - city.l) < 1e-8);
    QVERIFY(std::fabs(without.l - city.l) < 1e-8);
    QVERIFY(std::fabs(back(system, usual).l - city.l) > 5.0);
}

void test_transforms::k0_of_zero()
{
    CoordinateSystem system = gauss_system();
    const plane_position gauss = forward(system, city);
    system.k0 = 0.0;
    QCOMPARE(forward(system, city).x, gauss.x);
    const plane_position utm = forward(utm_system(), city);
    QVERIFY(std::fabs(utm.x / forward(system, city).x - 0.9996) < 1e-5);
    // In single precision, which is 2 cm of 3000 km.
    system = utm_system();
    system.k0 = static_cast<double>(0.9996F);
    QCOMPARE(forward(system, city).x, utm.x);
    const double exact = utm.x / static_cast<double>(0.9996F) * 0.9996;
    QVERIFY(std::fabs(exact - utm.x) > 0.02);
}

void test_transforms::shift_depends_on_the_ellipsoid_alone()
{
    CoordinateSystem system = gauss_system();
    system.param7.dx = 1000.0;
    const plane_position unshifted = forward(gauss_system(), city);
    for (const int type : {0, 1, 2}) {
        system.type = type;
        system.param4.k = 1.0;
        system.ellipsoid = 2;
        QVERIFY(std::fabs(forward(system, city).x - unshifted.x) < 1e-6);
        system.ellipsoid = 3;
        QVERIFY(std::fabs(forward(system, city).x - unshifted.x) > 100.0);
        QVERIFY(std::fabs(back(system, unshifted).b - city.b) > 0.001);
    }
}

void test_transforms::type_skips_forward_only()
{
    CoordinateSystem system = gauss_system();
    system.param4 = {100.0, -50.0, 1.0, 0.0};
    for (const int type : {1, 2}) {
        system.type = type;
        QCOMPARE(forward(system, city).x, forward(gauss_system(), city).x);
    }
    system.type = 0;
    QVERIFY(std::fabs(forward(system, city).x - 100.0 - forward(gauss_system(), city).x) < 1e-6);
    // Back the step always runs, and there a scale of 1 means twice.
    const plane_position position{3000000.0, 39400000.0, 0.0};
    const geodetic_position always = back(system, position);
    system.type = 1;
    QCOMPARE(back(system, position).b, always.b);
    const geodetic_position half = back(
        gauss_system(), {(3000000.0 - 100.0) / 2.0, 39000000.0 + (400000.0 + 50.0) / 2.0, 0.0});
    QCOMPARE(always.b, half.b);
    QCOMPARE(always.l, half.l);
}

void test_transforms::plane_step_without_scale()
{
    skip_four_param = 0;
    const plane_position position{3000000.0, 39400000.0, 1.0};
    const plane_position ignored = By4Param({100.0, -50.0, 30.0, 0.0}, position);
    QCOMPARE(ignored.x, position.x);
    QCOMPARE(ignored.y, position.y);
    const plane_position same = By4Param({0.0, 0.0, 0.0, 1.0}, position);
    QCOMPARE(same.x, position.x);
    QCOMPARE(same.y, position.y);
    QCOMPARE(same.h, position.h);
    // A million is no zone yet.
    QCOMPARE(By4Param({0.0, 0.0, 0.0, 2.0}, {0.0, 1000000.0, 0.0}).y, 2000000.0);
    QCOMPARE(By4Param({0.0, 0.0, 0.0, 2.0}, {0.0, 1000001.0, 0.0}).y, 1000002.0);
}

void test_transforms::plane_step_turns_by_half_a_turn_more()
{
    skip_four_param = 0;
    const plane_position position{1000.0, 500.0, 0.0};
    const plane_position barely = By4Param({0.0, 0.0, 1e-9, 1.0}, position);
    QVERIFY(std::fabs(barely.x + 1000.0) < 1e-6);
    QVERIFY(std::fabs(barely.y + 500.0) < 1e-6);
    // A quarter of a turn, whatever it was meant to be.
    const plane_position quarter = By4Param({0.0, 0.0, -324000.0, 1.0}, position);
    QVERIFY(std::fabs(quarter.x + 500.0) < 1e-6);
    QVERIFY(std::fabs(quarter.y - 1000.0) < 1e-6);
    // Back rt is a factor.
    const plane_position back = By4ParamInverse({0.0, 0.0, 0.5, 0.0}, position);
    QCOMPARE(back.y, 0.0);
    QCOMPARE(back.x, 1000.0);
}

void test_transforms::plane_step_loses_the_sign()
{
    skip_four_param = 0;
    const model_param::plane_parameters shift{0.0, -600000.0, 0.0, 1.0};
    QCOMPARE(By4Param(shift, {0.0, 39500000.0, 0.0}).y, 39100000.0);
    QCOMPARE(By4Param(shift, {0.0, 500000.0, 0.0}).y, -100000.0);
}

void test_transforms::last_term_lacks_its_factor()
{
    // Three degrees off the meridian the whole sixth-order term would be 5 mm; as it
    // stands it is less than a micrometre.
    model_param::projection_block block = flat_parameters(gauss_system()).projection;
    block.l0 *= 10000.0F;
    block.east *= 10.0;
    const double a = 6378137.0;
    const double f = 0.003352811;
    const geodetic_position position{30.0, 120.0, 0.0};
    const double x = BL2XY(block, position, a, f).x;
    const double phi = position.b * 0.017453292519943;
    const double e2 = (2.0 - f) * f;
    const double c = e2 / (1.0 - e2) * std::pow(std::cos(phi), 2);
    const double t = std::pow(std::tan(phi), 2);
    const double n = a / std::sqrt(1.0 - e2 * std::pow(std::sin(phi), 2));
    const double angle = std::cos(phi) * 3.0 * 0.017453292519943;
    const double north = BL2XY(block, {30.0, 117.0, 0.0}, a, f).x +
                         std::tan(phi) * n *
                             (std::pow(angle, 2) / 2.0 +
                              (5.0 - t + 9.0 * c + 4.0 * c * c) * std::pow(angle, 4) / 24.0);
    const double sixth =
        (61.0 - 58.0 * t + t * t + 270.0 * c - 330.0 * t * c) * std::pow(angle, 6) / 720.0;
    QVERIFY(std::fabs(sixth * std::tan(phi) * n) > 1e-3);
    QVERIFY(std::fabs(x - north - sixth) < 1e-8);
}

void test_transforms::rotations_back_are_degrees()
{
    const seven_parameters turn{0.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0};
    const cartesian_position position{0.0, 1000000.0, 0.0};
    QVERIFY(std::fabs(By7Param(turn, position).x - 1000000.0 * 4.84813681095679e-06) < 1e-9);
    QVERIFY(std::fabs(By7ParamInverse(turn, position).x +
                      1000000.0 * 0.017453292519943 / (1.0 + std::pow(0.017453292519943, 2))) <
            1e-6);
}

void test_transforms::equator_has_height_zero()
{
    longitude_sign = 1;
    const geodetic_position position = XYZ2BLH({7000000.0, 0.0, 0.0}, 6378137.0, 6356752.314245179);
    QCOMPARE(position.h, 0.0);
    QCOMPARE(position.b, 0.0);
    QCOMPARE(position.l, 0.0);
}

void test_transforms::south_stops_after_one_pass()
{
    constexpr double a = 6378137.0;
    constexpr double b = 6356752.314245179;
    double worst = 0.0;
    for (int degrees = 1; degrees < 90; ++degrees) {
        const double north =
            XYZ2BLH(BLH2XYZ({static_cast<double>(degrees), 1.0, 0.0}, a, b), a, b).b;
        const double south =
            XYZ2BLH(BLH2XYZ({static_cast<double>(-degrees), 1.0, 0.0}, a, b), a, b).b;
        QVERIFY(std::fabs(north - degrees) < 1e-9);
        worst = std::max(worst, std::fabs(south + degrees));
    }
    // 93 m on the ground.
    QVERIFY2(worst > 8.3e-4 && worst < 8.4e-4, qPrintable(QString::number(worst)));
    QVERIFY(XYZ2BLH(BLH2XYZ({-1.0, 1.0, 0.0}, a, b), a, b).h > 280.0);
}

void test_transforms::sign_of_longitude_is_the_last_ones()
{
    constexpr double a = 6378137.0;
    constexpr double b = 6356752.314245179;
    const cartesian_position west = BLH2XYZ({10.0, -70.0, 0.0}, a, b);
    QCOMPARE(longitude_sign, std::int8_t{-1});
    QVERIFY(std::fabs(XYZ2BLH(west, a, b).l + 70.0) < 1e-9);
    BLH2XYZ({10.0, 0.0, 0.0}, a, b);
    QCOMPARE(longitude_sign, std::int8_t{1});
    QVERIFY(std::fabs(XYZ2BLH(west, a, b).l - 70.0) < 1e-9);
}

void test_transforms::south_in_utm()
{
    const plane_position north = forward(utm_system(), {33.0, 117.75, 0.0});
    const plane_position south = forward(utm_system(), {-33.0, 117.75, 0.0});
    QVERIFY(std::fabs(south.x - (10000000.0 - north.x)) < 1e-8);
    QCOMPARE(south.y, north.y);
    QVERIFY(back(utm_system(), south).b > 0.0);
    QVERIFY(back(utm_system(), forward(utm_system(), {33.0, -70.0, 0.0})).l > 0.0);
    // Zone and meridian are the point's own.
    CoordinateSystem other = utm_system();
    other.l0 = 3.0;
    other.method = 6;
    QCOMPARE(forward(other, {33.0, 117.75, 0.0}).y, north.y);
}

/// Nearly three degrees off the meridian of zone 1, where y has digits to show it: the
/// exact length of a degree would be 6 nm more. The easting was computed with 40 digits
/// from 0.017453292519943.
void test_transforms::utm_degrees_to_the_nanometre()
{
    model_param::projection_block block = flat_parameters(utm_system()).projection;
    block.east = 0.0;
    const double y = UTMBL2XY(block, {0.0, -174.0625, 0.0}, 6378137.0, 0.003352811, 1).y;
    QVERIFY2(std::fabs(y - 1327014.46706150816) < 1e-9, qPrintable(QString::number(y, 'g', 18)));
}

void test_transforms::utm_cuts_x_to_metres()
{
    const geodetic_position whole = back(utm_system(), {3334567.0, 50587654.0, 0.0});
    QCOMPARE(back(utm_system(), {3334567.999, 50587654.0, 0.0}).b, whole.b);
    QVERIFY(back(utm_system(), {3334568.0, 50587654.0, 0.0}).b > whole.b);
    // east and north are not looked at.
    CoordinateSystem other = utm_system();
    other.east = 0.0;
    other.north = 0.0;
    QCOMPARE(back(other, {3334567.0, 50587654.0, 0.0}).l, whole.l);
    // Beyond ten million it counts as south of the equator.
    QVERIFY(std::fabs(back(utm_system(), {19000000.0, 50500000.0, 0.0}).b - 9.0) < 0.1);
}

/// The two lengths of a degree differ in the tenth digit: 0.2 mm at 117 degrees.
void test_transforms::fixed_degrees()
{
    constexpr double a = 6378137.0;
    const cartesian_position quarter = BLH2XYZ({0.0, 90.0, 0.0}, a, a);
    QVERIFY(std::fabs(quarter.x - a * std::cos(90.0 * 0.017453292519444445)) < 1e-9);
    QVERIFY(quarter.x > 2e-4); // with an exact degree it would be 4e-10
    longitude_sign = 1;
    const geodetic_position back = XYZ2BLH({0.0, a, 0.0}, a, a);
    QVERIFY(std::fabs(back.l - 90.0) > 2e-9);
    QCOMPARE(back.l, std::acos(0.0) * 180.0 / 3.1415926535);
}

void test_transforms::meridians_to_the_last_bit_data()
{
    QTest::addColumn<int>("utm_mode");
    QTest::addColumn<int>("method");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("longitude");
    // Products of doubles: 117 * 0.017453292519943 * 57.29577951308232 and so on.
    QTest::newRow("Gauss, 3 degrees, zone 39") << 1 << 3 << 39500000.0 << 116.99999999999801;
    QTest::newRow("Gauss, 3 degrees, zone 1") << 1 << 3 << 1500000.0 << 2.9999999999999494;
    QTest::newRow("Gauss, 6 degrees, zone 20") << 1 << 6 << 20500000.0 << 116.99999999999801;
    QTest::newRow("UTM, zone 50") << 2 << 6 << 50500000.0 << 116.99999999999801;
    QTest::newRow("UTM, zone 31") << 2 << 6 << 31500000.0 << 2.9999999999999494;
    QTest::newRow("UTM, zone 1, without its sign") << 2 << 6 << 1500000.0 << 176.99999999999702;
}

/// On the meridian only the meridian is left: into radians with the one constant,
/// back with the other, which is exact. It does not come back as it went.
void test_transforms::meridians_to_the_last_bit()
{
    QFETCH(int, utm_mode);
    QFETCH(int, method);
    QFETCH(double, y);
    QFETCH(double, longitude);
    CoordinateSystem system = gauss_system();
    system.method = method;
    const model_param::projection_block block = flat_parameters(system).projection;
    const auto inverse = utm_mode == 1 ? XY2BL : UTMXY2BL;
    const geodetic_position got =
        inverse(block, {3000000.0, y, 0.0}, system.changzhou, system.pianlv);
    QVERIFY2(got.l == longitude, qPrintable(QString::number(got.l, 'g', 17)));
    QVERIFY(got.l != std::round(longitude));
}

void test_transforms::nonsense_has_an_end()
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const double values[] = {0.0,  -0.0,  1.0,  -1.0, 45.0,  1e6,    -1e6,   5e7, 1e10,
                             1e19, -1e19, 1e25, 1e39, 1e300, -1e300, 1e-300, inf, nan};
    for (const int mode : {1, 2}) {
        for (const int ellipsoid : {0, 2}) {
            for (const double first : values) {
                for (const double second : values) {
                    CoordinateSystem system = gauss_system();
                    system.utm_mode = mode;
                    system.ellipsoid = ellipsoid;
                    system.type = 0;
                    forward(system, {first, second, first});
                    back(system, {first, second, first});
                    system.l0 = first;
                    system.k0 = second;
                    system.method = 6;
                    forward(system, city);
                    back(system, {3000000.0, 20500000.0, 1.0});
                    system.l0 = 117.0;
                    system.changzhou = first;
                    system.duanzhou = second;
                    system.pianlv = first;
                    system.param7.k = second;
                    system.param4 = {first, second, first, second};
                    forward(system, city);
                    back(system, {3000000.0, 20500000.0, 1.0});
                }
            }
        }
    }
}

void test_transforms::flat_record()
{
    CoordinateSystem system;
    system.type = 1;
    system.ellipsoid = 3;
    system.utm_mode = 2;
    system.method = 6;
    system.k0 = 0.9996;
    system.east = 500000.125;
    system.north = 1e7;
    system.tall = 12.5;
    system.l0 = 114.3;
    system.param7 = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0};
    system.param4 = {8.0, 9.0, 10.0, 11.0};
    const model_param flat = flat_parameters(system);
    QCOMPARE(flat.type, std::uint8_t{1});
    QCOMPARE(flat.ellipsoid, std::uint8_t{3});
    QCOMPARE(flat.projection.utm_mode, std::uint8_t{2});
    QCOMPARE(flat.projection.method, std::uint8_t{6});
    QVERIFY(flat.projection.l0 == 114.3F);
    QVERIFY(flat.projection.k0 == 0.9996F);
    QCOMPARE(flat.projection.east, 500000.125);
    QCOMPARE(flat.projection.north, 1e7);
    QCOMPARE(flat.projection.tall, 12.5);
    QCOMPARE(flat.param7.dx, 1.0);
    QCOMPARE(flat.param7.dy, 2.0);
    QCOMPARE(flat.param7.dz, 3.0);
    QCOMPARE(flat.param7.rx, 4.0);
    QCOMPARE(flat.param7.ry, 5.0);
    QCOMPARE(flat.param7.rz, 6.0);
    QCOMPARE(flat.param7.k, 7.0);
    QCOMPARE(flat.param4.dx, 8.0);
    QCOMPARE(flat.param4.dy, 9.0);
    QCOMPARE(flat.param4.k, 10.0);
    QCOMPARE(flat.param4.rt, 11.0);
    QCOMPARE(int{flat.reserved_record} + flat.projection.reserved_mode +
                 flat.projection.reserved_zone + flat.projection.reserved_method,
             0);
    // Its members stand in this order, the rotation before the scale.
    const auto at = [&flat](const auto& member) {
        return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&flat);
    };
    const model_param::projection_block& block = flat.projection;
    const QList<qptrdiff> places{at(flat.type),
                                 at(flat.ellipsoid),
                                 at(flat.reserved_record),
                                 at(block.utm_mode),
                                 at(block.reserved_mode),
                                 at(block.method),
                                 at(block.reserved_zone),
                                 at(block.reserved_method),
                                 at(block.l0),
                                 at(block.k0),
                                 at(block.east),
                                 at(block.north),
                                 at(block.tall),
                                 at(flat.param7.dx),
                                 at(flat.param7.dy),
                                 at(flat.param7.dz),
                                 at(flat.param7.rx),
                                 at(flat.param7.ry),
                                 at(flat.param7.rz),
                                 at(flat.param7.k),
                                 at(flat.param4.dx),
                                 at(flat.param4.dy),
                                 at(flat.param4.rt),
                                 at(flat.param4.k)};
    QVERIFY(std::is_sorted(places.begin(), places.end()));
    // It rides on signals by value.
    QCOMPARE(QMetaType::fromType<model_param>().name(), "model_param");
    QCOMPARE(QVariant::fromValue(flat).value<model_param>().param4.rt, 11.0);
}

void test_transforms::minutes_as_text_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("latitude");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("five minutes") << 30.0 + 5.1234 / 60.0 << true
                                  << QStringList{u"30"_s, u"05.1234"_s};
    QTest::newRow("longitude") << 7.5 << false << QStringList{u"007"_s, u"30.0000"_s};
    QTest::newRow("latitude") << 7.5 << true << QStringList{u"07"_s, u"30.0000"_s};
    QTest::newRow("negative") << -7.5 << false << QStringList{u"-007"_s, u"30.0000"_s};
    QTest::newRow("above minus one") << -0.5 << true << QStringList{u"-00"_s, u"30.0000"_s};
    QTest::newRow("nothing") << 0.0 << true << QStringList{u"00"_s, u"00.0000"_s};
    QTest::newRow("minus nothing") << -0.0 << true << QStringList{u"00"_s, u"00.0000"_s};
    QTest::newRow("rounds up to sixty")
        << 29.9999999999 << true << QStringList{u"29"_s, u"60.0000"_s};
    QTest::newRow("three digits in a latitude")
        << 123.25 << true << QStringList{u"123"_s, u"15.0000"_s};
}

void test_transforms::minutes_as_text()
{
    QFETCH(double, value);
    QFETCH(bool, latitude);
    QFETCH(QStringList, texts);
    const dm_text text = degrees_to_dm(value, latitude);
    QCOMPARE(QStringList({text.degrees, text.minutes}), texts);
}

void test_transforms::seconds_as_text_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("latitude");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("usual") << 104.0 + 1.0 / 60.0 + 23.453125 / 3600.0 << false
                           << QStringList{u"104"_s, u"01"_s, u"23"_s, u".45"_s};
    QTest::newRow("no fraction") << 7.5 << false
                                 << QStringList{u"007"_s, u"30"_s, u"00"_s, QString()};
    QTest::newRow("half a second")
        << 7.5 + 0.5 / 3600.0 << true << QStringList{u"07"_s, u"30"_s, u"00"_s, u".50"_s};
    QTest::newRow("negative") << -12.25 << true
                              << QStringList{u"-12"_s, u"15"_s, u"00"_s, QString()};
    QTest::newRow("a fraction that rounds up")
        << 29.9999999999 << true << QStringList{u"29"_s, u"59"_s, u"59"_s, u".00"_s};
}

void test_transforms::seconds_as_text()
{
    QFETCH(double, value);
    QFETCH(bool, latitude);
    QFETCH(QStringList, texts);
    const dms_text text = degrees_to_dms(value, latitude);
    QCOMPARE(QStringList({text.degrees, text.minutes, text.seconds, text.fraction}), texts);
}

void test_transforms::text_as_degrees_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("minutes");
    QTest::addColumn<double>("seconds");

    const auto row = [](const QString& text, double minutes, double seconds) {
        QTest::newRow(qPrintable(text.isEmpty() ? u"empty"_s : text)) << text << minutes << seconds;
    };
    row(u"104°30′"_s, 104.5, -1.0);
    row(u"104°01.5′"_s, 104.025, -1.0);
    row(u"104°30′36″"_s, 104.5, 104.51);
    row(u"104°30′36.0″E"_s, 104.5, 104.51);
    row(u"-10°30′36″"_s, -9.5, -9.49); // the minutes count upwards
    row(u"-0°30′0″"_s, 0.5, 0.5);
    row(u"10.5°30′0″"_s, 11.0, 11.0);
    row(u" 10 ° 30 ′ 0 ″"_s, 10.5, 10.5);
    row(u"10°99′99″"_s, 11.65, 11.6775);
    row(QString(), -1.0, -1.0);
    row(u"104.5"_s, -1.0, -1.0);
    row(u"104°"_s, -1.0, -1.0);
    row(u"30′"_s, -1.0, -1.0);
    row(u"°30′36″"_s, -1.0, -1.0);
    row(u"104°′36″"_s, -1.0, -1.0);
    row(u"104°30′″"_s, 104.5, -1.0);
    row(u"30′104°36″"_s, -1.0, -1.0);
    row(u"104°36″30′"_s, -1.0, -1.0);
    row(u"104°x′36″"_s, -1.0, -1.0);
    row(u"x°30′36″"_s, -1.0, -1.0);
    row(u"104°30′x″"_s, 104.5, -1.0);
    row(u"104°30'36\""_s, -1.0, -1.0); // only the signs of its own
    row(u"1,5°30′0″"_s, -1.0, -1.0);
    row(u"104º30′0″"_s, -1.0, -1.0); // an ordinal sign
}

void test_transforms::text_as_degrees()
{
    QFETCH(QString, text);
    QFETCH(double, minutes);
    QFETCH(double, seconds);
    QCOMPARE(dm_to_degrees(text), minutes);
    QCOMPARE(dms_to_degrees(text), seconds);
}

QTEST_GUILESS_MAIN(test_transforms)
#include "test_transforms.moc"
