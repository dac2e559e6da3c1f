// KML files: what is written, byte for byte, and what the first two passes of the
// reader make of our own and of foreign files. The third pass is in
// test_kml_fallback, damaged files are in test_corpus.

#include "coordinates/json_file_manager.h"
#include "coordinates/transforms.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/kml.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_records.h"

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <utility>

namespace {

const QString own_read = QStringLiteral("kml文件导入成功");
const QString plain_read = QStringLiteral("自制kml文件导入成功");
const QString failure = QStringLiteral("kml文件导入失败");

using pair_list = QList<std::pair<QString, QString>>;

/// WGS 84, Gauss in zone 35 of three degrees, no calibration.
CoordinateSystem zone_35()
{
    CoordinateSystem system;
    system.changzhou = 6378137.0;
    system.duanzhou = 6356752.314245179;
    system.pianlv = 0.003352811;
    system.type = 2;
    system.ellipsoid = 2;
    system.l0 = 104.0;
    return system;
}

file_coordinates form_of(int mode)
{
    const CoordinateSystem system = zone_35();
    return {mode, flat_parameters(system), system.changzhou, system.duanzhou, system.pianlv};
}

QList<exportRecord> sample_export()
{
    const sample_lists lists = sample_records();
    QList<exportRecord> records;
    for (qsizetype i = 0; i < lists.table_list.size(); ++i)
        records.append({lists.table_list[i], {}, {}, lists.data_msg_altitude[i], {}});
    return records;
}

exportRecord record_of(const QString& method, const QString& name = QStringLiteral("field"))
{
    exportRecord record;
    record.method = method;
    record.name = name;
    record.coordinates = QStringLiteral("104.5,30.5,7\n104.6,30.6,8\n");
    return record;
}

QByteArray written(const QList<exportRecord>& records, int mode = 0)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    write_kml(buffer, records, mode);
    return buffer.data();
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

QByteArray document(const QByteArray& inside)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><kml xmlns="http://www.opengis.net/kml/2.2"><Document>)" +
           inside + "</Document></kml>";
}

/// A Placemark of our own form with these items of the description.
QByteArray own_placemark(const QByteArray& items,
                         const QByteArray& coordinates = "\n104.5,30.5,7\n104.6,30.6,8\n",
                         const QByteArray& name = "202403050708")
{
    return "<Placemark><name>" + name + "</name><description><![CDATA[" + items +
           "]]></description><LineString><coordinates>" + coordinates +
           "</coordinates></LineString></Placemark>";
}

QByteArray item(const QByteArray& label, const QByteArray& value)
{
    return "<h4>" + label + value + "</h4>";
}

/// What makes a record whole.
QByteArray method_item()
{
    return item("测量方式:", "航线");
}

kml_reading read(const QByteArray& bytes, int mode = 0)
{
    QByteArray copy = bytes;
    QBuffer buffer(&copy);
    return read_kml(buffer, form_of(mode));
}

/// What the first pass reads, nothing if its result is another than expected.
QList<exportRecord> read_own(const QByteArray& bytes, kml_result expected = kml_own)
{
    QByteArray copy = bytes;
    QBuffer buffer(&copy);
    QList<exportRecord> records{exportRecord()}; // goes at the start
    return parse_kml_own(buffer, form_of(0), records) == expected ? records : QList<exportRecord>();
}

QList<exportRecord> read_placemarks(const QByteArray& bytes, int mode = 0)
{
    QByteArray copy = bytes;
    QBuffer buffer(&copy);
    QList<exportRecord> records{exportRecord()};
    parse_kml_placemarks(buffer, form_of(mode), records);
    return records;
}

QByteArray plain_placemark(const QByteArray& geometry, const QByteArray& coordinates,
                           const QByteArray& name = "plain")
{
    return "<Placemark><name>" + name + "</name><description>words</description><" + geometry +
           "><coordinates>" + coordinates + "</coordinates></" + geometry + "></Placemark>";
}

/// What an import shows and hands on.
struct imported
{
    QList<box_watcher::seen_box> boxes;
    qsizetype signals_seen = 0;
    qsizetype boxes_at_signal = -1;
    sample_lists lists;
};

imported import(const QString& path, int mode = 0)
{
    JsonFileManager store;
    store.systems = {zone_35()};
    file_import_thread importer;
    const box_watcher watcher;
    imported seen;
    QObject::connect(&importer, &file_import_thread::read_data_finished,
                     [&](const QList<measuringData>& table_list, const QStringList& data_msg,
                         const QStringList& data_msg_altitude,
                         const QList<QList<point_msg>>& point_msg_all) {
                         ++seen.signals_seen;
                         seen.boxes_at_signal = watcher.boxes.size();
                         seen.lists = {table_list, data_msg, data_msg_altitude, point_msg_all};
                     });
    importer.import_file(path, mode, &store, 0);
    seen.boxes = watcher.boxes;
    return seen;
}

imported import_bytes(const QByteArray& bytes, int mode = 0)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.kml");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(bytes);
    file.close();
    return import(path, mode);
}

} // namespace

class test_kml : public QObject
{
    Q_OBJECT

private slots:
    void golden_data();
    void golden();
    void the_unit_of_the_price_stands_for_the_price();
    void geometry_by_method_data();
    void geometry_by_method();
    void a_ring_is_not_closed();
    void per_cent_signs_are_text();
    void what_xml_cannot_hold_is_left_out();
    void coordinates_that_need_escaping();

    void round_trip();
    void names_that_a_description_cannot_hold_data();
    void names_that_a_description_cannot_hold();
    void a_record_without_geometry_sends_all_to_the_fallback();
    void an_empty_name_ends_the_reading();
    void an_unnamed_record_takes_the_name_of_its_placemark();
    void several_geometries_of_an_unnamed_record();
    void a_placemark_name_stays_in_force();
    void labels_data();
    void labels();
    void separators_and_ends_of_items();
    void random_descriptions();
    void ten_million_characters_in_an_item();
    void tuples_data();
    void tuples();
    void comments_within_coordinates();
    void the_first_pass_logs_its_way();
    void modes_data();
    void modes();
    void all_geometries_of_an_own_placemark();
    void no_description_is_no_foreign_form();
    void what_is_no_cdata_is_a_foreign_form_data();
    void what_is_no_cdata_is_a_foreign_form();
    void an_xml_error_ends_the_first_pass();
    void coordinates_are_read_on_their_start_only();
    void what_a_record_promises_changes_no_points();

