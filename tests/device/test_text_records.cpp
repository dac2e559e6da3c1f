#include "device/serial_thread.h"
#include "device/text_records.h"
#include "scripted_instrument.h"
#include "support/asked_waits.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace {

// Heads of records, long and short, with a point behind the first 50 characters.
// Values are made up; the digits differ so that no two fields can be mistaken.
const QString short_area = "n2,m1334,l1235;t202403050708,N0001,               ";
const QString long_area = "n2,m1334,l1239;t20240305070809,N0001,time11,t20240305080910,id20240017,"
                          "mode3,md1,jd2,hd4,slope7,width35,price12,total24,";
const QString long_distance = "n2,l1239,m1334;t20240305070809,N0001,time11,t20240305080910,"
                              "id20240017,mode9,jd2,hd4,zj1119,price12,total24,";
const QString long_waypoint = "n1,p1,p2;t20240305070809,N0001,time11,id20240017,sd1,h2,";
const QString long_route = "n2,e1239,m1334;t20240305070809,N0001,time11,id20240017,jd2,";
const QString long_track =
    "n2,k1334,l1239;t20240305070809,N0001,time11,t20240305080910,id20240017,jd2,";
const QString long_staking = "n2,f1239,l1334;t20240305070809,N0001,time11,id20240017,jd2,";

const QString short_point = "104d3'12.5\",-30d30'0.0\",123;";
const QString long_point = "-104d3'12.5\",30d30'0.0\",5,hdop10,speed15,angle359,t20240305070812;";

QString short_head(const QString& middle)
{
    return "n002," + middle + ";t202403050708,N0001,                ";
}

} // namespace

/// Records of the text protocol, one by one and as a stream.
class test_text_records : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void degrees_data();
    void degrees();
    void patterns_data();
    void patterns();
    void short_kinds_data();
    void short_kinds();
    void short_record();
    void six_significant_digits();
    void numbers_beyond_32_bits();
    void long_kinds_data();
    void long_kinds();
    void long_points();
    void long_waypoints_are_dropped();
    void staking_has_no_short_form();
    void passed_over_data();
    void passed_over();
    void empty_parts_before_a_record();
    void unknown_formats_data();
    void unknown_formats();
    void heads_that_do_not_match_data();
    void heads_that_do_not_match();
    void points_in_the_first_fifty_characters_are_lost();
    void characters_are_counted_not_bytes();
    void a_short_point_without_altitude_abandons_the_record();
    void a_long_point_without_altitude_has_zero();
    void signs();
    void times_data();
    void times();
    void end_and_point_times_of_five_digits();
    void all_times_of_four_digits();
    void records_that_are_there_already_data();
    void records_that_are_there_already();
    void parsers_data();
    void parsers();
    void records_that_differ_in_one_thing_data();
    void records_that_differ_in_one_thing();
    void comparing_stops_at_the_shorter_list();

    void a_stream_in_three_parts();
    void a_stream_that_ends_too_early();
    void a_pause_ends_the_stream();
    void a_total_of_zero();
    void a_total_below_zero();
    void a_total_in_less_than_four_characters();
    void the_first_total_counts();
    void line_ends_before_the_stream();
    void a_stream_cut_in_two();
    void repeating_a_read_adds_nothing();

private:
    void open();
    /// Runs the text loop with `first`, from the event loop, to its end.
    void run_loop(const QByteArray& first);

    std::unique_ptr<scripted_instrument> instrument;
    std::unique_ptr<serial_thread> reader;
    std::unique_ptr<log_capture> log;
};

void test_text_records::initTestCase()
{
    qputenv("PATH", ""); // no adb in this test
}

void test_text_records::init()
{
    log = std::make_unique<log_capture>();
    reader = std::make_unique<serial_thread>();
    reader->available_ports = [] { return QList<serial_thread::listed_port>(); };
    log->clear();
}

void test_text_records::cleanup()
{
    reader.reset();
    instrument.reset();
    log.reset();
}

void test_text_records::open()
{
    instrument = std::make_unique<scripted_instrument>();
    reader->port->setPortName(instrument->path());
    QVERIFY(reader->port->open(QIODevice::ReadWrite));
}

void test_text_records::run_loop(const QByteArray& first)
{
    bool returned = false;
    QTimer::singleShot(0, this, [this, first, &returned] {
        reader->text_loop(first);
        returned = true;
    });
    QTRY_VERIFY(returned);
}

