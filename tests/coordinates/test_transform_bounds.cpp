#include "coordinates/transforms.h"

#include <QLoggingCategory>
#include <QTest>

#include <bit>
#include <cmath>
#include <optional>
#include <random>

using namespace Qt::StringLiterals;

namespace {

bool same_bits(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

bool same_bits(const geodetic_position& a, const geodetic_position& b)
{
    return same_bits(a.b, b.b) && same_bits(a.l, b.l) && same_bits(a.h, b.h);
}

/// The loop of XYZ2BLH() as it is described, without a bound of its own; nothing if it
/// has not ended after so many passes.
std::optional<geodetic_position> plain_XYZ2BLH(const cartesian_position& position, double a,
                                               double b, int patience = 3000)
{
    const double e2 = (a * a - b * b) / (a * a);
    const double ep2 = (a * a - b * b) / (b * b);
    const double c = a * a / b;
    const double p = std::sqrt(position.x * position.x + position.y * position.y);
    const double longitude = longitude_sign * std::acos(position.x / p);
    double latitude = std::atan(position.z / p);
    double difference = 0.0;
    do {
        if (patience-- == 0)
            return std::nullopt;
        const double before = latitude;
        const double n = c / std::sqrt(1.0 + ep2 * (std::cos(before) * std::cos(before)));
        latitude = std::atan((std::sin(before) * n * e2 + position.z) / p);
        if (before - latitude < 0.0)
            difference = latitude - before;
    } while (difference >= 1e-10);
    const double n = c / std::sqrt(1.0 + ep2 * (std::cos(latitude) * std::cos(latitude)));
    const double height = position.z / std::sin(latitude) - (1.0 - e2) * n;
    return geodetic_position{latitude * 180.0 / 3.1415926535, longitude * 180.0 / 3.1415926535,
                             std::isnan(height) ? 0.0 : height};
}

double plain_range(double longitude)
{
    while (longitude < -180.0)
        longitude += 360.0;
    while (longitude > 180.0)
        longitude -= 360.0;
    return longitude;
}

struct axes
{
    double a, b;
};
constexpr axes earths[] = {{6378245.0, 6356863.018773047},
                           {6378140.0, 6356755.288157528},
                           {6378137.0, 6356752.314245179},
                           {6378137.0, 6356752.314140355}};

} // namespace

class test_transform_bounds : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(u"velmo.transforms=false"_s); }

    void latitude_is_that_of_the_plain_loop();
    void latitude_near_the_pole_has_an_end();
    void latitude_of_strange_ellipsoids();
    void longitude_is_that_of_the_plain_loop();
    void absurd_longitudes_have_an_end();
    void absurd_y_has_an_end();
};

void test_transform_bounds::latitude_is_that_of_the_plain_loop()
{
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    int compared = 0;
    for (int i = 0; i < 200000; ++i) {
        const axes& earth = earths[random() % std::size(earths)];
        geodetic_position place{89.9 * part(random), 180.0 * part(random), 9000.0 * part(random)};
        if (i % 5 == 0) // to the satellites, and into the earth
            place.h = i % 2 == 0 ? 3e7 * part(random) : -6.3e6 + 1e5 * part(random);
        if (i % 7 == 0) // at the equator
            place.b *= std::pow(10.0, -8.0 * std::fabs(part(random)));
        const cartesian_position position = BLH2XYZ(place, 6378137.0, 6356752.314245179);
        const std::optional<geodetic_position> plain = plain_XYZ2BLH(position, earth.a, earth.b);
        const geodetic_position ours = XYZ2BLH(position, earth.a, earth.b);
        if (!plain)
            continue; // it never comes
        ++compared;
        if (!same_bits(ours, *plain)) {
            QFAIL(qPrintable(u"%1 instead of %2 at %3, %4"_s.arg(ours.b, 0, 'g', 17)
                                 .arg(plain->b, 0, 'g', 17)
                                 .arg(place.b, 0, 'g', 17)
                                 .arg(place.h)));
        }
    }
    QVERIFY2(compared > 190000, qPrintable(QString::number(compared)));
}