    void plain_placemarks();
    void plain_geometries_data();
    void plain_geometries();
    void plain_tuples_data();
    void plain_tuples();
    void plain_modes();
    void last_geometry_counts_the_points();
    void a_geometry_without_coordinates_takes_the_next();
    void a_geometry_ends_with_the_document();
    void an_xml_error_in_the_second_pass_keeps_what_came_before();
    void faults_that_need_the_fallback_data();
    void faults_that_need_the_fallback();
    void the_fallback_replaces_everything();

    void unopenable_file();
    void message_of_each_result_data();
    void message_of_each_result();
    void order_of_log_signal_and_box_data();
    void order_of_log_signal_and_box();
    void equal_placemarks_come_once();
    void export_messages_data();
    void export_messages();
};

void test_kml::golden_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<int>("mode");
    for (const int language : {0, 1}) {
        for (int mode = 0; mode < 5; ++mode)
            QTest::addRow("language %d, mode %d", language, mode) << language << mode;
    }
}

void test_kml::golden()
{
    QFETCH(int, language);
    QFETCH(int, mode);
    const QTemporaryDir folder;
    const QString path = folder.filePath("all.kml");
    file_export_thread exporter;
    const box_watcher watcher;
    exporter.setlanguage(language);
    exporter.export_list = sample_export();
    exporter.kml_export(mode, flat_parameters(zone_35()), path);
    QCOMPARE(content(path), content(TEST_FILES "/golden/all.kml"));
}

void test_kml::the_unit_of_the_price_stands_for_the_price()
{
    exportRecord record = record_of("航线");
    record.price = QStringLiteral("12.5");
    record.hd = QStringLiteral("3");
    const QByteArray bytes = written({record});
    QVERIFY(bytes.contains("<h4>单价（元）：3</h4>"));
    QVERIFY(!bytes.contains("12.5"));

    const imported seen = import_bytes(bytes);
    QCOMPARE(seen.lists.table_list.value(0).price, "3");
    QCOMPARE(seen.lists.table_list.value(0).hd, "0");
}

void test_kml::geometry_by_method_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QStringList>("elements");
    QTest::newRow("point") << "航点" << QStringList{"Point"};
    QTest::newRow("route") << "航线" << QStringList{"LineString"};
    QTest::newRow("distance") << "距离" << QStringList{"LineString"};
    QTest::newRow("track") << "航迹" << QStringList{"LineString"};
    QTest::newRow("area") << "面积" << QStringList{"Polygon", "outerBoundaryIs", "LinearRing"};
    QTest::newRow("staking-out") << "放样" << QStringList();
    QTest::newRow("self-made") << "自制" << QStringList();
    QTest::newRow("unknown") << "雷达" << QStringList();
    QTest::newRow("unset") << "0" << QStringList();
}

void test_kml::geometry_by_method()
{
    QFETCH(QString, method);
    QFETCH(QStringList, elements);
    QXmlStreamReader xml(written({record_of(method)}));
    QStringList seen;
    bool behind_description = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && behind_description)
            seen += xml.name().toString();
        behind_description |= xml.isEndElement() && xml.name() == QLatin1String("description");
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    if (!elements.isEmpty())
        elements += QStringLiteral("coordinates");
    QCOMPARE(seen, elements);
}

void test_kml::a_ring_is_not_closed()
{
    QVERIFY(written({record_of("面积")})
                .contains("<coordinates>\n104.5,30.5,7\n104.6,30.6,8\n</coordinates>"));
}

void test_kml::per_cent_signs_are_text()
{
    exportRecord record = record_of("航线", "100 %1 %12 %L1");
    record.time = QStringLiteral("%2");
    const QByteArray bytes = written({record});
    QVERIFY(bytes.contains("<h4>名字：100 %1 %12 %L1</h4>"));
    QVERIFY(bytes.contains("<h4>时间:%2</h4>"));
}

void test_kml::what_xml_cannot_hold_is_left_out()
{
    QString name = QStringLiteral("a\x01"
                                  "b\tc\x0b\x1f");
    name += QChar(0xd83c); // half of a character
    name += QStringLiteral("d🌾") + QChar(0xdf3e) + QChar(0xfffe) + QChar(0xffff) + QChar(0) + u'e';
    const QByteArray bytes = written({record_of("航线", name), record_of("航线", "next")});
    QXmlStreamReader xml(bytes);
    while (!xml.atEnd())
        xml.readNext();
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    const kml_reading reading = read(bytes);
    QCOMPARE(reading.records.size(), 2);
    QCOMPARE(reading.records[0].name, QStringLiteral("ab\tcd🌾e"));
    QCOMPARE(reading.records[1].name, "next");
}

void test_kml::coordinates_that_need_escaping()
{
    for (const char* odd : {"<b>", "&amp;", "\"", "\x01", "é", "\rx", "\t", "\x7f"}) {
        exportRecord record = record_of("航线");
        record.coordinates = "1,2," + QString::fromUtf8(odd) + "\n3,4,5\n";
        QXmlStreamReader xml(written({record}));
        QString coordinates;
        while (!xml.atEnd()) {
            xml.readNext();
            if (xml.isStartElement() && xml.name() == QLatin1String("coordinates"))
                coordinates = xml.readElementText();
        }
        QVERIFY2(!xml.hasError(), odd);
        const QString expected = "\n" + record.coordinates;
        // Neither is a line end in XML what a file holds, nor a control character.
        QCOMPARE(coordinates,
                 QString(expected).remove(QChar(1)).replace(QLatin1Char('\r'), QLatin1Char('\n')));
    }
}

