// GPX files: what is written, byte for byte, and what is read. Damaged files are
// in test_corpus.

#include "coordinates/json_file_manager.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/gpx.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_records.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <utility>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

using pair_list = QList<std::pair<QString, QString>>;

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
    record.coordinates = QStringLiteral("104.5,30.5,7\n");
    return record;
}

QByteArray written(const QList<exportRecord>& records)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    write_gpx_merged(buffer, records, 0);
    return buffer.data();
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

QByteArray golden_file(const QByteArray& name)
{
    return content(TEST_FILES "/golden/" + QString::fromLatin1(name));
}

QByteArray document(const QByteArray& inside, const QByteArray& attributes = "creator=\"Velmo\"")
{
    return "<gpx version=\"1.1\" " + attributes + " xmlns=\"http://www.topografix.com/GPX/1/1\">" +
           inside + "</gpx>";
}

#ifdef Q_OS_UNIX
/// While it lives no file of this process can grow.
class no_room
{
public:
    no_room()
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~no_room() { setrlimit(RLIMIT_FSIZE, &m_before); }
    no_room(const no_room&) = delete;
    no_room& operator=(const no_room&) = delete;

private:
    rlimit m_before{};
};
#endif

struct reading
{
    bool read = false;
    QList<exportRecord> records;
};

reading read(const QByteArray& bytes)
{
    QByteArray copy = bytes;
    QBuffer buffer(&copy);
    reading result;
    result.records = {exportRecord()}; // goes at the start
    result.read = parse_gpx(buffer, result.records);
    return result;
}

struct imported
{
    QList<box_watcher::seen_box> boxes;
    qsizetype signals_seen = 0;
    sample_lists lists;
};

imported import(const QString& path)
{
    file_import_thread importer;
    const box_watcher watcher;
    imported seen;
    QObject::connect(&importer, &file_import_thread::read_data_finished,
                     [&](const QList<measuringData>& table_list, const QStringList& data_msg,
                         const QStringList& data_msg_altitude,
                         const QList<QList<point_msg>>& point_msg_all) {
                         ++seen.signals_seen;
                         seen.lists = {table_list, data_msg, data_msg_altitude, point_msg_all};
                     });
    importer.import_file(path, 0, nullptr, 0);
    seen.boxes = watcher.boxes;
    return seen;
}

imported import_bytes(const QByteArray& bytes)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.gpx");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(bytes);
    file.close();
    return import(path);
}

} // namespace

class test_gpx : public QObject
{
    Q_OBJECT

private slots:
    void golden_data();
    void golden();
    void a_second_export_into_a_folder_appends();
    void a_record_that_is_left_out_has_a_file_all_the_same();
    void the_unit_of_the_price_stands_for_the_price();
    void order_is_that_of_the_records();
    void lines_of_points_data();
    void lines_of_points();
    void a_waypoint_has_one_position();
    void what_xml_cannot_hold_is_left_out();
    void the_log_tells_whether_it_was_written();
    void export_messages_data();
    void export_messages();

    void round_trip();
    void the_element_decides_nothing();
    void areamu_stays_0();
    void equal_records_all_come();
    void only_the_first_document_is_read();
    void creator_data();
    void creator();
    void root_data();
    void root();
    void elements_data();
    void elements();
    void desc_data();
    void desc();
    void desc_is_read_on_its_start_only();
    void points_without_ele();
    void truncated_anywhere();
    void failures_data();
    void failures();
};

void test_gpx::golden_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<int>("mode");
    for (const int language : {0, 1}) {
        for (int mode = 0; mode < 5; ++mode)
            QTest::addRow("language %d, mode %d", language, mode) << language << mode;
    }
}

void test_gpx::golden()
{
    QFETCH(int, language);
    QFETCH(int, mode);
    const QTemporaryDir folder;
    file_export_thread exporter;
    const box_watcher watcher;
    exporter.setlanguage(language);
    exporter.export_list = sample_export();
    exporter.one_gpx_export(mode, folder.filePath("merged.gpx"));
    QCOMPARE(content(folder.filePath("merged.gpx")), golden_file("merged.gpx"));
    exporter.more_gpx_export(mode, folder.path());
    for (qsizetype number = 1; number <= exporter.export_list.size(); ++number) {
        const QByteArray digits = QByteArray::number(number);
        QCOMPARE(content(folder.filePath("exported_data_" + QString::fromLatin1(digits) + ".gpx")),
                 golden_file("single_" + digits + ".gpx"));
    }
}

