#include "device/binary_records.h"
#include "device/serial_thread.h"
#include "instrument_frames.h"
#include "scripted_instrument.h"
#include "support/log_capture.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>
#include <memory>
#include <random>

using instrument_frames::head;
using instrument_frames::point;
using instrument_frames::points;

namespace {

/// A box that the program would have shown.
struct shown_box
{
    QMessageBox::Icon icon;
    QString title;
    QString text;
    bool operator==(const shown_box&) const = default;
};

const shown_box bad_frame{QMessageBox::Warning, "数据读取", "数据读取失败"};

/// `bytes` with a checksum that is right again.
QByteArray sealed(QByteArray bytes)
{
    bytes.back() = static_cast<char>(frame::crc8(QByteArrayView(bytes).chopped(1)));
    return bytes;
}

} // namespace

/// Measurement frames through serial_thread::process_export_frame, with an open
/// port, so that a good frame has its successor asked for.
class test_binary_records : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void head_fills_a_record();
    void head_bytes_data();
    void head_bytes();
    void refused_head_data();
    void refused_head();
    void too_small_a_frame();
    void what_a_refused_head_leaves();
    void points_fill_the_lists();
    void measurement_in_two_frames();
    void bytes_before_the_points_are_not_read();
    void lists_keep_what_the_read_began_with();
    void a_head_without_points();
    void refused_points_data();
    void refused_points();
    void points_after_a_refused_head();
    void refused_points_keep_what_was_there();
    void as_many_points_as_a_frame_holds();
    void points_after_a_whole_measurement_repeat_it();
    void another_mode_is_only_logged();
    void statuses_data();
    void statuses();
    void start_time_that_is_no_date();
    void signs_of_coordinates();
    void number_texts_are_those_of_the_quotients();
    void no_progress_without_an_announced_count();
    void a_second_download_doubles_the_lists();
    void random_streams();

private:
    /// Whether the last frame was taken, from the request that followed it.
    bool taken(const QByteArray& frame);

    std::unique_ptr<scripted_instrument> instrument;
    std::unique_ptr<serial_thread> reader;
    QList<shown_box> boxes;
};

void test_binary_records::initTestCase()
{
    qputenv("PATH", ""); // no adb in this test
}

void test_binary_records::init()
{
    instrument = std::make_unique<scripted_instrument>();
    reader = std::make_unique<serial_thread>();
    reader->available_ports = [] { return QList<serial_thread::listed_port>(); };
    reader->show_box = [this](QMessageBox::Icon icon, const QString& title, const QString& text) {
        boxes.append({icon, title, text});
    };
    reader->device_token = instrument_frames::token();
    reader->port->setPortName(instrument->path());
    QVERIFY(reader->port->open(QIODevice::ReadWrite));
    boxes.clear();
}

void test_binary_records::cleanup()
{
    reader.reset();
    instrument.reset();
}

bool test_binary_records::taken(const QByteArray& frame)
{
    reader->export_timer->stop();
    reader->export_active = false;
    boxes.clear();
    QSignalSpy button(reader.get(), &serial_thread::button_control);
    reader->process_export_frame(frame);
    const bool good = reader->export_active;
    // Either the next request is out and its time runs, or the read has ended.
    if (reader->export_timer->isActive() != good || boxes.isEmpty() != good ||
        button.isEmpty() != good)
        qFatal("a read in between");
    return good;
}