void test_kml::round_trip()
{
    const sample_lists sample = sample_records();
    QList<exportRecord> records;
    for (const exportRecord& record : sample_export()) {
        // The others have tests of their own: an empty name, "]]>" and "<" in a
        // name, no geometry and no points.
        if (!record.name.isEmpty() && !record.name.contains(QLatin1String("]]>")) &&
            !record.name.contains(QLatin1Char('<')) && !record.coordinates.isEmpty() &&
            record.method != QStringLiteral("放样") && record.method != QStringLiteral("自制"))
            records.append(record);
    }
    QCOMPARE(records.size(), 4);
    const imported seen = import_bytes(written(records));
    QCOMPARE(seen.boxes.value(0).text, own_read);
    QCOMPARE(seen.lists.table_list.size(), records.size());
    for (qsizetype i = 0; i < records.size(); ++i) {
        measuringData expected;
        expected.time = records[i].time;
        expected.method = records[i].method;
        expected.slope = records[i].slope;
        expected.price = records[i].hd;
        expected.distance = records[i].distance;
        expected.areameter = records[i].areameter;
        expected.areamu = records[i].areamu;
        expected.totalprices = records[i].totalprices;
        expected.numpoint = records[i].numpoint;
        expected.numrecord = records[i].numrecord;
        // Blanks around a name are not part of it.
        expected.name = records[i].name.trimmed();
        QCOMPARE(seen.lists.table_list[i], expected);
        const qsizetype at = sample.data_msg_altitude.indexOf(records[i].coordinates);
        QCOMPARE(seen.lists.data_msg_altitude[i], records[i].coordinates);
        QCOMPARE(seen.lists.data_msg[i], sample.data_msg[at]);
        const QString zero = QStringLiteral("0");
        QCOMPARE(seen.lists.point_msg_all[i],
                 QList<point_msg>(records[i].numpoint.toInt(), {zero, zero, zero, zero, zero}));
    }
}

void test_kml::names_that_a_description_cannot_hold_data()
{
    QTest::addColumn<QString>("name");
    // What stands behind the first CDATA section is not read: the item has no end.
    QTest::newRow("end of CDATA") << "a]]>b";
    QTest::newRow("end of CDATA alone") << "]]>";
    // A value ends at the first "<", and only the end of an item may stand there.
    QTest::newRow("tag") << "<well> & gate";
    QTest::newRow("angle bracket") << "a < b";
}

void test_kml::names_that_a_description_cannot_hold()
{
    QFETCH(QString, name);
    exportRecord odd = record_of("航线", name);
    odd.time = QStringLiteral("2024-03-10 07:08:09");
    const imported seen = import_bytes(written({odd, record_of("航线", "next")}));
    QCOMPARE(seen.boxes.value(0).text, own_read);
    QCOMPARE(seen.lists.table_list.size(), 2);
    QCOMPARE(seen.lists.table_list[0].name, "0");
    QCOMPARE(seen.lists.table_list[0].time, odd.time);
    QCOMPARE(seen.lists.table_list[0].method, odd.method);
    QCOMPARE(seen.lists.data_msg_altitude[0], odd.coordinates);
    QCOMPARE(seen.lists.table_list[1].name, "next");
}

void test_kml::a_record_without_geometry_sends_all_to_the_fallback()
{
    const imported seen = import_bytes(written({record_of("航线"), record_of("放样")}));
    QCOMPARE(seen.boxes.value(0).text, own_read);
    QCOMPARE(seen.lists.table_list.size(), 1);
    QCOMPARE(seen.lists.table_list[0].name, "0");
    QCOMPARE(seen.lists.table_list[0].time, "0");
    QCOMPARE(seen.lists.table_list[0].method, "航线");
    QCOMPARE(seen.lists.table_list[0].numpoint, "2");
}

void test_kml::an_empty_name_ends_the_reading()
{
    const kml_reading reading = read(
        written({record_of("面积", "first"), record_of("航线", ""), record_of("航线", "lost")}));
    QCOMPARE(reading.result, kml_own);
    QCOMPARE(reading.records.size(), 2);
    QCOMPARE(reading.records[0].name, "first");
    QCOMPARE(reading.records[1].name, "");
    QCOMPARE(reading.records[1].numpoint, "2");
    QCOMPARE(reading.records[1].numrecord, "1");
    // Whatever no date gives: the second 0 in the time of this place.
    QCOMPARE(reading.records[1].time,
             QDateTime::fromSecsSinceEpoch(0).toString("yyyy-MM-dd HH:mm:ss"));
}

void test_kml::an_unnamed_record_takes_the_name_of_its_placemark()
{
    const QList<exportRecord> records =
        read_own(document(own_placemark(method_item() + item("名字：", "")) +
                          own_placemark(method_item() + item("名字：", "lost"))));
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].name, "202403050708");
    QCOMPARE(records[0].time, "2024-03-05 07:08:00");
    QCOMPARE(records[0].numpoint, "2");
    QCOMPARE(records[0].numrecord, "1");
}

void test_kml::several_geometries_of_an_unnamed_record()
{
    // The first gives the name; with the second the record has one, and the
    // reading goes on. The count stays that of the first.
    QByteArray two = own_placemark(method_item() + item("名字：", ""));
    two.replace("</LineString>",
                "</LineString><LineString><coordinates>1,2,3</coordinates></LineString>");
    const QList<exportRecord> records =
        read_own(document(two + own_placemark(method_item() + item("名字：", "next"))));
    QCOMPARE(records.size(), 2);
    QCOMPARE(records[0].numpoint, "2");
    QCOMPARE(records[0].coordinate_pairs.size(), 3);
    QCOMPARE(records[1].name, "next");
}

void test_kml::a_placemark_name_stays_in_force()
{
    const QByteArray nameless =
        own_placemark(method_item() + item("名字：", "")).replace("<name>202403050708</name>", "");
    const QList<exportRecord> records = read_own(document(
        own_placemark(method_item() + item("名字：", "x"), "1,2", "202412312359") + nameless));
    QCOMPARE(records.size(), 2);
    QCOMPARE(records[1].name, "202412312359");
    QCOMPARE(records[1].time, "2024-12-31 23:59:00");
}

