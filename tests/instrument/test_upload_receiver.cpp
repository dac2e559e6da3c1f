#include "instrument/upload_receiver.h"

#include "device/frame.h"
#include "golden_memory.h"
#include "instrument/measurement_frames.h"
#include "instrument/mode_text_receiver.h"

#include <QTest>

#include <random>

using namespace instrument;

namespace {

QByteArray item(const stored_measurement& measured)
{
    return frame::build_frame(frame::upload_item, 7, head_data(measured, 1));
}

QByteArray points(const stored_measurement& measured, qsizetype first, qsizetype count)
{
    return frame::build_frame(frame::upload_points, 8, points_data(measured, first, count));
}

const QByteArray upload_probe = QByteArray::fromHex("5A2EFD000004FFFFFFFF3C");

} // namespace

/// Uploads from the instrument's side, in packets and as Mode text.
class test_upload_receiver : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void an_upload_byte_for_byte();
    void points_in_several_frames();
    void refusals();
    void silence();
    void faults();
    void mode_text();
    void mode_text_in_any_pieces();
    void mode_text_without_points();
    void mode_text_that_is_none_data();
    void mode_text_that_is_none();
    void nothing_crashes_on_mutated_uploads();

private:
    [[nodiscard]] QByteArray answer(upload_receiver& receiver, const QByteArray& bytes)
    {
        return golden::joined(receiver.receive(bytes));
    }

    storage where;
    stored_measurement sent;
};

void test_upload_receiver::init()
{
    where = storage{};
    sent = golden::stored().first();
}

void test_upload_receiver::an_upload_byte_for_byte()
{
    upload_receiver receiver(where, {golden::token, 0x42});
    int told = 0;
    where.on_received = [&told](const received_measurement&) { ++told; };
    // The host's sequence comes back, and the device type in every answer.
    QCOMPARE(answer(receiver, upload_probe).toHex(), QByteArray("5a0042000006010203042e00ec"));
    QCOMPARE(answer(receiver, item(sent)).toHex().first(24),
             QByteArray("5a0042070006010203043100"));
    QCOMPARE(told, 0);
    QCOMPARE(answer(receiver, points(sent, 0, 2)).toHex().first(24),
             QByteArray("5a0042080006010203043200"));
    QCOMPARE(told, 1);
    sent.identity = own_identity;
    QCOMPARE(where.stored, memory{sent});
    QCOMPARE(where.received.size(), 1);
    QVERIFY(where.received[0].by_packets);
}

void test_upload_receiver::points_in_several_frames()
{
    upload_receiver receiver(where);
    (void)answer(receiver, upload_probe + item(sent) + points(sent, 0, 1));
    QVERIFY(where.stored.isEmpty());
    (void)answer(receiver, points(sent, 1, 1));
    QCOMPARE(where.stored.size(), 1);
    QCOMPARE(where.stored[0].points, sent.points);
}

void test_upload_receiver::refusals()
{
    upload_receiver receiver(where);
    const auto status = [&](const QByteArray& bytes) { return int{answer(receiver, bytes)[11]}; };
    QCOMPARE(status(points(sent, 0, 1)), 1); // of no head
    stored_measurement other = sent;
    other.kind = static_cast<measurement_kind>(6);
    QCOMPARE(status(item(other)), 2);
    other = sent;
    other.start = QDateTime();
    QCOMPARE(status(item(other)), 1);
    QCOMPARE(status(item(sent)), 0);
    other = sent;
    other.points += other.points;
    QCOMPARE(status(points(other, 0, 3)), 1); // one too many
    other.mode = 0x31;
    QCOMPARE(status(points(other, 0, 2)), 1);
    QCOMPARE(status(points(sent, 0, 2)), 0);
    QCOMPARE(status(points(sent, 0, 1)), 1); // all were there
    QCOMPARE(where.stored.size(), 1);
}

void test_upload_receiver::silence()
{
    upload_receiver receiver(where);
    for (const QByteArray& bytes : {golden::probe, golden::request, QByteArray("~\r\n"),
                                    item(sent).chopped(1) + 'x', QByteArray("Mode:5,A:1")})
        QCOMPARE(answer(receiver, bytes), QByteArray());
}

void test_upload_receiver::faults()
{
    const auto with = [](const char* text) {
        QString error;
        return fault_list{*parse_fault(text, error)};
    };
    upload_receiver refusing(where, {}, with("item-status=9@1"));
    (void)answer(refusing, upload_probe);
    QCOMPARE(int{answer(refusing, item(sent))[11]}, 9);
    QCOMPARE(int{answer(refusing, points(sent, 0, 2))[11]}, 1); // the head was not kept
    QVERIFY(where.stored.isEmpty());

    upload_receiver silent(where, {}, with("silent-after=1"));
    (void)answer(silent, upload_probe);
    QVERIFY(!answer(silent, item(sent)).isEmpty());
    QVERIFY(answer(silent, points(sent, 0, 2)).isEmpty());
    QVERIFY(where.stored.isEmpty());

    upload_receiver late(where, {}, with("delay=700@0"));
    QCOMPARE(late.receive(upload_probe).first().delay, std::chrono::milliseconds(700));
}

