#include "core/code_tables.h"
#include "core/records.h"

#include <QSet>
#include <QTest>

#include <type_traits>

using namespace Qt::StringLiterals;

class test_code_tables : public QObject
{
    Q_OBJECT

private slots:
    void a_fresh_record_holds_zeros();
    void fields_stand_in_their_order();
    void kinds_run_route_before_track();
    void kind_numbers();
    void time_zones_data();
    void time_zones();
    void time_zones_outside_the_table();
    void area_units_data();
    void area_units();
    void area_units_outside_the_table();
    void length_units_data();
    void length_units();
    void length_units_outside_the_table();
    void kilometres_have_two_codes_and_one_english_word();
    void currencies_data();
    void currencies();
    void currencies_outside_the_table();
    void modes_data();
    void modes();
    void modes_outside_the_table();
    void every_device_byte_reads_as_one_code();
    void words_are_compared_exactly();
    void values_in_units_data();
    void values_in_units();
    void values_in_base_units_data();
    void values_in_base_units();
    void damu_shares_the_factor_of_the_hectare();
    void empty_becomes_zero();
};

void test_code_tables::a_fresh_record_holds_zeros()
{
    const auto& [numpoint, method, slope, price, distance, jd, areamu, areameter, md, hd,
                 totalprices, time, endtime, numrecord, name, zone, mode, width, id, zj] =
        measuringData();
    for (const QString* field :
         {&numpoint,  &method, &slope, &price,       &distance, &jd,      &areamu,
          &areameter, &md,     &hd,    &totalprices, &time,     &endtime, &numrecord,
          &name,      &zone,   &mode,  &width,       &id,       &zj})
        QCOMPARE(*field, "0");

    const auto& [hdop, speed, angle, point_time, status] = point_msg();
    QVERIFY(hdop.isEmpty() && speed.isEmpty() && angle.isEmpty() && point_time.isEmpty());
    QCOMPARE(status, "0");
    QCOMPARE(widgetData(), (widgetData{QString(), 0}));
}

void test_code_tables::fields_stand_in_their_order()
{
    const measuringData record{"0",  "1",  "2",  "3",  "4",  "5",  "6",  "7",  "8",  "9",
                               "10", "11", "12", "13", "14", "15", "16", "17", "18", "19"};
    const QStringList in_order{
        record.numpoint,    record.method, record.slope,     record.price,     record.distance,
        record.jd,          record.areamu, record.areameter, record.md,        record.hd,
        record.totalprices, record.time,   record.endtime,   record.numrecord, record.name,
        record.timezone,    record.mode,   record.width,     record.id,        record.zj};
    for (qsizetype place = 0; place < in_order.size(); ++place)
        QCOMPARE(in_order.at(place), QString::number(place));

    const point_msg point{"0", "1", "2", "3", "4"};
    QCOMPARE((QStringList{point.hdop, point.speed, point.angle, point.time, point.status}),
             (QStringList{"0", "1", "2", "3", "4"}));
    const widgetData checked{"1,2", -3};
    QCOMPARE(checked.data, "1,2");
    QCOMPARE(checked.row, -3);
    static_assert(std::is_same_v<decltype(widgetData::row), qint32>);
}

void test_code_tables::kinds_run_route_before_track()
{
    // The numbers are 3 for track and 4 for route, and all tables still run
    // route before track. The word for staking-out is "example". The instrument
    // and the users' files rely on each of the three.
    struct expected_kind
    {
        QString method;
        int number;
        QString english;
        QString exchange;
        QString map_kind;
    };
    const QList<expected_kind> expected = {
        {u"面积"_s, 0, "area", "area", "1"},      {u"距离"_s, 1, "distance", "distance", "2"},
        {u"航点"_s, 2, "point", "point", "3"},    {u"航线"_s, 4, "airline", "airline", "2"},
        {u"航迹"_s, 3, "track", "airtrack", "2"}, {u"放样"_s, 5, "example", "", "2"},
    };
    QCOMPARE(measurement_kinds.size(), std::size_t(expected.size()));
    for (std::size_t i = 0; i < measurement_kinds.size(); ++i) {
        const measurement_kind& kind = measurement_kinds[i];
        const expected_kind& row = expected.at(qsizetype(i));
        QCOMPARE(kind.method, row.method);
        QCOMPARE(kind.number, row.number);
        QCOMPARE(kind.english, row.english);
        QCOMPARE(kind.exchange, row.exchange);
        QCOMPARE(kind.map_kind, row.map_kind);
        QCOMPARE(kind_index(row.method), int(i));
    }
    QCOMPARE(self_made_method, u"自制");
    QCOMPARE(self_made_english, u"self");
    QCOMPARE(kind_index(self_made_method), -1);
    QCOMPARE(kind_index(u"area"), -1);
    QCOMPARE(kind_index(u""), -1);
}

