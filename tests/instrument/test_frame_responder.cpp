#include "golden_memory.h"

#include "device/frame.h"
#include "instrument/frame_responder.h"
#include "instrument/sample_memory.h"

#include <QTest>

#include <random>

using namespace instrument;

class test_frame_responder : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_stored = golden::stored(); }

    void a_read_byte_for_byte();
    void a_probe_starts_over();
    void a_wrong_token_is_refused();
    void an_empty_memory_ends_at_once();
    void the_request_needs_no_probe();
    void silence_data();
    void silence();
    void the_sequence_comes_back();
    void requests_in_pieces_and_in_one();
    void noise_before_a_request();
    void frames_hold_51_points_data();
    void frames_hold_51_points();
    void nothing_crashes_on_mutated_requests();

private:
    memory m_stored;
};

void test_frame_responder::a_read_byte_for_byte()
{
    frame_responder responder(m_stored, {golden::token, 1});
    const auto answer = [&responder](const QByteArray& request) {
        return golden::joined(responder.receive(request));
    };
    QCOMPARE(answer(golden::probe), golden::probe_reply);
    QCOMPARE(answer(golden::request), golden::first_head);
    QCOMPARE(answer(golden::request), golden::first_points);
    QCOMPARE(answer(golden::request), golden::second_head);
    QCOMPARE(answer(golden::request), golden::end);
    QCOMPARE(answer(golden::request), golden::end);
}

void test_frame_responder::a_probe_starts_over()
{
    frame_responder responder(m_stored, {golden::token, 1});
    for (int frames = 0; frames < 6; ++frames) {
        QCOMPARE(golden::joined(responder.receive(golden::probe)), golden::probe_reply);
        QCOMPARE(golden::joined(responder.receive(golden::request)), golden::first_head);
        for (int i = 0; i < frames; ++i)
            QVERIFY(!responder.receive(golden::request).isEmpty());
    }
}

void test_frame_responder::a_wrong_token_is_refused()
{
    frame_responder responder(m_stored, {golden::token, 1});
    QCOMPARE(golden::joined(responder.receive(golden::probe)), golden::probe_reply);
    QCOMPARE(golden::joined(responder.receive(golden::wrong_request)), golden::refusal);
    // and the export has not moved
    QCOMPARE(golden::joined(responder.receive(golden::request)), golden::first_head);
}

void test_frame_responder::an_empty_memory_ends_at_once()
{
    const memory nothing;
    frame_responder responder(nothing, {golden::token, 1});
    QCOMPARE(golden::joined(responder.receive(golden::probe + golden::request)),
             golden::probe_reply + golden::end);
}

void test_frame_responder::the_request_needs_no_probe()
{
    frame_responder responder(m_stored, {golden::token, 1});
    QCOMPARE(golden::joined(responder.receive(golden::request)), golden::first_head);
}

void test_frame_responder::silence_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text command") << QByteArray("~\r\n");
    QTest::newRow("upload probe") << frame::build_frame(0x2E, 0, QByteArray(4, '\xFF'));
    QTest::newRow("unknown command") << frame::build_frame(0x55, 0, "abcd");
    QTest::newRow("probe with other data") << frame::build_frame(0x00, 0, "abcd");
    QTest::newRow("probe without data") << frame::build_frame(0x00, 0, "");
    QTest::newRow("an instrument's frame") << golden::end;
    QByteArray damaged = golden::probe;
    damaged.back() = '\xE0';
    QTest::newRow("wrong CRC") << damaged;
}

void test_frame_responder::silence()
{
    QFETCH(QByteArray, bytes);
    frame_responder responder(m_stored, {golden::token, 1});
    QCOMPARE(responder.receive(bytes), QList<chunk>());
    // and what follows is understood
    QCOMPARE(golden::joined(responder.receive(golden::probe)), golden::probe_reply);
}

void test_frame_responder::the_sequence_comes_back()
{
    frame_responder responder(m_stored, {golden::token, 0x42});
    const QByteArray reply = golden::joined(
        responder.receive(frame::build_frame(frame::reply, 0x37, QByteArray(4, '\xFF'))));
    QCOMPARE(reply.first(4), QByteArray::fromHex("5A004237"));
    QCOMPARE(frame::crc8(reply.chopped(1)), frame::read_u8(reply, 12));
}

