#include "golden_memory.h"

#include "device/frame.h"
#include "instrument/faults.h"
#include "instrument/frame_responder.h"
#include "instrument/sample_memory.h"
#include "support/log_capture.h"

#include <QSet>
#include <QTest>

using namespace instrument;

namespace {

QByteArray with_crc(QByteArray bytes)
{
    bytes.append(static_cast<char>(frame::crc8(bytes)));
    return bytes;
}

/// A golden frame with one byte changed and the CRC made good again.
QByteArray changed(QByteArray golden_frame, qsizetype at, int value)
{
    golden_frame[at] = static_cast<char>(value);
    return with_crc(golden_frame.chopped(1));
}

} // namespace

class test_faults : public QObject
{
    Q_OBJECT

private slots:
    void parsing_data();
    void parsing();
    void every_kind_is_in_the_help();
    void answers_data();
    void answers();
    void all_kinds_have_a_row();
    void statuses_of_uploads();
    void too_many_points();
    void more_points_than_remain();
    void noise_holds_no_header_and_is_the_same_each_time();
    void split_writes();
    void delays();
    void faults_act_in_one_order();
    void they_return_with_the_next_read();

private:
    static QSet<QString> tested_kinds;

    static fault_list parsed(const QStringList& texts)
    {
        fault_list list;
        QString error;
        for (const QString& text : texts)
            list.append(parse_fault(text, error).value());
        return list;
    }
};

QSet<QString> test_faults::tested_kinds;

void test_faults::parsing_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("frame");
    QTest::addColumn<QString>("error");

    QTest::newRow("usual value") << "kind" << 6 << -1 << "";
    QTest::newRow("value") << "kind=7" << 7 << -1 << "";
    QTest::newRow("hexadecimal") << "mode=0x2A" << 42 << -1 << "";
    QTest::newRow("frame") << "kind@3" << 6 << 3 << "";
    QTest::newRow("both") << "delay=5500@12" << 5500 << 12 << "";
    QTest::newRow("no value") << "repeat-head@2" << 0 << 2 << "";
    QTest::newRow("unknown") << "smoke" << 0 << 0 << "there is no fault \"smoke\"";
    QTest::newRow("empty") << "" << 0 << 0 << "there is no fault \"\"";
    QTest::newRow("too large") << "kind=256" << 0 << 0
                               << "fault \"kind\" takes a number from 0 to 255";
    QTest::newRow("no number") << "kind=x" << 0 << 0
                               << "fault \"kind\" takes a number from 0 to 255";
    QTest::newRow("empty value") << "split=" << 0 << 0
                                 << "fault \"split\" takes a number from 1 to 65536";
    QTest::newRow("value not taken")
        << "repeat-head=1" << 0 << 0 << "fault \"repeat-head\" takes no value";
    QTest::newRow("bad frame") << "kind@x" << 0 << 0
                               << "\"kind@x\" does not end with the number of a frame";
    QTest::newRow("negative frame")
        << "kind@-1" << 0 << 0 << "\"kind@-1\" does not end with the number of a frame";
}

void test_faults::parsing()
{
    QFETCH(QString, text);
    QFETCH(int, value);
    QFETCH(int, frame);
    QFETCH(QString, error);

    QString said;
    const std::optional<fault> result = parse_fault(text, said);
    QCOMPARE(said, error);
    QCOMPARE(result.has_value(), error.isEmpty());
    if (result) {
        QCOMPARE(result->value, value);
        QCOMPARE(result->only_frame.value_or(-1), frame);
    }
}

void test_faults::every_kind_is_in_the_help()
{
    const QStringList lines = fault_help().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), fault_kinds().size());
    QSet<QString> names;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const fault_kind& kind = fault_kinds()[i];
        QVERIFY(lines[i].startsWith(QStringLiteral("  ") + QLatin1String(kind.name)));
        QVERIFY((kind.on_draft == nullptr) != (kind.on_bytes == nullptr));
        QVERIFY(kind.lowest <= kind.usual && kind.usual <= kind.highest);
        names.insert(QString::fromLatin1(kind.name));
    }
    QCOMPARE(names.size(), fault_kinds().size());
}