void test_code_tables::kind_numbers()
{
    const QStringList methods = {u"面积"_s, u"距离"_s, u"航点"_s, u"航迹"_s, u"航线"_s, u"放样"_s};
    for (qsizetype number = 0; number < methods.size(); ++number)
        QCOMPARE(method_to_kind(methods.at(number)), std::uint8_t(number));
    for (const QString& method : {u"自制"_s, u"area"_s, u"0"_s, u" 面积"_s, QString()})
        QCOMPARE(method_to_kind(method), std::uint8_t{255});
}

void test_code_tables::time_zones_data()
{
    QTest::addColumn<QString>("text");
    const QStringList texts = {
        "UTC±00:00", "UTC+00:00", "UTC+01:00", "UTC+02:00", "UTC+03:00", "UTC+04:00", "UTC+05:00",
        "UTC+05:30", "UTC+06:00", "UTC+07:00", "UTC+08:00", "UTC+09:00", "UTC+10:00", "UTC+11:00",
        "UTC+12:00", "UTC-01:00", "UTC-02:00", "UTC-03:00", "UTC-04:00", "UTC-05:00", "UTC-06:00",
        "UTC-07:00", "UTC-08:00", "UTC-09:00", "UTC-10:00", "UTC-11:00", "UTC-12:00"};
    for (qsizetype i = 0; i < texts.size(); ++i)
        QTest::addRow("%d", int(i) + 1) << texts.at(i);
}

void test_code_tables::time_zones()
{
    QFETCH(QString, text);
    const QString code = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(timezone_code_to_text(code), text);
    QCOMPARE(timezone_text_to_code(text), code);
    // Code 1 has no byte of its own: byte 0 is code 2.
    if (code != "1")
        QCOMPARE(timezone_device_to_code(std::uint8_t(code.toInt() - 2)), code);
}

void test_code_tables::time_zones_outside_the_table()
{
    // Byte 255 produces "0", and "0" has no text all the same.
    QCOMPARE(timezone_device_to_code(255), "0");
    for (const QString& code : {u"0"_s, u"28"_s, u"-1"_s, u"x"_s, u""_s, u"4294967297"_s})
        QCOMPARE(timezone_code_to_text(code), "");
    for (const QString& text : {u""_s, u"UTC+13:00"_s, u"utc+01:00"_s, u"UTC+1"_s})
        QCOMPARE(timezone_text_to_code(text), "11");
    for (int byte = 26; byte < 255; ++byte)
        QCOMPARE(timezone_device_to_code(std::uint8_t(byte)), "");
}

void test_code_tables::area_units_data()
{
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::newRow("1") << "亩"
                       << "MU";
    QTest::newRow("2") << "平方米"
                       << "Square Meter";
    QTest::newRow("3") << "公顷"
                       << "Hectare";
    QTest::newRow("4") << "英亩"
                       << "Acres";
    QTest::newRow("5") << "大亩"
                       << "DAMU";
}

void test_code_tables::area_units()
{
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    const QString code = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(area_unit_code_to_text(code, 0), chinese);
    for (const int language : {1, 2, -1})
        QCOMPARE(area_unit_code_to_text(code, language), english);
    QCOMPARE(area_unit_text_to_code(chinese), code);
    QCOMPARE(area_unit_text_to_code(english), code);
}

void test_code_tables::area_units_outside_the_table()
{
    for (const QString& code : {u"0"_s, u"6"_s, u"-1"_s, u"x"_s, u""_s, u"03"_s, u" 3"_s}) {
        QCOMPARE(area_unit_code_to_text(code, 0), "亩");
        QCOMPARE(area_unit_code_to_text(code, 1), "MU");
    }
    for (const QString& text : {u""_s, u"mu"_s, u"Meter"_s, u"3"_s})
        QCOMPARE(area_unit_text_to_code(text), "1");
}