void test_kml::labels_data()
{
    QTest::addColumn<QByteArray>("items");
    QTest::addColumn<QString>("field"); // empty: none
    QTest::addColumn<QString>("value");
    const auto row = [](const char* label, const char* field) {
        QTest::newRow(label) << item(label, " 12.5 ") << field << "12.5";
    };
    row("时间:", "time");
    row("时:", "time");
    row("时什么：", "time");
    row("测量方式：", "method");
    row("坡度（度数）:", "slope");
    row("坡度（度）：", "slope");
    row("单价（元）：", "hd");
    row("单价（元/亩:", "hd");
    row("行程（米）：", "distance");
    row("行程（米x:", "distance");
    row("面积（平方米）：", "areameter");
    row("面积（平方米:", "areameter");
    row("面积（亩）：", "areamu");
    row("面积（亩:", "areamu");
    row("总价（元）：", "totalprices");
    row("总价（元:", "totalprices");
    row("点数：", "numpoint");
    row("数据条数：", "numrecord");
    row("名字：", "name");
    row(" 名字 :", "name");
    row("亩值（平方米）:", "");
    row("测量方式x:", "");
    row("坡度:", "");
    row("单价:", "");
    row("面积（平方）:", "");
    row("点数x:", "");
    row("数据条数x:", "");
    row("名字x:", "");
    row("x名字:", "");
    row(":", "");
    QTest::newRow("colons in a value") << item("时间:", "07:08:09") << "time"
                                       << "07:08:09";
    QTest::newRow("full-width colons in a value") << item("名字：", "a：b") << "name"
                                                  << "a：b";
    QTest::newRow("method of three characters") << item("测量方式:", "航线图") << "method"
                                                << "航线";
    QTest::newRow("method of one character") << item("测量方式:", "航") << "method"
                                             << "航";
    QTest::newRow("the last one counts") << item("名字:", "a") + item("名字:", "b") << "name"
                                         << "b";
    QTest::newRow("angle bracket in a value") << item("名字:", "a<b") << ""
                                              << "";
    QTest::newRow("angle bracket in a label") << item("名<字:", "a") << ""
                                              << "";
    QTest::newRow("no end") << QByteArray("<h4>名字:a") << ""
                            << "";
    QTest::newRow("no separator") << QByteArray("<h4>名字</h4>") << ""
                                  << "";
    QTest::newRow("an item within") << QByteArray("<h4>x<h4>名字:a</h4>") << "name"
                                    << "a";
    QTest::newRow("closed by an opening tag") << QByteArray("<h4>名字:a<h4>") << "name"
                                              << "a";
}

void test_kml::labels()
{
    QFETCH(QByteArray, items);
    QFETCH(QString, field);
    QFETCH(QString, value);
    const QHash<QString, QString measuringData::*> fields{
        {"time", &measuringData::time},         {"method", &measuringData::method},
        {"slope", &measuringData::slope},       {"hd", &measuringData::hd},
        {"distance", &measuringData::distance}, {"areameter", &measuringData::areameter},
        {"areamu", &measuringData::areamu},     {"totalprices", &measuringData::totalprices},
        {"numpoint", &measuringData::numpoint}, {"numrecord", &measuringData::numrecord},
        {"name", &measuringData::name},
    };
    exportRecord record;
    QXmlStreamReader xml("<description><![CDATA[" + items + "]]></description>");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(parse_kml_description(xml, record), 0);
    measuringData expected;
    if (!field.isEmpty())
        expected.*fields.value(field) = field == "method" ? value.left(2) : value;
    QCOMPARE(static_cast<const measuringData&>(record), expected);
}

void test_kml::separators_and_ends_of_items()
{
    // An opening tag that ends an item is used up: the next item has lost it.
    exportRecord record;
    QXmlStreamReader xml("<d><![CDATA[<h4>点数:1<h4>名字:lost</h4><h4>时间:t</h4>]]></d>");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(parse_kml_description(xml, record), 0);
    QCOMPARE(record.numpoint, "1");
    QCOMPARE(record.name, "0");
    QCOMPARE(record.time, "t");
}

void test_kml::random_descriptions()
{
    // What an item is, as one writes it down first. The reader's expression gives
    // nothing back once taken, and must find the same.
    const QRegularExpression item_expression(
        QStringLiteral("<h4>([^<:：]*?)([:：])([^<]*?)(<h4>|</h4>)"));
    const QHash<QString, QString measuringData::*> fields{
        {"坡度（度数）", &measuringData::slope}, {"点数", &measuringData::numpoint},
        {"数据条数", &measuringData::numrecord}, {"名字", &measuringData::name},
        {"时间", &measuringData::time},
    };
    // Beginnings of items as well, or hardly one would come to its end.
    const QStringList pieces{"<h4>名字：", "<h4>时间:", "<h4>点数 :", "<h4>", "</h4>", "</h4>",
                             ":",          "：",        "<",          "h4>",  "\n",    "数据条数",
                             "名字",       "x",         " ",          "]"};
    QRandomGenerator random(5);
    int found = 0;
    for (int round = 0; round < 20'000; ++round) {
        QString text;
        for (int left = random.bounded(1, 24); left > 0; --left)
            text += pieces[random.bounded(static_cast<int>(pieces.size()))];
        measuringData expected;
        for (const QRegularExpressionMatch& match : item_expression.globalMatch(text)) {
            const QString label = match.captured(1).trimmed();
            // The time goes by its first character.
            const auto field =
                fields.constFind(label.startsWith(u'时') ? QStringLiteral("时间") : label);
            if (field == fields.constEnd())
                continue;
            expected.** field = match.captured(3).trimmed();
            ++found;
        }
        exportRecord record;
        QXmlStreamReader xml("<d><![CDATA[" + text + "]]></d>");
        QVERIFY(xml.readNextStartElement());
        QCOMPARE(parse_kml_description(xml, record), 0);
        QVERIFY2(static_cast<const measuringData&>(record) == expected, qPrintable(text));
    }
    QVERIFY(found > 1'000);
}

void test_kml::ten_million_characters_in_an_item()
{
    // More than PCRE takes without a word, were each of them a step back.
    const QByteArray name(11'000'000, 'n');
    const QList<exportRecord> records =
        read_own(document(own_placemark(method_item() + item("名字：", name))));
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].name.size(), name.size());
}

