#include "instrument/land_geometry.h"
#include "instrument/memory.h"
#include "instrument/sample_memory.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>

#include <cmath>

using namespace instrument;

class test_instrument_memory : public QObject
{
    Q_OBJECT

private slots:
    void degrees_have_their_published_lengths();
    void a_ring_has_its_area_either_way_round();
    void headings();
    void the_sample_holds_all_kinds();
    void the_sample_lies_in_china();
    void the_sample_fits_its_points();
    void seeds();
    void synthetic();
    void json_and_table();
};

void test_instrument_memory::degrees_have_their_published_lengths()
{
    // Lengths of one degree on WGS-84, as tables of them print: at 45 degrees
    // 111 131.7 m of latitude and 78 846.8 m of longitude, at 30 degrees
    // 96 486.3 m of longitude.
    const auto near = [](double value, double expected) {
        return std::abs(value - expected) < expected * 1e-5;
    };
    QVERIFY(near(distance_between({126, 44.995}, {126, 45.005}), 1111.317));
    QVERIFY(near(distance_between({126, 45}, {126.01, 45}), 788.468));
    QVERIFY(near(distance_between({-10, 30}, {-9.99, 30}), 964.863));
    const position there = moved({126, 45}, {1234.5, -678.9});
    const offset back = step_between(there, {126, 45});
    QVERIFY(near(-back.east, 1234.5));
    QVERIFY(near(back.north, 678.9));
}

void test_instrument_memory::a_ring_has_its_area_either_way_round()
{
    // 0.01 by 0.01 degrees around 45 degrees: 788.468 m by 1111.317 m.
    const QList<position> ring{{126, 44.995}, {126.01, 44.995}, {126.01, 45.005}, {126, 45.005}};
    const double expected = 788.468 * 1111.317;
    QVERIFY(std::abs(ring_area(ring) - expected) < expected * 2e-5);
    QCOMPARE(ring_area({ring[3], ring[2], ring[1], ring[0]}), ring_area(ring));
    QCOMPARE(ring_area(ring.first(2)), 0.0);
    const double round = 2 * (788.468 + 1111.317);
    QVERIFY(std::abs(line_length(ring, true) - round) < 0.1);
    QVERIFY(std::abs(line_length(ring, false) - (round - 1111.317)) < 0.1);
}

void test_instrument_memory::headings()
{
    const position here{126, 45};
    QCOMPARE(heading_between(here, moved(here, {0, 10})), 0);
    QCOMPARE(heading_between(here, moved(here, {10, 10})), 45);
    QCOMPARE(heading_between(here, moved(here, {10, 0})), 90);
    QCOMPARE(heading_between(here, moved(here, {0, -10})), 180);
    QCOMPARE(heading_between(here, moved(here, {-10, 0})), 270);
    QCOMPARE(heading_between(here, moved(here, {-0.001, 10})), 0);
    QCOMPARE(heading_between(here, here), 0);
}

void test_instrument_memory::the_sample_holds_all_kinds()
{
    QMap<measurement_kind, QList<qsizetype>> sizes;
    for (const stored_measurement& one : sample_memory())
        sizes[one.kind].append(one.points.size());
    QCOMPARE(sizes[measurement_kind::area], (QList<qsizetype>{4, 40, 1200, 24, 60, 4}));
    QCOMPARE(sizes[measurement_kind::distance], (QList<qsizetype>{12, 2, 3}));
    QCOMPARE(sizes[measurement_kind::waypoint], (QList<qsizetype>{1, 1, 1}));
    QCOMPARE(sizes[measurement_kind::track], (QList<qsizetype>{2500, 51}));
    QCOMPARE(sizes[measurement_kind::route], (QList<qsizetype>{6, 52}));
    QCOMPARE(sizes[measurement_kind::staking_out], (QList<qsizetype>{9}));
}

void test_instrument_memory::the_sample_lies_in_china()
{
    bool below_the_sea = false;
    for (const stored_measurement& one : sample_memory()) {
        for (const stored_point& point : one.points) {
            QVERIFY(point.longitude > 880000000 && point.longitude < 1350000000);
            QVERIFY(point.latitude > 340000000 && point.latitude < 480000000);
            QVERIFY(point.altitude > -15500 && point.altitude < 30000);
            below_the_sea = below_the_sea || point.altitude < 0;
        }
    }
    QVERIFY(below_the_sea);
}