void test_upload_receiver::mode_text()
{
    mode_text_receiver receiver(where);
    const QByteArray text = "Mode:5,A:1.23457e+06,D:123.4,n:2,T:20240305070809,N:a;Z, b\r\n"
                            "126.650000000000,45.750000000000,141.60\r\n"
                            "-0.000000100000,-90,-152.7;"
                            "Mode:1,A:0,D:0,n:1,T:,N:\r\n1,2,3;";
    QCOMPARE(receiver.receive(text), QList<chunk>());
    QCOMPARE(where.received.size(), 2);
    const received_measurement& first = where.received[0];
    QCOMPARE(first.name, "a;Z, b");
    QVERIFY(!first.by_packets);
    QCOMPARE(first.measured.kind, measurement_kind::area);
    QCOMPARE(first.measured.area, 1234570U);
    QCOMPARE(first.measured.length, 1234U);
    QCOMPARE(first.measured.start.toString(u"yyyyMMddHHmmss"), "20240305070809");
    const QList<stored_point> places{
        {.longitude = 1266500000, .latitude = 457500000, .altitude = 14160},
        {.longitude = -1, .latitude = -900000000, .altitude = -15270}};
    QCOMPARE(first.measured.points, places);
    QCOMPARE(where.received[1].measured.kind, measurement_kind::waypoint);
    QCOMPARE(where.received[1].measured.start.date().year(), 2000);
    QCOMPARE(where.stored.size(), 2);
}

void test_upload_receiver::mode_text_in_any_pieces()
{
    const QByteArray text = "noise Mode:3,A:1,D:2.5,n:1,T:20240305070809,N:\xE7\x94\xB0\r\n1,2,3;"
                            "noise";
    for (qsizetype size = 1; size <= text.size(); ++size) {
        where = storage{};
        mode_text_receiver receiver(where);
        for (qsizetype at = 0; at < text.size(); at += size)
            (void)receiver.receive(QByteArrayView(text).sliced(at, qMin(size, text.size() - at)));
        QCOMPARE(where.received.size(), 1);
        QCOMPARE(where.received[0].name, "田");
        QCOMPARE(where.received[0].measured.points.size(), 1);
    }
}

/// Nothing ends it but the next head.
void test_upload_receiver::mode_text_without_points()
{
    mode_text_receiver receiver(where);
    const QByteArray head = "Mode:5,A:1,D:2,n:0,T:20240305070809,N:x\r\n";
    (void)receiver.receive(head);
    QVERIFY(where.received.isEmpty());
    (void)receiver.receive(head + "1,2,3;");
    QCOMPARE(where.received.size(), 2);
    QCOMPARE(where.received[0].measured.points.size(), 0);
    QCOMPARE(where.received[1].measured.points.size(), 1);
}

void test_upload_receiver::mode_text_that_is_none_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("kind") << QByteArray("Mode:7,A:1,D:2,n:1,T:20240305070809,N:x\r\n1,2,3;");
    QTest::newRow("missing part") << QByteArray("Mode:5,A:1,n:1,T:20240305070809,N:x\r\n1,2,3;");
    QTest::newRow("one line") << QByteArray("Mode:5,A:1,D:2,n:1,T:20240305070809,N:x;");
}

void test_upload_receiver::mode_text_that_is_none()
{
    QFETCH(QByteArray, text);
    mode_text_receiver receiver(where);
    (void)receiver.receive(text);
    QVERIFY(where.received.isEmpty());
}

void test_upload_receiver::nothing_crashes_on_mutated_uploads()
{
    std::mt19937 random(1);
    const QByteArray stream = upload_probe + item(sent) + points(sent, 0, 2) +
                              "Mode:5,A:1,D:2,n:1,T:20240305070809,N:x\r\n1,2,3;";
    upload_receiver packets(where);
    mode_text_receiver texts(where);
    for (int round = 0; round < 5000; ++round) {
        QByteArray bytes = stream;
        for (int change = 0; change < 3; ++change)
            bytes[static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()))] =
                static_cast<char>(random());
        (void)packets.receive(bytes);
        (void)texts.receive(bytes);
        for (const received_measurement& one : std::as_const(where.received))
            QVERIFY(static_cast<int>(one.measured.kind) < 6);
        where = storage{};
    }
}

QTEST_APPLESS_MAIN(test_upload_receiver)
#include "test_upload_receiver.moc"