void test_kml::tuples_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("points"); // "first|second|altitude"
    QTest::addColumn<int>("count");          // of parts, those that are no point as well
    QTest::newRow("three") << "1.50,2.250,3" << QStringList{"1.50|2.250|3"} << 1;
    QTest::newRow("two") << "1,2" << QStringList{"1|2|0"} << 1;
    QTest::newRow("one") << "1" << QStringList() << 1;
    QTest::newRow("four") << "1,2,3,4" << QStringList() << 1;
    QTest::newRow("blanks and feeds") << "\n 1,2 \t3,4\r\n5,6,7\n"
                                      << QStringList{"1|2|0", "3|4|0", "5|6|7"} << 3;
    QTest::newRow("empty parts") << ",1,,2," << QStringList{"1|2|0"} << 1;
    QTest::newRow("commas only") << ",,," << QStringList() << 1;
    QTest::newRow("blank behind a comma") << "1, 2" << QStringList() << 2;
    QTest::newRow("words") << "a,b" << QStringList{"a|b|0"} << 1;
    QTest::newRow("other blanks") << QString("1,2") + QChar(0xa0) + " " + QChar(0x2003) + " 3,4"
                                  << QStringList{"1|2|0", "3|4|0"} << 3;
    QTest::newRow("other blanks divide nothing")
        << QString("1,2") + QChar(0xa0) + "3,4" << QStringList{QString("1|2") + QChar(0xa0) + "3|4"}
        << 1;
    QTest::newRow("nothing") << "" << QStringList() << 0;
    QTest::newRow("blanks") << " \n " << QStringList() << 0;
}

void test_kml::tuples()
{
    QFETCH(QString, text);
    QFETCH(QStringList, points);
    QFETCH(int, count);
    exportRecord record;
    record.name = QString(); // so that it shows the count
    QXmlStreamReader xml("<coordinates>" + text.toUtf8() + "</coordinates>");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(parse_kml_coordinates(xml, form_of(0), record, "202403050708"), 1);
    QStringList seen;
    for (qsizetype k = 0; k < record.coordinate_pairs.size(); ++k)
        seen += record.coordinate_pairs[k].first + u'|' + record.coordinate_pairs[k].second + u'|' +
                record.altitudes.value(k);
    QCOMPARE(seen, points);
    QCOMPARE(record.altitudes.size(), points.size());
    QCOMPARE(record.numpoint, QString::number(text == " \n " || text.isEmpty() ? 0 : count));
}

void test_kml::comments_within_coordinates()
{
    exportRecord record;
    record.name = QString();
    QXmlStreamReader xml("<coordinates>1,2 3,4<!-- a -->5,6<![CDATA[ 7,8]]></coordinates>");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(parse_kml_coordinates(xml, form_of(0), record, QString()), 1);
    QCOMPARE(record.coordinate_pairs.size(), 4);
    QCOMPARE(record.numpoint, "1"); // of the last text
}

void test_kml::the_first_pass_logs_its_way()
{
    const log_capture log;
    QCOMPARE(read_own(document(own_placemark(method_item() + item("名字：", "x")))).size(), 1);
    QCOMPARE(log.texts(), (QStringList{"Open file is successed", "description", "into coordinates",
                                       "coordinates"}));
}

void test_kml::modes_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = -1; mode < 6; ++mode)
        QTest::addRow("mode %d", mode) << mode;
}

void test_kml::modes()
{
    QFETCH(int, mode);
    const QByteArray coordinates =
        mode == 4 ? "35501972.5,3387000.25,7 1,2" : "3387000.25,35501972.5,7 2,1";
    const kml_reading reading = read(document(own_placemark(method_item(), coordinates)), mode);
    if (mode < 0 || mode > 4) {
        // No point of such a mode is read; the fallback takes all for degrees.
        QCOMPARE(reading.records.size(), 1);
        QCOMPARE(reading.records[0].coordinate_pairs, (pair_list{{"2", "1"}}));
        return;
    }
    QCOMPARE(reading.result, kml_own);
    QCOMPARE(reading.records.size(), 1);
    QCOMPARE(reading.records[0].altitudes, (QStringList{"7", "0"}));
    if (mode == 1 || mode == 4) {
        const file_coordinates form = form_of(mode);
        pair_list expected;
        for (const plane_position& plane :
             {plane_position{3387000.25, 35501972.5, 0.0}, plane_position{2.0, 1.0, 0.0}}) {
            const geodetic_position degrees =
                plane_to_wgs84(plane, form.param, form.cz, form.dz, form.pl);
            expected.append(
                {QString::number(degrees.l, 'f', 12), QString::number(degrees.b, 'f', 12)});
        }
        QCOMPARE(reading.records[0].coordinate_pairs, expected);
        QCOMPARE(expected[0].first.left(6), "105.02"); // longitude first, in zone 35
        QCOMPARE(expected[0].second.left(4), "30.6");
    } else
        QCOMPARE(reading.records[0].coordinate_pairs,
                 (pair_list{{"3387000.25", "35501972.5"}, {"2", "1"}}));
}

void test_kml::all_geometries_of_an_own_placemark()
{
    const QList<exportRecord> records = read_own(
        document("<Placemark><description><![CDATA[" + method_item() +
                 "]]></description><Polygon><outerBoundaryIs><LinearRing><coordinates>1,2 3,4"
                 "</coordinates></LinearRing></outerBoundaryIs><innerBoundaryIs><LinearRing>"
                 "<coordinates>5,6</coordinates></LinearRing></innerBoundaryIs></Polygon>"
                 "</Placemark>"));
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].coordinate_pairs, (pair_list{{"1", "2"}, {"3", "4"}, {"5", "6"}}));
}

void test_kml::no_description_is_no_foreign_form()
{
    const log_capture log;
    const QByteArray bytes =
        document("<description>of the document</description><Placemark><name>n</name><Point>"
                 "<coordinates>1,2,3</coordinates></Point></Placemark>");
    const QList<exportRecord> records = read_own(bytes);
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].method, "0");
    QCOMPARE(records[0].name, "0");
    QVERIFY(!log.has("Found Placemark:"));
    // The kind is missing, so the fallback reads it.
    QCOMPARE(read(bytes).records.value(0).method, "航点");
}

