// Requests as they come, and what is answered.

#include "answer_check.h"
#include "calculation_server/datagrams.h"

#include <QList>
#include <QTest>

#include <random>

using calculation::answer;
using calculation::parse_request;

namespace {

// Four corners of a square and a shift of (1, 2, 3) metres.
const QByteArray shifted("$50000,4,"
                         "0,0,0,100,0,0,0,100,0,0,0,100,"
                         "1,2,3,101,2,3,1,102,3,1,2,103,*");

} // namespace

class test_datagrams : public QObject
{
    Q_OBJECT

private slots:
    void a_request_is_read_sources_first();
    void numbers_may_look_like_this_data();
    void numbers_may_look_like_this();
    void what_is_no_request_is_refused_data();
    void what_is_no_request_is_refused();
    void the_answer_has_seven_parts_in_fixed_notation();
    void points_without_a_solution_are_refused();
    void a_refusal_is_not_answered();
    void the_largest_datagram();
    void a_hundred_thousand_damaged_requests();
};

void test_datagrams::a_request_is_read_sources_first()
{
    QString error;
    const auto pairs = parse_request(
        "$1,4,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,*", error);
    QVERIFY2(pairs, qPrintable(error));
    QCOMPARE(pairs->size(), size_t(4));
    QCOMPARE((*pairs)[0].source, Eigen::Vector3d(1, 2, 3));
    QCOMPARE((*pairs)[3].source, Eigen::Vector3d(10, 11, 12));
    QCOMPARE((*pairs)[0].target, Eigen::Vector3d(13, 14, 15));
    QCOMPARE((*pairs)[3].target, Eigen::Vector3d(22, 23, 24));
}

void test_datagrams::numbers_may_look_like_this_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("decimals") << QByteArray("-2267700.1234") << -2267700.1234;
    QTest::newRow("plus") << QByteArray("+1.5") << 1.5;
    QTest::newRow("blanks around it") << QByteArray(" 1.5 ") << 1.5;
    QTest::newRow("exponent") << QByteArray("5.0093e6") << 5009300.0;
    QTest::newRow("no digit before the point") << QByteArray(".5") << 0.5;
    QTest::newRow("a million kilometres") << QByteArray("1000000000") << 1e9;
}

void test_datagrams::numbers_may_look_like_this()
{
    QFETCH(QByteArray, text);
    QFETCH(double, value);
    QString error;
    const auto pairs = parse_request(
        "$1,4,0,0,0,100,0,0,0,100,0,0,0,100,1,2,3,101,2,3,1,102,3,1,2," + text + ",*", error);
    QVERIFY2(pairs, qPrintable(error));
    QCOMPARE((*pairs)[3].target[2], value);
}

void test_datagrams::what_is_no_request_is_refused_data()
{
    QTest::addColumn<QByteArray>("datagram");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const QByteArray& datagram, const char* reason) {
        QTest::newRow(name) << datagram << QString(reason);
    };
    constexpr char shape[] = "not a request: from $ and port to a last field of *";
    row("nothing", {}, shape);
    row("words", "hello", shape);
    row("only its marks", "$*", shape);
    row("no dollar", QByteArray(shifted).replace('$', ' '), shape);
    row("no end", QByteArray(shifted).replace('*', ' '), shape);
    row("cut off", shifted.first(40), shape);
    row("no port", QByteArray(shifted).replace("$50000", "$"), "no port behind the $");
    row("a port too high", QByteArray(shifted).replace("$50000", "$65536"), "no port behind the $");
    row("no count", QByteArray(shifted).replace(",4,", ",,"), "the count is no number");
    row("a negative count", QByteArray(shifted).replace(",4,", ",-4,"), "the count is no number");
    row("a count with a fraction", QByteArray(shifted).replace(",4,", ",4.0,"),
        "the count is no number");
    row("a huge count", QByteArray(shifted).replace(",4,", ",4294967295,"),
        "4294967295 pairs make 25769803773 fields and not 27");
    row("a count beyond any", QByteArray(shifted).replace(",4,", ",99999999999,"),
        "the count is no number");
    row("none", "$1,0,*", "at least 4 pairs are needed");
    row("three", "$1,3,0,0,0,1,0,0,0,1,0,0,0,0,1,0,0,0,1,0,*", "at least 4 pairs are needed");
    row("one field too few", QByteArray(shifted).replace(",103,", ","),
        "4 pairs make 27 fields and not 26");
    row("one field too many", QByteArray(shifted).replace(",103,", ",103,104,"),
        "4 pairs make 27 fields and not 28");
    for (const char* text :
         {"", "abc", "nan", "inf", "-inf", "1e999", "0x10", "1 000", "1.2.3", "1000000001", "1°"})
        row(text, QByteArray(shifted).replace(",103,", "," + QByteArray(text) + ","),
            "pair 4 has a coordinate that is none");
    row("a NUL in a number", QByteArray(shifted).replace(",103,", QByteArray(",1\0003,", 5)),
        "pair 4 has a coordinate that is none");
}