void test_text_records::degrees_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("degrees");
    QTest::newRow("usual") << "104d3'12.5\""
                           << "104.053472222222";
    QTest::newRow("zero") << "0d0'0.0\""
                          << "0.000000000000";
    QTest::newRow("only seconds") << "0d0'36.0\""
                                  << "0.010000000000";
    QTest::newRow("no number in the seconds") << "1d30'12x5\""
                                              << "1.500000000000";
    QTest::newRow("parts missing") << "7"
                                   << "7.000000000000";
    QTest::newRow("empty") << ""
                           << "0.000000000000";
}

void test_text_records::degrees()
{
    QFETCH(QString, text);
    QFETCH(QString, degrees);
    QCOMPARE(QString::number(text_records::parse_dms(text), 'f', 12), degrees);
}

void test_text_records::patterns_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("record_pattern");
    QTest::addColumn<QString>("point_pattern");
    const char* const short_form =
        R"re(([+-])?(\d+d\d+'\d+.\d+"),([+-])?(\d+d\d+'\d+.\d+")(,(\d+))?;)re";
    const char* const long_form =
        R"re(([+-])?(\d+d\d+'\d+.\d+"),([+-])?(\d+d\d+'\d+.\d+")(,(\d+))?,hdop(\d+),speed(\d+),angle(\d+),t(\d{8})(\d{4,6});)re";
    const auto row = [](const char* name, const char* text, const char* record, const char* point) {
        QTest::newRow(name) << QString(text) << QString(record) << QString(point);
    };
    row("area", "n1,m1,l2;t1,N1,1d",
        R"re((?:\r\n)?n(\d+),m(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+))re", short_form);
    row("area, long", "n1,m1,l2;t1,N1,time1",
        R"re((?:\r\n)?n(\d+),m(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),mode(\d+),md(\d+),jd(\d+),hd(\d+),slope(\d+),width(\d+),price(\d+),total(\d+))re",
        long_form);
    row("distance", "n1,l1,m2;t1,N1,1d",
        R"re((?:\r\n)?n(\d+),l(\d+),m(\d+);t(\d{8})(\d{4,6}),N(\d+))re", short_form);
    row("distance, long", "n1,l1,m2;t1,N1,time1",
        R"re((?:\r\n)?n(\d+),l(\d+),m(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),mode(\d+),jd(\d+),hd(\d+),zj(\d+),price(\d+),total(\d+))re",
        long_form);
    row("waypoint", "n1,p1,p2;t1,N1,1d",
        R"re((?:\r\n)?n(\d+),p(\d+),p(\d+);t(\d{8})(\d{4,6}),N(\d+))re", short_form);
    row("waypoint, long", "n1,p1,p2;t1,N1,time1",
        R"re((?:\r\n)?n(\d+),p(\d+),p(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),id(\d{8}),sd(\d+),h(\d+))re",
        long_form);
    row("route", "n1,e1,m2;t1,N1,1d",
        R"re((?:\r\n)?n(\d+),e(\d+),m(\d+);t(\d{8})(\d{4,6}),N(\d+))re", short_form);
    row("route, long", "n1,e1,m2;t1,N1,time1",
        R"re((?:\r\n)?n(\d+),e(\d+),m(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),id(\d{8}),jd(\d+))re",
        long_form);
    row("track", "n1,k1,l2;t1,N1,1d",
        R"re((?:\r\n)?n(\d+),k(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+))re", short_form);
    row("track, long", "n1,k1,l2;t1,N1,time1",
        R"re((?:\r\n)?n(\d+),k(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),jd(\d+))re",
        long_form);
    row("staking-out", "n1,f1,l2;t1,N1,time1",
        R"re((?:\r\n)?n(\d+),f(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),id(\d{8}),jd(\d+))re",
        long_form);
    // The fifth part decides by its first letter, and empty parts do not count.
    row("area, long by one letter", "n1,m1,l2;t1,N1,tx",
        R"re((?:\r\n)?n(\d+),m(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),mode(\d+),md(\d+),jd(\d+),hd(\d+),slope(\d+),width(\d+),price(\d+),total(\d+))re",
        long_form);
    row("route, empty parts", ",n1,,e1,m2;t1,,,N1,time1",
        R"re((?:\r\n)?n(\d+),e(\d+),m(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),id(\d{8}),jd(\d+))re",
        long_form);
    row("staking-out, short", "n1,f1,l2;t1,N1,1d",
        R"re((?:\r\n)?n(\d+),f(\d+),l(\d+);t(\d{8})(\d{4,6}),N(\d+),time(\d+),id(\d{8}),jd(\d+))re",
        long_form);
}