void test_gpx::a_second_export_into_a_folder_appends()
{
    const QTemporaryDir folder;
    file_export_thread exporter;
    const box_watcher watcher;
    exporter.export_list = {record_of("航线"), record_of("面积")};
    exporter.more_gpx_export(0, folder.path());
    const QByteArray once = content(folder.filePath("exported_data_2.gpx"));
    exporter.more_gpx_export(0, folder.path());
    QCOMPARE(content(folder.filePath("exported_data_2.gpx")), once + once);

    exporter.one_gpx_export(0, folder.filePath("merged.gpx"));
    const QByteArray merged = content(folder.filePath("merged.gpx"));
    exporter.one_gpx_export(0, folder.filePath("merged.gpx"));
    QCOMPARE(content(folder.filePath("merged.gpx")), merged);
}

void test_gpx::a_record_that_is_left_out_has_a_file_all_the_same()
{
    const QTemporaryDir folder;
    file_export_thread exporter;
    const box_watcher watcher;
    exporter.export_list = {record_of("放样")};
    exporter.more_gpx_export(0, folder.path());
    QVERIFY(content(folder.filePath("exported_data_1.gpx")).endsWith("</metadata>\n</gpx>\n"));
    QCOMPARE(watcher.texts(), QStringList{"gpx单数据分开导出成功"});
}

void test_gpx::the_unit_of_the_price_stands_for_the_price()
{
    exportRecord record = record_of("航线");
    record.price = QStringLiteral("12.5");
    record.hd = QStringLiteral("3");
    const QByteArray bytes = written({record});
    QVERIFY(bytes.contains("<unitPrice>3</unitPrice>"));
    QVERIFY(!bytes.contains("12.5"));
    const imported seen = import_bytes(bytes);
    QCOMPARE(seen.lists.table_list.value(0).price, "3");
    QCOMPARE(seen.lists.table_list.value(0).hd, "0");
}

void test_gpx::order_is_that_of_the_records()
{
    QXmlStreamReader xml(written({record_of("航迹"), record_of("航点"), record_of("自制"),
                                  record_of("航线"), record_of("面积"), record_of("距离")}));
    QStringList elements;
    QVERIFY(xml.readNextStartElement());
    while (xml.readNextStartElement()) {
        elements += xml.name().toString();
        xml.skipCurrentElement();
    }
    QCOMPARE(elements, (QStringList{"metadata", "trk", "wpt", "rte", "trk", "rte"}));
}

void test_gpx::lines_of_points_data()
{
    QTest::addColumn<QString>("coordinates");
    QTest::addColumn<QStringList>("points"); // "lat|lon|ele"
    QTest::newRow("one") << "1,2,3\n" << QStringList{"2|1|3"};
    QTest::newRow("two") << "1,2,3\n4,5,6\n" << QStringList{"2|1|3", "5|4|6"};
    QTest::newRow("no last feed") << "1,2,3\n4,5,6" << QStringList{"2|1|3", "5|4|6"};
    QTest::newRow("empty lines") << "\n\n1,2,3\n\n" << QStringList{"2|1|3"};
    QTest::newRow("empty parts") << ",1,,2,3,\n" << QStringList{"2|1|3"};
    QTest::newRow("blanks stay") << " 1,2 , 3\n" << QStringList{"2 | 1| 3"};
    QTest::newRow("too many") << "1,2,3,4\n" << QStringList{"2|1|3"};
    QTest::newRow("too few") << "1,2\n1\n" << QStringList{"2|1|", "|1|"};
    QTest::newRow("nothing") << "" << QStringList();
}

void test_gpx::lines_of_points()
{
    QFETCH(QString, coordinates);
    QFETCH(QStringList, points);
    QStringList seen;
    for (const gpx_point& point : split_point_lines(coordinates))
        seen += point.lat.toString() + u'|' + point.lon.toString() + u'|' + point.ele.toString();
    QCOMPARE(seen, points);
}

