// The last resort of the KML reader: coordinates in any text, found as the three
// regular expressions find them, and on texts that they would hang or give up on.

#include "exchange/kml.h"
#include "kml_expressions.h"
#include "support/log_capture.h"

#include <QBuffer>
#include <QStringEncoder>
#include <QTest>

#include <random>
#include <utility>

namespace {

using pair_list = QList<std::pair<QString, QString>>;

QList<exportRecord> find(const QByteArray& text)
{
    return find_kml_coordinates(QString::fromUtf8(text));
}

/// The points of all records as "first|second|altitude", records divided by "/".
QString points_of(const QList<exportRecord>& records)
{
    QStringList all;
    for (const exportRecord& record : records) {
        QStringList points;
        for (qsizetype k = 0; k < record.coordinate_pairs.size(); ++k)
            points += record.coordinate_pairs[k].first + u'|' + record.coordinate_pairs[k].second +
                      u'|' + record.altitudes.value(k);
        all += points.join(u' ');
    }
    return all.join(QStringLiteral(" / "));
}

QList<exportRecord> read(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    QList<exportRecord> records{exportRecord()};
    const bool found = parse_kml_fallback(buffer, records);
    return found == !records.isEmpty() ? records : QList<exportRecord>(99);
}

/// Whether `find_kml_coordinates` gives what the expressions give.
bool as_expressions(const QString& text)
{
    const bool same =
        kml_expressions::same(find_kml_coordinates(text), kml_expressions::find(text));
    if (!same)
        qWarning().noquote() << "differs on:" << text.toUtf8().toPercentEncoding(" <>/,.=");
    return same;
}

} // namespace

class test_kml_fallback : public QObject
{
    Q_OBJECT

private slots:
    void blocks_data();
    void blocks();
    void tuples_data();
    void tuples();
    void track_points_data();
    void track_points();
    void bounds_data();
    void bounds();
    void record_of_a_block();
    void mode_plays_no_part();
    void encodings_data();
    void encodings();
    void as_the_expressions_find_them();
    void texts_that_hang_expressions_data();
    void texts_that_hang_expressions();
    void twelve_million_characters_in_a_block();
    void records_keep_their_text();
};

void test_kml_fallback::blocks_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("points");
    const auto row = [](const char* name, const QByteArray& text, const char* points = "1|2|0") {
        QTest::newRow(name) << text << QString::fromLatin1(points);
    };
    row("plain", "<coordinates>1,2</coordinates>");
    row("prefix", "<kml:coordinates>1,2</kml:coordinates>");
    row("odd prefix", "<_a.b-1:coordinates>1,2</X:coordinates>");
    row("prefix that is none", "<1a:coordinates>1,2</coordinates>", "");
    row("prefix like the name", "<coordinates:coordinates>1,2</coordinates>");
    row("name as a prefix", "<coordinates:x>1,2</coordinates>");
    row("case", "<COORDINATES>1,2</Coordinates>");
    row("letters that are an s and a k",
        "<coordinates>1,2</coordinateſ><gx:Track><gx:coord>3 4 5</gx:coord></gx:TracK>",
        "1|2|0 / 3|4|5");
    row("which end no word", "<coordinateſ>1,2</coordinates>", "");
    row("but divide one", "<coordinateſx>1,2</coordinates>");
    row("attributes", "<coordinates a='b'>1,2</coordinates>");
    row("blanks", "< \n coordinates >1,2< / coordinates \t>");
    row("longer name", "<coordinatesx>1,2</coordinates>", "");
    row("name behind a dot", "<coordinates.x>1,2</coordinates>");
    row("shorter name", "<coordinate>1,2</coordinates>", "");
    row("no end", "<coordinates>1,2", "");
    row("other end", "<coordinates>1,2</Track>", "");
    row("end with an attribute", "<coordinates>1,2</coordinates a>", "");
    row("one after another", "<coordinates>1,2</coordinates><coordinates>3,4,5</coordinates>",
        "1|2|0 / 3|4|5");
    row("one in another", "<coordinates>1,2<coordinates>3,4</coordinates>5,6</coordinates>",
        "1|2|0 3|4|0");
    row("empty between", "<coordinates></coordinates><coordinates>3,4</coordinates>", "3|4|0");
    row("an opening tag up to the next >", "<coordinates <b>1,2</coordinates>");
    row("inside comments", "<!-- <coordinates>1,2</coordinates> -->");
    row("unclosed before a track",
        "<coordinates>9,9<gx:Track><gx:coord>1 2 0</gx:coord></gx:Track>");
    row("name of both", "<coordinates:Track>9,9 <coord>1 2 0</coord></Track>");
    row("track of tuples", "<Track>1,2</Track>", "");
    row("points of a track among coordinates", "<coordinates><coord>1 2 3</coord></coordinates>",
        "");
    row("nothing", "", "");
    row("only an opening", "<", "");
}

