#include "device/frame.h"
#include "device/upload_records.h"
#include "instrument_frames.h"

#include <QTest>

using namespace upload_records;

namespace {

/// An area of two points with a value in every field that is sent.
measuringData good_record()
{
    measuringData record;
    record.numpoint = "2";
    record.method = "面积";
    record.areameter = "1334";
    record.distance = "123.4";
    record.time = "2024-3-5 7:8:9";
    record.endtime = "2024-12-31 23:59:58";
    record.timezone = "11";
    record.mode = "1";
    record.width = "3.5";
    record.price = "12";
    record.hd = "2";
    record.name = "north";
    return record;
}

const QString good_lines = "126.650000000000,45.750000000000,141.60\n"
                           "-0.000000100000,-0.000000200000,-152.7\n";

QString error_of(const measuringData& record, const QString& lines = good_lines)
{
    UploadItem item;
    QString error;
    return build_upload_item(record, lines, item, error) ? QString() : error;
}

UploadItem item_of(const measuringData& record, const QString& lines = good_lines)
{
    UploadItem item;
    QString error;
    if (!build_upload_item(record, lines, item, error))
        qFatal("%s", qPrintable(error));
    return item;
}

} // namespace

/// Texts to frames and Mode text, and the acknowledgement back.
class test_upload_records : public QObject
{
    Q_OBJECT

private slots:
    void kinds();
    void times_data();
    void times();
    void normalized_times();
    void unsigned_numbers_data();
    void unsigned_numbers();
    void signed_numbers_data();
    void signed_numbers();
    void points();
    void bad_points_data();
    void bad_points();
    void checks_come_in_their_order();
    void bytes_of_an_item_data();
    void bytes_of_an_item();
    void the_end_falls_back_on_the_start();
    void an_item_byte_for_byte();
    void points_byte_for_byte();
    void the_number_of_records_has_sixteen_bits();
    void mode_text();
    void mode_text_leaves_lines_out();
    void acknowledgements_data();
    void acknowledgements();
    void acknowledgements_in_any_pieces();
};

void test_upload_records::kinds()
{
    const QStringList methods{"航点", "航线", "航迹", "距离", "面积", "放样"};
    for (qsizetype index = 0; index < methods.size(); ++index)
        QCOMPARE(method_to_old_mode(methods[index]), QString::number(index + 1));
    QCOMPARE(method_to_old_mode("自制"), QString());
    QCOMPARE(method_to_old_mode("0"), QString());
}

void test_upload_records::times_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("digits"); // empty where it is refused
    const auto row = [](const char* text, const char* digits) {
        QTest::newRow(text) << QString(text) << QString(digits);
    };
    row("2024-3-5 7:8:9", "20240305070809");
    row("2024-03-05 07:08:09", "20240305070809");
    row("2024/3/5.7.8.9", "20240305070809");
    row("--2024- 3:5 7:8..9", "20240305070809");
    row("202403050708", "20240305070800");
    row("20240305070809", "20240305070809");
    row("2024-03-05T07:08:09", "20240305070809");
    row("2024-03-05 07:08:09.123", "20240305070809");
    row("2024年03月05日07时08分", "20240305070800");
    row("2000-1-1 0:0:0", "20000101000000");
    row("2099-12-31 23:59:59", "20991231235959");
    row("2024-2-29 1:2:3", "20240229010203");
    row("", "");
    row("0", "");
    row("1999-12-31 23:59:59", "");
    row("2100-1-1 0:0:0", "");
    row("2023-2-29 1:2:3", "");
    row("2024-13-1 1:2:3", "");
    row("2024-1-1 24:0:0", "");
    row("2024-1-1 0:60:0", "");
    row("2024-1-1 0:0:60", "");
    row("24-3-5 7:8:9", "");
    row("2024-3-5 7:8:100", ""); // fifteen digits of six parts are not cut
    row("2024-+3-5 7:8:9", "");
    row("2024-ab-5 7:8:9", "");
    row("2024-03-05 07:08", "20240305070800");
    row("2024030507080", "");
}