void test_gpx::a_waypoint_has_one_position()
{
    exportRecord record = record_of("航点");
    record.coordinates = QStringLiteral("1,2,3\n4,5,6\n");
    QVERIFY(written({record}).contains(
        "<wpt lat=\"2\" lon=\"1\">\n        <ele>3</ele>\n        <name>"));
    record.coordinates.clear();
    QVERIFY(written({record}).contains("<wpt>\n        <name>"));
}

void test_gpx::what_xml_cannot_hold_is_left_out()
{
    exportRecord record = record_of("航线", QStringLiteral("a\x01"
                                                           "b\x0b") +
                                                QChar(0xd800) + u'c');
    record.coordinates = QStringLiteral("1\x02,2\"<&,3\x1f\n");
    const reading result = read(written({record, record_of("航线", "next")}));
    QVERIFY(result.read);
    QCOMPARE(result.records.size(), 2);
    QCOMPARE(result.records[0].name, "abc");
    QCOMPARE(result.records[0].coordinate_pairs, (pair_list{{"1", "2\"<&"}}));
    QCOMPARE(result.records[0].altitudes, QStringList{"3"});
    QCOMPARE(result.records[1].name, "next");
}

void test_gpx::the_log_tells_whether_it_was_written()
{
    const QTemporaryDir folder;
    QFile good(folder.filePath("a.gpx"));
    QVERIFY(good.open(QIODevice::WriteOnly | QIODevice::Text));
    {
        const log_capture log;
        write_gpx_merged(good, {record_of("航线")}, 0);
        QCOMPARE(log.texts(),
                 QStringList{"GPX file successfully written to  \"" + good.fileName() + "\""});
    }
#ifdef Q_OS_UNIX
    // As on a disk without room: the file can be opened, but takes no byte.
    QFile full(folder.filePath("b.gpx"));
    QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Text));
    const log_capture log;
    {
        const no_room limit;
        write_gpx_merged(full, {record_of("航线")}, 0);
    }
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(log.lines()[0].type, QtCriticalMsg);
    QVERIFY(log.has("Error writing GPX file: "));
#endif
}

void test_gpx::export_messages_data()
{
    QTest::addColumn<int>("language");
    QTest::newRow("Chinese") << 0;
    QTest::newRow("English") << 1;
}

void test_gpx::export_messages()
{
    QFETCH(int, language);
    const QTemporaryDir folder;
    file_export_thread exporter;
    const box_watcher watcher;
    exporter.setlanguage(language);
    exporter.export_list = {record_of("航线")};
    exporter.one_gpx_export(0, folder.filePath("a.gpx"));
    exporter.more_gpx_export(0, folder.path());
    QCOMPARE(watcher.texts(), (QStringList{"gpx多数据合并导出成功", "gpx单数据分开导出成功"}));
    for (const box_watcher::seen_box& box : watcher.boxes) {
        QCOMPARE(box.icon, QMessageBox::Information);
        QCOMPARE(box.title, "gpx");
    }
}