void test_binary_records::head_fills_a_record()
{
    const log_capture log;
    reader->retry_count = 1;
    QVERIFY(taken(head{}.frame()));
    QCOMPARE(reader->table_list.size(), 1);

    measuringData expected;
    expected.numpoint = "2";
    expected.method = "面积";
    expected.price = "12";
    expected.distance = "123.4";
    expected.areamu = "2.00";
    expected.areameter = "1334";
    expected.hd = "1";
    expected.time = "2024-3-5 7:8:9";
    expected.endtime = "2024-12-31 23:59:58";
    expected.numrecord = "1";
    expected.name = "2024-3-5 7:8:9";
    expected.timezone = "11";
    expected.mode = "1";
    expected.width = "3.5";
    expected.id = "20240017";
    QVERIFY(reader->table_list.first() == expected);

    QCOMPARE(reader->points_total, 2U);
    QCOMPARE(reader->points_received, 0U);
    QCOMPARE(reader->record_all, 1);
    QCOMPARE(reader->retry_count, 0);
    QVERIFY(log.texts().contains("into    setp2    !!!!!!!!!!!!!!!!! "));
    QVERIFY(log.texts().contains("table_list.size 1"));
    // Offsets 6 to 9 of the request are the token.
    QTRY_COMPARE(instrument->requests().size(), 1);
    QCOMPARE(instrument->requests().first().bytes, QByteArray::fromHex("5A2DFD000004010203048A"));
    QCOMPARE(reader->export_timer->interval(), 5000);
}

void test_binary_records::head_bytes_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");

    const char* const methods[] = {"面积", "距离", "航点", "航迹", "航线", "放样"};
    for (int kind = 0; kind < 6; ++kind)
        QTest::addRow("kind %d", kind) << head{.kind = kind}.frame() << "method" << methods[kind];
    const std::pair<int, const char*> modes[] = {
        {0, "7"},     {1, "8"},     {0x10, "1"},  {0x11, "5"},  {0x12, "3"}, {0x13, "4"},
        {0x14, "2"},  {0x15, "6"},  {0x16, "13"}, {0x20, "14"}, {0x30, "9"}, {0x31, "10"},
        {0x32, "11"}, {0x33, "12"}, {0x40, "15"}, {0x41, "16"}, {255, "0"}};
    for (const auto& [byte, code] : modes)
        QTest::addRow("mode %d", byte) << head{.mode = byte}.frame() << "mode" << code;
    const std::pair<int, const char*> currencies[] = {{0, "1"}, {1, "5"}, {2, "4"},
                                                      {3, "3"}, {4, "2"}, {255, "0"}};
    for (const auto& [byte, code] : currencies)
        QTest::addRow("currency %d", byte) << head{.currency = byte}.frame() << "hd" << code;
    const std::pair<int, const char*> zones[] = {{0, "2"}, {1, "3"}, {25, "27"}, {255, "0"}};
    for (const auto& [byte, code] : zones)
        QTest::addRow("zone %d", byte) << head{.timezone = byte}.frame() << "timezone" << code;

    QTest::newRow("no width") << head{.width = 255}.frame() << "width"
                              << "0";
    QTest::newRow("width 0") << head{.width = 0}.frame() << "width"
                             << "0.0";
    QTest::newRow("width 254") << head{.width = 254}.frame() << "width"
                               << "25.4";
    QTest::newRow("no price") << head{.price = 255}.frame() << "price"
                              << "0";
    QTest::newRow("price 254") << head{.price = 254}.frame() << "price"
                               << "254";
    QTest::newRow("largest id") << head{.id = 0xFFFFFFFF}.frame() << "id"
                                << "4294967295";
    QTest::newRow("largest area") << head{.square_metres = 0xFFFFFFFF}.frame() << "areameter"
                                  << "4294967295";
    QTest::newRow("largest area in mu") << head{.square_metres = 0xFFFFFFFF}.frame() << "areamu"
                                        << "6439231.33";
    QTest::newRow("largest length") << head{.length_tenths = 0xFFFFFFFF}.frame() << "distance"
                                    << "429496729.5";
    QTest::newRow("most points") << head{.points = 0xFFFFFFFF}.frame() << "numpoint"
                                 << "4294967295";
    QTest::newRow("most records") << head{.records = 0xFFFF}.frame() << "numrecord"
                                  << "65535";
    // The digits of packed-decimal bytes are not checked: F is 15, so FF is 165.
    QTest::newRow("no decimal digits")
        << head{.start = QByteArray::fromHex("FF1A00000000")}.frame() << "time"
        << "2165-20-0 0:0:0";
}

