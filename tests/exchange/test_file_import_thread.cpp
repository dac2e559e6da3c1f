// What the import has in common for all formats: the way to the reader, the four
// results and the comparison of the records of one file.

#include "coordinates/json_file_manager.h"
#include "exchange/excel_template.h"
#include "exchange/file_import_thread.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// A CSV file of one record, which the reader takes in any language of the
/// program.
QByteArray csv_file(const QByteArray& name)
{
    return "序号,a,b,c,d,e,f,g,h,i,j,k\n0," + name +
           ",2024-03-05 07:08:09,1,航点,0,667,0,0,0,5,0\nx,y,z\n104.5,30.5,500.00\n";
}

exportRecord working_record(const QString& name)
{
    exportRecord record;
    record.numpoint = "2";
    record.method = "航线";
    record.slope = "1.01";
    record.price = "1.02";
    record.distance = "1.03";
    record.jd = "1.04";
    record.areamu = "1.05";
    record.areameter = "1.06";
    record.md = "1.07";
    record.hd = "1.08";
    record.totalprices = "1.09";
    record.time = "1.10";
    record.endtime = "1.11";
    record.numrecord = "1.12";
    record.name = name;
    record.timezone = "1.13";
    record.mode = "1.14";
    record.width = "1.15";
    record.id = "1.16";
    record.zj = "1.17";
    record.coordinate_pairs = {{"104.1", "30.1"}, {"104.2", "30.2"}};
    record.altitudes = {"500.1", "500.2"};
    return record;
}

} // namespace

class test_file_import_thread : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void suffix_chooses_the_reader_data();
    void suffix_chooses_the_reader();
    void drawings_and_workbooks_reach_their_readers();
    void other_suffixes_are_ignored_data();
    void other_suffixes_are_ignored();
    void an_empty_path_stops_after_the_lists_are_emptied();
    void the_chosen_system_is_taken_over();
    void a_system_that_is_not_there_is_empty();
    void each_import_shows_its_own_records();
    void the_signal_carries_the_four_lists();
    void the_pointer_waits_but_not_over_boxes();

    void tail_copies_what_files_carry();
    void tail_without_areamu();
    void tail_texts();
    void tail_of_a_point_without_altitude();
    void duplicates_come_once();
    void what_makes_a_duplicate_data();
    void what_makes_a_duplicate();
    void duplicates_can_be_kept();
    void the_comparison_covers_one_file();
    void many_records_are_not_compared_one_by_one();

    void dates_and_times_data();
    void dates_and_times();
    void stays_on_its_thread();

private:
    QString write(const QString& name, const QByteArray& bytes) const;

    file_import_thread m_importer;
    JsonFileManager m_store;
    QTemporaryDir m_folder;
};

void test_file_import_thread::init()
{
    m_importer.import_file({}, 0, &m_store, 0);
    m_importer.working_list.clear();
}

QString test_file_import_thread::write(const QString& name, const QByteArray& bytes) const
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return file.fileName();
}

void test_file_import_thread::suffix_chooses_the_reader_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("words"); // in the log of that reader
    QTest::newRow("csv") << "a.csv"
                         << "import csv";
    QTest::newRow("csv, two dots") << "a.kml.csv"
                                   << "import csv";
    QTest::newRow("csv, blanks and Chinese") << "数据 1.csv"
                                             << "import csv";
}

void test_file_import_thread::suffix_chooses_the_reader()
{
    QFETCH(QString, name);
    QFETCH(QString, words);
    box_watcher watcher;
    const log_capture log;
    m_importer.import_file(write(name, csv_file("n")), 0, &m_store, 0);
    QVERIFY(log.has(words));
    QCOMPARE(m_importer.table_list.size(), 1);
}

void test_file_import_thread::drawings_and_workbooks_reach_their_readers()
{
    box_watcher watcher;
    m_importer.import_file(write("a.dxf", "0\nSECTION\n2\nENTITIES\n0\nPOINT\n8\n0\n10\n104500000\n"
                                          "20\n30250000\n30\n7\n0\nENDSEC\n0\nEOF\n"),
                           0, &m_store, 0);
    QCOMPARE(m_importer.data_msg_altitude, QStringList("104.500000000000,30.250000000000,7.0\n"));
    const QString workbook = m_folder.filePath("a.xlsx");
    save_excel_template(workbook, 1);
    m_importer.import_file(workbook, 0, &m_store, 0);
    QCOMPARE(m_importer.table_list.size(), 13); // the examples
    QCOMPARE(m_importer.table_list[0].method, QStringLiteral("面积"));
    QCOMPARE(watcher.texts(),
             (QStringList{"dxf文件导入成功", "Excel file template has been downloaded",
                          "Excel多数据文件导入成功"}));
}

