// The transforms beside PROJ's program cct, where none of their peculiarities bears:
// a millimetre near the central meridian.

#include "coordinates/transforms.h"

#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

using triple = std::array<double, 3>;

QString number(double value)
{
    return QString::number(value, 'g', 17);
}

/// The points through PROJ; angles are degrees, longitude first.
QList<triple> through_proj(const QString& definition, const QList<triple>& points,
                           bool inverse = false)
{
    QByteArray input;
    for (const triple& point : points)
        input +=
            u"%1 %2 %3 0\n"_s.arg(number(point[0]), number(point[1]), number(point[2])).toLatin1();
    QProcess cct;
    QStringList arguments{u"-d"_s, u"12"_s};
    if (inverse)
        arguments += u"-I"_s;
    cct.start(u"cct"_s, arguments + definition.split(u' '));
    cct.write(input);
    cct.closeWriteChannel();
    if (!cct.waitForFinished(-1) || cct.exitCode() != 0)
        qFatal("cct failed: %s", cct.readAllStandardError().constData());
    QList<triple> results;
    for (const QByteArray& line : cct.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() >= 3)
            results.append({fields[0].toDouble(), fields[1].toDouble(), fields[2].toDouble()});
    }
    if (results.size() != points.size())
        qFatal("cct left out points");
    return results;
}

struct named_system
{
    const char* name;
    double a, b, f;
    int ellipsoid;
};
constexpr named_system systems[] = {
    {"BEIJING1954", 6378245.0, 6356863.018773047, 0.00335233, 0},
    {"WGS1984", 6378137.0, 6356752.314245179, 0.003352811, 2},
    {"CGCS2000", 6378137.0, 6356752.314140355, 0.003352811, 3},
};

/// Latitudes of the hemisphere and longitudes up to a degree and a half from the
/// meridian, which is longitude, latitude, height.
QList<triple> points_about(double meridian, double sign)
{
    QList<triple> points;
    for (const double latitude : {2.0, 13.5, 30.123456789, 45.0, 58.25}) {
        for (const double off : {-1.5, -0.4, 0.0, 0.9, 1.5})
            points.append({meridian + off, sign * latitude, 0.0});
    }
    return points;
}

constexpr double millimetre = 1e-3;
/// A millimetre of latitude, in degrees.
constexpr double angle = millimetre / 111000.0;

CoordinateSystem system_of(const named_system& named)
{
    CoordinateSystem system;
    system.type = 1;
    system.ellipsoid = 2; // no change of datum
    system.changzhou = named.a;
    system.duanzhou = named.b;
    system.pianlv = named.f;
    return system;
}

plane_position forward(const CoordinateSystem& system, const triple& point)
{
    geodetic_position position{point[1], point[0], point[2]};
    model_param param = flat_parameters(system);
    return wgs84_to_plane(position, param, system.changzhou, system.duanzhou, system.pianlv);
}

geodetic_position back(const CoordinateSystem& system, const plane_position& position)
{
    return plane_to_wgs84(position, flat_parameters(system), system.changzhou, system.duanzhou,
                          system.pianlv);
}

} // namespace

class test_transforms_beside_proj : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(u"velmo.transforms=false"_s);
        QVERIFY2(!QStandardPaths::findExecutable(u"cct"_s).isEmpty(),
                 "cct is missing; it is in the package proj-bin");
    }

    void gauss_data();
    void gauss();
    void utm_data();
    void utm();
    void cartesian();
    void seven_parameters_forward();
    void datum_forward_data();
    void datum_forward();
    void datum_back_data();
    void datum_back();
};

void test_transforms_beside_proj::gauss_data()
{
    QTest::addColumn<int>("system");
    QTest::addColumn<int>("method");
    QTest::addColumn<double>("sign");
    for (int i = 0; i < int(std::size(systems)); ++i) {
        for (const int method : {3, 6}) {
            for (const double sign : {1.0, -1.0}) {
                QTest::addRow("%s, %d degrees, %s", systems[i].name, method,
                              sign > 0 ? "north" : "south")
                    << i << method << sign;
            }
        }
    }
}