void test_frame_responder::requests_in_pieces_and_in_one()
{
    const QByteArray read =
        golden::probe + golden::request + golden::request + golden::request + golden::request;
    const QByteArray expected = golden::probe_reply + golden::first_head + golden::first_points +
                                golden::second_head + golden::end;
    for (qsizetype split = 0; split <= read.size(); ++split) {
        frame_responder responder(m_stored, {golden::token, 1});
        const QByteArray first = golden::joined(responder.receive(read.first(split)));
        const QByteArray second = golden::joined(responder.receive(read.sliced(split)));
        QCOMPARE(first + second, expected);
    }
    frame_responder responder(m_stored, {golden::token, 1});
    QByteArray out;
    for (const char byte : read)
        out += golden::joined(responder.receive(QByteArray(1, byte)));
    QCOMPARE(out, expected);
}

void test_frame_responder::noise_before_a_request()
{
    frame_responder responder(m_stored, {golden::token, 1});
    QCOMPARE(golden::joined(responder.receive("noise ZZZ\xFD" + golden::probe)),
             golden::probe_reply);
}

void test_frame_responder::frames_hold_51_points_data()
{
    QTest::addColumn<int>("points");
    QTest::addColumn<QList<int>>("frames");
    QTest::newRow("1") << 1 << QList<int>{1};
    QTest::newRow("50") << 50 << QList<int>{50};
    QTest::newRow("51") << 51 << QList<int>{51};
    QTest::newRow("52") << 52 << QList<int>{51, 1};
    QTest::newRow("102") << 102 << QList<int>{51, 51};
    QTest::newRow("153") << 153 << QList<int>{51, 51, 51};
    QTest::newRow("154") << 154 << QList<int>{51, 51, 51, 1};
}

void test_frame_responder::frames_hold_51_points()
{
    QFETCH(int, points);
    QFETCH(QList<int>, frames);

    const memory stored = synthetic_memory(2, points);
    frame_responder responder(stored, {golden::token, 1});
    QList<QByteArray> lines;
    for (qsizetype i = 0; i < 2 * (frames.size() + 1) + 1; ++i)
        lines.append(golden::joined(responder.receive(golden::request)));

    QCOMPARE(lines.takeLast(), golden::end);
    for (const stored_measurement& one : stored) {
        const QByteArray head = lines.takeFirst();
        QCOMPARE(head.size(), 43);
        QCOMPARE(frame::read_u8(head, 1), frame::measurement_head);
        QCOMPARE(frame::read_u32(head, 10), static_cast<std::uint32_t>(points));
        qsizetype index = 0;
        for (const int count : frames) {
            const QByteArray line = lines.takeFirst();
            QCOMPARE(frame::read_u8(line, 1), frame::measurement_points);
            QCOMPARE(line.size(), 12 + 19 * count);
            for (int i = 0; i < count; ++i, ++index) {
                QCOMPARE(static_cast<std::int32_t>(frame::read_u32(line, 10 + 19 * i)),
                         one.points[index].longitude);
                QCOMPARE(frame::read_u16(line, 10 + 19 * i + 13), one.points[index].seconds);
            }
            QCOMPARE(frame::read_u8(line, line.size() - 2), one.mode);
        }
    }
}

void test_frame_responder::nothing_crashes_on_mutated_requests()
{
    std::mt19937 random(5);
    frame_responder responder(m_stored, {golden::token, 1});
    int answered = 0;
    for (int round = 0; round < 100'000; ++round) {
        QByteArray bytes = random() % 2 == 0 ? golden::probe : golden::request;
        if (random() % 3 == 0)
            bytes[static_cast<qsizetype>(random() % 11)] = static_cast<char>(random());
        if (random() % 3 == 0)
            bytes.truncate(static_cast<qsizetype>(random() % 12));
        const QByteArray out = golden::joined(responder.receive(bytes));
        QVERIFY(out.isEmpty() || out.front() == frame::header);
        answered += out.isEmpty() ? 0 : 1;
    }
    QVERIFY(answered > 10'000);
}

QTEST_APPLESS_MAIN(test_frame_responder)
#include "test_frame_responder.moc"