/// To the letter, and compiled once for the process.
void test_text_records::patterns()
{
    QFETCH(QString, text);
    const auto recognised = text_records::recognise(text);
    QVERIFY(recognised.has_value());
    QTEST(recognised->record_pattern.pattern(), "record_pattern");
    QTEST(recognised->point_pattern.pattern(), "point_pattern");
    QVERIFY(recognised->record_pattern.isValid() && recognised->point_pattern.isValid());
    const auto again = text_records::recognise(text);
    QCOMPARE(&again->record_pattern, &recognised->record_pattern);
    QCOMPARE(&again->point_pattern, &recognised->point_pattern);
}

void test_text_records::short_kinds_data()
{
    QTest::addColumn<QString>("middle");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("areameter");
    QTest::addColumn<QString>("areamu");
    QTest::addColumn<QString>("distance");
    QTest::newRow("area") << "m1334,l1235"
                          << "面积"
                          << "1334"
                          << "2"
                          << "123.5";
    QTest::newRow("distance") << "l1235,m1334"
                              << "距离"
                              << "1334"
                              << "0"
                              << "123.5";
    QTest::newRow("waypoint") << "p1235,p1334"
                              << "航点"
                              << "0"
                              << "0"
                              << "0";
    QTest::newRow("route") << "e1235,m1334"
                           << "航线"
                           << "1334"
                           << "0"
                           << "123.5";
    QTest::newRow("track") << "k1334,l1235"
                           << "航迹"
                           << "1334"
                           << "0"
                           << "123.5";
}

void test_text_records::short_kinds()
{
    QFETCH(QString, middle);
    QFETCH(QString, method);
    QFETCH(QString, areameter);
    QFETCH(QString, areamu);
    QFETCH(QString, distance);

    reader->parse_record(short_head(middle) + short_point + "!");
    QCOMPARE(reader->table_list.size(), 1);
    measuringData expected;
    expected.numpoint = "2";
    expected.method = method;
    expected.areameter = areameter;
    expected.areamu = areamu;
    expected.distance = distance;
    expected.time = "2024-03-05 07:08:00";
    expected.numrecord = "1";
    expected.name = "202403050708";
    QVERIFY(reader->table_list.first() == expected);
    QVERIFY(log->texts().contains("Number of capture groups: 6"));
}

void test_text_records::short_record()
{
    const QString text = short_area + short_point + short_point + "!";
    reader->parse_record(text);
    QCOMPARE(reader->data_msg, QStringList{"104.053472222222,-30.500000000000,"
                                           "104.053472222222,-30.500000000000"});
    QCOMPARE(reader->data_msg_altitude, QStringList{"104.053472222222,-30.500000000000,12.3\n"
                                                    "104.053472222222,-30.500000000000,12.3\n"});
    const point_msg point{.hdop = "0", .speed = "0", .angle = "0", .time = "0", .status = "0"};
    QVERIFY((reader->point_msg_all == QList<QList<point_msg>>{{point, point}}));
    QCOMPARE(log->texts().first(), "\"" + QString(text).replace("\"", "\\\"") + "\"");
}

void test_text_records::six_significant_digits()
{
    reader->parse_record(short_head("m1234567,l99999999") + short_point + "!");
    QCOMPARE(reader->table_list.first().areameter, "1.23457e+06");
    QCOMPARE(reader->table_list.first().areamu, "1850.93");
    QCOMPARE(reader->table_list.first().distance, "1e+07");
}

void test_text_records::numbers_beyond_32_bits()
{
    reader->parse_record(short_head("m4294967296,l42949672960") + short_point + "!");
    QCOMPARE(reader->table_list.last().areameter, "4.29497e+09");
    QCOMPARE(reader->table_list.last().distance, "4.29497e+09");
    reader->parse_record(QString(long_route).replace("e1239", "e42949672969") + long_point + "!");
    QCOMPARE(reader->table_list.last().distance, "4294967296");
    reader->parse_record(QString(long_distance).replace("zj1119", "zj42949672969") + long_point +
                         "!");
    QCOMPARE(reader->table_list.last().zj, "4294967296");
}