void test_instrument_memory::the_sample_fits_its_points()
{
    const QSet<int> area_modes{0x00, 0x01, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x20};
    const QSet<int> distance_modes{0x30, 0x31, 0x32, 0x33};
    const QSet<int> other_modes{0x40, 0x41};
    for (const stored_measurement& one : sample_memory()) {
        const bool area = one.kind == measurement_kind::area;
        const bool distance = one.kind == measurement_kind::distance;
        QVERIFY((area ? area_modes : distance ? distance_modes : other_modes).contains(one.mode));
        QVERIFY(one.time_zone <= 25 || one.time_zone == not_set);
        QVERIFY(one.currency <= 4 || one.currency == not_set);
        QVERIFY(one.start.isValid() && one.start.date().year() == 2024);
        QCOMPARE(one.start.addSecs(one.points.constLast().seconds), one.end);

        QList<position> places;
        int before = 0;
        for (const stored_point& point : one.points) {
            places.append({point.longitude / 1e7, point.latitude / 1e7});
            QVERIFY(point.status <= 9 || point.status == not_set);
            QVERIFY(point.heading < 360);
            QVERIFY(point.seconds >= before);
            before = point.seconds;
        }
        const bool strip = one.mode == 0x12;
        const double length = line_length(places, area && !strip);
        QVERIFY(std::abs(one.length / 10.0 - length) <= 0.0501);
        const double expected = !area ? 0.0 : strip ? length * one.width / 10 : ring_area(places);
        QVERIFY(std::abs(one.area - expected) <= 0.501);
        QVERIFY(!area || one.area > 1000);
    }
}

void test_instrument_memory::seeds()
{
    QCOMPARE(sample_memory(7), sample_memory(7));
    QVERIFY(sample_memory(7) != sample_memory(8));
    // Every platform makes the same memory of the usual seed.
    const stored_point first = sample_memory().constFirst().points.constFirst();
    QCOMPARE(first.longitude, 1266500015);
    QCOMPARE(first.latitude, 457500005);
}

void test_instrument_memory::synthetic()
{
    const memory stored = synthetic_memory(14, 33);
    QCOMPARE(stored.size(), 14);
    for (int i = 0; i < 14; ++i) {
        QCOMPARE(static_cast<int>(stored[i].kind), i % 6);
        QCOMPARE(stored[i].points.size(), i % 6 == 2 ? 1 : 33);
    }
    QVERIFY(stored[0].area > 20000);
    QCOMPARE(stored[1].area, 0U);
    QCOMPARE(synthetic_memory(65535, 1).size(), 65535);
}

void test_instrument_memory::json_and_table()
{
    const memory stored = sample_memory();
    const QJsonArray all = QJsonDocument::fromJson(to_json(stored)).array();
    QCOMPARE(all.size(), stored.size());
    const QJsonObject first = all.first().toObject();
    QCOMPARE(first[u"kind"].toInt(), 0);
    QCOMPARE(first[u"kind_name"].toString(), QStringLiteral("area"));
    QCOMPARE(first[u"mode"].toInt(), 0x13);
    QCOMPARE(first[u"start"].toString(), QStringLiteral("2024-04-18T08:12:41"));
    QCOMPARE(first[u"area"].toInteger(), stored[0].area);
    QCOMPARE(first[u"length"].toInteger(), stored[0].length);
    const stored_point& point = stored[0].points[3];
    QCOMPARE(first[u"points"].toArray().at(3).toArray(),
             (QJsonArray{point.longitude, point.latitude, point.altitude, point.speed,
                         point.seconds, point.heading, point.hdop, point.status}));

    const QStringList lines = to_table(stored).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), stored.size() + 1);
    QVERIFY(lines[13].contains(QStringLiteral("track        0x40    2500")));
}

QTEST_APPLESS_MAIN(test_instrument_memory)
#include "test_instrument_memory.moc"