void test_kml::what_is_no_cdata_is_a_foreign_form_data()
{
    QTest::addColumn<QByteArray>("description");
    QTest::newRow("text") << QByteArray("<description>words</description>");
    QTest::newRow("empty") << QByteArray("<description/>");
    QTest::newRow("a blank before CDATA")
        << QByteArray("<description> <![CDATA[<h4>名字:x</h4>]]></description>");
    QTest::newRow("escaped") << QByteArray(
        "<description>&lt;h4&gt;名字:x&lt;/h4&gt;</description>");
    QTest::newRow("element") << QByteArray("<description><b/></description>");
    QTest::newRow("comment") << QByteArray(
        "<description><!-- a --><![CDATA[<h4>名字:x</h4>]]></description>");
}

void test_kml::what_is_no_cdata_is_a_foreign_form()
{
    QFETCH(QByteArray, description);
    // The first Placemark is of our own form; it is read again as a plain one.
    const QList<exportRecord> records =
        read_own(document(own_placemark(method_item() + item("名字：", "own"), "\n1,2,3\n", "one") +
                          "<Placemark><name>two</name>" + description +
                          "<Point><coordinates>4,5</coordinates></Point></Placemark>"),
                 kml_plain);
    QCOMPARE(records.size(), 2);
    QCOMPARE(records[0].name, "one");
    QCOMPARE(records[0].method, "航线");
    QCOMPARE(records[1].name, "two");
    QCOMPARE(records[1].method, "航点");
}

void test_kml::an_xml_error_ends_the_first_pass()
{
    const log_capture log;
    const QByteArray whole = document(own_placemark(method_item() + item("名字：", "own")));
    QCOMPARE(read_own(whole.chopped(6), kml_failed).size(), 1);
    QVERIFY(log.has("XML Parsing Error:"));
    // What the fallback finds has no name.
    const kml_reading reading = read(whole.chopped(6));
    QCOMPARE(reading.result, kml_own);
    QCOMPARE(reading.records.value(0).name, "0");
    QCOMPARE(reading.records.value(0).coordinate_pairs.size(), 2);
    QVERIFY(log.has("KML imported with geometry fallback: 1"));
}

void test_kml::coordinates_are_read_on_their_start_only()
{
    exportRecord record;
    record.name = QString();
    QXmlStreamReader xml("<other>1,2</other>");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(parse_kml_coordinates(xml, form_of(0), record, "n"), 0);
    QVERIFY(record.coordinate_pairs.isEmpty());
}

void test_kml::what_a_record_promises_changes_no_points()
{
    for (const char* promised : {"0", "1", "2", "3", "-2147483648", "2147483647", "many"}) {
        const QList<exportRecord> records = read_own(document(
            own_placemark(method_item() + item("名字：", "a") + item("点数：", promised))));
        QCOMPARE(records.size(), 1);
        QCOMPARE(records[0].numpoint, QString(promised));
        QCOMPARE(records[0].coordinate_pairs,
                 (QList<std::pair<QString, QString>>{{"104.5", "30.5"}, {"104.6", "30.6"}}));
        QCOMPARE(records[0].altitudes, QStringList({"7", "8"}));
    }
}

void test_kml::plain_placemarks()
{
    const log_capture log;
    const QDateTime before = QDateTime::currentDateTime();
    const QList<exportRecord> records = read_placemarks(
        document("<name>document</name>" +
                 plain_placemark("LineString", "\n 1.5, 2.50 ,3\n4,5\n", "  a line\n")));
    QCOMPARE(records.size(), 1);
    measuringData expected;
    expected.name = QStringLiteral("a line");
    expected.method = QStringLiteral("航线");
    expected.numpoint = QStringLiteral("2");
    expected.time = records[0].time;
    QCOMPARE(static_cast<const measuringData&>(records[0]), expected);
    QCOMPARE(records[0].coordinate_pairs, (pair_list{{"1.5", "2.50"}, {"4", "5"}}));
    QCOMPARE(records[0].altitudes, (QStringList{"3", "0"}));
    const QDateTime time = QDateTime::fromString(records[0].time, "yyyy-MM-dd HH:mm:ss");
    QVERIFY(time.isValid() && time >= before.addSecs(-1) && time <= QDateTime::currentDateTime());
    for (const char* line : {"Found Placemark:", "Placemark Name:", "Description:",
                             "Geometry Type:", "into parsegeometry", "Coordinates:"})
        QVERIFY2(log.has(line), line);
}

void test_kml::plain_geometries_data()
{
    QTest::addColumn<QByteArray>("inside");
    QTest::addColumn<QString>("method");
    QTest::addColumn<int>("points");
    const auto within = [](const QByteArray& element, const QByteArray& inside) {
        return "<" + element + ">" + inside + "</" + element + ">";
    };
    const QByteArray one = within("coordinates", "1,2,3");
    const QByteArray two = within("coordinates", "1,2,3\n4,5,6");
    QTest::newRow("point") << within("Point", one) << "航点" << 1;
    QTest::newRow("line") << within("LineString", two) << "航线" << 2;
    QTest::newRow("polygon becomes a track")
        << within("Polygon", within("outerBoundaryIs", within("LinearRing", two))) << "航迹" << 2;
    QTest::newRow("only the outer ring")
        << within("Polygon", within("outerBoundaryIs", within("LinearRing", two)) +
                                 within("innerBoundaryIs", within("LinearRing", one)))
        << "航迹" << 2;
    QTest::newRow("ring alone") << within("LinearRing", two) << "0" << 0;
    QTest::newRow("several") << within("MultiGeometry",
                                       within("LineString", two) + within("Point", one))
                             << "航点" << 3;
    QTest::newRow("elements before the coordinates")
        << within("LineString", "<tessellate>1</tessellate>" + two) << "航线" << 2;
    QTest::newRow("none") << QByteArray() << "0" << 0;
}