void test_text_records::long_kinds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("groups");
    QTest::addColumn<measuringData>("expected");

    measuringData common;
    common.numpoint = "2";
    common.distance = "123"; // tenths of a metre in whole numbers
    common.areameter = "1334";
    common.time = "2024-03-05 07:08:09";
    common.numrecord = "0001";
    common.timezone = "11";
    common.id = "20240017";
    common.jd = "2";

    measuringData area = common;
    area.method = "面积";
    area.endtime = "2024-03-05 08:09:10";
    area.mode = "3";
    area.md = "1";
    area.hd = "4";
    area.slope = "7";
    area.width = "35";
    area.price = "12";
    area.totalprices = "24";
    QTest::newRow("area") << long_area << 18 << area;

    measuringData distance = common;
    distance.method = "距离";
    distance.endtime = "2024-03-05 08:09:10";
    distance.mode = "9";
    distance.hd = "4";
    distance.zj = "111";
    distance.price = "12";
    distance.totalprices = "24";
    QTest::newRow("distance") << long_distance << 16 << distance;

    measuringData route = common;
    route.method = "航线";
    QTest::newRow("route") << long_route << 9 << route;

    measuringData track = common;
    track.method = "航迹";
    track.endtime = "2024-03-05 08:09:10";
    QTest::newRow("track") << long_track << 11 << track;

    measuringData staking = common;
    staking.method = "放样";
    QTest::newRow("staking-out") << long_staking << 9 << staking;
}

void test_text_records::long_kinds()
{
    QFETCH(QString, text);
    QFETCH(int, groups);
    QFETCH(measuringData, expected);

    reader->parse_record(text + long_point + "!");
    QCOMPARE(reader->table_list.size(), 1);
    QVERIFY(reader->table_list.first() == expected);
    QCOMPARE(reader->point_msg_all.first().size(), 1);
    QVERIFY(log->texts().contains(QStringLiteral("Number of capture groups: %1").arg(groups)));
}

void test_text_records::long_points()
{
    reader->parse_record(long_route + long_point + "!");
    QCOMPARE(reader->data_msg, QStringList{"-104.053472222222,30.500000000000"});
    QCOMPARE(reader->data_msg_altitude, QStringList{"-104.053472222222,30.500000000000,0.5\n"});
    const point_msg point{
        .hdop = "1.0", .speed = "15", .angle = "359", .time = "2024-03-05 07:08:12", .status = "0"};
    QVERIFY(reader->point_msg_all.first().first() == point);
}

/// Their head has ten groups where eight are expected: it matches and is refused.
void test_text_records::long_waypoints_are_dropped()
{
    reader->parse_record(long_waypoint + long_point + "!");
    QVERIFY(reader->table_list.isEmpty());
    QVERIFY(log->texts().contains("Number of capture groups: 10"));
}

void test_text_records::staking_has_no_short_form()
{
    reader->parse_record(short_head("f1235,l1334") + short_point + "!");
    QVERIFY(reader->table_list.isEmpty());
    QCOMPARE(log->texts().size(), 1); // the text; no head matched
}

void test_text_records::passed_over_data()
{
    QTest::addColumn<QString>("text");
    // All but for the beginning whole records.
    const std::pair<const char*, const char*> beginnings[] = {{"another letter", "x"},
                                                              {"blank", " "},
                                                              {"line feed", "\n"},
                                                              {"two line ends", "\r\n\r\n"},
                                                              {"another part", "1,"}};
    for (const auto& [name, before] : beginnings)
        QTest::newRow(name) << before + short_area + short_point + "!";
    QTest::newRow("mark alone") << "!";
}

void test_text_records::passed_over()
{
    QFETCH(QString, text);
    reader->parse_record(text);
    QCOMPARE(log->texts().size(), 1); // the text, and no word about it
    QVERIFY(reader->table_list.isEmpty());
}

void test_text_records::empty_parts_before_a_record()
{
    reader->parse_record(",," + short_area + short_point + "!");
    QCOMPARE(reader->table_list.size(), 1);
}

void test_text_records::unknown_formats_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("unknown letter") << "n2,x1334,l1235;!";
    QTest::newRow("capital") << "n2,M1334,l1235;!";
    QTest::newRow("one part") << "n2!";
    QTest::newRow("after a line end") << "\r\nn2,x1!";
}

void test_text_records::unknown_formats()
{
    QFETCH(QString, text);
    reader->parse_record(text);
    QCOMPARE(log->texts().size(), 2);
    QCOMPARE(log->texts().last(), "Unknown format:  " + log->texts().first());
    QVERIFY(reader->table_list.isEmpty());
}