void test_gpx::round_trip()
{
    const sample_lists sample = sample_records();
    const log_capture log;
    const imported seen = import_bytes(written(sample_export()));
    QCOMPARE(seen.boxes.size(), 1);
    QCOMPARE(seen.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(seen.boxes[0].title, "导入");
    QCOMPARE(seen.boxes[0].text, "gpx文件导入成功");
    QCOMPARE(seen.signals_seen, 1);
    QVERIFY(log.has("Selected GPX file: "));
    QVERIFY(log.has("table show"));

    qsizetype at = 0;
    for (qsizetype i = 0; i < sample.table_list.size(); ++i) {
        const measuringData& written_record = sample.table_list[i];
        if (written_record.method == QStringLiteral("放样") ||
            written_record.method == QStringLiteral("自制"))
            continue;
        measuringData expected;
        expected.numpoint = written_record.numpoint;
        expected.method = written_record.method;
        expected.slope = written_record.slope;
        expected.price = written_record.hd;
        expected.distance = written_record.distance;
        expected.areameter = written_record.areameter;
        expected.totalprices = written_record.totalprices;
        expected.time = written_record.time;
        expected.numrecord = written_record.numrecord;
        expected.name = written_record.name; // blanks, "]]>" and all
        QCOMPARE(seen.lists.table_list.value(at), expected);
        QCOMPARE(seen.lists.data_msg.value(at), sample.data_msg[i]);
        QCOMPARE(seen.lists.data_msg_altitude.value(at), sample.data_msg_altitude[i]);
        const QString zero = QStringLiteral("0");
        QCOMPARE(seen.lists.point_msg_all.value(at),
                 QList<point_msg>(sample.point_msg_all[i].size(), {zero, zero, zero, zero, zero}));
        ++at;
    }
    QCOMPARE(seen.lists.table_list.size(), at);
}

void test_gpx::the_element_decides_nothing()
{
    const reading result = read(written({record_of("距离")}));
    QCOMPARE(result.records.value(0).method, "距离");
    const reading other = read(document(
        "<wpt lat='1' lon='2'><desc><measurementMethod>面积</measurementMethod></desc></wpt>"));
    QCOMPARE(other.records.value(0).method, "面积");
}

void test_gpx::areamu_stays_0()
{
    exportRecord record = record_of("面积");
    record.areamu = QStringLiteral("1.50");
    const QByteArray bytes = written({record});
    QVERIFY(bytes.contains("<areaMu>1.50</areaMu>"));
    QCOMPARE(read(bytes).records.value(0).areamu, "1.50");
    QCOMPARE(import_bytes(bytes).lists.table_list.value(0).areamu, "0");
}

void test_gpx::equal_records_all_come()
{
    const imported seen = import_bytes(written({record_of("航线"), record_of("航线")}));
    QCOMPARE(seen.lists.table_list.size(), 2);
}

void test_gpx::only_the_first_document_is_read()
{
    const QByteArray bytes =
        written({record_of("航线", "first")}) + written({record_of("航线", "second")});
    const reading result = read(bytes);
    QVERIFY(result.read);
    QCOMPARE(result.records.size(), 1);
    QCOMPARE(result.records[0].name, "first");
    QVERIFY(read(document("") + "rubbish < & behind the end").read);
}

void test_gpx::creator_data()
{
    QTest::addColumn<QByteArray>("attributes");
    QTest::addColumn<bool>("good");
    QTest::newRow("ours") << QByteArray("creator=\"Velmo\"") << true;
    QTest::newRow("lower case") << QByteArray("creator=\"velmo\"") << false;
    QTest::newRow("longer") << QByteArray("creator=\"Velmo 3\"") << false;
    QTest::newRow("blank") << QByteArray("creator=\"Velmo \"") << false;
    QTest::newRow("another") << QByteArray("creator=\"Another program\"") << false;
    QTest::newRow("none") << QByteArray() << false;
    QTest::newRow("prefixed") << QByteArray(R"(xmlns:a="b" a:creator="Velmo")") << false;
}

void test_gpx::creator()
{
    QFETCH(QByteArray, attributes);
    QFETCH(bool, good);
    const log_capture log;
    const reading result = read(document("<rte/>", attributes));
    QCOMPARE(result.read, good);
    QCOMPARE(result.records.size(), good ? 1 : 0);
    QCOMPARE(log.lines().size(), good ? 0 : 1);
    if (!good) {
        QCOMPARE(log.lines()[0].text, "Invalid GPX file or unexpected namespace");
        QCOMPARE(log.lines()[0].type, QtCriticalMsg);
    }
}

void test_gpx::root_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("good");
    QTest::newRow("no namespace") << QByteArray("<gpx creator='Velmo'></gpx>") << true;
    QTest::newRow("another namespace")
        << QByteArray("<gpx creator='Velmo' xmlns='urn:x'/>") << true;
    QTest::newRow("prefixed") << QByteArray("<g:gpx creator='Velmo' xmlns:g='urn:x'/>") << true;
    QTest::newRow("another root") << QByteArray("<kml creator='Velmo'><gpx/></kml>") << false;
    QTest::newRow("upper case") << QByteArray("<GPX creator='Velmo'/>") << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("no XML") << QByteArray("hello") << false;
}