void test_binary_records::head_bytes()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, field);
    QFETCH(QString, text);
    const QMap<QString, QString measuringData::*> fields{
        {"method", &measuringData::method},
        {"mode", &measuringData::mode},
        {"hd", &measuringData::hd},
        {"timezone", &measuringData::timezone},
        {"width", &measuringData::width},
        {"price", &measuringData::price},
        {"id", &measuringData::id},
        {"areameter", &measuringData::areameter},
        {"areamu", &measuringData::areamu},
        {"distance", &measuringData::distance},
        {"numpoint", &measuringData::numpoint},
        {"time", &measuringData::time},
        {"numrecord", &measuringData::numrecord},
    };

    const log_capture quiet;
    QVERIFY(taken(frame));
    QCOMPARE(reader->table_list.first().*fields.value(field), text);
}

void test_binary_records::refused_head_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("warning");

    const auto of_size = [](const QByteArray& data) { return frame::build_frame(0x2F, 0, data); };
    QTest::newRow("too short") << of_size(head{}.data().chopped(1))
                               << "Invalid 0x2f frame length: 42";
    QTest::newRow("too long") << of_size(head{}.data() + 'x') << "Invalid 0x2f frame length: 44";
    QTest::newRow("zone 26") << head{.timezone = 26}.frame()
                             << "Invalid 0x2f parameter value, timezone: 26 price unit: 0";
    QTest::newRow("zone 254") << head{.timezone = 254}.frame()
                              << "Invalid 0x2f parameter value, timezone: 254 price unit: 0";
    QTest::newRow("currency 5") << head{.currency = 5}.frame()
                                << "Invalid 0x2f parameter value, timezone: 9 price unit: 5";
    QTest::newRow("currency 254") << head{.currency = 254}.frame()
                                  << "Invalid 0x2f parameter value, timezone: 9 price unit: 254";
    QTest::newRow("kind 6") << head{.kind = 6}.frame() << "Unknown export measurement mode: 6";
    QTest::newRow("kind 255") << head{.kind = 255}.frame()
                              << "Unknown export measurement mode: 255";
    QTest::newRow("mode 2") << head{.mode = 2}.frame() << "Invalid 0x2f measurement method: 2";
    QTest::newRow("mode 254") << head{.mode = 254}.frame()
                              << "Invalid 0x2f measurement method: 254";
    QTest::newRow("length before zone")
        << of_size(head{.timezone = 26}.data() + 'x') << "Invalid 0x2f frame length: 44";
    QTest::newRow("zone before kind") << head{.kind = 6, .timezone = 26}.frame()
                                      << "Invalid 0x2f parameter value, timezone: 26 price unit: 0";
    QTest::newRow("kind before mode")
        << head{.kind = 6, .mode = 2}.frame() << "Unknown export measurement mode: 6";
}

void test_binary_records::refused_head()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, warning);

    const log_capture log;
    QVERIFY(!taken(frame));
    QCOMPARE(boxes, QList{bad_frame});
    QVERIFY(reader->table_list.isEmpty());
    QCOMPARE(log.texts(), (QStringList{"into    setp2    !!!!!!!!!!!!!!!!! ", warning}));
    QCOMPARE(log.lines().last().type, QtWarningMsg);
}

void test_binary_records::too_small_a_frame()
{
    const log_capture quiet;
    QVERIFY(!taken(QByteArray()));
    QCOMPARE(boxes, QList{bad_frame});
    QVERIFY(!taken(QByteArray::fromHex("5A3000000000")));
    QCOMPARE(boxes, QList{bad_frame});
}