void test_transform_bounds::latitude_near_the_pole_has_an_end()
{
    int endless = 0;
    for (int i = 1; i <= 1000; ++i) {
        const double latitude = 90.0 - 0.01 * i / 1000.0;
        const cartesian_position position =
            BLH2XYZ({latitude, 117.0, 100.0}, 6378137.0, 6356752.314245179);
        const axes& earth = earths[i % 2];
        const geodetic_position ours = XYZ2BLH(position, earth.a, earth.b);
        QVERIFY(std::fabs(ours.b - latitude) < 1e-6); // between two ellipsoids
        if (const auto plain = plain_XYZ2BLH(position, earth.a, earth.b))
            QVERIFY(same_bits(ours, *plain));
        else
            ++endless;
    }
    // Otherwise nothing was shown.
    QVERIFY2(endless > 500, qPrintable(QString::number(endless)));
    XYZ2BLH({0.0, 0.0, 6356752.0}, 6378137.0, 6356752.0);
    XYZ2BLH({0.0, 0.0, 0.0}, 6378137.0, 6356752.0);
}

void test_transform_bounds::latitude_of_strange_ellipsoids()
{
    std::mt19937_64 random(12);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    int compared = 0;
    int endless = 0;
    for (int i = 0; i < 20000; ++i) {
        // Flat, long, tiny, huge and no ellipsoids.
        const double a = std::pow(10.0, 7.0 + 6.0 * part(random)) * (i % 17 == 0 ? -1.0 : 1.0);
        const double b =
            a * (i % 3 == 0 ? std::pow(10.0, 2.0 * part(random)) : 1.0 + 0.3 * part(random));
        const double size = std::fabs(a) * std::pow(10.0, part(random));
        const cartesian_position position{size * part(random), size * part(random),
                                          size * part(random)};
        const std::optional<geodetic_position> plain = plain_XYZ2BLH(position, a, b);
        const geodetic_position ours = XYZ2BLH(position, a, b);
        if (plain) {
            ++compared;
            QVERIFY2(same_bits(ours, *plain), qPrintable(QString::number(i)));
        } else {
            ++endless;
        }
    }
    QVERIFY2(compared > 15000, qPrintable(QString::number(compared)));
    QVERIFY2(endless > 10, qPrintable(QString::number(endless)));
}

void test_transform_bounds::longitude_is_that_of_the_plain_loop()
{
    std::mt19937_64 random(13);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    for (int i = 0; i < 200000; ++i) {
        const double longitude = part(random) * std::pow(10.0, 5.5 * std::fabs(part(random)));
        QVERIFY2(same_bits(longitude_in_range(longitude), plain_range(longitude)),
                 qPrintable(QString::number(longitude, 'g', 17)));
    }
    for (const double whole : {0.0, 180.0, 360.0, 540.0, 720.0, 900.0, 36000180.0}) {
        for (const double longitude :
             {whole, std::nextafter(whole, 1e9), std::nextafter(whole, -1e9)}) {
            QVERIFY(same_bits(longitude_in_range(longitude), plain_range(longitude)));
            QVERIFY(same_bits(longitude_in_range(-longitude), plain_range(-longitude)));
        }
    }
    for (const double longitude : {1e9, -1e9, 12345678901.25, -12345678901.25})
        QVERIFY(same_bits(longitude_in_range(longitude), plain_range(longitude)));
}

void test_transform_bounds::absurd_longitudes_have_an_end()
{
    for (const double longitude : {1e15, 9e15, 7e16, 1e17, 1e20, 1e100, 1.7e308}) {
        QVERIFY(std::fabs(longitude_in_range(longitude)) <= 180.0);
        QCOMPARE(longitude_in_range(-longitude), -longitude_in_range(longitude));
    }
    QVERIFY(std::isnan(longitude_in_range(HUGE_VAL)));
    QVERIFY(std::isnan(longitude_in_range(std::nan(""))));
}

void test_transform_bounds::absurd_y_has_an_end()
{
    CoordinateSystem system;
    system.changzhou = 6378137.0;
    system.duanzhou = 6356752.314245179;
    system.pianlv = 0.003352811;
    for (const int ellipsoid : {0, 2}) {
        system.ellipsoid = ellipsoid;
        for (const double y : {1e9, 1e12, 1e14, 1e15, 1e18, 1e25, 1e100, 1e308, -1e14, -1e300}) {
            for (const double x : {0.0, 3334000.0, 9999999.0, 1e7, 1e14, 1e300}) {
                const geodetic_position place =
                    plane_to_wgs84({x, y, 0.0}, flat_parameters(system), system.changzhou,
                                   system.duanzhou, system.pianlv);
                QVERIFY(std::isnan(place.l) || std::fabs(place.l) <= 180.0 + 1e-6);
            }
        }
    }
}

QTEST_GUILESS_MAIN(test_transform_bounds)
#include "test_transform_bounds.moc"