void test_gpx::root()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, good);
    const log_capture log;
    QCOMPARE(read(bytes).read, good);
    QCOMPARE(log.lines().isEmpty(), good);
    for (const log_capture::line& line : log.lines())
        QCOMPARE(line.type, QtCriticalMsg);
}

void test_gpx::elements_data()
{
    QTest::addColumn<QByteArray>("inside");
    QTest::addColumn<pair_list>("pairs");
    QTest::addColumn<QStringList>("altitudes");
    const pair_list two{{"2", "1"}, {"4", "3"}};
    QTest::newRow("waypoint") << QByteArray("<wpt lat='1' lon='2'><ele> 5 </ele></wpt>")
                              << pair_list{{"2", "1"}} << QStringList{" 5 "};
    QTest::newRow("waypoint without a position")
        << QByteArray("<wpt><ele>5</ele></wpt>") << pair_list{{"", ""}} << QStringList{"5"};
    QTest::newRow("route") << QByteArray("<rte><rtept lat='1' lon='2'><ele>5</ele></rtept>"
                                         "<rtept lat='3' lon='4'><ele>6</ele></rtept></rte>")
                           << two << QStringList{"5", "6"};
    QTest::newRow("track of two segments")
        << QByteArray("<trk><trkseg><trkpt lat='1' lon='2'><ele>5</ele></trkpt></trkseg>"
                      "<trkseg><trkpt lat='3' lon='4'><ele>6</ele></trkpt></trkseg></trk>")
        << two << QStringList{"5", "6"};
    QTest::newRow("other elements within a point")
        << QByteArray("<rte><rtept lat='1' lon='2'><time>t</time><x><ele>5</ele></x></rtept></rte>")
        << pair_list{{"2", "1"}} << QStringList{"5"};
    QTest::newRow("points in the wrong place")
        << QByteArray("<trk><trkpt lat='1' lon='2'/><rtept lat='1' lon='2'/></trk>") << pair_list()
        << QStringList();
    QTest::newRow("no points") << QByteArray("<trk><trkseg/></trk>") << pair_list()
                               << QStringList();
}

void test_gpx::elements()
{
    QFETCH(QByteArray, inside);
    QFETCH(pair_list, pairs);
    QFETCH(QStringList, altitudes);
    const reading result = read(document("<metadata><name>n</name><author/></metadata>" + inside +
                                         "<extensions><x/></extensions>"));
    QVERIFY(result.read);
    QCOMPARE(result.records.size(), 1);
    QCOMPARE(result.records[0].coordinate_pairs, pairs);
    QCOMPARE(result.records[0].altitudes, altitudes);
}

void test_gpx::desc_data()
{
    QTest::addColumn<QByteArray>("inside");
    QTest::addColumn<QString>("field"); // empty: none
    const auto row = [](const char* element, const char* field) {
        const QByteArray name(element);
        QTest::newRow(element) << "<" + name + "> a&amp;b </" + name + ">" << field;
    };
    row("time", "time");
    row("measurementMethod", "method");
    row("slopeDegrees", "slope");
    row("unitPrice", "hd");
    row("distance", "distance");
    row("areaSquareMeters", "areameter");
    row("areaMu", "areamu");
    row("totalPrice", "totalprices");
    row("pointCount", "numpoint");
    row("dataCount", "numrecord");
    row("name", "name");
    row("muValue", "");
    row("Time", "");
    row("unknown", "");
    QTest::newRow("unknown with elements in it")
        << QByteArray("<u><name>lost</name></u><name> a&amp;b </name>") << "name";
    QTest::newRow("text between") << QByteArray("words<name> a&amp;b </name>words") << "name";
}