void test_upload_records::times()
{
    QFETCH(QString, text);
    QFETCH(QString, digits);
    QByteArray bytes = "as before";
    QString found = "as before";
    QCOMPARE(time_to_bcd(text, bytes, found), !digits.isEmpty());
    if (digits.isEmpty()) {
        QCOMPARE(found, "as before");
        QCOMPARE(bytes, QByteArray("as before"));
    } else {
        QCOMPARE(found, digits);
        QCOMPARE(bytes.toHex(), digits.mid(2).toLatin1());
    }
}

void test_upload_records::normalized_times()
{
    QCOMPARE(normalize_time_text("2024-3-5 7:8:9"), "20240305070809");
    QCOMPARE(normalize_time_text("2024.3/5-7 8:9"), "20240305070809");
    QCOMPARE(normalize_time_text("24-3-5 7:8:9"), "240305070809"); // the year stays
    QCOMPARE(normalize_time_text("a-b-c d:e:f"), "a0b0c0d0e0f");
    QCOMPARE(normalize_time_text("2024-3-5 7:8"), "");
    QCOMPARE(normalize_time_text("2024-3-5 7:8:9.1"), "");
    QCOMPARE(normalize_time_text("202403050708"), "");
    QCOMPARE(normalize_time_text(""), "");
}

void test_upload_records::unsigned_numbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("scale");
    QTest::addColumn<qint64>("value"); // -1 where it is refused
    const auto row = [](const char* text, double scale, qint64 value) {
        QTest::addRow("%s x %g", text, scale) << QString(text) << scale << value;
    };
    row("1334", 1, 1334);
    row("", 10, 0);
    row("  ", 10, 0);
    row(" 12.34 ", 10, 123);
    row("12.35", 10, 124);
    row("0.5", 1, 1);
    row("0.49", 1, 0);
    row("1.23457e+06", 1, 1234570);
    row("4294967295", 1, 4294967295);
    row("429496729.5", 10, 4294967295);
    row("4294967295.5", 1, -1);
    row("429496729.6", 10, -1);
    row("-0.1", 1, -1);
    row("-1", 1, -1);
    row("12a", 1, -1);
    row("1,5", 1, -1);
    row("nan", 1, -1);
    row("inf", 1, -1);
    row("1e400", 1, -1);
    QTest::newRow("10,000 digits") << QString(10000, '9') << 1.0 << qint64{-1};
}

void test_upload_records::unsigned_numbers()
{
    QFETCH(QString, text);
    QFETCH(double, scale);
    QFETCH(qint64, value);
    std::uint32_t out = 77;
    QCOMPARE(text_to_u32(text, scale, out), value >= 0);
    QCOMPARE(qint64{out}, value >= 0 ? value : 77);
}

void test_upload_records::signed_numbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("bound");
    QTest::addColumn<bool>("good");
    QTest::addColumn<int>("value");
    const auto row = [](const char* text, double scale, double bound, bool good, int value = 0) {
        QTest::addRow("%s x %g", text, scale) << QString(text) << scale << bound << good << value;
    };
    row("180", 1e7, 180, true, 1800000000);
    row("-180", 1e7, 180, true, -1800000000);
    row("180.0000001", 1e7, 180, false);
    row("-180.0000001", 1e7, 180, false);
    row("90", 1e7, 90, true, 900000000);
    row("90.00000001", 1e7, 90, false);
    row("21474836", 100, 21474836, true, 2147483600);
    row("-21474836", 100, 21474836, true, -2147483600);
    row("21474836.01", 100, 21474836, false);
    row(" 0.125 ", 100, 1, true, 13); // half away from zero
    row("-0.125", 100, 1, true, -13);
    row("2147483647.4", 1, 1e12, true, 2147483647);
    row("2147483647.5", 1, 1e12, false);
    row("-2147483648.4", 1, 1e12, true, -2147483647 - 1);
    row("", 1, 1, false);
    row("x", 1, 1, false);
    row("nan", 1, 1e300, false);
    row("-inf", 1, 1e300, false);
    QTest::newRow("10,000 digits") << QString(10000, '9') << 1.0 << 1e300 << false << 0;
}

void test_upload_records::signed_numbers()
{
    QFETCH(QString, text);
    QFETCH(double, scale);
    QFETCH(double, bound);
    QFETCH(bool, good);
    QFETCH(int, value);
    std::int32_t out = 77;
    QCOMPARE(text_to_i32(text, scale, -bound, bound, out), good);
    QCOMPARE(out, good ? value : 77);
}

