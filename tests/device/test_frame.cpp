#include "device/frame.h"
#include "support/log_capture.h"

#include <QTest>

#include <random>

class test_frame : public QObject
{
    Q_OBJECT

private slots:
    void crc_has_the_published_check_value();
    void fixed_frames_of_a_read();
    void extract_data();
    void extract();
    void a_damaged_frame_costs_one_byte_and_a_line();
    void splitting_changes_nothing();
    void nothing_crashes_on_mutated_streams();
};

void test_frame::crc_has_the_published_check_value()
{
    QCOMPARE(frame::crc8("123456789"), std::uint8_t{0xF4});
    QCOMPARE(frame::crc8(""), std::uint8_t{0});
}

void test_frame::fixed_frames_of_a_read()
{
    QCOMPARE(frame::build_frame(frame::reply, 0, QByteArray::fromHex("FFFFFFFF")),
             QByteArray::fromHex("5A00FD000004FFFFFFFFE1"));
    QCOMPARE(frame::build_frame(frame::export_request, 0, QByteArray::fromHex("01020304")),
             QByteArray::fromHex("5A2DFD000004010203048A"));
    QCOMPARE(frame::build_frame(frame::upload_probe, 0, QByteArray::fromHex("FFFFFFFF")),
             QByteArray::fromHex("5A2EFD000004FFFFFFFF3C"));
}

void test_frame::extract_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QByteArray>("taken");
    QTest::addColumn<QByteArray>("left");

    const QByteArray good = frame::build_frame(0x30, 0, "payload");
    QByteArray longest = frame::build_frame(0x30, 0, QByteArray(1193, 'x'));
    QByteArray too_long = frame::build_frame(0x30, 0, QByteArray(1194, 'x'));
    QByteArray damaged = good;
    damaged[8] = 'q';
    const QByteArray inside = frame::build_frame(0x2F, 0, good + "tail");
    QByteArray damaged_outside = inside;
    damaged_outside.back() = static_cast<char>(damaged_outside.back() ^ 1);

    QTest::newRow("empty") << QByteArray() << false << QByteArray() << QByteArray();
    QTest::newRow("header alone stays")
        << QByteArray("xxZ") << false << QByteArray() << QByteArray("Z");
    QTest::newRow("no header empties")
        << QByteArray("xxyy") << false << QByteArray() << QByteArray();
    QTest::newRow("five bytes wait") << good.left(5) << false << QByteArray() << good.left(5);
    QTest::newRow("good") << good << true << good << QByteArray();
    QTest::newRow("noise before") << "noise" + good << true << good << QByteArray();
    QTest::newRow("rest stays") << good + "rest" << true << good << QByteArray("rest");
    QTest::newRow("one byte missing")
        << good.chopped(1) << false << QByteArray() << good.chopped(1);
    QTest::newRow("1193 waits") << longest.left(1199) << false << QByteArray()
                                << longest.left(1199);
    QTest::newRow("1193 passes") << longest << true << longest << QByteArray();
    QTest::newRow("1194 drops the header") << too_long << false << QByteArray() << QByteArray();
    QTest::newRow("1194 then good") << too_long + good << true << good << QByteArray();
    QTest::newRow("damaged then good") << damaged + good << true << good << QByteArray();
    QTest::newRow("good inside a damaged one")
        << damaged_outside << true << good << QByteArray("tail") + damaged_outside.right(1);
}

void test_frame::extract()
{
    QFETCH(QByteArray, buffer);
    QFETCH(bool, found);
    QFETCH(QByteArray, taken);
    QFETCH(QByteArray, left);

    QByteArray out;
    QCOMPARE(frame::extract_frame(buffer, out), found);
    QCOMPARE(out, taken);
    QCOMPARE(buffer, left);
}

void test_frame::a_damaged_frame_costs_one_byte_and_a_line()
{
    const log_capture log;
    QByteArray buffer = frame::build_frame(0x30, 0, "abc");
    buffer.back() = static_cast<char>(buffer.back() ^ 0x10);
    QByteArray out;
    QVERIFY(!frame::extract_frame(buffer, out));
    QCOMPARE(log.texts(), QStringList{"serial protocol CRC error, length: 10"});
    QCOMPARE(log.lines().constFirst().type, QtWarningMsg);
}

void test_frame::splitting_changes_nothing()
{
    QByteArray stream = "..Z!" + frame::build_frame(0, 0, "ZZZZZZ");
    stream += frame::build_frame(0x2F, 7, QByteArray(36, 'Z'));
    stream += QByteArray::fromHex("5A5A5A00") + frame::build_frame(0x30, 9, QByteArray(24, '\x5A'));

    const auto frames_of = [&stream](qsizetype split) {
        QList<QByteArray> frames;
        QByteArray buffer;
        QByteArray out;
        for (const QByteArray& piece : {stream.left(split), stream.mid(split)}) {
            buffer += piece;
            while (frame::extract_frame(buffer, out))
                frames += out;
        }
        return frames;
    };

    const log_capture quiet;
    const QList<QByteArray> whole = frames_of(stream.size());
    QCOMPARE(whole.size(), 3);
    for (qsizetype split = 0; split < stream.size(); ++split)
        QCOMPARE(frames_of(split), whole);
}

void test_frame::nothing_crashes_on_mutated_streams()
{
    const log_capture quiet;
    std::mt19937 random(20240305);
    const auto below = [&random](unsigned bound) { return static_cast<int>(random() % bound); };

    QByteArray buffer;
    QByteArray out;
    for (int round = 0; round < 200'000; ++round) {
        QByteArray piece;
        if (round % 2 == 0) {
            piece = frame::build_frame(static_cast<std::uint8_t>(below(64)), 0,
                                       QByteArray(below(64), static_cast<char>(below(256))));
            for (int flips = below(4); flips > 0; --flips)
                piece[below(static_cast<unsigned>(piece.size()))] = static_cast<char>(below(256));
        } else {
            piece.resize(below(48));
            for (char& byte : piece)
                byte = below(3) == 0 ? frame::header : static_cast<char>(below(256));
        }
        buffer += piece;
        while (frame::extract_frame(buffer, out)) {
            QVERIFY(out.size() >= frame::overhead);
            QCOMPARE(out.front(), frame::header);
            QCOMPARE(frame::crc8(QByteArrayView(out).chopped(1)),
                     frame::read_u8(out, out.size() - 1));
        }
        QVERIFY(buffer.size() < frame::length_limit + frame::overhead);
        QVERIFY(buffer.isEmpty() || buffer.front() == frame::header);
    }
}

QTEST_APPLESS_MAIN(test_frame)
#include "test_frame.moc"