void test_text_records::heads_that_do_not_match_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("letters for digits") << "n2,mabc,l1235;t202403050708,N1,              ";
    QTest::newRow("short date") << "n2,m1334,l1235;t2024030507,N1,              ";
    QTest::newRow("fewer than five parts") << "n2,m1334";
    // "time" in the fifth place asks for the long form, which this is not.
    QTest::newRow("long form cut short") << "n2,m1334,l1239;t20240305070809,N1,time11,id1,";
    QTest::newRow("identity of seven digits") << QString(long_route).replace("20240017", "2024001");
}

void test_text_records::heads_that_do_not_match()
{
    QFETCH(QString, text);
    reader->parse_record(text + short_point + "!");
    QVERIFY(reader->table_list.isEmpty());
    QCOMPARE(log->texts().size(), 1);
}

void test_text_records::points_in_the_first_fifty_characters_are_lost()
{
    const QString head = "n2,m1334,l1235;t202403050708,N0001,"; // 35 characters
    reader->parse_record(head + short_point + short_point + "!");
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->point_msg_all.first().size(), 1);

    // From the fifty-first on none is.
    const QString padded = head + QString(15, ' ');
    QCOMPARE(padded.size(), 50);
    reader->recv_cmd_from_key(0, {}, {}, {}, {});
    reader->parse_record(padded + short_point + short_point + "!");
    QCOMPARE(reader->point_msg_all.first().size(), 2);

    // The cut may go through a number: what is left of it is a point all the same.
    for (const int before : {1, 2}) { // of "104d"; one more or less would show
        reader->recv_cmd_from_key(0, {}, {}, {}, {});
        reader->parse_record(padded.chopped(before) + short_point + "!");
        QVERIFY(reader->data_msg.first().startsWith("4.0534"));
    }
}

/// The text is UTF-8, and the cut falls behind fifty characters of it.
void test_text_records::characters_are_counted_not_bytes()
{
    const QString head = "n2,m1334,l1235;t202403050708,N0001,"; // 35 characters
    // Five characters of three bytes each: the first point begins at the forty-first
    // character, which is the fifty-first byte.
    const QString text = head + QString(5, QChar(0x4ea9)) + short_point + short_point + "!";
    QCOMPARE(text.indexOf(short_point), 40);
    run_loop(text.toUtf8());
    QCOMPARE(reader->data_msg, QStringList{"104.053472222222,-30.500000000000"});
}

void test_text_records::a_short_point_without_altitude_abandons_the_record()
{
    reader->parse_record(short_area + short_point + "104d3'12.5\",30d30'0.0\";" + short_point +
                         "!");
    QVERIFY(reader->table_list.isEmpty());
    QVERIFY(reader->data_msg.isEmpty());
}

void test_text_records::a_long_point_without_altitude_has_zero()
{
    reader->parse_record(long_route + QString(long_point).replace(",5,hdop", ",hdop") + "!");
    QCOMPARE(reader->data_msg_altitude, QStringList{"-104.053472222222,30.500000000000,0.0\n"});
}

void test_text_records::signs()
{
    reader->parse_record(short_area + "+104d3'12.5\",-30d30'0.0\",0123;"
                                      "-0d0'36.0\",+0d0'36.0\",99999999999999999999;!");
    QCOMPARE(reader->data_msg_altitude.first().section('\n', 0, 0),
             "104.053472222222,-30.500000000000,12.3");
    QVERIFY(reader->data_msg_altitude.first()
                .section('\n', 1, 1)
                .startsWith("-0.010000000000,0.010000000000,"));
}

void test_text_records::times_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("name");
    QTest::newRow("four digits") << short_area << "2024-03-05 07:08:00"
                                 << "202403050708";
    QTest::newRow("six digits") << QString(short_area).replace("0708,", "070809,")
                                << "2024-03-05 07:08:09"
                                << "20240305070809";
    QTest::newRow("five digits") << QString(short_area).replace("0708,", "07080,") << "0"
                                 << "2024030507080";
    // A date that there is not is the beginning of all seconds.
    QTest::newRow("no date") << QString(short_area).replace("20240305", "20241332")
                             << QDateTime::fromSecsSinceEpoch(0).toString("yyyy-MM-dd HH:mm:ss")
                             << "202413320708";
    QTest::newRow("five digits, long")
        << QString(long_area).replace("t20240305070809", "t2024030507080") << "0"
        << "0";
}