void test_upload_records::points()
{
    QList<UploadPoint> out;
    QString error;
    QVERIFY(parse_upload_points("126.65,45.75,141.60\r\n"
                                "\n ; \n"
                                " -180 , 90 ,0 ; \n"
                                "1,2,3;",
                                out, error));
    const QList<UploadPoint> expected{
        {1266500000, 457500000, 14160}, {-1800000000, 900000000, 0}, {10000000, 20000000, 300}};
    QCOMPARE(out, expected);
    // The bounds themselves.
    QVERIFY(parse_upload_points("180,-90,21474836\n-180,90,-21474836", out, error));
    QCOMPARE(out, (QList<UploadPoint>{{1800000000, -900000000, 2147483600},
                                      {-1800000000, 900000000, -2147483600}}));
}

void test_upload_records::bad_points_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << ""
                             << "无点位数据";
    QTest::newRow("lines without content") << "\n ;\n\n"
                                           << "无点位数据";
    QTest::newRow("two parts") << "1,2\n"
                               << "第1个点格式错误";
    QTest::newRow("four parts") << "1,2,3\n\n1,2,3,4\n"
                                << "第2个点格式错误";
    QTest::newRow("empty part") << "1,,3\n"
                                << "第1个点经纬度或高程超限";
    QTest::newRow("longitude") << "180.0000001,2,3\n"
                               << "第1个点经纬度或高程超限";
    QTest::newRow("latitude") << "180,90,3\n1,-90.1,3"
                              << "第2个点经纬度或高程超限";
    QTest::newRow("longitude below") << "-180.0000001,2,3\n"
                                     << "第1个点经纬度或高程超限";
    QTest::newRow("latitude above") << "1,90.0000001,3"
                                    << "第1个点经纬度或高程超限";
    QTest::newRow("altitude") << "1,2,21474836.1"
                              << "第1个点经纬度或高程超限";
    QTest::newRow("altitude below") << "1,2,-21474836.1"
                                    << "第1个点经纬度或高程超限";
    QTest::newRow("no number") << "1,2,x"
                               << "第1个点经纬度或高程超限";
}

void test_upload_records::bad_points()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QList<UploadPoint> out{{1, 2, 3}};
    QString error;
    QVERIFY(!parse_upload_points(text, out, error));
    QCOMPARE(error, expected);
    QCOMPARE(out.size(), 1);
}

/// Each repair uncovers the next error.
void test_upload_records::checks_come_in_their_order()
{
    measuringData record;
    record.method = "自制";
    record.areameter = "-1";
    record.distance = "x";
    record.time = "1999-1-1 0:0:0";
    QCOMPARE(error_of(record, ""), "数据类型不支持");
    record.method = "放样";
    QCOMPARE(error_of(record, ""), "面积字段格式错误");
    record.areameter = "";
    QCOMPARE(error_of(record, ""), "距离字段格式错误");
    record.distance = "429496729.5";
    QCOMPARE(error_of(record, ""), "开始时间格式错误");
    record.time = "202403050708";
    QCOMPARE(error_of(record, ""), "无点位数据");
    QCOMPARE(error_of(record), QString());
}

void test_upload_records::bytes_of_an_item_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("byte");
    const auto row = [](const char* field, const char* text, int byte) {
        QTest::addRow("%s %s", field, text) << QString(field) << QString(text) << byte;
    };
    row("timezone", "2", 0);
    row("timezone", "27", 25);
    row("timezone", "1", 255); // in the table, and not sent
    row("timezone", "28", 255);
    row("timezone", "0", 255);
    row("timezone", "", 255);
    row("timezone", "-5", 255);
    row("mode", "1", 0x10);
    row("mode", " 7 ", 0x00);
    row("mode", "16", 0x41);
    row("mode", "0", 255);
    row("mode", "17", 255);
    row("width", "3.5", 35);
    row("width", "0.05", 1); // 0.5 tenths, half away from zero
    row("width", "25.4", 254);
    row("width", "0", 255);
    row("width", "0.04", 255);
    row("width", "25.5", 255);
    row("width", "-1", 255);
    row("width", "x", 255);
    row("width", "nan", 255);
    row("width", "inf", 255);
    row("price", "1", 1);
    row("price", "254", 254);
    row("price", "0", 255);
    row("price", "255", 255);
    row("price", "1.5", 255);
    row("price", "99999999999999999999", 255);
    row("hd", "1", 0);
    row("hd", "2", 4);
    row("hd", "5", 1);
    row("hd", "0", 255);
}