void test_gpx::desc()
{
    QFETCH(QByteArray, inside);
    QFETCH(QString, field);
    const QHash<QString, QString measuringData::*> fields{
        {"time", &measuringData::time},         {"method", &measuringData::method},
        {"slope", &measuringData::slope},       {"hd", &measuringData::hd},
        {"distance", &measuringData::distance}, {"areameter", &measuringData::areameter},
        {"areamu", &measuringData::areamu},     {"totalprices", &measuringData::totalprices},
        {"numpoint", &measuringData::numpoint}, {"numrecord", &measuringData::numrecord},
        {"name", &measuringData::name},
    };
    measuringData expected;
    if (!field.isEmpty())
        expected.*fields.value(field) = QStringLiteral(" a&b ");
    for (const char* element : {"wpt", "rte", "trk"}) {
        const QByteArray name(element);
        // The name beside `desc` is not read.
        const reading result = read(document("<" + name + "><name>outside</name><desc>" + inside +
                                             "</desc></" + name + ">"));
        QVERIFY(result.read);
        QCOMPARE(static_cast<const measuringData&>(result.records.value(0)), expected);
    }
}

void test_gpx::desc_is_read_on_its_start_only()
{
    exportRecord record;
    QXmlStreamReader xml("<other><name>n</name></other>");
    QVERIFY(xml.readNextStartElement());
    parse_gpx_desc(xml, record);
    QCOMPARE(xml.name(), QLatin1String("other"));
    QCOMPARE(record.name, "0");
}

void test_gpx::points_without_ele()
{
    const QByteArray bytes = document("<rte><rtept lat='1' lon='2'/><rtept lat='3' lon='4'>"
                                      "<ele>9</ele></rtept></rte>");
    const reading result = read(bytes);
    QCOMPARE(result.records.value(0).coordinate_pairs.size(), 2);
    QCOMPARE(result.records.value(0).altitudes, QStringList{"9"});
    // The altitudes that there are go to the first points.
    const imported seen = import_bytes(bytes);
    QCOMPARE(seen.lists.data_msg, QStringList{"2,1,4,3"});
    QCOMPARE(seen.lists.data_msg_altitude, QStringList{"2,1,9\n4,3,0\n"});
    QCOMPARE(seen.lists.point_msg_all.value(0).size(), 2);
}

void test_gpx::truncated_anywhere()
{
    const QByteArray whole = written({record_of("航点"), record_of("航线"), record_of("面积")});
    const QByteArray end = "</gpx>";
    for (qsizetype size = 0; size < whole.size() - 1; ++size) {
        const bool ended = size >= whole.indexOf(end) + end.size();
        QCOMPARE(read(whole.first(size)).read, ended);
    }
}

void test_gpx::failures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("another program's") << document("<wpt lat='1' lon='2'/>", "creator=\"Another\"");
    QTest::newRow("truncated") << document("<wpt lat='1' lon='2'/>").chopped(6);
    QTest::newRow("not closed") << document("<wpt lat='1' lon='2'>");
    QTest::newRow("an element within ele")
        << document("<wpt lat='1' lon='2'><ele>1<b/></ele></wpt>");
    QTest::newRow("an element within a value")
        << document("<wpt><desc><name>1<b/></name></desc></wpt>");
    QTest::newRow("empty") << QByteArray();
}

void test_gpx::failures()
{
    QFETCH(QByteArray, bytes);
    log_capture log;
    const imported seen = import_bytes(bytes);
    QCOMPARE(seen.signals_seen, 0);
    QCOMPARE(seen.boxes.size(), 1);
    // Not a warning, unlike the other formats.
    QCOMPARE(seen.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(seen.boxes[0].title, "导入");
    QCOMPARE(seen.boxes[0].text, "gpx文件导入失败");
    QVERIFY(!log.has("table show"));

    log.clear();
    const imported missing = import("/not/there.gpx");
    QCOMPARE(missing.signals_seen, 0);
    QCOMPARE(missing.boxes.value(0).text, "gpx文件导入失败");
    // The toolkit warns of its own.
    int critical = 0;
    for (const log_capture::line& line : log.lines()) {
        if (line.type == QtCriticalMsg) {
            QVERIFY(line.text.startsWith("Failed to open file:"));
            ++critical;
        }
    }
    QCOMPARE(critical, 1);
}

QTEST_MAIN(test_gpx)
#include "test_gpx.moc"