void test_faults::answers_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<QList<QByteArray>>("answers"); // to a probe and then to requests

    const QByteArray& reply = golden::probe_reply;
    const QByteArray& head = golden::first_head;
    const QByteArray& points = golden::first_points;
    const QByteArray& second = golden::second_head;
    const QByteArray& end = golden::end;
    const QByteArray silence;
    using strings = QStringList;
    using frames = QList<QByteArray>;

    QTest::newRow("none") << strings{} << frames{reply, head, points, second, end};

    QByteArray flipped = points;
    flipped[10] = static_cast<char>(flipped[10] ^ 0x40);
    QTest::newRow("flip-bit") << strings{"flip-bit=81@2"}
                              << frames{reply, head, flipped, second, end};
    QTest::newRow("flip-bit beyond the frame")
        << strings{"flip-bit=900@2"} << frames{reply, head, points, second, end};
    QTest::newRow("noise-headers")
        << strings{"noise-headers=4@1"} << frames{reply, "ZZZZ" + head, points};
    QTest::newRow("silent-after 0") << strings{"silent-after=0"} << frames{reply, silence, silence};
    QTest::newRow("silent-after 2")
        << strings{"silent-after=2"} << frames{reply, head, points, silence, silence};
    QTest::newRow("ignore-request")
        << strings{"ignore-request@2"} << frames{reply, head, silence, points, second, end};
    QTest::newRow("ignore every request once")
        << strings{"ignore-request"} << frames{reply, silence, head, silence, points};
    QTest::newRow("ignore the probe")
        << strings{"ignore-request@0"} << frames{silence, head, points};
    QTest::newRow("probe-status") << strings{"probe-status=3"}
                                  << frames{changed(reply, 11, 3), head, points, second, end};
    QTest::newRow("end-status") << strings{"end-status"}
                                << frames{reply, head, points, second, changed(end, 11, 1)};
    QTest::newRow("command") << strings{"command@1"}
                             << frames{reply, changed(head, 1, 0x7E), points};
    QByteArray shorter = head.first(41);
    shorter[5] = 35;
    QTest::newRow("short-data") << strings{"short-data@1"}
                                << frames{reply, with_crc(shorter), points};
    QByteArray long_length = head;
    long_length[4] = 0x04;
    long_length[5] = '\xAA';
    QTest::newRow("length-field") << strings{"length-field@1"}
                                  << frames{reply, long_length, points};
    QTest::newRow("points-first") << strings{"points-first"}
                                  << frames{reply,
                                            with_crc(QByteArray::fromHex("5A3001000018FFFFFFFF") +
                                                     QByteArray(18, '\0') +
                                                     QByteArray::fromHex("FFFF")),
                                            head,
                                            points,
                                            second,
                                            end};
    QTest::newRow("repeat-head") << strings{"repeat-head"}
                                 << frames{reply, head, head, points, second, second, end};
    QTest::newRow("repeat-head once")
        << strings{"repeat-head@1"} << frames{reply, head, head, points, second, end};
    QTest::newRow("point-total 0")
        << strings{"point-total"} << frames{reply, changed(head, 13, 0), points, second, end};
    QTest::newRow("export-total 0")
        << strings{"export-total"}
        << frames{reply, changed(head, 36, 0), points, changed(second, 36, 0), end};
    QTest::newRow("kind") << strings{"kind@1"}
                          << frames{reply, changed(head, 22, 6), points, second};
    QTest::newRow("kind in every head")
        << strings{"kind"} << frames{reply, changed(head, 22, 6), points, changed(second, 22, 6)};
    QTest::newRow("month") << strings{"month@1"}
                           << frames{reply, changed(head, 24, 0x13), points, second};
    QTest::newRow("time-zone") << strings{"time-zone@1"}
                               << frames{reply, changed(head, 37, 26), points, second};
    QTest::newRow("mode") << strings{"mode@1"}
                          << frames{reply, changed(head, 38, 2), points, second};
    QTest::newRow("currency") << strings{"currency@1"}
                              << frames{reply, changed(head, 41, 5), points, second};
    QTest::newRow("points-mode") << strings{"points-mode"}
                                 << frames{reply, head, changed(points, points.size() - 2, 2),
                                           second, end};
    QTest::newRow("status-byte") << strings{"status-byte"}
                                 << frames{reply, head, changed(points, 10 + 19 + 18, 10), second,
                                           end};
    QTest::newRow("not in a frame of another command")
        << strings{"kind@2", "status-byte@1", "end-status@1"}
        << frames{reply, head, points, second, end};
}