void test_code_tables::length_units_data()
{
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("english_reads_as");
    QTest::newRow("1") << "米"
                       << "Meter"
                       << "1";
    QTest::newRow("2") << "公里"
                       << "Kilometers"
                       << "2";
    QTest::newRow("3") << "英里"
                       << "Miles"
                       << "3";
    QTest::newRow("4") << "码"
                       << "Code"
                       << "4"; // the interface's word for the yard
    QTest::newRow("5") << "英尺"
                       << "Foot"
                       << "5";
    QTest::newRow("6") << "千米"
                       << "Kilometers"
                       << "2";
}

void test_code_tables::length_units()
{
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    QFETCH(QString, english_reads_as);
    const QString code = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(length_unit_code_to_text(code, 0), chinese);
    for (const int language : {1, 2, -1})
        QCOMPARE(length_unit_code_to_text(code, language), english);
    QCOMPARE(length_unit_text_to_code(chinese), code);
    QCOMPARE(length_unit_text_to_code(english), english_reads_as);
}

void test_code_tables::length_units_outside_the_table()
{
    for (const QString& code : {u"0"_s, u"7"_s, u"-1"_s, u"x"_s, u""_s}) {
        QCOMPARE(length_unit_code_to_text(code, 0), "米");
        QCOMPARE(length_unit_code_to_text(code, 1), "Meter");
    }
    for (const QString& text : {u""_s, u"meter"_s, u"Yard"_s, u"2"_s, u"亩"_s})
        QCOMPARE(length_unit_text_to_code(text), "1");
}

void test_code_tables::kilometres_have_two_codes_and_one_english_word()
{
    // A length that went through an English file comes back with code 2, even
    // where it left with 6. Both spellings stay.
    QCOMPARE(length_unit_text_to_code(u"千米"_s), "6");
    QCOMPARE(length_unit_text_to_code(u"公里"_s), "2");
    QCOMPARE(length_unit_text_to_code(length_unit_code_to_text("6", 1)), "2");
}

void test_code_tables::currencies_data()
{
    QTest::addColumn<int>("device");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    // The instrument counts the last four backwards.
    QTest::newRow("1") << 0 << "元"
                       << "YUAN";
    QTest::newRow("2") << 4 << "法郎"
                       << "Franc";
    QTest::newRow("3") << 3 << "欧元"
                       << "Euro";
    QTest::newRow("4") << 2 << "英镑"
                       << "Pound";
    QTest::newRow("5") << 1 << "美元"
                       << "Dollar";
}

void test_code_tables::currencies()
{
    QFETCH(int, device);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    const QString code = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(currency_code_to_text(code, 0), chinese);
    for (const int language : {1, 2, -1})
        QCOMPARE(currency_code_to_text(code, language), english);
    QCOMPARE(currency_text_to_code(chinese), code);
    QCOMPARE(currency_text_to_code(english), code);
    QCOMPARE(int(currency_code_to_device(code)), device);
    QCOMPARE(int(currency_code_to_device(" " + code + "\r\n")), device);
    QCOMPARE(currency_device_to_code(std::uint8_t(device)), code);
}

void test_code_tables::currencies_outside_the_table()
{
    for (const QString& code : {u"0"_s, u"6"_s, u"-1"_s, u"x"_s, u""_s, u"02"_s}) {
        QCOMPARE(currency_code_to_text(code, 0), "元");
        QCOMPARE(currency_code_to_text(code, 1), "YUAN");
        QCOMPARE(int(currency_code_to_device(code)), 255);
    }
    for (const QString& text : {u""_s, u"yuan"_s, u"5"_s})
        QCOMPARE(currency_text_to_code(text), "1");
    QCOMPARE(currency_device_to_code(255), "0");
    for (int byte = 5; byte < 255; ++byte)
        QCOMPARE(currency_device_to_code(std::uint8_t(byte)), "");
}