void test_transforms_beside_proj::gauss()
{
    QFETCH(int, system);
    QFETCH(int, method);
    QFETCH(double, sign);
    CoordinateSystem ours = system_of(systems[system]);
    ours.method = method;
    ours.l0 = method == 3 ? 114.0 : 117.0;
    ours.k0 = 1.0;
    ours.north = -1500000.0;
    const double zone = method == 3 ? 38.0 : 20.0;
    const QString definition = u"+proj=tmerc +lon_0=%1 +x_0=500000 +y_0=-1500000 +a=%2 +f=%3"_s.arg(
        number(ours.l0), number(ours.changzhou), number(ours.pianlv));

    const QList<triple> points = points_about(ours.l0, sign);
    const QList<triple> theirs = through_proj(definition, points);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const plane_position plane = forward(ours, points[i]);
        QVERIFY(std::fabs(plane.x - theirs[i][1]) < millimetre);
        QVERIFY(std::fabs(plane.y - zone * 1e6 - theirs[i][0]) < millimetre);
        const geodetic_position position =
            back(ours, {theirs[i][1], theirs[i][0] + zone * 1e6, 0.0});
        QVERIFY(std::fabs(position.b - points[i][1]) < angle);
        QVERIFY(std::fabs(position.l - points[i][0]) < angle);
    }
}

void test_transforms_beside_proj::utm_data()
{
    gauss_data();
}

void test_transforms_beside_proj::utm()
{
    QFETCH(int, system);
    QFETCH(int, method); // plays no part
    QFETCH(double, sign);
    CoordinateSystem ours = system_of(systems[system]);
    ours.utm_mode = 2;
    ours.method = method;
    ours.k0 = 0.9996;
    ours.north = 10000000.0;
    const QString definition =
        u"+proj=tmerc +lon_0=-69 +x_0=500000 +k=%1 +y_0=%2 +a=%3 +f=%4"_s.arg(
            number(static_cast<double>(0.9996F)), sign > 0 ? u"0"_s : u"10000000"_s,
            number(ours.changzhou), number(ours.pianlv));

    const QList<triple> points = points_about(-69.0, sign);
    const QList<triple> theirs = through_proj(definition, points);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const plane_position plane = forward(ours, points[i]);
        QVERIFY(std::fabs(plane.x - theirs[i][1]) < millimetre);
        QVERIFY(std::fabs(plane.y - 19e6 - theirs[i][0]) < millimetre);
    }
    if (sign < 0)
        return; // back there is no south
    // Whole metres of x in the east, where a longitude has no sign to lose.
    QList<triple> planes;
    for (const triple& their : theirs)
        planes.append({their[0], std::floor(their[1]), 0.0});
    QString east = definition;
    east.replace(u"-69"_s, u"69"_s);
    const QList<triple> places = through_proj(east, planes, true);
    for (qsizetype i = 0; i < planes.size(); ++i) {
        const geodetic_position position = back(ours, {planes[i][1], planes[i][0] + 42e6, 0.0});
        QVERIFY(std::fabs(position.b - places[i][1]) < angle);
        QVERIFY(std::fabs(position.l - places[i][0]) < angle);
    }
}

void test_transforms_beside_proj::cartesian()
{
    for (const named_system& named : systems) {
        QList<triple> points = points_about(117.0, 1.0) + points_about(-70.0, -1.0);
        for (triple& point : points)
            point[2] = 123.5;
        const QString definition =
            u"+proj=cart +a=%1 +b=%2"_s.arg(number(named.a), number(named.b));
        const QList<triple> theirs = through_proj(definition, points);
        for (qsizetype i = 0; i < points.size(); ++i) {
            const auto [lon, lat, h] = points[i];
            const cartesian_position position = BLH2XYZ({lat, lon, h}, named.a, named.b);
            QVERIFY(std::fabs(position.x - theirs[i][0]) < millimetre);
            QVERIFY(std::fabs(position.y - theirs[i][1]) < millimetre);
            QVERIFY(std::fabs(position.z - theirs[i][2]) < millimetre);
            if (lat < 0.0)
                continue; // one pass only
            const auto [x, y, z] = theirs[i];
            const geodetic_position again = XYZ2BLH({x, y, z}, named.a, named.b);
            QVERIFY(std::fabs(again.b - lat) < angle);
            QVERIFY(std::fabs(again.l - lon) < angle);
            QVERIFY(std::fabs(again.h - h) < millimetre);
        }
    }
}

/// Without a scale: PROJ scales what the rotations add too, By7Param() does not.
void test_transforms_beside_proj::seven_parameters_forward()
{
    const seven_parameters ours{-12.5, 113.25, -38.75, 1.25, -0.75, 2.5, 0.0};
    const QList<triple> points{{-2595420.5, 4875112.25, 3182002.75},
                               {1102450.0, -4772190.0, -4068541.0}};
    const QList<triple> theirs =
        through_proj(u"+proj=helmert +x=-12.5 +y=113.25 +z=-38.75 +rx=1.25 +ry=-0.75 +rz=2.5 "
                     "+convention=coordinate_frame"_s,
                     points);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const auto [x, y, z] = points[i];
        const cartesian_position position = By7Param(ours, {x, y, z});
        QVERIFY(std::fabs(position.x - theirs[i][0]) < 1e-6);
        QVERIFY(std::fabs(position.y - theirs[i][1]) < 1e-6);
        QVERIFY(std::fabs(position.z - theirs[i][2]) < 1e-6);
    }
}