void test_upload_records::bytes_of_an_item()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(int, byte);
    measuringData record = good_record();
    const QMap<QString, QString measuringData::*> fields{{"timezone", &measuringData::timezone},
                                                         {"mode", &measuringData::mode},
                                                         {"width", &measuringData::width},
                                                         {"price", &measuringData::price},
                                                         {"hd", &measuringData::hd}};
    const QMap<QString, std::uint8_t UploadItem::*> bytes{{"timezone", &UploadItem::timezone},
                                                          {"mode", &UploadItem::mode},
                                                          {"width", &UploadItem::width},
                                                          {"price", &UploadItem::price},
                                                          {"hd", &UploadItem::currency}};
    record.*fields[field] = text;
    const UploadItem item = item_of(record);
    QCOMPARE(int{item.*bytes[field]}, byte);
}

void test_upload_records::the_end_falls_back_on_the_start()
{
    measuringData record = good_record();
    QCOMPARE(item_of(record).end_bcd.toHex(), QByteArray("241231235958"));
    record.endtime = "1999-12-31 23:59:58";
    const UploadItem item = item_of(record);
    QCOMPARE(item.end_bcd.toHex(), QByteArray("240305070809"));
    QCOMPARE(item.start_digits, "20240305070809");
    QCOMPARE(item.old_mode, "5");
}

void test_upload_records::an_item_byte_for_byte()
{
    const QByteArray data = item_data(item_of(good_record()), 3);
    QCOMPARE(data.toHex(), QByteArray("ffffffff"     // no identity
                                      "00000002"     // points
                                      "00000536"     // 1334 square metres
                                      "000004d2"     // 1234 tenths of a metre
                                      "00"           // area
                                      "240305070809" // start
                                      "241231235958" // end
                                      "0003"         // records
                                      "0910230c04"));
    // The layout is the instrument's own, but for the identity.
    const QByteArray own =
        instrument_frames::head{.id = 0xFFFFFFFF, .records = 3, .currency = 4}.data();
    QCOMPARE(data, own);
}

void test_upload_records::points_byte_for_byte()
{
    const UploadItem item = item_of(good_record());
    QCOMPARE(points_data(item, 0, 2).toHex(), QByteArray("ffffffff"
                                                         "4b7d41a0" // 126.65
                                                         "1b44e560" // 45.75
                                                         "00003750" // 141.60 m
                                                         "000000000000ff"
                                                         "ffffffff"
                                                         "fffffffe"
                                                         "ffffc45a" // -152.7 m
                                                         "000000000000ff"
                                                         "10")); // mode
    QCOMPARE(points_data(item, 1, 1).toHex(), QByteArray("ffffffff"
                                                         "fffffffffffffffeffffc45a"
                                                         "000000000000ff10"));
}

void test_upload_records::the_number_of_records_has_sixteen_bits()
{
    const UploadItem item = item_of(good_record());
    QCOMPARE(item_data(item, 65536 + 258).mid(29, 2).toHex(), QByteArray("0102"));
}

void test_upload_records::mode_text()
{
    measuringData record = good_record();
    record.name = "a %1;,b";
    QString text = "before";
    QString error;
    QVERIFY(append_mode_text(text, record, good_lines, error));
    record.method = "航点";
    record.time = "0"; // of no known form: goes out empty
    QVERIFY(append_mode_text(text, record, "1,2,3", error));
    QCOMPARE(text, "before"
                   "Mode:5,A:1334,D:123.4,n:2,T:20240305070809,N:a %1;,b\r\n"
                   "126.650000000000,45.750000000000,141.60\r\n"
                   "-0.000000100000,-0.000000200000,-152.7;"
                   "Mode:1,A:1334,D:123.4,n:2,T:,N:a %1;,b\r\n"
                   "1,2,3;");
    record.method = "自制";
    const QString before = text;
    QVERIFY(!append_mode_text(text, record, good_lines, error));
    QCOMPARE(error, "数据类型不支持");
    QCOMPARE(text, before);
}