void test_code_tables::modes_data()
{
    QTest::addColumn<int>("device");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::newRow("1") << 0x10 << "普通面积"
                       << "Common Area";
    QTest::newRow("2") << 0x14 << "长宽面积"
                       << "Length And Width Area";
    QTest::newRow("3") << 0x12 << "定宽面积"
                       << "Fixed Width Area";
    QTest::newRow("4") << 0x13 << "定点面积"
                       << "Fixed Point Area";
    QTest::newRow("5") << 0x11 << "转圈机载"
                       << "Circling Airborne";
    QTest::newRow("6") << 0x15 << "来回机载"
                       << "Round Trip Airborne";
    QTest::newRow("7") << 0x00 << "智能坡地"
                       << "Intelligent Slope";
    QTest::newRow("8") << 0x01 << "智能山地"
                       << "Intelligent Mountain";
    QTest::newRow("9") << 0x30 << "普通距离"
                       << "Ordinary Distance";
    QTest::newRow("10") << 0x31 << "定点距离"
                        << "Fixed Point Distance";
    QTest::newRow("11") << 0x32 << "普通斜距"
                        << "Common Slant Distance";
    QTest::newRow("12") << 0x33 << "定点斜距"
                        << "Fixed Point Slant Distance";
    QTest::newRow("13") << 0x16 << "智能机载"
                        << "Intelligent Airborne";
    QTest::newRow("14") << 0x20 << "坡面测量(定坡度)"
                        << "Slope Measurement (Fixed Slope)";
    QTest::newRow("15") << 0x40 << "自动采集"
                        << "Automatic Collection";
    QTest::newRow("16") << 0x41 << "手动输入"
                        << "Manual Input";
}

void test_code_tables::modes()
{
    QFETCH(int, device);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    const QString code = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(mode_code_to_text(code, 0), chinese);
    for (const int language : {1, 2, -1})
        QCOMPARE(mode_code_to_text(code, language), english);
    QCOMPARE(mode_text_to_code(chinese), code);
    QCOMPARE(mode_text_to_code(english), code);
    QCOMPARE(int(mode_code_to_device(code)), device);
    QCOMPARE(int(mode_code_to_device("\t" + code + " ")), device);
    QCOMPARE(mode_device_to_code(std::uint8_t(device)), code);
}

void test_code_tables::modes_outside_the_table()
{
    for (const QString& code : {u"0"_s, u"17"_s, u"-1"_s, u"x"_s, u""_s}) {
        QCOMPARE(mode_code_to_text(code, 0), "");
        QCOMPARE(mode_code_to_text(code, 1), "");
        QCOMPARE(int(mode_code_to_device(code)), -1);
    }
    for (const QString& text : {u""_s, u"common area"_s, u"1"_s, u"坡面测量"_s})
        QCOMPARE(mode_text_to_code(text), "0");
    QCOMPARE(mode_device_to_code(255), "0");
    QCOMPARE(mode_device_to_code(0x02), "");
    // A mode's code is parsed, where a currency's is compared.
    QCOMPARE(int(mode_code_to_device(" 03 ")), 0x12);
    QCOMPARE(int(currency_code_to_device(" 03 ")), 255);
}

void test_code_tables::every_device_byte_reads_as_one_code()
{
    // A byte used twice, or a code that two bytes yield, would lose a record's
    // mode or currency on its way to the instrument and back.
    QSet<QString> mode_codes;
    QSet<QString> currency_codes;
    for (int byte = 0; byte < 255; ++byte) {
        const QString mode = mode_device_to_code(std::uint8_t(byte));
        if (!mode.isEmpty()) {
            QVERIFY(!mode_codes.contains(mode));
            mode_codes.insert(mode);
            QCOMPARE(int(std::uint8_t(mode_code_to_device(mode))), byte);
        }
        const QString currency = currency_device_to_code(std::uint8_t(byte));
        if (!currency.isEmpty()) {
            QVERIFY(!currency_codes.contains(currency));
            currency_codes.insert(currency);
            QCOMPARE(int(currency_code_to_device(currency)), byte);
        }
    }
    QCOMPARE(mode_codes.size(), 16);
    QCOMPARE(currency_codes.size(), 5);
}

void test_code_tables::words_are_compared_exactly()
{
    QCOMPARE(area_unit_text_to_code("hectare"), "1");
    QCOMPARE(area_unit_text_to_code("Hectare "), "1");
    QCOMPARE(length_unit_text_to_code("FOOT"), "1");
    QCOMPARE(currency_text_to_code(u" 美元"_s), "1");
    QCOMPARE(mode_text_to_code("Manual  Input"), "0");
}