void test_kml::plain_geometries()
{
    QFETCH(QByteArray, inside);
    QFETCH(QString, method);
    QFETCH(int, points);
    const QList<exportRecord> records =
        read_placemarks(document("<Placemark>" + inside + "</Placemark>"));
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].method, method);
    QCOMPARE(records[0].coordinate_pairs.size(), points);
    QCOMPARE(records[0].altitudes.size(), points);
}

void test_kml::plain_tuples_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("points");
    QTest::addColumn<QString>("numpoint");
    QTest::newRow("lines") << "1,2,3\n4,5" << QStringList{"1|2|3", "4|5|0"} << "2";
    QTest::newRow("blanks in tuples") << " 1 , 2 , 3 " << QStringList{"1|2|3"} << "1";
    QTest::newRow("side by side") << "1,2 3,4" << QStringList{"1|2 3|4"} << "1";
    QTest::newRow("side by side with altitudes") << "1,2,3 4,5,6" << QStringList() << "1";
    QTest::newRow("lines that are no point count")
        << "1\n1,2,3,4\n5,6" << QStringList{"5|6|0"} << "3";
    QTest::newRow("empty lines do not count") << "\n\n1,2\n\n\n3,4\n\n"
                                              << QStringList{"1|2|0", "3|4|0"} << "2";
    QTest::newRow("a line of blanks counts")
        << "1,2\n \n3,4" << QStringList{"1|2|0", "3|4|0"} << "3";
    QTest::newRow("empty parts") << "1,,2" << QStringList{"1|2|0"} << "1";
    QTest::newRow("blank parts are parts") << "1, ,2" << QStringList{"1||2"} << "1";
    QTest::newRow("nothing") << "" << QStringList() << "0";
}

void test_kml::plain_tuples()
{
    QFETCH(QString, text);
    QFETCH(QStringList, points);
    QFETCH(QString, numpoint);
    const QList<exportRecord> records =
        read_placemarks(document(plain_placemark("LineString", text.toUtf8())));
    QCOMPARE(records.size(), 1);
    QStringList seen;
    for (qsizetype k = 0; k < records[0].coordinate_pairs.size(); ++k)
        seen += records[0].coordinate_pairs[k].first + u'|' +
                records[0].coordinate_pairs[k].second + u'|' + records[0].altitudes.value(k);
    QCOMPARE(seen, points);
    QCOMPARE(records[0].numpoint, numpoint);
}

void test_kml::plain_modes()
{
    const file_coordinates form = form_of(1);
    const geodetic_position degrees =
        plane_to_wgs84({3387000.25, 35501972.5, 0.0}, form.param, form.cz, form.dz, form.pl);
    const QStringList expected{QString::number(degrees.l, 'f', 12) + u'|' +
                               QString::number(degrees.b, 'f', 12)};
    const auto pairs = [](const QByteArray& coordinates, int mode) {
        // The texts are the record's, and go with it.
        const exportRecord record =
            read_placemarks(document(plain_placemark("Point", coordinates)), mode).value(0);
        QStringList all;
        for (const auto& [first, second] : record.coordinate_pairs)
            all += first + u'|' + second;
        return all;
    };
    QCOMPARE(pairs("3387000.25,35501972.5,7", 1), expected);
    QCOMPARE(pairs("35501972.5,3387000.25,7", 4), expected);
    for (const int mode : {0, 2, 3})
        QCOMPARE(pairs("3387000.25,35501972.5,7", mode), QStringList("3387000.25|35501972.5"));
    QVERIFY(pairs("1,2,3", 5).isEmpty());
}

void test_kml::last_geometry_counts_the_points()
{
    const QList<exportRecord> records =
        read_placemarks(document("<Placemark><MultiGeometry><LineString><coordinates>1,2\n3,4\n5,6<"
                                 "/coordinates></LineString>"
                                 "<LineString><coordinates>7,8\n9,10</coordinates></LineString></"
                                 "MultiGeometry></Placemark>"));
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].numpoint, "2");
    QCOMPARE(records[0].coordinate_pairs.size(), 5);
}

void test_kml::a_geometry_without_coordinates_takes_the_next()
{
    const QList<exportRecord> records = read_placemarks(document(
        "<Placemark><Point/></Placemark>" + plain_placemark("LineString", "1,2\n3,4", "next")));
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].method, "航点");
    QCOMPARE(records[0].coordinate_pairs.size(), 2);
}

void test_kml::a_geometry_ends_with_the_document()
{
    const QList<exportRecord> records =
        read_placemarks(document("<Placemark><Point/></Placemark>"));
    QCOMPARE(records.size(), 1);
    QVERIFY(records[0].coordinate_pairs.isEmpty());
    exportRecord record;
    QXmlStreamReader truncated("<Point><coordinates>1,2");
    QVERIFY(truncated.readNextStartElement());
    parseGeometry(truncated, form_of(0), record);
    QCOMPARE(record.method, "航点");
    QVERIFY(truncated.hasError());
}

void test_kml::an_xml_error_in_the_second_pass_keeps_what_came_before()
{
    const log_capture log;
    const kml_reading reading =
        read("<kml>" + plain_placemark("LineString", "1,2\n3,4", "kept") + "<Placemark></wrong>");
    // The damaged Placemark has no points, so the fallback takes over.
    QVERIFY(log.has("Parse error:"));
    QCOMPARE(reading.result, kml_own);
    const kml_reading kept =
        read("<kml>" + plain_placemark("LineString", "1,2\n3,4", "kept") + "</wrong>");
    QCOMPARE(kept.result, kml_plain);
    QCOMPARE(kept.records.value(0).name, "kept");
}

void test_kml::faults_that_need_the_fallback_data()
{
    QTest::addColumn<QByteArray>("placemark");
    QTest::newRow("no points") << own_placemark(method_item() + item("名字：", "x"), "nothing");
    QTest::newRow("no kind") << own_placemark(item("名字：", "x"));
    QTest::newRow("empty kind") << own_placemark(item("测量方式:", "") + item("名字：", "x"));
    QTest::newRow("kind 0") << own_placemark(item("测量方式:", "0") + item("名字：", "x"));
}