void test_file_import_thread::other_suffixes_are_ignored_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"a.CSV", "a.Csv", "a.KML", "a.xls", "a.txt", "csv", "a.csv.bak", "a.DXF", "a.XLSX"})
        QTest::newRow(name) << QString(name);
}

void test_file_import_thread::other_suffixes_are_ignored()
{
    QFETCH(QString, name);
    box_watcher watcher;
    const QSignalSpy finished(&m_importer, &file_import_thread::read_data_finished);
    m_importer.import_file(write(name, csv_file("n")), 0, &m_store, 0);
    QCOMPARE(finished.size(), 0);
    QCOMPARE(watcher.boxes.size(), 0);
    QCOMPARE(m_importer.table_list.size(), 0);
}

void test_file_import_thread::an_empty_path_stops_after_the_lists_are_emptied()
{
    box_watcher watcher;
    m_importer.import_file(write("a.csv", csv_file("n")), 0, &m_store, 0);
    QCOMPARE(m_importer.table_list.size(), 1);
    watcher.boxes.clear();
    const QSignalSpy finished(&m_importer, &file_import_thread::read_data_finished);
    m_importer.import_file({}, 4, &m_store, 0);
    QCOMPARE(m_importer.mode, 4);
    QCOMPARE(m_importer.table_list.size(), 0);
    QCOMPARE(m_importer.data_msg.size(), 0);
    QCOMPARE(m_importer.data_msg_altitude.size(), 0);
    QCOMPARE(m_importer.point_msg_all.size(), 0);
    QCOMPARE(finished.size(), 0);
    QCOMPARE(watcher.boxes.size(), 0);
}

void test_file_import_thread::the_chosen_system_is_taken_over()
{
    CoordinateSystem system;
    system.changzhou = 6378137.0;
    system.duanzhou = 6356752.25;
    system.pianlv = 0.0033;
    system.method = 6;
    system.param4.rt = 14.0;
    m_store.systems = {CoordinateSystem{}, system};
    m_importer.import_file({}, 0, &m_store, 1);
    QCOMPARE(m_importer.cz, 6378137.0);
    QCOMPARE(m_importer.dz, 6356752.25);
    QCOMPARE(m_importer.pl, 0.0033);
    QCOMPARE(int(m_importer.m_ModelParam.projection.method), 6);
    QCOMPARE(m_importer.m_ModelParam.param4.rt, 14.0);
    // The next import takes the system of its own moment.
    m_importer.import_file({}, 0, &m_store, 0);
    QCOMPARE(m_importer.cz, 0.0);
    QCOMPARE(m_importer.m_ModelParam.param4.rt, 0.0);
}

void test_file_import_thread::a_system_that_is_not_there_is_empty()
{
    box_watcher watcher;
    for (const int index : {-1, 99}) {
        m_importer.import_file(write("a.csv", csv_file("n")), 0, &m_store, index);
        QCOMPARE(m_importer.cz, 0.0);
        QCOMPARE(m_importer.table_list.size(), 1);
    }
    m_importer.import_file(write("a.csv", csv_file("n")), 0, nullptr, 0);
    QCOMPARE(m_importer.table_list.size(), 1);
}

void test_file_import_thread::each_import_shows_its_own_records()
{
    box_watcher watcher;
    const QString path = write("a.csv", csv_file("a"));
    m_importer.import_file(path, 0, &m_store, 0);
    m_importer.import_file(path, 0, &m_store, 0);
    QCOMPARE(m_importer.table_list.size(), 1); // not held against the one before
    m_importer.import_file(write("b.csv", csv_file("b")), 0, &m_store, 0);
    QCOMPARE(m_importer.table_list.size(), 1);
    QCOMPARE(m_importer.table_list[0].name, QStringLiteral("b"));
}

void test_file_import_thread::the_signal_carries_the_four_lists()
{
    box_watcher watcher;
    const QSignalSpy finished(&m_importer, &file_import_thread::read_data_finished);
    m_importer.import_file(write("a.csv", csv_file("n")), 0, &m_store, 0);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished[0][0].value<QList<measuringData>>(), m_importer.table_list);
    QCOMPARE(finished[0][1].toStringList(), QStringList("104.5,30.5"));
    QCOMPARE(finished[0][2].toStringList(), QStringList("104.5,30.5,500.00\n"));
    QCOMPARE(finished[0][3].value<QList<QList<point_msg>>>(),
             (QList<QList<point_msg>>{{{"0", "0", "0", "0", "0"}}}));
}

