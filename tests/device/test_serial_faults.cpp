#include "device/serial_thread.h"
#include "support/box_watcher.h"
#include "support/instrument_process.h"
#include "support/log_capture.h"

#include <QTest>
#include <QTimer>

#include <memory>

namespace {

const QString succeeded = "数据读取成功";
const QString bad_frame = "数据读取失败";
const QString failed = "数据读取失败，请重新读取";
const QString timed_out = "数据读取超时，请重新读取";
const QString no_answer = "数据未读取成功，请再次点击";

} // namespace

/// Whole reads of the simulated instrument, a program of its own on a
/// pseudo-terminal, that does things wrong.
class test_serial_faults : public QObject
{
    Q_OBJECT

private slots:
    void reads_end_as_expected_data();
    void reads_end_as_expected();
};

void test_serial_faults::reads_end_as_expected_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<QString>("box");
    QTest::addColumn<int>("records"); // in the table, of two with 60 points each
    QTest::addColumn<int>("whole");   // with all their points
    QTest::addColumn<QString>("line");

    const auto row = [](const char* name, const QStringList& faults, const QString& box,
                        int records, int whole, const QString& line = {}) {
        QTest::newRow(name) << faults << box << records << whole << line;
    };
    row("none", {}, succeeded, 2, 2);
    row("noise between the frames", {"noise"}, succeeded, 2, 2);
    row("frames in pieces", {"split"}, succeeded, 2, 2);
    row("slow frames", {"delay=100"}, succeeded, 2, 2);
    row("noise and pieces", {"noise=1000", "split=7"}, succeeded, 2, 2);
    row("a probe answered too late", {"delay=1500@0"}, no_answer, 0, 0);
    row("a probe refused", {"probe-status"}, no_answer, 0, 0);
    row("a damaged answer to the probe", {"flip-bit=80@0"}, no_answer, 0, 0,
        "serial protocol CRC error, length: 13");
    // The instrument has moved on when it is asked again.
    row("a damaged head", {"flip-bit=80@1"}, bad_frame, 0, 0,
        "serial protocol CRC error, length: 43");
    row("a damaged length", {"length-field=1194@1"}, bad_frame, 0, 0,
        "serial export timeout, retry: 0");
    row("a request that gets lost", {"ignore-request@1"}, succeeded, 2, 2,
        "serial export timeout, retry: 0");
    row("silence in the middle", {"silent-after=2"}, timed_out, 1, 0,
        "serial export timeout, retry: 1");
    row("a bad end", {"end-status"}, failed, 2, 2);
    row("an unknown command", {"command=0x7E@1"}, failed, 0, 0);
    row("an unknown command later", {"command@4"}, failed, 1, 1);
    row("too many points in a frame", {"points-in-frame=52"}, bad_frame, 1, 0,
        "Invalid 0x30 point count: 52 remaining: 60");
    row("more points than announced", {"extra-points"}, bad_frame, 1, 0,
        "Invalid 0x30 point count: 10 remaining: 9");
    row("a bad positioning status", {"status-byte"}, bad_frame, 1, 0,
        "Invalid 0x30 positioning status: 10");
    row("an unknown kind", {"kind"}, bad_frame, 0, 0, "Unknown export measurement mode: 6");
    row("a bad time zone", {"time-zone"}, bad_frame, 0, 0,
        "Invalid 0x2f parameter value, timezone: 26");
    row("a bad currency", {"currency"}, bad_frame, 0, 0, "price unit: 5");
    row("a bad mode", {"mode"}, bad_frame, 0, 0, "Invalid 0x2f measurement method: 2");
    row("a short head", {"short-data@1"}, bad_frame, 0, 0, "Invalid 0x2f frame length: 42");
    row("points before a head", {"points-first"}, bad_frame, 0, 0,
        "Invalid 0x30 frame, frame length: 31");
    row("another mode behind the points", {"points-mode"}, succeeded, 2, 2,
        "0x30 measurement mode does not match 0x2f, point mode: 2");
    row("heads sent twice", {"repeat-head"}, succeeded, 4, 2);
    row("a month that is none", {"month"}, succeeded, 2, 2);
}

void test_serial_faults::reads_end_as_expected()
{
    QFETCH(QStringList, faults);
    QFETCH(QString, box);
    QFETCH(int, records);
    QFETCH(int, whole);
    QFETCH(QString, line);

    QStringList arguments{"--pty", "--measurements", "2", "--points", "60"};
    for (const QString& fault : faults)
        arguments += {"--fault", fault};
    instrument_process instrument;
    QVERIFY(instrument.start(arguments));

    qputenv("PATH", ""); // no adb in this test
    const log_capture log;
    box_watcher watcher;
    serial_thread reader;
    reader.available_ports = [&instrument] {
        return QList<serial_thread::listed_port>{{instrument.serial_path(), "pts", "USB Serial"}};
    };
    reader.detect_ports();
    QCOMPARE(watcher.texts(), QStringList{"设备已连接"});
    watcher.boxes.clear();
    QList<bool> button;
    connect(&reader, &serial_thread::button_control, this, [&button](bool on) { button += on; });

    QTimer::singleShot(0, &reader, [&reader] { reader.recv_cmd_from_key(1, {}, {}, {}, {}); });
    QTRY_COMPARE_WITH_TIMEOUT(watcher.texts(), QStringList{box}, 30000);
    QTRY_COMPARE(button, (QList<bool>{false, true}));
    QVERIFY(!reader.export_active);
    QVERIFY(!reader.export_timer->isActive());
    QCOMPARE(reader.table_list.size(), records);
    QCOMPARE(reader.data_msg.size(), whole);
    QCOMPARE(reader.data_msg_altitude.size(), whole);
    QCOMPARE(reader.point_msg_all.size(), whole);
    for (const QList<point_msg>& points : reader.point_msg_all)
        QCOMPARE(points.size(), 60);
    if (!line.isEmpty())
        QVERIFY2(log.has(line), qPrintable(log.texts().join('\n')));
    if (faults.contains("month")) {
        // Without a start time a point's time is its seconds.
        bool number = false;
        reader.point_msg_all.first().last().time.toInt(&number);
        QVERIFY(number);
    }
}

QTEST_MAIN(test_serial_faults)
#include "test_serial_faults.moc"