/// Both with a change of datum: the rotations forward only, where they are
/// arc-seconds, and in the north, where the latitude is iterated to its end.
void test_transforms_beside_proj::datum_forward_data()
{
    QTest::addColumn<int>("system");
    QTest::addColumn<bool>("utm");
    for (const int system : {0, 2}) {
        QTest::addRow("%s, Gauss", systems[system].name) << system << false;
        QTest::addRow("%s, UTM", systems[system].name) << system << true;
    }
}

void test_transforms_beside_proj::datum_forward()
{
    QFETCH(int, system);
    QFETCH(bool, utm);
    CoordinateSystem ours = system_of(systems[system]);
    ours.ellipsoid = systems[system].ellipsoid;
    ours.l0 = 117.0;
    ours.param7 = {-12.5, 113.25, -38.75, 1.25, -0.75, 2.5, 1.5e-6};
    ours.utm_mode = utm ? 2 : 1;
    ours.k0 = utm ? 0.9996 : 1.0;
    ours.north = utm ? 1e7 : 0.0;
    const QString definition =
        u"+proj=pipeline +step +proj=cart +a=6378137 +b=6356752.314245179 +step +proj=helmert "
        u"+x=-12.5 "
        "+y=113.25 +z=-38.75 +rx=1.25 +ry=-0.75 +rz=2.5 +s=1.5 +convention=coordinate_frame "
        "+step +inv +proj=cart +a=%1 +b=%2 +step +proj=tmerc +lon_0=117 +x_0=500000 +k=%3 +a=%1 +f=%4"_s
            .arg(number(ours.changzhou), number(ours.duanzhou),
                 number(static_cast<double>(static_cast<float>(ours.k0))), number(ours.pianlv));
    const QList<triple> points = points_about(117.0, 1.0);
    const QList<triple> theirs = through_proj(definition, points);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const plane_position plane = forward(ours, points[i]);
        QVERIFY(std::fabs(plane.x - theirs[i][1]) < millimetre);
        QVERIFY(std::fabs(plane.y - (utm ? 50e6 : 39e6) - theirs[i][0]) < millimetre);
    }
}

void test_transforms_beside_proj::datum_back_data()
{
    datum_forward_data();
}

void test_transforms_beside_proj::datum_back()
{
    QFETCH(int, system);
    QFETCH(bool, utm);
    CoordinateSystem ours = system_of(systems[system]);
    ours.ellipsoid = systems[system].ellipsoid;
    ours.param7 = {-12.5, 113.25, -38.75, 0.0, 0.0, 0.0, 1.5e-6};
    ours.utm_mode = utm ? 2 : 1;
    ours.k0 = utm ? 0.9996 : 1.0;
    const QString definition =
        u"+proj=pipeline +step +proj=cart +a=6378137 +b=6356752.314245179 "
        "+step +proj=helmert +x=-12.5 +y=113.25 +z=-38.75 +s=1.5 "
        "+step +inv +proj=cart +a=%1 +b=%2 +step +proj=tmerc +lon_0=117 +x_0=500000 +k=%3 +a=%1 +f=%4"_s
            .arg(number(ours.changzhou), number(ours.duanzhou),
                 number(static_cast<double>(static_cast<float>(ours.k0))), number(ours.pianlv));
    QList<triple> points;
    for (const double x : {250000.0, 1500000.0, 3334567.0, 5000000.0, 6400000.0}) {
        for (const double y : {380000.0, 500000.0, 500001.5, 610000.25})
            points.append({y, x, 55.5});
    }
    const QList<triple> theirs = through_proj(definition, points, true);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const auto [y, x, h] = points[i];
        const geodetic_position position = back(ours, {x, y + (utm ? 50e6 : 39e6), h});
        QVERIFY(std::fabs(position.l - theirs[i][0]) < angle);
        QVERIFY(std::fabs(position.b - theirs[i][1]) < angle);
        QVERIFY(std::fabs(position.h - theirs[i][2]) < millimetre);
    }
}

QTEST_GUILESS_MAIN(test_transforms_beside_proj)
#include "test_transforms_beside_proj.moc"