void test_kml::faults_that_need_the_fallback()
{
    QFETCH(QByteArray, placemark);
    const QByteArray good = own_placemark(method_item() + item("名字：", "good"), "9,9 8,8");
    QCOMPARE(read(document(good)).records.value(0).name, "good");
    for (const QByteArray& bytes : {document(good + placemark), document(placemark + good)}) {
        const log_capture log;
        const kml_reading reading = read(bytes);
        QCOMPARE(reading.result, kml_own);
        QVERIFY(log.has("KML imported with geometry fallback:"));
        for (const exportRecord& record : reading.records)
            QCOMPARE(record.name, "0");
    }
}

void test_kml::the_fallback_replaces_everything()
{
    // Plain KML with its tuples on one line: no points for the second pass.
    const QByteArray bytes = document(plain_placemark("LineString", "1,2,3 4,5,6", "one line") +
                                      plain_placemark("Point", "7,8,9", "point"));
    const imported seen = import_bytes(bytes);
    QCOMPARE(seen.boxes.value(0).text, own_read);
    QCOMPARE(seen.lists.table_list.size(), 2);
    for (const measuringData& record : seen.lists.table_list) {
        QCOMPARE(record.name, "0");
        QCOMPARE(record.time, "0");
    }
    QCOMPARE(seen.lists.data_msg, (QStringList{"1,2,4,5", "7,8"}));
}

void test_kml::unopenable_file()
{
    const log_capture log;
    const QTemporaryDir folder;
    const imported seen = import(folder.filePath("not_there.kml"));
    QCOMPARE(seen.boxes.size(), 1);
    QCOMPARE(seen.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(seen.boxes[0].title, "导入");
    QCOMPARE(seen.boxes[0].text, failure);
    QCOMPARE(seen.signals_seen, 1);
    QVERIFY(seen.lists.table_list.isEmpty());
    QVERIFY(log.has("Selected KML file: "));
    QVERIFY(log.has("Failed to open file"));
    QVERIFY(log.has("Failed to open KML file for coordinates-only parsing:"));

    QList<exportRecord> kept{exportRecord()};
    QFile missing(folder.filePath("not_there.kml"));
    parse_kml_placemarks(missing, form_of(0), kept);
    QCOMPARE(kept.size(), 1);
    QVERIFY(log.has("Cannot open file for reading:"));
    QVERIFY(!parse_kml_fallback(missing, kept));
    QVERIFY(kept.isEmpty());
}

void test_kml::message_of_each_result_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    // The texts are the opposite of what they say.
    QTest::newRow("own form") << document(own_placemark(method_item() + item("名字：", "x")))
                              << own_read;
    QTest::newRow("plain KML") << document(plain_placemark("LineString", "1,2\n3,4")) << plain_read;
    QTest::newRow("fallback") << QByteArray("<coordinates>1,2</coordinates>") << own_read;
    QTest::newRow("nothing in it") << document("") << failure;
    QTest::newRow("no KML") << QByteArray("hello") << failure;
    QTest::newRow("empty") << QByteArray() << failure;
}

void test_kml::message_of_each_result()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const log_capture log;
    const imported seen = import_bytes(bytes);
    QCOMPARE(seen.boxes.size(), 1);
    QCOMPARE(seen.boxes[0].text, text);
    QCOMPARE(seen.boxes[0].title, "导入");
    QCOMPARE(seen.boxes[0].icon, text == failure ? QMessageBox::Warning : QMessageBox::Information);
    QCOMPARE(seen.signals_seen, 1);
    // The warning comes before the signal, the words of success behind it.
    QCOMPARE(seen.boxes_at_signal, text == failure ? 1 : 0);
    QCOMPARE(seen.lists.table_list.isEmpty(), text == failure);
    QCOMPARE(log.has("table show"), text != failure);
}

void test_kml::order_of_log_signal_and_box_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("order");
    const QStringList success{"log", "signal", "box"};
    QTest::newRow("own form") << document(own_placemark(method_item() + item("名字：", "x")))
                              << success;
    QTest::newRow("plain KML") << document(plain_placemark("LineString", "1,2\n3,4")) << success;
    QTest::newRow("fallback") << QByteArray("<coordinates>1,2</coordinates>") << success;
    QTest::newRow("failure") << QByteArray("hello") << QStringList{"box", "signal"};
}

void test_kml::order_of_log_signal_and_box()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, order);
    const QTemporaryDir folder;
    QFile file(folder.filePath("a.kml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();

    const log_capture log;
    QStringList seen;
    const auto note = [&](const QString& what) {
        if (log.has("table show") && !seen.contains("log"))
            seen += QStringLiteral("log");
        if (!what.isEmpty())
            seen += what;
    };
    file_import_thread importer;
    box_watcher watcher;
    watcher.look = [&](QMessageBox*) { note("box"); };
    connect(&importer, &file_import_thread::read_data_finished, this, [&] { note("signal"); });
    importer.import_file(file.fileName(), 0, nullptr, 0);
    note({});
    QCOMPARE(seen, order);
}

void test_kml::equal_placemarks_come_once()
{
    const QByteArray one = own_placemark(method_item() + item("名字：", "x"));
    const QByteArray elsewhere = own_placemark(method_item() + item("名字：", "x"), "1,2,3");
    const log_capture log;
    const imported seen = import_bytes(document(one + one + elsewhere + one));
    QCOMPARE(seen.lists.data_msg, (QStringList{"104.5,30.5,104.6,30.6", "1,2"}));
    QVERIFY(log.has("table_list have this data"));
}

void test_kml::export_messages_data()
{
    QTest::addColumn<int>("language");
    QTest::newRow("Chinese") << 0;
    QTest::newRow("English") << 1;
}

void test_kml::export_messages()
{
    QFETCH(int, language);
    const QTemporaryDir folder;
    file_export_thread exporter;
    const box_watcher watcher;
    exporter.setlanguage(language);
    exporter.export_list = {record_of("航线")};
    exporter.kml_export(0, {}, folder.filePath("a.kml"));
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].buttons, QMessageBox::Ok);
    QCOMPARE(watcher.boxes[0].title, "kml");
    QCOMPARE(watcher.boxes[0].text, "kml文件导出成功");
}

QTEST_MAIN(test_kml)
#include "test_kml.moc"