void test_binary_records::what_a_refused_head_leaves()
{
    const log_capture quiet;
    QVERIFY(taken(head{.points = 3, .records = 7}.frame()));
    QVERIFY(taken(points({{}, {}})));

    // A bad parameter is found before anything of the measurement is given up ...
    QVERIFY(!taken(head{.timezone = 26}.frame()));
    QCOMPARE(reader->points_received, 2U);
    QCOMPARE(reader->points_total, 3U);
    QCOMPARE(reader->current_points.size(), 2);
    // ... a bad kind after the count of points is taken over ...
    QVERIFY(!taken(head{.points = 9, .kind = 6, .records = 5}.frame()));
    QCOMPARE(reader->points_received, 0U);
    QCOMPARE(reader->points_total, 9U);
    QVERIFY(reader->current_plain.isEmpty());
    QVERIFY(reader->current_lines.isEmpty());
    QVERIFY(reader->current_points.isEmpty());
    QCOMPARE(reader->record_all, 7);
    // ... and a bad mode after the announced measurements are.
    QVERIFY(!taken(head{.records = 5, .mode = 2}.frame()));
    QCOMPARE(reader->record_all, 5);
    QCOMPARE(reader->table_list.size(), 1);
}

void test_binary_records::points_fill_the_lists()
{
    const log_capture log;
    QSignalSpy finished(reader.get(), &serial_thread::read_data_finished);
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    QVERIFY(taken(head{.records = 3}.frame()));
    QVERIFY(finished.isEmpty());

    const point far{.longitude = -1799999999,
                    .latitude = 899999999,
                    .altitude_cm = -12,
                    .speed = 255,
                    .seconds = 65535,
                    .heading = 0,
                    .hdop = 255,
                    .status = 255};
    QVERIFY(taken(points({{}, far})));

    QCOMPARE(reader->data_msg, QStringList{"104.053472200000,-30.500000100000,"
                                           "-179.999999900000,89.999999900000"});
    QCOMPARE(reader->data_msg_altitude, QStringList{"104.053472200000,-30.500000100000,512.34\n"
                                                    "-179.999999900000,89.999999900000,-0.12\n"});
    const point_msg near_msg{.hdop = "0.8",
                             .speed = "1.5",
                             .angle = "359",
                             .time = "2024-03-05 07:08:12",
                             .status = "4"};
    const point_msg far_msg{.hdop = "25.5",
                            .speed = "25.5",
                            .angle = "0",
                            .time = "2024-03-06 01:20:24",
                            .status = "255"};
    QVERIFY((reader->point_msg_all == QList<QList<point_msg>>{{near_msg, far_msg}}));

    QCOMPARE(finished.size(), 1);
    QVERIFY(finished[0][0].value<QList<measuringData>>() == reader->table_list);
    QCOMPARE(finished[0][1].toStringList(), reader->data_msg);
    QCOMPARE(finished[0][2].toStringList(), reader->data_msg_altitude);
    QVERIFY(finished[0][3].value<QList<QList<point_msg>>>() == reader->point_msg_all);
    QCOMPARE(progress.size(), 1);
    QCOMPARE(progress[0][0].toInt(), 33);
    QCOMPARE(reader->record_count, 1);
    QCOMPARE(reader->points_received, 0U);
    QVERIFY(log.texts().contains("record_count 1 record_all 3"));
    QVERIFY(!log.has("does not match"));
}

void test_binary_records::measurement_in_two_frames()
{
    const log_capture quiet;
    QSignalSpy finished(reader.get(), &serial_thread::read_data_finished);
    QVERIFY(taken(head{.points = 3}.frame()));
    QVERIFY(taken(points({{}, {}})));
    QVERIFY(finished.isEmpty());
    QCOMPARE(reader->points_received, 2U);
    QVERIFY(reader->data_msg.isEmpty());
    QVERIFY(taken(points({{}})));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(reader->point_msg_all.first().size(), 3);
    QCOMPARE(reader->data_msg.first().count(','), 5);
}

void test_binary_records::bytes_before_the_points_are_not_read()
{
    const log_capture quiet;
    for (const char* bytes : {"FFFFFFFF", "00000000", "5A300102"}) {
        QVERIFY(taken(head{.points = 1}.frame()));
        QVERIFY(taken(sealed(points({{}}).replace(6, 4, QByteArray::fromHex(bytes)))));
    }
    QCOMPARE(reader->data_msg_altitude,
             QStringList(3, "104.053472200000,-30.500000100000,512.34\n"));
}