void test_text_records::times()
{
    QFETCH(QString, text);
    QFETCH(QString, time);
    QFETCH(QString, name);
    reader->parse_record(text + long_point + short_point + "!");
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->table_list.first().time, time);
    QCOMPARE(reader->table_list.first().name, name);
}

void test_text_records::end_and_point_times_of_five_digits()
{
    const QString head = QString(long_track).replace("080910", "08091");
    reader->parse_record(head + QString(long_point).replace("070812", "07081") + long_point + "!");
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->table_list.first().time, "2024-03-05 07:08:09");
    QCOMPARE(reader->table_list.first().endtime, "0");
    const QList<point_msg> points = reader->point_msg_all.first();
    QCOMPARE(points.size(), 2);
    QCOMPARE(points[0].time, "");
    QCOMPARE(points[1].time, "2024-03-05 07:08:12");
}

void test_text_records::all_times_of_four_digits()
{
    const QString head =
        QString(long_track).replace("20240305070809", "202403050708").replace("080910", "0809");
    reader->parse_record(head + QString(long_point).replace("070812", "0708") + "!");
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->table_list.first().time, "2024-03-05 07:08:00");
    QCOMPARE(reader->table_list.first().endtime, "2024-03-05 08:09:00");
    QCOMPARE(reader->point_msg_all.first().first().time, "2024-03-05 07:08:00");
}

void test_text_records::records_that_are_there_already_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("says_so");
    QTest::newRow("short area") << short_area + short_point << false;
    QTest::newRow("long area") << long_area + long_point << false;
    QTest::newRow("distance") << long_distance + long_point << false;
    QTest::newRow("route") << long_route + long_point << false;
    QTest::newRow("track") << long_track + long_point << false;
    QTest::newRow("staking-out") << long_staking + long_point << false;
    QTest::newRow("waypoint") << short_head("p1,p2") + short_point << true;
}

void test_text_records::records_that_are_there_already()
{
    QFETCH(QString, text);
    QFETCH(bool, says_so);
    reader->parse_record(text + "!");
    QCOMPARE(reader->table_list.size(), 1);
    log->clear();
    reader->parse_record(text + "!");
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->data_msg.size(), 1);
    QCOMPARE(reader->data_msg_altitude.size(), 1);
    QCOMPARE(reader->point_msg_all.size(), 1);
    QCOMPARE(log->texts().contains("table_list has this data!"), says_so);
}

void test_text_records::parsers_data()
{
    using parser = int (serial_thread::*)(const QRegularExpression&, const QRegularExpression&,
                                          const QString&);
    QTest::addColumn<parser>("parse");
    QTest::addColumn<QString>("text");
    QTest::newRow("area") << &serial_thread::parse_area_record << long_area + long_point;
    QTest::newRow("distance") << &serial_thread::parse_distance_record
                              << long_distance + long_point;
    QTest::newRow("waypoint") << &serial_thread::parse_waypoint_record
                              << short_head("p1,p2") + short_point;
    QTest::newRow("route") << &serial_thread::parse_route_record << long_route + long_point;
    QTest::newRow("track") << &serial_thread::parse_track_record << long_track + long_point;
    QTest::newRow("staking-out") << &serial_thread::parse_staking_record
                                 << long_staking + long_point;
}

/// 0 for a record that was added, 1 for one that is there already or no record.
void test_text_records::parsers()
{
    using parser = int (serial_thread::*)(const QRegularExpression&, const QRegularExpression&,
                                          const QString&);
    QFETCH(parser, parse);
    QFETCH(QString, text);
    const auto recognised = text_records::recognise(text);
    QVERIFY(recognised.has_value());
    const auto result_of = [&](const QString& record) {
        return (reader.get()->*parse)(recognised->record_pattern, recognised->point_pattern,
                                      record);
    };
    QCOMPARE(result_of(QString(text).replace("t2024", "t20x4")), 1);
    QCOMPARE(result_of(text), 0);
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(result_of(text), 1);
    QCOMPARE(reader->table_list.size(), 1);
}