void test_upload_records::mode_text_leaves_lines_out()
{
    QString text;
    QString error;
    measuringData record = good_record();
    // Nothing is converted or judged.
    QVERIFY(append_mode_text(text, record, "1,2\n 1 , x ,3 \r\n\n999,2,3\n1,2,3,4\n \n", error));
    QCOMPARE(text.section("\r\n", 1), "1,x,3\r\n999,2,3;");
    text.clear();
    QVERIFY(append_mode_text(text, record, "", error));
    QVERIFY(text.endsWith("N:north\r\n"));
}

void test_upload_records::acknowledgements_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status"); // -1 for none
    QTest::addColumn<QByteArray>("rest");

    const QByteArray good = instrument_frames::reply(0x31, 0);
    const QByteArray other = instrument_frames::reply(0x32, 0);
    QByteArray damaged = good;
    damaged[8] = static_cast<char>(damaged[8] ^ 1);
    const QByteArray none;

    QTest::newRow("nothing") << none << -1 << none;
    QTest::newRow("good") << good << 0 << none;
    QTest::newRow("refused") << instrument_frames::reply(0x31, 7) << 7 << none;
    QTest::newRow("what follows stays") << good + other << 0 << other;
    QTest::newRow("noise before") << "noise" + good << 0 << none;
    QTest::newRow("noise alone") << QByteArray("noise") << -1 << none;
    QTest::newRow("another command") << other << -1 << none;
    QTest::newRow("another command before") << other + good << 0 << none;
    QTest::newRow("no reply") << frame::build_frame(0x2F, 0, QByteArray(36, '1')) << -1 << none;
    QTest::newRow("five data bytes")
        << frame::build_frame(0, 0, QByteArray::fromHex("0102030431")) << -1 << none;
    QTest::newRow("more data bytes")
        << frame::build_frame(0, 0, QByteArray::fromHex("01020304310355667788")) << 3 << none;
    QTest::newRow("long answer") << frame::build_frame(0, 0,
                                                       QByteArray::fromHex("010203043104") +
                                                           QByteArray(5000, 'x'))
                                 << 4 << none;
    QTest::newRow("six bytes") << good.first(6) << -1 << good.first(6);
    QTest::newRow("one byte short") << good.chopped(1) << -1 << good.chopped(1);
    QTest::newRow("damaged") << damaged << -1 << none;
    // A damaged frame goes as a whole: what hides in it is not looked for.
    const QByteArray around = QByteArray::fromHex("5A0007000010") + good + QByteArray(4, '\0');
    QCOMPARE(around.size(), 6 + 16 + 1);
    QTest::newRow("an answer in a damaged frame") << around << -1 << none;
    QTest::newRow("an answer behind a damaged frame") << around + good << 0 << none;
    // Nor is a false header given up for its length.
    const QByteArray waits = QByteArray::fromHex("5A000700FFFF00") + good;
    QTest::newRow("a false header") << waits << -1 << waits;
}

void test_upload_records::acknowledgements()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, status);
    QFETCH(QByteArray, rest);
    acknowledgement answer{.device_type = 99, .status = 99};
    QCOMPARE(take_acknowledgement(bytes, 0x31, answer), status >= 0);
    QCOMPARE(int{answer.status}, status >= 0 ? status : 99);
    QCOMPARE(bytes, rest);
}

void test_upload_records::acknowledgements_in_any_pieces()
{
    const QByteArray stream = "xZ" + instrument_frames::reply(0x32, 0) + QByteArray(9, 'Z') +
                              instrument_frames::reply(0x31, 5) + "more";
    QByteArray whole = stream;
    acknowledgement expected{};
    const bool found = take_acknowledgement(whole, 0x31, expected);
    for (qsizetype size = 1; size < stream.size(); ++size) {
        QByteArray buffer;
        acknowledgement answer{};
        bool taken = false;
        for (qsizetype at = 0; at < stream.size() && !taken; at += size) {
            buffer += stream.mid(at, size);
            taken = take_acknowledgement(buffer, 0x31, answer);
        }
        QCOMPARE(taken, found);
        QCOMPARE(answer.status, expected.status);
    }
}

QTEST_APPLESS_MAIN(test_upload_records)
#include "test_upload_records.moc"