void test_binary_records::lists_keep_what_the_read_began_with()
{
    const log_capture quiet;
    reader->recv_cmd_from_key(0, {measuringData{}}, {"1,2"}, {"1,2,3\n"}, {{point_msg{}}});
    QVERIFY(taken(head{.points = 1}.frame()));
    QSignalSpy finished(reader.get(), &serial_thread::read_data_finished);
    QVERIFY(taken(points({{}})));
    QCOMPARE(finished[0][0].value<QList<measuringData>>().size(), 2);
    QCOMPARE(finished[0][1].toStringList().first(), "1,2");
}

void test_binary_records::a_head_without_points()
{
    const log_capture log;
    QVERIFY(taken(head{.points = 0}.frame()));
    QCOMPARE(reader->table_list.first().numpoint, "0");
    QVERIFY(!taken(points({{}})));
    QVERIFY(log.texts().contains("Invalid 0x30 frame, frame length: 31 data length: 24"));
    QCOMPARE(boxes, QList{bad_frame});
    // The record stays, in this list alone.
    QCOMPARE(reader->table_list.size(), 1);
    QVERIFY(reader->data_msg.isEmpty());
}

void test_binary_records::refused_points_data()
{
    QTest::addColumn<bool>("after_head");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("warning");

    const auto of_size = [](int size) { return frame::build_frame(0x30, 0, QByteArray(size, 0)); };
    QTest::newRow("no head") << false << points({{}})
                             << "Invalid 0x30 frame, frame length: 31 data length: 24";
    QTest::newRow("no data") << true << of_size(0)
                             << "Invalid 0x30 frame, frame length: 7 data length: 0";
    QTest::newRow("no point") << true << of_size(5)
                              << "Invalid 0x30 frame, frame length: 12 data length: 5";
    QTest::newRow("no whole point")
        << true << of_size(25) << "Invalid 0x30 frame, frame length: 32 data length: 25";
    QTest::newRow("more than its length says")
        << true << points({{}}) + 'x' << "Invalid 0x30 frame, frame length: 32 data length: 24";
    QTest::newRow("52 points") << true << points(QList<point>(52))
                               << "Invalid 0x30 point count: 52 remaining: 60";
    QTest::newRow("61 of 60 points")
        << true << points(QList<point>(61)) << "Invalid 0x30 point count: 61 remaining: 60";
    QTest::newRow("count before status") << true << points(QList<point>(52, {.status = 10}))
                                         << "Invalid 0x30 point count: 52 remaining: 60";
    QTest::newRow("status 10") << true << points({{}, {.status = 10}})
                               << "Invalid 0x30 positioning status: 10";
    QTest::newRow("status 254") << true << points({{}, {.status = 254}})
                                << "Invalid 0x30 positioning status: 254";
}

void test_binary_records::refused_points()
{
    QFETCH(bool, after_head);
    QFETCH(QByteArray, frame);
    QFETCH(QString, warning);

    const log_capture log;
    if (after_head)
        QVERIFY(taken(head{.points = 60}.frame()));
    QVERIFY(!taken(frame));
    QCOMPARE(boxes, QList{bad_frame});
    QCOMPARE(log.texts().last(), warning);
    QCOMPARE(log.lines().last().type, QtWarningMsg);
    QVERIFY(reader->current_points.isEmpty());
    QVERIFY(reader->current_plain.isEmpty());
    QVERIFY(reader->current_lines.isEmpty());
}

/// The head has announced points and left no record to which they could belong.
void test_binary_records::points_after_a_refused_head()
{
    const log_capture log;
    QVERIFY(!taken(head{.mode = 2}.frame()));
    QCOMPARE(reader->points_total, 2U);
    QVERIFY(!taken(points({{}})));
    QCOMPARE(log.texts().last(), "Invalid 0x30 frame, frame length: 31 data length: 24");
    QCOMPARE(boxes, QList{bad_frame});
}

