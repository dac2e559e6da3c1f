#include "instrument/text_responder.h"

#include "golden_memory.h"
#include "instrument/sample_memory.h"

#include <QTest>

using namespace instrument;

/// The text protocol from the instrument's side.
class test_text_responder : public QObject
{
    Q_OBJECT

private slots:
    void records_data();
    void records();
    void points_begin_behind_fifty_characters();
    void the_command();
    void faults();
};

void test_text_responder::records_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("short_text");
    QTest::addColumn<QByteArray>("long_text");

    // Of the first golden point; the second lies below the sea.
    const QByteArray places[] = {"126d39'0.0000\",45d45'0.0000\",1416",
                                 "-0d0'0.0004\",-0d0'0.0007\",0"};
    const QByteArray short_points = places[0] + ";\r\n" + places[1] + ";\r\n!";
    const QByteArray long_points = places[0] + ",hdop10,speed4,angle359,t20240305082549;\r\n" +
                                   places[1] + ",hdop6,speed0,angle0,t20240305070809;\r\n!";
    const auto short_one = [&](const char* middle) {
        return QByteArray("n00002,") + middle + ";t20240305070809,N0017,\r\n" + short_points;
    };
    const auto long_one = [&](const char* middle, const char* rest) {
        return QByteArray("n2,") + middle + ";t20240305070809,N0017,time11," + rest + ",\r\n" +
               long_points;
    };
    const auto row = [](const char* name, measurement_kind kind, const QByteArray& short_text,
                        const QByteArray& long_text) {
        QTest::newRow(name) << static_cast<int>(kind) << short_text << long_text;
    };
    // Area 66051, length 658188 tenths; mode 0x30 is code 9, currency 4 code 2.
    row("area", measurement_kind::area, short_one("m0000066051,l0000658188"),
        long_one("m66051,l658188", "t20241231235958,id16909060,mode9,md1,jd1,hd2,slope0,width3,"
                                   "price65,total6437"));
    row("waypoint", measurement_kind::waypoint, short_one("p0000658188,p0000066051"),
        long_one("p658188,p66051", "id16909060,sd0,h0"));
    row("track", measurement_kind::track, short_one("k0000066051,l0000658188"),
        long_one("k66051,l658188", "t20241231235958,id16909060,jd1"));
    row("route", measurement_kind::route, short_one("e0000658188,m0000066051"),
        long_one("e658188,m66051", "id16909060,jd1"));
    const QByteArray staking = long_one("f658188,l66051", "id16909060,jd1");
    row("staking-out", measurement_kind::staking_out, staking, staking);
}

void test_text_responder::records()
{
    QFETCH(int, kind);
    stored_measurement measured = golden::stored().first();
    measured.kind = static_cast<measurement_kind>(kind);
    QTEST(record_text(measured, 17, text_form::short_record), "short_text");
    QTEST(record_text(measured, 17, text_form::long_record), "long_text");
}

void test_text_responder::points_begin_behind_fifty_characters()
{
    for (const stored_measurement& measured : sample_memory()) {
        for (const text_form form : {text_form::short_record, text_form::long_record})
            QVERIFY(record_text(measured, 17, form).indexOf("\r\n") >= 48);
    }
}

void test_text_responder::the_command()
{
    const memory stored = golden::stored();
    text_responder responder(stored, text_form::short_record);
    for (const char* const bytes : {"~", "\r", "x~\r\r\n", "n", "~\n"})
        QCOMPARE(responder.receive(bytes), QList<chunk>());
    QCOMPARE(responder.receive("~"), QList<chunk>());
    const QByteArray all = golden::joined(responder.receive("\r\n"));
    QCOMPARE(all, record_text(stored[0], 2, text_form::short_record) + "\r\n" +
                      record_text(stored[1], 2, text_form::short_record));
    QCOMPARE(golden::joined(responder.receive("~\r\n~\r\n")), all + all);

    const memory empty;
    text_responder nothing(empty, text_form::long_record);
    QCOMPARE(nothing.receive("~\r\n"), QList<chunk>());
}

void test_text_responder::faults()
{
    const memory stored = golden::stored();
    QString error;
    text_responder responder(
        stored, text_form::short_record,
        {*parse_fault("silent-after=1", error), *parse_fault("split=7", error)});
    const QList<chunk> chunks = responder.receive("~\r\n");
    QCOMPARE(golden::joined(chunks), record_text(stored[0], 2, text_form::short_record));
    QCOMPARE(chunks[0].bytes.size(), 7);
}

QTEST_APPLESS_MAIN(test_text_responder)
#include "test_text_responder.moc"