void test_text_records::records_that_differ_in_one_thing_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    const auto row = [](const char* name, const QString& first, const QString& before,
                        const QString& after) {
        QTest::newRow(name) << first << QString(first).replace(before, after);
    };
    const QString text = short_area + short_point + "!";
    const QString long_text = long_area + long_point + "!";
    row("name", text, "0708,", "070800,");                          // the same time
    row("time", long_text, "20240305070809,N", "20240305070810,N"); // no name
    row("distance", text, "l1235", "l1236");
    row("records", text, "N0001", "N0002");
    row("area", text, "m1334", "m1335");
    row("altitude", text, ",123;", ",124;");
    // Other fields are not compared: neither the number of points, nor the kind, nor
    // the end, nor what else a long record has makes another record.
    row("same: number of points", text, "n2", "n3");
    row("same: kind", text, "m1334,l1235", "k1334,l1235");
    row("same: end", long_text, "080910", "080911");
    row("same: price", long_text, "price12", "price13");
    row("same: point's time", long_text, "070812", "070813");
}

void test_text_records::records_that_differ_in_one_thing()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QVERIFY(first != second);
    reader->parse_record(first);
    reader->parse_record(second);
    const bool same = QByteArray(QTest::currentDataTag()).startsWith("same");
    QCOMPARE(reader->table_list.size(), same ? 1 : 2);
}

/// A head of a failed binary read leaves the table longer than the other lists.
void test_text_records::comparing_stops_at_the_shorter_list()
{
    const QString text = short_head("m1,l1") + "!"; // without a point
    reader->parse_record(text);
    QCOMPARE(reader->data_msg_altitude, QStringList{""});
    reader->data_msg_altitude.clear();
    reader->parse_record(text);
    QCOMPARE(reader->table_list.size(), 2);
}

void test_text_records::a_stream_in_three_parts()
{
    open();
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    QList<QByteArray> parts;
    for (const char* const area : {"m1334", "m1335", "m1336"}) {
        parts += (QString(short_area).replace("m1334", area).replace("N0001", "N0003") +
                  short_point + "!")
                     .toUtf8();
    }
    // Nothing is parsed before the third is there.
    QList<qsizetype> parsed;
    connect(reader.get(), &serial_thread::read_data_set_progressbar, this, [&] {
        parsed += reader->table_list.size();
        if (progress.size() < 3)
            instrument->say(parts[progress.size()]);
    });
    run_loop(parts[0]);
    QCOMPARE(progress.size(), 3);
    QCOMPARE(progress[0][0].toInt(), 33);
    QCOMPARE(progress[1][0].toInt(), 66);
    QCOMPARE(progress[2][0].toInt(), 100);
    QCOMPARE(parsed, (QList<qsizetype>{0, 0, 0}));
    QCOMPARE(reader->table_list.size(), 3);
    QCOMPARE(reader->table_list[2].areameter, "1336");
    QVERIFY(reader->text_buffer.isEmpty());
}

void test_text_records::a_stream_that_ends_too_early()
{
    open();
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    run_loop((QString(short_area).replace("N0001", "N0002") + short_point + "!").toUtf8());
    QCOMPARE(progress.size(), 1);
    QCOMPARE(progress[0][0].toInt(), 50);
    QVERIFY(reader->table_list.isEmpty());
}

/// Of 200 ms, in which nothing comes. What comes is logged.
void test_text_records::a_pause_ends_the_stream()
{
    open();
    const QByteArray record = (short_area + short_point + "!").toUtf8();
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    connect(reader.get(), &serial_thread::read_data_set_progressbar, this, [&] {
        if (progress.size() == 1)
            QVERIFY(instrument->say(record));
    });
    QElapsedTimer elapsed;
    elapsed.start();
    asked_single_shots().clear();
    run_loop(record);
    QVERIFY(elapsed.elapsed() >= 390); // timers count in their own milliseconds
    // 0 is this test's own, which starts the loop.
    QCOMPARE(asked_single_shots(), (QList<int>{0, 200, 200}));
    QCOMPARE(progress.size(), 2);
    QVERIFY(log->has(QStringLiteral("SERIAL_RX LEN=%1 HEX=").arg(record.size())));
}

void test_text_records::a_total_of_zero()
{
    open();
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    run_loop((QString(short_area).replace("N0001", "N0000") + short_point + "!").toUtf8());
    QVERIFY(progress.isEmpty());
    QVERIFY(reader->table_list.isEmpty());
}

/// Is no more than what has come, like any other small number.
void test_text_records::a_total_below_zero()
{
    open();
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    run_loop(("N-005" + short_area + short_point + "!" + short_area + short_point + "!").toUtf8());
    QCOMPARE(progress.size(), 1);
    QCOMPARE(progress[0][0].toInt(), -40);
    QVERIFY(reader->text_buffer.isEmpty());
    QCOMPARE(reader->table_list.size(), 1); // the second; the first does not begin with "n"
}