void test_faults::answers()
{
    QFETCH(QStringList, faults);
    QFETCH(QList<QByteArray>, answers);
    for (const QString& text : faults)
        tested_kinds.insert(text.section(QLatin1Char('='), 0, 0).section(QLatin1Char('@'), 0, 0));

    const memory stored = golden::stored();
    frame_responder responder(stored, {golden::token, 1}, parsed(faults));
    QList<QByteArray> said{golden::joined(responder.receive(golden::probe))};
    while (said.size() < answers.size())
        said.append(golden::joined(responder.receive(golden::request)));
    QCOMPARE(said, answers);
}

void test_faults::all_kinds_have_a_row()
{
    QSet<QString> kinds;
    for (const fault_kind& kind : fault_kinds())
        kinds.insert(QString::fromLatin1(kind.name));
    // These have functions of their own below.
    tested_kinds |=
        QSet<QString>{"noise",        "split",       "delay",         "points-in-frame",
                      "extra-points", "item-status", "points-status", "upload-probe-status"};
    QCOMPARE(kinds - tested_kinds, QSet<QString>());
}

/// Each in the answer to its own command alone.
void test_faults::statuses_of_uploads()
{
    const QMap<QString, std::uint8_t> commands{{"upload-probe-status", frame::upload_probe},
                                               {"item-status", frame::upload_item},
                                               {"points-status", frame::upload_points}};
    for (auto fault = commands.cbegin(); fault != commands.cend(); ++fault) {
        for (const std::uint8_t answered : commands) {
            frame_draft draft{.command = frame::reply,
                              .data = reply_data({}, answered, status_done)};
            apply(parsed({fault.key() + "=77"}), draft);
            QCOMPARE(int{draft.data[5]}, answered == fault.value() ? 77 : 0);
        }
    }
}

void test_faults::too_many_points()
{
    const memory stored = synthetic_memory(1, 60);
    frame_responder responder(stored, {golden::token, 1}, parsed({"points-in-frame@2"}));
    QVERIFY(!responder.receive(golden::request).isEmpty());
    const QByteArray frame = golden::joined(responder.receive(golden::request));
    QCOMPARE(frame.size(), 12 + 19 * 52);
    QCOMPARE(frame::read_u16(frame, 4), 5 + 19 * 52);
    QCOMPARE(frame.sliced(10 + 19 * 51, 19), frame.sliced(10 + 19 * 50, 19));
    QCOMPARE(frame::read_u8(frame, frame.size() - 2), stored[0].mode);
    QCOMPARE(frame::crc8(frame.chopped(1)), frame::read_u8(frame, frame.size() - 1));
    // The export goes on as if it had been 51.
    QCOMPARE(golden::joined(responder.receive(golden::request)).size(), 12 + 19 * 9);
}