void test_kml_fallback::blocks()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, points);
    QCOMPARE(points_of(find(text)), points);
    QVERIFY(as_expressions(QString::fromUtf8(text)));
}

void test_kml_fallback::tuples_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("points");
    const auto row = [](const char* text, const char* points) {
        QTest::addRow("%s", text) << QString::fromLatin1(text) << QString::fromLatin1(points);
    };
    row("1,2,3 4,5,6", "1|2|3 4|5|6");
    row("1,2\n3,4", "1|2|0 3|4|0");
    row("1 , 2 , 3", "1|2|3");
    row("1,2,3,4,5", "1|2|3 4|5|0");
    row("1,2,,3,4", "1|2|0 3|4|0");
    row("1,2;3,4", "1|2|0 3|4|0");
    row("+1.50,-2.250", "+1.50|-2.250|0");
    row("1.,.5", "1.|.5|0");
    row(".,1,2", "1|2|0");
    row("1e1,2E0,3e+2", "1e1|2E0|3e+2");
    row("1e,2,3", "2|3|0");
    row("1e5.3,4", "5.3|4|0");
    row("1.2.3,4", "2.3|4|0");
    row("1,2e", "1|2|0");
    row("1,2-3,4", "1|2|0 -3|4|0");
    row("--1,2", "-1|2|0");
    row("1,+-2,3", "-2|3|0");
    row("a1,2b3,4", "1|2|0 3|4|0");
    row("1,2,x", "1|2|0");
    row("0x10,0x10", "10|0|0");
    row("1", "");
    row("1,", "");
    row("nan,inf", "");
    row(",,,", "");
    row("104 30,5", "30|5|0");
    row("181,2 3,4", "3|4|0");
}

void test_kml_fallback::tuples()
{
    QFETCH(QString, text);
    QFETCH(QString, points);
    const QString block = "<coordinates>" + text + "</coordinates>";
    QCOMPARE(points_of(find_kml_coordinates(block)), points);
    QVERIFY(as_expressions(block));
}

void test_kml_fallback::track_points_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("points");
    const auto row = [](const char* name, const char* text, const char* points) {
        QTest::newRow(name) << QByteArray(text) << QString::fromLatin1(points);
    };
    row("three numbers", "<gx:coord>1 2 3</gx:coord>", "1|2|3");
    row("no prefix, case", "<COORD>1 2 3</Coord>", "1|2|3");
    row("two numbers", "<gx:coord>1 2</gx:coord>", "");
    row("four numbers", "<gx:coord>1 2 3 4</gx:coord>", "");
    row("commas", "<gx:coord>1,2,3</gx:coord>", "");
    row("blanks", "< gx:coord a='b' >\n 1\t2 \n3 < / gx:coord >", "1|2|3");
    row("several", "<when>t</when><coord>1 2 3</coord><coord>4 5 6</coord>", "1|2|3 4|5|6");
    row("one between that is none", "<coord>1 2 3</coord><coord/><coord>4 5 6</coord>",
        "1|2|3 4|5|6");
    row("another end", "<coord>1 2 3</cord>", "");
    row("longer name", "<coords>1 2 3</coords>", "");
    row("an opening tag up to the next >", "<coord <coord>1 2 3</coord>", "1|2|3");
    row("no end of the tag", "<coord 1 2 3", "");
    row("words", "<coord>a b c</coord>", "");
}

void test_kml_fallback::track_points()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, points);
    const QByteArray block = "<gx:Track>" + text + "</gx:Track>";
    QCOMPARE(points_of(find(block)), points);
    QVERIFY(as_expressions(QString::fromUtf8(block)));
}