void test_binary_records::refused_points_keep_what_was_there()
{
    const log_capture log;
    QVERIFY(taken(head{.points = 2}.frame()));
    QVERIFY(taken(points({{}})));
    QVERIFY(!taken(points({{}, {}})));
    QVERIFY(log.texts().contains("Invalid 0x30 point count: 2 remaining: 1"));
    QCOMPARE(reader->points_received, 1U);
    QCOMPARE(reader->current_points.size(), 1);
}

void test_binary_records::as_many_points_as_a_frame_holds()
{
    const log_capture quiet;
    const QByteArray frame = points(QList<point>(51));
    QCOMPARE(frame.size(), 974 + 7);
    QVERIFY(taken(head{.points = 51}.frame()));
    QVERIFY(taken(frame));
    QCOMPARE(reader->point_msg_all.first().size(), 51);
}

/// Only a head begins anew: what was announced and gathered stays until then, so
/// points without a head of their own make the lists longer than the table.
void test_binary_records::points_after_a_whole_measurement_repeat_it()
{
    const log_capture quiet;
    QVERIFY(taken(head{.points = 1}.frame()));
    QVERIFY(taken(points({{}})));
    QVERIFY(taken(points({{}})));
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->point_msg_all.size(), 2);
    QCOMPARE(reader->point_msg_all.last().size(), 2);
    QCOMPARE(reader->record_count, 2);
}

void test_binary_records::another_mode_is_only_logged()
{
    const log_capture log;
    QVERIFY(taken(head{.points = 2, .mode = 0x41}.frame()));
    QVERIFY(taken(points({{}}, 0x10)));
    QVERIFY(log.texts().contains(
        "0x30 measurement mode does not match 0x2f, point mode: 16 item mode: 65"));
    // An unknown mode is 255 on both sides.
    QVERIFY(taken(head{.points = 1, .mode = 255}.frame()));
    QVERIFY(taken(points({{}}, 255)));
    QCOMPARE(log.texts().filter("does not match").size(), 1);
    // It is told before a bad status is.
    QVERIFY(taken(head{.points = 1, .mode = 255}.frame()));
    QVERIFY(!taken(points({{.status = 10}}, 0x41)));
    QCOMPARE(log.texts().filter("does not match").size(), 2);
}

void test_binary_records::statuses_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("good");
    for (const auto& [status, good] :
         {std::pair{0, true}, {9, true}, {10, false}, {254, false}, {255, true}})
        QTest::addRow("%d", status) << status << good;
}

void test_binary_records::statuses()
{
    QFETCH(int, status);
    QFETCH(bool, good);

    const log_capture quiet;
    QVERIFY(taken(head{.points = 1}.frame()));
    QCOMPARE(taken(points({{.status = status}})), good);
    if (good)
        QCOMPARE(reader->point_msg_all.first().first().status, QString::number(status));
}

void test_binary_records::start_time_that_is_no_date()
{
    const log_capture quiet;
    QVERIFY(taken(head{.points = 1, .start = QByteArray::fromHex("241305070809")}.frame()));
    QCOMPARE(reader->table_list.first().time, "2024-13-5 7:8:9");
    QVERIFY(taken(points({{.seconds = 4711}})));
    QCOMPARE(reader->point_msg_all.first().first().time, "4711");
}

void test_binary_records::signs_of_coordinates()
{
    const log_capture quiet;
    QVERIFY(taken(head{.points = 1}.frame()));
    QVERIFY(taken(points({{.longitude = -1, .latitude = INT32_MIN, .altitude_cm = INT32_MIN}})));
    QCOMPARE(reader->data_msg_altitude.first(), "-0.000000100000,-214.748364800000,-21474836.48\n");
}