void test_faults::more_points_than_remain()
{
    const memory stored = synthetic_memory(1, 60);
    frame_responder responder(stored, {golden::token, 1}, parsed({"extra-points"}));
    QVERIFY(!responder.receive(golden::request).isEmpty());
    QCOMPARE(golden::joined(responder.receive(golden::request)).size(), 12 + 19 * 51);
    QCOMPARE(golden::joined(responder.receive(golden::request)).size(), 12 + 19 * 10);
    QCOMPARE(golden::joined(responder.receive(golden::request)), golden::end);
}

void test_faults::noise_holds_no_header_and_is_the_same_each_time()
{
    const memory stored = golden::stored();
    QList<QByteArray> runs;
    for (int run = 0; run < 2; ++run) {
        frame_responder responder(stored, {golden::token, 1}, parsed({"noise=500"}));
        QByteArray bytes =
            golden::joined(responder.receive(golden::probe + golden::request + golden::request));
        runs.append(bytes);
        QCOMPARE(bytes.size(), 1500 + golden::probe_reply.size() + golden::first_head.size() +
                                   golden::first_points.size());
        // A reader that looks for headers finds all frames and nothing else.
        const log_capture log;
        QByteArray frame;
        for (const QByteArray& expected :
             {golden::probe_reply, golden::first_head, golden::first_points}) {
            QVERIFY(frame::extract_frame(bytes, frame));
            QCOMPARE(frame, expected);
        }
        QVERIFY(bytes.isEmpty());
        QCOMPARE(log.texts(), QStringList());
    }
    QCOMPARE(runs[0], runs[1]);
}

void test_faults::split_writes()
{
    const memory stored = golden::stored();
    frame_responder responder(stored, {golden::token, 1}, parsed({"split=10"}));
    const QList<chunk> chunks = responder.receive(golden::request);
    QCOMPARE(golden::joined(chunks), golden::first_head);
    QCOMPARE(chunks.size(), 5);
    QCOMPARE(chunks[0].delay.count(), 0);
    for (const chunk& piece : chunks.first(4))
        QCOMPARE(piece.bytes.size(), 10);
    for (const chunk& piece : chunks.sliced(1))
        QVERIFY(piece.delay.count() > 0);
    QCOMPARE(chunks[4].bytes.size(), 3);
}

void test_faults::delays()
{
    const memory stored = golden::stored();
    frame_responder responder(stored, {golden::token, 1}, parsed({"delay=700@2", "split=30@2"}));
    QCOMPARE(responder.receive(golden::request), (QList<chunk>{{golden::first_head}}));
    const QList<chunk> chunks = responder.receive(golden::request);
    QCOMPARE(chunks.size(), 2);
    QCOMPARE(chunks[0].delay.count(), 700);
    QVERIFY(chunks[1].delay.count() < 700);
}

void test_faults::faults_act_in_one_order()
{
    const memory stored = golden::stored();
    frame_responder one(stored, {golden::token, 1},
                        parsed({"noise=20", "flip-bit", "command", "kind"}));
    frame_responder other(stored, {golden::token, 1},
                          parsed({"kind", "command", "flip-bit", "noise=20"}));
    const QByteArray bytes = golden::joined(one.receive(golden::request));
    QCOMPARE(golden::joined(other.receive(golden::request)), bytes);
    QByteArray expected = changed(changed(golden::first_head, 22, 6), 1, 0x7E);
    expected[8] = static_cast<char>(expected[8] ^ 0x80);
    QCOMPARE(bytes.sliced(20), expected);
}

void test_faults::they_return_with_the_next_read()
{
    const memory stored = golden::stored();
    frame_responder responder(stored, {golden::token, 1}, parsed({"silent-after=1"}));
    for (int read = 0; read < 3; ++read) {
        QCOMPARE(golden::joined(responder.receive(golden::probe)), golden::probe_reply);
        QCOMPARE(golden::joined(responder.receive(golden::request)), golden::first_head);
        QVERIFY(responder.receive(golden::request).isEmpty());
    }
}

QTEST_APPLESS_MAIN(test_faults)
#include "test_faults.moc"