void test_kml_fallback::bounds_data()
{
    QTest::addColumn<QString>("tuple");
    QTest::addColumn<bool>("taken");
    const auto row = [](const char* tuple, bool taken) {
        QTest::newRow(tuple) << QString::fromLatin1(tuple) << taken;
    };
    row("180,90", true);
    row("-180,-90,-9999", true);
    row("180.0000000000001,0", false);
    row("-180.1,0", false);
    row("181,2", false);
    row("0,90.000001", false);
    row("0,-90.5", false);
    row("0,1e400", false);
    row("1e400,0", false);
    row("0,0,1e400", false); // no number that can be read
    row("0,0,1e300", true);
    row("0,0,123456789012345678901234567890", true);
    row("000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
        "0000000000000000000001,2",
        true);
    row("1.80e2,9.0e1", true);
    row("1.81e2,0", false);
}

void test_kml_fallback::bounds()
{
    QFETCH(QString, tuple);
    QFETCH(bool, taken);
    // The rest of the block is kept.
    const QString block = "<coordinates>1,2 " + tuple + " 3,4</coordinates>";
    const QList<exportRecord> records = find_kml_coordinates(block);
    QCOMPARE(records.value(0).coordinate_pairs.size(), taken ? 3 : 2);
    QVERIFY(as_expressions(block));
}

void test_kml_fallback::record_of_a_block()
{
    measuringData expected;
    expected.numpoint = QStringLiteral("1");
    expected.method = QStringLiteral("航点");
    QCOMPARE(static_cast<const measuringData&>(find("<coordinates>1,2</coordinates>").value(0)),
             expected);
    expected.numpoint = QStringLiteral("3");
    expected.method = QStringLiteral("航线");
    QCOMPARE(
        static_cast<const measuringData&>(find("<coordinates>1,2 3,4 5,6</coordinates>").value(0)),
        expected);
}

void test_kml_fallback::mode_plays_no_part()
{
    for (int mode = 0; mode < 5; ++mode) {
        QByteArray bytes = "<coordinates>1,2,3 4,5,6</coordinates>";
        QBuffer buffer(&bytes);
        const kml_reading reading = read_kml(buffer, {.mode = mode, .param = {}});
        QCOMPARE(reading.result, kml_own);
        QCOMPARE(points_of(reading.records), "1|2|3 4|5|6");
    }
}

void test_kml_fallback::encodings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QString text = QStringLiteral("<?xml?><名字/><coordinates>1,2,3\r\n4,5,6</coordinates>");
    const auto encoded = [&](QStringConverter::Encoding encoding, bool mark) {
        QStringEncoder encoder(encoding, mark ? QStringEncoder::Flag::WriteBom
                                              : QStringEncoder::Flag::Default);
        return QByteArray(encoder.encode(text));
    };
    QTest::newRow("UTF-8") << encoded(QStringConverter::Utf8, false);
    QTest::newRow("UTF-8 with mark") << encoded(QStringConverter::Utf8, true);
    QTest::newRow("UTF-16 LE with mark") << encoded(QStringConverter::Utf16LE, true);
    QTest::newRow("UTF-16 BE with mark") << encoded(QStringConverter::Utf16BE, true);
    QTest::newRow("UTF-32 LE with mark") << encoded(QStringConverter::Utf32LE, true);
    QTest::newRow("no UTF-8") << QByteArray("\xff\xb0<coordinates>1,2,3 4,5,6</coordinates>\xc3");
    QTest::newRow("zero bytes") << QByteArray(2, '\0') + "<coordinates>1,2,3 4,5,6</coordinates>" +
                                       QByteArray(1, '\0');
}

void test_kml_fallback::encodings()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(points_of(read(bytes)), "1|2|3 4|5|6");
}