void test_binary_records::number_texts_are_those_of_the_quotients()
{
    const auto compare = [](std::int32_t value) {
        return binary_records::degrees_text(value) ==
                   QString::number(value / 10000000.0, 'f', 12) &&
               binary_records::altitude_text(value) == QString::number(value / 100.0, 'f', 2);
    };
    for (const std::int32_t value :
         {0, 1, -1, 9, 10, -10, 99, 100, 101, 9'999'999, 10'000'000, -10'000'000, 1'799'999'999,
          std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()})
        QVERIFY2(compare(value), qPrintable(QString::number(value)));
    std::mt19937 random(1);
    for (int round = 0; round < 200'000; ++round) {
        const auto value = static_cast<std::int32_t>(random());
        QVERIFY2(compare(value), qPrintable(QString::number(value)));
    }
}

void test_binary_records::no_progress_without_an_announced_count()
{
    const log_capture quiet;
    QSignalSpy progress(reader.get(), &serial_thread::read_data_set_progressbar);
    QVERIFY(taken(head{.points = 1, .records = 0}.frame()));
    QVERIFY(taken(points({{}})));
    QVERIFY(progress.isEmpty());
    QCOMPARE(reader->record_count, 1);
}

void test_binary_records::a_second_download_doubles_the_lists()
{
    const log_capture quiet;
    for (int download = 0; download < 2; ++download) {
        QVERIFY(taken(head{.points = 1}.frame()));
        QVERIFY(taken(points({{}})));
    }
    QCOMPARE(reader->table_list.size(), 2);
    QVERIFY(reader->table_list[0] == reader->table_list[1]);
    QCOMPARE(reader->data_msg.size(), 2);
}

/// Random and mutated streams through the frame reader and the records. The port
/// is closed, so that a good frame ends its read as well, by the lost channel.
void test_binary_records::random_streams()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    reader->port->close();
    bool enabled = false;
    int ended = 0;
    connect(reader.get(), &serial_thread::button_control, this, [&](bool on) {
        enabled = on;
        ++ended;
    });
    qint64 whole = 0;
    connect(reader.get(), &serial_thread::read_data_finished, this, [&whole] { ++whole; });

    std::mt19937 random(20240305);
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    const auto piece = [&] {
        switch (below(4)) {
        case 0:
            return head{.points = static_cast<quint32>(below(4)),
                        .kind = below(7),
                        .records = static_cast<quint16>(below(3)),
                        .timezone = below(28),
                        .mode = 0x10 + below(8),
                        .currency = below(6)}
                .frame();
        case 1: return points(QList<point>(1 + below(2), {.status = below(11)}));
        case 2: {
            QByteArray bytes = points(QList<point>(1 + below(3)));
            for (int flips = 1 + below(4); flips > 0; --flips)
                bytes[below(static_cast<int>(bytes.size()))] = static_cast<char>(below(256));
            return below(2) == 0 ? bytes : sealed(bytes);
        }
        default: {
            QByteArray noise(below(48), 0);
            for (char& byte : noise)
                byte = below(4) == 0 ? frame::header : static_cast<char>(below(256));
            return noise;
        }
        }
    };

    for (int stream = 0; stream < 200'000; ++stream) {
        QByteArray buffer = piece();
        if (below(2) == 0)
            buffer += piece();
        QByteArray frame;
        while (frame::extract_frame(buffer, frame)) {
            enabled = false;
            const int before = ended;
            reader->process_export_frame(frame);
            if (!enabled || ended != before + 1 || reader->export_active ||
                reader->export_timer->isActive())
                QFAIL("a read that ended left something behind");
        }
        if (stream % 1000 == 0)
            reader->recv_cmd_from_key(0, {}, {}, {}, {}); // the lists grow otherwise
        boxes.clear();
        QVERIFY(reader->data_msg.size() == reader->data_msg_altitude.size() &&
                reader->data_msg.size() == reader->point_msg_all.size());
    }
    qInstallMessageHandler(nullptr);
    QVERIFY(whole > 1000);
    QVERIFY(ended > 100'000);
}

QTEST_MAIN(test_binary_records)
#include "test_binary_records.moc"