void test_file_import_thread::the_pointer_waits_but_not_over_boxes()
{
    box_watcher watcher;
    int over_box = -1;
    int while_rows_are_shown = -1;
    watcher.look = [&](QMessageBox*) { over_box = QApplication::overrideCursor()->shape(); };
    const auto shown = connect(&m_importer, &file_import_thread::read_data_finished, this, [&] {
        while_rows_are_shown = QApplication::overrideCursor()->shape();
    });
    m_importer.import_file(write("a.csv", csv_file("n")), 0, &m_store, 0);
    disconnect(shown);
    QCOMPARE(while_rows_are_shown, int(Qt::WaitCursor));
    QCOMPARE(over_box, int(Qt::ArrowCursor));
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

void test_file_import_thread::tail_copies_what_files_carry()
{
    m_importer.working_list = {working_record("a")};
    m_importer.append_to_results({});
    measuringData expected;
    expected.numpoint = "2";
    expected.method = "航线";
    expected.slope = "1.01";
    expected.price = "1.08"; // what stood as the unit of the price
    expected.distance = "1.03";
    expected.areamu = "1.05";
    expected.areameter = "1.06";
    expected.totalprices = "1.09";
    expected.time = "1.10";
    expected.numrecord = "1.12";
    expected.name = "a";
    QCOMPARE(m_importer.table_list, QList<measuringData>{expected});
}

void test_file_import_thread::tail_without_areamu()
{
    m_importer.working_list = {working_record("a")};
    m_importer.append_to_results({.take_areamu = false});
    QCOMPARE(m_importer.table_list[0].areamu, QStringLiteral("0"));
    QCOMPARE(m_importer.table_list[0].areameter, QStringLiteral("1.06"));
}

void test_file_import_thread::tail_texts()
{
    exportRecord empty = working_record("b");
    empty.coordinate_pairs.clear();
    empty.altitudes.clear();
    m_importer.working_list = {working_record("a"), empty};
    m_importer.append_to_results({});
    QCOMPARE(m_importer.data_msg, QStringList({"104.1,30.1,104.2,30.2", ""}));
    QCOMPARE(m_importer.data_msg_altitude,
             QStringList({"104.1,30.1,500.1\n104.2,30.2,500.2\n", ""}));
    QCOMPARE(m_importer.point_msg_all,
             (QList<QList<point_msg>>{QList<point_msg>(2, {"0", "0", "0", "0", "0"}), {}}));
}

void test_file_import_thread::tail_of_a_point_without_altitude()
{
    exportRecord record = working_record("a");
    record.altitudes.removeLast();
    m_importer.working_list = {record};
    m_importer.append_to_results({.drop_duplicates = false});
    QCOMPARE(m_importer.data_msg_altitude[0], QStringLiteral("104.1,30.1,500.1\n104.2,30.2,0\n"));
    QCOMPARE(m_importer.point_msg_all[0].size(), 2);
}

void test_file_import_thread::duplicates_come_once()
{
    const log_capture log;
    m_importer.working_list = {working_record("a"), working_record("b"), working_record("a"),
                               working_record("b")};
    m_importer.append_to_results({});
    QCOMPARE(m_importer.table_list.size(), 2);
    QCOMPARE(m_importer.data_msg.size(), 2);
    QCOMPARE(m_importer.data_msg_altitude.size(), 2);
    QCOMPARE(m_importer.point_msg_all.size(), 2);
    QCOMPARE(log.texts().filter("table_list have this data").size(), 2);
}

void test_file_import_thread::what_makes_a_duplicate_data()
{
    QTest::addColumn<exportRecord>("second");
    QTest::addColumn<bool>("duplicate");
    const auto row = [](const char* what, bool duplicate, auto change) {
        exportRecord second = working_record("a");
        change(second);
        QTest::newRow(what) << second << duplicate;
    };
    row("name", false, [](exportRecord& r) { r.name = "b"; });
    row("distance", false, [](exportRecord& r) { r.distance = "9"; });
    row("count", false, [](exportRecord& r) { r.numrecord = "9"; });
    row("area", false, [](exportRecord& r) { r.areameter = "9"; });
    row("a longitude", false, [](exportRecord& r) { r.coordinate_pairs[1].first = "9"; });
    row("a latitude", false, [](exportRecord& r) { r.coordinate_pairs[1].second = "9"; });
    row("an altitude", false, [](exportRecord& r) { r.altitudes[1] = "9"; });
    row("the same value written otherwise", false,
        [](exportRecord& r) { r.coordinate_pairs[0].first = "104.10"; });
    row("time", true, [](exportRecord& r) { r.time = "9"; });
    row("kind", true, [](exportRecord& r) { r.method = "面积"; });
    row("number of points as it is told", true, [](exportRecord& r) { r.numpoint = "9"; });
    row("price", true, [](exportRecord& r) { r.hd = "9"; });
    row("area in mu", true, [](exportRecord& r) { r.areamu = "9"; });
}

void test_file_import_thread::what_makes_a_duplicate()
{
    QFETCH(exportRecord, second);
    QFETCH(bool, duplicate);
    m_importer.working_list = {working_record("a"), second};
    m_importer.append_to_results({});
    QCOMPARE(m_importer.table_list.size(), duplicate ? 1 : 2);
}

void test_file_import_thread::duplicates_can_be_kept()
{
    m_importer.working_list = {working_record("a"), working_record("a")};
    m_importer.append_to_results({.drop_duplicates = false});
    QCOMPARE(m_importer.table_list.size(), 2);
    QCOMPARE(m_importer.data_msg_altitude.size(), 2);
}

void test_file_import_thread::the_comparison_covers_one_file()
{
    m_importer.working_list = {working_record("a")};
    m_importer.append_to_results({});
    m_importer.import_file({}, 0, &m_store, 0);
    m_importer.append_to_results({});
    QCOMPARE(m_importer.table_list.size(), 1);
}

void test_file_import_thread::many_records_are_not_compared_one_by_one()
{
    // All alike but for the last point. Compared one by one these would be ten
    // billion comparisons.
    constexpr int records = 100'000;
    exportRecord record = working_record("same");
    for (int number = 0; number < records; ++number) {
        record.altitudes[1] = QString::number(number / 2);
        m_importer.working_list.append(record);
    }
    const log_capture log;
    m_importer.append_to_results({});
    QCOMPARE(m_importer.table_list.size(), records / 2);
}

void test_file_import_thread::dates_and_times_data()
{
    QTest::addColumn<QString>("normal");
    const auto row = [](const char* text, const char* normal) { QTest::newRow(text) << normal; };
    row("2024-3-5 7:8:9", "2024-03-05 07:08:09");
    row("2024/3/5 7:8:9", "2024-03-05 07:08:09");
    row("2024/3-5 7:8:9", "2024-03-05 07:08:09");
    row("2024-03-05T07:08:09.123", "2024-03-05 07:08:09");
    row("2024-12-31\t23:59:59", "2024-12-31 23:59:59");
    row("2024-13-32 25:61:61", "2024-13-32 25:61:61"); // only the form is looked at
    row("2024-12-31 23:59:59", "2024-12-31 23:59:59");
    // Everything else stays.
    for (const char* other :
         {"", "0", "2024-3-5", "24-3-5 7:8:9", "2024-3-5 7:8", "2024-3-5  7:8:9",
          "2024-3-5 7:8:9.12", "2024-3-5 7:8:9.1234", " 2024-3-5 7:8:9", "2024-3-5 7:8:9Z",
          "2024-003-5 7:8:9", "2024.3.5 7:8:9", "昨天"})
        row(other, other);
}

void test_file_import_thread::dates_and_times()
{
    QFETCH(QString, normal);
    const QString text = QTest::currentDataTag();
    const log_capture log;
    QCOMPARE(file_import_thread::normalize_datetime(text), normal);
    QCOMPARE(log.has("dateTimeStr:   "),
             normal != text || text == "2024-12-31 23:59:59" || text == "2024-13-32 25:61:61");
    QCOMPARE(log.has("time:   "), log.has("dateTimeStr:   "));
}

void test_file_import_thread::stays_on_its_thread()
{
    const log_capture log;
    m_importer.start();
    QVERIFY(m_importer.wait());
    QVERIFY(log.has("file_import_thread ID:"));
    QCOMPARE(m_importer.thread(), QThread::currentThread());
    m_importer.setlanguage(1);
    QCOMPARE(m_importer.language, 1);
}

QTEST_MAIN(test_file_import_thread)
#include "test_file_import_thread.moc"