void test_datagrams::what_is_no_request_is_refused()
{
    QFETCH(QByteArray, datagram);
    QFETCH(QString, reason);
    QString summary;
    QCOMPARE(answer(datagram, summary), "!" + reason.toUtf8() + "*");
    QCOMPARE(summary, "refused: " + reason);
    QCOMPARE(fault_of_answer(datagram), QString());
}

void test_datagrams::the_answer_has_seven_parts_in_fixed_notation()
{
    QString summary;
    QCOMPARE(QByteArray(answer(shifted, summary)).replace("-0.", "0."),
             QByteArray("$1.000000,2.000000,3.000000,"
                        "0.0000000000,0.0000000000,0.0000000000,0.000000000000000*"));
    QCOMPARE(summary, QStringLiteral("4 pairs, 0.0000 m left per coordinate"));
    // A scale of 1.000002: small numbers keep their digits.
    const QByteArray scaled("$1,4,1000000,0,0,0,1000000,0,0,0,1000000,0,0,0,"
                            "1000002,0,0,0,1000002,0,0,0,1000002,0,0,0,*");
    const QByteArrayList parts = answer(scaled, summary).chopped(1).split(',');
    QCOMPARE(parts.size(), 7);
    QVERIFY2(parts[6].startsWith("0.0000020000000") || parts[6].startsWith("0.0000019999999"),
             parts[6].constData());
}

void test_datagrams::points_without_a_solution_are_refused()
{
    QString summary;
    const QByteArray zeros = "$1,4," + QByteArray("0,").repeated(24) + "*";
    QCOMPARE(answer(zeros, summary),
             QByteArray("!the points do not determine seven parameters: they lie in one place or "
                        "one line or are mirrored*"));
}

void test_datagrams::a_refusal_is_not_answered()
{
    // Else two servers, brought together by a false sender, would never end.
    QString summary;
    const QByteArray refusal = answer("hello", summary);
    QVERIFY(!refusal.isEmpty());
    QCOMPARE(answer(refusal, summary), QByteArray());
    // A result that comes back is refused once, and that is the end.
    const QByteArray result = answer(shifted, summary);
    QCOMPARE(answer(answer(result, summary), summary), QByteArray());
}

void test_datagrams::the_largest_datagram()
{
    // As many pairs as a datagram of 65507 bytes can hold, and as many commas.
    constexpr int pairs = 2700;
    QByteArray request = "$65535," + QByteArray::number(pairs);
    for (int side = 0; side < 2; ++side) {
        for (int i = 0; i < pairs; ++i)
            request += ',' + QByteArray::number(i % 50) + ',' + QByteArray::number(i / 50) + ',' +
                       QByteArray::number(i % 7);
    }
    request += ",*";
    QVERIFY(request.size() < 65507);
    QString summary;
    QVERIFY2(answer(request, summary).startsWith('$'), qPrintable(summary));
    QVERIFY(summary.startsWith("2700 pairs"));
    QCOMPARE(fault_of_answer('$' + QByteArray(65505, ',') + '*'), QString());
}

void test_datagrams::a_hundred_thousand_damaged_requests()
{
    std::mt19937 random(20240611);
    const auto below = [&random](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<std::uint32_t>(limit));
    };
    const QByteArrayList pieces{
        ",",    "$",         "*",  "!",       "-",   ".",     "e",
        "e308", "1e300",     "4,", "0,0,0,0", "inf", ",,,,,", QByteArray(1, 0),
        "°",    "9999999999"};
    int calculated = 0;
    for (int i = 0; i < 100'000; ++i) {
        QByteArray datagram = shifted;
        for (qsizetype changes = below(5); changes >= 0; --changes) {
            const qsizetype at = below(datagram.size() + 1);
            switch (below(5)) {
            case 0: datagram.insert(at, pieces[below(pieces.size())]); break;
            case 1: datagram.remove(at, 1 + below(8)); break;
            case 2: datagram.truncate(at); break;
            case 3:
                if (at < datagram.size())
                    datagram[at] = static_cast<char>(random());
                break;
            default:
                if (at < datagram.size())
                    datagram[at] = static_cast<char>('0' + below(10));
            }
        }
        const QString fault = fault_of_answer(datagram);
        QVERIFY2(fault.isEmpty(), qPrintable(fault + ": " + datagram.toPercentEncoding()));
        QString summary;
        calculated += answer(datagram, summary).startsWith('$') ? 1 : 0;
    }
    // Both outcomes are well represented.
    QVERIFY(calculated > 1000);
    QVERIFY(calculated < 99'000);
}

QTEST_APPLESS_MAIN(test_datagrams)
#include "test_datagrams.moc"