void test_text_records::a_total_in_less_than_four_characters()
{
    open();
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    run_loop((QString(short_area).replace("N0001,", "N1,   ") + short_point + "!").toUtf8());
    QVERIFY(progress.isEmpty());
    QVERIFY(reader->table_list.isEmpty());
}

/// And a stream may hold more records than that.
void test_text_records::the_first_total_counts()
{
    const QString record = short_area + short_point + "!";
    run_loop((record + QString(record).replace("N0001", "N0009")).toUtf8());
    QCOMPARE(reader->table_list.size(), 2);
}

void test_text_records::line_ends_before_the_stream()
{
    open();
    const QByteArray record = (short_area + short_point + "!").toUtf8();
    for (const char* const before : {"\r\n", "\n", "\r\n\n"}) {
        reader->recv_cmd_from_key(0, {}, {}, {}, {});
        run_loop(before + record);
        QCOMPARE(reader->table_list.size(), 1);
    }
    // A second line end is one too many for the record's own pattern.
    reader->recv_cmd_from_key(0, {}, {}, {}, {});
    run_loop("\r\n\r\n\r\n" + record);
    QVERIFY(reader->table_list.isEmpty());
}

/// At any byte: within numbers, words, points and line ends.
void test_text_records::a_stream_cut_in_two()
{
    const QByteArray stream =
        ("\r\n" + QString(short_area).replace("N0001", "N0002") + short_point + "!\r\n" +
         QString(long_track).replace("N0001", "N0002") + long_point + "!")
            .toUtf8();
    run_loop(stream);
    QCOMPARE(reader->table_list.size(), 2);

    // Side by side, for each piece costs a pause.
    std::vector<std::unique_ptr<serial_thread>> readers;
    for (qsizetype at = 1; at < stream.size(); ++at) {
        readers.push_back(std::make_unique<serial_thread>());
        readers.back()->available_ports = [] { return QList<serial_thread::listed_port>(); };
    }
    const auto run_all = [&](const std::function<QByteArray(qsizetype)>& piece) {
        std::size_t returned = 0;
        for (std::size_t index = 0; index < readers.size(); ++index) {
            // Not 0: what is posted waits for the one before it to return.
            QTimer::singleShot(1, this, [&, index] {
                readers[index]->text_loop(piece(static_cast<qsizetype>(index) + 1));
                ++returned;
            });
        }
        QTRY_COMPARE_WITH_TIMEOUT(returned, readers.size(), 60000);
    };
    run_all([&stream](qsizetype at) { return stream.first(at); });
    for (const auto& one : readers)
        QVERIFY(one->table_list.isEmpty());
    run_all([&stream](qsizetype at) { return stream.sliced(at); });
    for (const auto& one : readers) {
        QVERIFY(one->table_list == reader->table_list);
        QCOMPARE(one->data_msg, reader->data_msg);
        QCOMPARE(one->data_msg_altitude, reader->data_msg_altitude);
        QVERIFY(one->point_msg_all == reader->point_msg_all);
        QVERIFY(one->text_buffer.isEmpty());
    }
}

void test_text_records::repeating_a_read_adds_nothing()
{
    const QByteArray stream =
        (QString(long_area).replace("N0001", "N0002") + long_point + "!\r\n" +
         QString(long_track).replace("N0001", "N0002").replace("k1334", "k1335") + long_point + "!")
            .toUtf8();
    instrument = std::make_unique<scripted_instrument>(
        [stream](const scripted_instrument::request&) { return stream; });
    reader->port->setPortName(instrument->path());
    QVERIFY(reader->port->open(QIODevice::ReadWrite));
    box_watcher watcher;
    QSignalSpy finished(reader.get(), &serial_thread::read_data_finished);
    QSignalSpy button(reader.get(), &serial_thread::button_control);
    for (qsizetype count = 1; count <= 2; ++count) {
        QTimer::singleShot(0, this, [this] {
            reader->recv_cmd_from_key(1, reader->table_list, reader->data_msg,
                                      reader->data_msg_altitude, reader->point_msg_all);
        });
        QTRY_COMPARE(button.size(), 2 * count);
        // The lists are handed on whole, as new ones.
        QCOMPARE(finished.size(), count);
        QCOMPARE(finished.last()[0].value<QList<measuringData>>().size(), 2);
    }
    QCOMPARE(watcher.texts(), (QStringList{"数据读取完成", "数据读取完成"}));
}

QTEST_MAIN(test_text_records)
#include "test_text_records.moc"