void test_code_tables::values_in_units_data()
{
    QTest::addColumn<bool>("area");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("result");
    // 1,000,000 square metres and 1,000 metres divided by hand.
    QTest::newRow("mu") << true << "1"
                        << "1000000"
                        << "1499.250375";
    QTest::newRow("square metre stays text") << true << "2"
                                             << "12.50"
                                             << "12.50";
    QTest::newRow("square metre, no number") << true << "2"
                                             << "abc"
                                             << "abc";
    QTest::newRow("hectare") << true << "3"
                             << "1000000"
                             << "100.000000";
    QTest::newRow("acre") << true << "4"
                          << "1000000"
                          << "247.105381";
    QTest::newRow("damu") << true << "5"
                          << "1000000"
                          << "100.000000";
    QTest::newRow("unknown area") << true << "0"
                                  << "667"
                                  << "1.000000";
    QTest::newRow("unknown area, past the end") << true << "6"
                                                << "1334"
                                                << "2.000000";
    QTest::newRow("area, no number") << true << "1"
                                     << "abc"
                                     << "0.000000";
    QTest::newRow("metre") << false << "1"
                           << "12.5"
                           << "12.500000";
    QTest::newRow("kilometre") << false << "2"
                               << "1000"
                               << "1.000000";
    QTest::newRow("mile") << false << "3"
                          << "1609.344"
                          << "1.000000";
    QTest::newRow("yard") << false << "4"
                          << "1000"
                          << "1093.613298";
    QTest::newRow("foot") << false << "5"
                          << "1000"
                          << "3280.839895";
    QTest::newRow("other kilometre") << false << "6"
                                     << "1"
                                     << "0.001000";
    QTest::newRow("unknown length") << false << "0"
                                    << "12.5"
                                    << "12.500000";
    QTest::newRow("unknown length, past the end") << false << "7"
                                                  << "3"
                                                  << "3.000000";
    QTest::newRow("length, empty") << false << "2"
                                   << ""
                                   << "0.000000";
}

void test_code_tables::values_in_units()
{
    QFETCH(bool, area);
    QFETCH(QString, code);
    QFETCH(QString, value);
    QFETCH(QString, result);
    QCOMPARE(area ? area_to_unit(code, value) : length_to_unit(code, value), result);
}

void test_code_tables::values_in_base_units_data()
{
    QTest::addColumn<bool>("area");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("result");
    QTest::newRow("mu") << true << "亩"
                        << "MU"
                        << "1.5"
                        << "1000.50000000";
    QTest::newRow("square metre") << true << "平方米"
                                  << "Square Meter"
                                  << "1.5"
                                  << "1.5";
    QTest::newRow("hectare") << true << "公顷"
                             << "Hectare"
                             << "1.5"
                             << "15000.00000000";
    QTest::newRow("acre") << true << "英亩"
                          << "Acres"
                          << "2"
                          << "8093.71284480";
    QTest::newRow("damu") << true << "大亩"
                          << "DAMU"
                          << "1.5"
                          << "15000.00000000";
    QTest::newRow("metre") << false << "米"
                           << "Meter"
                           << "1.50"
                           << "1.50";
    QTest::newRow("kilometre") << false << "公里"
                               << "Kilometers"
                               << "1.5"
                               << "1500.00000000";
    QTest::newRow("mile") << false << "英里"
                          << "Miles"
                          << "2"
                          << "3218.68800000";
    QTest::newRow("yard") << false << "码"
                          << "Code"
                          << "10"
                          << "9.14400000";
    QTest::newRow("foot") << false << "英尺"
                          << "Foot"
                          << "10"
                          << "3.04800000";
    QTest::newRow("other kilometre") << false << "千米"
                                     << "Kilometers"
                                     << "2"
                                     << "2000.00000000";
    QTest::newRow("no unit of area") << true << ""
                                     << "mu"
                                     << "1.50"
                                     << "1.50";
    QTest::newRow("no unit of length") << false << ""
                                       << "Yard"
                                       << "1.50"
                                       << "1.50";
}

void test_code_tables::values_in_base_units()
{
    QFETCH(bool, area);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    QFETCH(QString, value);
    QFETCH(QString, result);
    for (const QString& word : {chinese, english})
        QCOMPARE(area ? area_to_square_meter(word, value) : length_to_meter(word, value), result);
}

void test_code_tables::damu_shares_the_factor_of_the_hectare()
{
    // Not a slip of the table: the value is in force in instruments and in files
    // that users have, and a "corrected" one would change their areas.
    QCOMPARE(area_to_unit("5", "25000"), area_to_unit("3", "25000"));
    QCOMPARE(area_to_square_meter(u"大亩"_s, "2.5"), "25000.00000000");
}

void test_code_tables::empty_becomes_zero()
{
    QCOMPARE(zero_if_empty(""), "0");
    QCOMPARE(zero_if_empty(QString()), "0");
    QCOMPARE(zero_if_empty(" "), " ");
    QCOMPARE(zero_if_empty("0.0"), "0.0");
}

QTEST_APPLESS_MAIN(test_code_tables)
#include "test_code_tables.moc"