void test_kml_fallback::as_the_expressions_find_them()
{
    // Pieces that make every branch of the expressions likely, put side by side at
    // random: always the same ones.
    const QStringList pieces{
        "<",
        ">",
        "/",
        " ",
        "\n",
        "\v",
        ",",
        ".",
        "-",
        "+",
        "1",
        "23",
        "0.5",
        "e",
        "E2",
        ":",
        "gx:",
        "_",
        "coord",
        "Track",
        "coordinates",
        "coordinateſ",
        "TracK",
        "COORD",
        "x",
        "é",
        "</",
        "<coord>",
        "</coord>",
        "<coordinates>",
        "</coordinates>",
        "<gx:Track>",
        "</gx:Track>",
        "1,2",
        "1 2 3",
        "1.5,2.5,3.5 ",
        "181,",
        QString(QChar(0xa0)),
        QString(QChar(0)),
        "<coordinates a=\"",
        "<Track ",
        "<coord >1 2 3</coord>",
    };
    std::mt19937 random(5);
    std::uniform_int_distribution<qsizetype> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(1, 60);
    int with_points = 0;
    for (int i = 0; i < 20'000; ++i) {
        QString text;
        for (int left = length(random); left > 0; --left)
            text += pieces[piece(random)];
        // Half of them certainly have a block.
        if (i % 2 == 0)
            text = (i % 4 == 0 ? "<coordinates>" : "<Track>") + text +
                   (i % 4 == 0 ? "</coordinates>" : "</Track>");
        QVERIFY(as_expressions(text));
        with_points += find_kml_coordinates(text).isEmpty() ? 0 : 1;
    }
    QVERIFY2(with_points > 2'000, qPrintable(QString::number(with_points)));
}

void test_kml_fallback::texts_that_hang_expressions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("records");
    constexpr qsizetype many = 1'000'000;
    const auto repeated = [](const char* text) { return QString::fromLatin1(text).repeated(many); };
    QTest::newRow("opened, never closed") << repeated("<coordinates>") << 0;
    QTest::newRow("opened, closed by another") << repeated("<coordinates>") + "</Track>" << 0;
    QTest::newRow("tags without end") << repeated("<coordinates") << 0;
    QTest::newRow("tags with one end") << repeated("<coordinates<Track") + ">" << 0;
    QTest::newRow("both, never closed") << repeated("<Track><coordinates>") << 0;
    QTest::newRow("digits") << "<coordinates>" + repeated("1") + "</coordinates>" << 0;
    QTest::newRow("digits and points") << "<coordinates>" + repeated("1.1") + "</coordinates>" << 0;
    QTest::newRow("exponents") << "<coordinates>" + repeated("1e1") + "</coordinates>" << 0;
    QTest::newRow("blanks behind a number")
        << "<coordinates>1" + repeated(" ") + "x</coordinates>" << 0;
    QTest::newRow("blanks behind a comma")
        << "<coordinates>1," + repeated(" ") + "x</coordinates>" << 0;
    QTest::newRow("commas") << "<coordinates>" + repeated("1,x") + "</coordinates>" << 0;
    QTest::newRow("blanks in a tag") << "<" + repeated(" ") + "<" + repeated(" ") << 0;
    QTest::newRow("a prefix") << "<" + repeated("a") << 0;
    QTest::newRow("track points without end") << "<Track>" + repeated("<coord") + "</Track>" << 0;
    QTest::newRow("track points with one end")
        << "<Track>" + repeated("<coord ") + ">" + repeated("1") + "</Track>" << 0;
    QTest::newRow("long numbers of a track point")
        << "<Track><coord>" + repeated("1") + " " + repeated("1") + " " + repeated("1") +
               "</coord></Track>"
        << 0;
    QTest::newRow("a block at the end")
        << repeated("<Track>") + "<coordinates>1,2</coordinates>" << 1;
}

void test_kml_fallback::texts_that_hang_expressions()
{
    QFETCH(QString, text);
    QFETCH(int, records);
    QCOMPARE(find_kml_coordinates(text).size(), records);
}

void test_kml_fallback::twelve_million_characters_in_a_block()
{
    const QString tuple = QStringLiteral("104.500000,30.250000,500.25\n");
    const qsizetype points = 12'000'000 / tuple.size();
    const QString text = "<coordinates>" + tuple.repeated(points) + "</coordinates>";
    // The expression gives up here, and does not say so.
    QVERIFY(!kml_expressions::block().match(text).hasMatch());
    const QList<exportRecord> records = find_kml_coordinates(text);
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].coordinate_pairs.size(), points);
    QCOMPARE(records[0].altitudes.last(), "500.25");
}

void test_kml_fallback::records_keep_their_text()
{
    QList<exportRecord> records;
    {
        QByteArray bytes = "<coordinates>1.5,2.5,3.5</coordinates>";
        QBuffer buffer(&bytes);
        QVERIFY(parse_kml_fallback(buffer, records));
    }
    const exportRecord copy = records.value(0);
    records.clear();
    QCOMPARE(copy.coordinate_pairs, (pair_list{{"1.5", "2.5"}}));
    QCOMPARE(copy.altitudes, QStringList{"3.5"});
}

QTEST_MAIN(test_kml_fallback)
#include "test_kml_fallback.moc"
