// What the export has in common for all formats: the ticked rows, the commands,
// the files of the two forms and what the user is told.

#include "exchange/file_export_thread.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_records.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

/// A first table over the sample, with a tick in `ticked` rows.
void fill(QStandardItemModel& model, int rows, const QList<int>& ticked)
{
    for (int row = 0; row < rows; ++row) {
        auto* tick = new QStandardItem;
        if (ticked.contains(row))
            tick->setData(true, Qt::EditRole);
        model.appendRow({tick, new QStandardItem(QString::number(row + 1))});
    }
}

void write_name(QFile& file, const exportRecord& record)
{
    file.write(record.name.toUtf8() + '\n');
}

} // namespace

class test_file_export_thread : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void ticked_rows_become_records();
    void every_command_begins_anew();
    void nothing_ticked_says_so_data();
    void nothing_ticked_says_so();
    void no_model_counts_as_nothing_ticked();
    void commands_run_their_writers_data();
    void commands_run_their_writers();
    void commands_write_their_files_data();
    void commands_write_their_files();
    void other_commands_do_nothing_data();
    void other_commands_do_nothing();
    void parameters_are_stored_and_logged();
    void flags_and_language_are_stored();
    void merged_replaces_the_file();
    void merged_without_a_path_is_silent();
    void merged_that_cannot_be_opened_data();
    void merged_that_cannot_be_opened();
    void a_failed_write_is_not_told();
    void each_numbers_from_one_and_adds();
    void each_without_a_folder_is_silent();
    void each_goes_on_after_a_file_that_cannot_be_opened();
    void record_paths_are_joined_in_the_platforms_way();
    void the_pointer_waits_but_not_over_boxes();
    void stays_on_its_thread();

private:
    /// export_file over the sample, without a coordinate system.
    void run(int cmd, const QList<int>& ticked, const QString& path, int mode = 0);

    file_export_thread m_exporter;
    QStandardItemModel m_model;
    sample_lists m_lists = sample_records();
    QTemporaryDir m_folder;
};

void test_file_export_thread::init()
{
    m_exporter.language = 0;
    m_exporter.export_list.clear();
    m_model.clear();
    QVERIFY(m_folder.isValid());
    QVERIFY(QDir(m_folder.path()).removeRecursively());
    QVERIFY(QDir().mkpath(m_folder.path()));
}

void test_file_export_thread::run(int cmd, const QList<int>& ticked, const QString& path, int mode)
{
    m_model.clear();
    fill(m_model, static_cast<int>(m_lists.table_list.size()), ticked);
    m_exporter.export_file(cmd, mode, 1.0, 2.0, 0.5, {}, &m_model, m_lists.table_list,
                           m_lists.data_msg_altitude, path, m_lists.point_msg_all);
}

void test_file_export_thread::ticked_rows_become_records()
{
    fill(m_model, 10, {0, 3, 9});
    QVERIFY(m_exporter.select_checked_rows(&m_model, m_lists.table_list, m_lists.data_msg_altitude,
                                           m_lists.point_msg_all));
    QCOMPARE(m_exporter.export_list.size(), 3);
    const int rows[] = {0, 3, 9};
    for (int at = 0; at < 3; ++at) {
        const exportRecord& record = m_exporter.export_list[at];
        QCOMPARE(static_cast<const measuringData&>(record), m_lists.table_list[rows[at]]);
        QCOMPARE(record.coordinates, m_lists.data_msg_altitude[rows[at]]);
        QCOMPARE(record.points, m_lists.point_msg_all[rows[at]]);
        QVERIFY(record.coordinate_pairs.isEmpty());
        QVERIFY(record.altitudes.isEmpty());
    }
}

void test_file_export_thread::every_command_begins_anew()
{
    box_watcher watcher;
    run(3, {1}, m_folder.filePath("a.csv"));
    run(3, {2, 4}, m_folder.filePath("b.csv"));
    QCOMPARE(m_exporter.export_list.size(), 2);
    run(3, {}, m_folder.filePath("c.csv"));
    QCOMPARE(m_exporter.export_list.size(), 0);
}

void test_file_export_thread::nothing_ticked_says_so_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");
    QTest::newRow("Chinese") << 0 << "未勾选数据"
                             << "警告";
    QTest::newRow("English") << 1 << "Unselected data"
                             << "Warning";
    QTest::newRow("another") << 7 << "Unselected data"
                             << "Warning";
}

void test_file_export_thread::nothing_ticked_says_so()
{
    QFETCH(int, language);
    QFETCH(QString, text);
    QFETCH(QString, title);
    m_exporter.setlanguage(language);
    // Before the command is looked at, and before a file is touched.
    for (const int cmd : {1, 2, 3, 4, 9, 99}) {
        box_watcher watcher;
        run(cmd, {}, m_folder.filePath("a"));
        QCOMPARE(watcher.boxes.size(), 1);
        QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
        QCOMPARE(watcher.boxes[0].text, text);
        QCOMPARE(watcher.boxes[0].title, title);
        QVERIFY(QDir(m_folder.path()).isEmpty());
    }
}

void test_file_export_thread::no_model_counts_as_nothing_ticked()
{
    box_watcher watcher;
    m_exporter.export_file(3, 0, 1, 1, 0, {}, nullptr, {}, {}, m_folder.filePath("a.csv"), {});
    QCOMPARE(watcher.texts(), QStringList("未勾选数据"));
}

void test_file_export_thread::commands_run_their_writers_data()
{
    QTest::addColumn<int>("cmd");
    QTest::addColumn<QString>("label");
    QTest::newRow("KML") << 1 << "kml_export";
    QTest::newRow("one CSV") << 3 << "one_csv_export";
    QTest::newRow("more CSV") << 4 << "more_csv_export";
    QTest::newRow("one DXF") << 5 << "one_dxf_export";
    QTest::newRow("more DXF") << 6 << "more_dxf_export";
    QTest::newRow("one GPX") << 7 << "one_gpx_export";
    QTest::newRow("more GPX") << 8 << "more_gpx_export";
    QTest::newRow("Excel") << 9 << "excel_export";
}

void test_file_export_thread::commands_run_their_writers()
{
    QFETCH(int, cmd);
    QFETCH(QString, label);
    box_watcher watcher;
    const log_capture log;
    run(cmd, {2}, {}); // without a path a writer does nothing
    QVERIFY(log.texts().contains(label));
    QCOMPARE(m_exporter.export_list.size(), 1);
    QCOMPARE(watcher.texts(), QStringList());
}

void test_file_export_thread::commands_write_their_files_data()
{
    QTest::addColumn<int>("cmd");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QByteArray>("bytes"); // that such a file has
    QTest::addColumn<QString>("text");
    const auto each = [](const QString& suffix) {
        return QStringList{"exported_data_1." + suffix, "exported_data_2." + suffix};
    };
    QTest::newRow("KML") << 1 << "a.kml" << QStringList("a.kml") << QByteArray("<kml")
                         << "kml文件导出成功";
    QTest::newRow("one CSV") << 3 << "a.csv" << QStringList("a.csv") << QByteArray("序号,")
                             << "csv多数据合并导出成功";
    QTest::newRow("more CSV") << 4 << "" << each("csv") << QByteArray("序号,")
                              << "csv单数据分开导出成功";
    QTest::newRow("one DXF") << 5 << "a.dxf" << QStringList("a.dxf") << QByteArray("$ACADVER")
                             << "dxf多数据合并导出成功";
    QTest::newRow("more DXF") << 6 << "" << each("dxf") << QByteArray("$ACADVER")
                              << "dxf单数据分开导出成功";
    QTest::newRow("one GPX") << 7 << "a.gpx" << QStringList("a.gpx") << QByteArray("<gpx")
                             << "gpx多数据合并导出成功";
    QTest::newRow("more GPX") << 8 << "" << each("gpx") << QByteArray("<gpx")
                              << "gpx单数据分开导出成功";
    QTest::newRow("Excel") << 9 << "a.xlsx" << QStringList("a.xlsx")
                           << QByteArray("xl/worksheets/sheet2.xml") << "Excel文件导出成功";
}

void test_file_export_thread::commands_write_their_files()
{
    QFETCH(int, cmd);
    QFETCH(QString, path);
    QFETCH(QStringList, files);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    m_exporter.export_file_check_flag(QList<int>(12, 1), "field");
    box_watcher watcher;
    run(cmd, {0, 1}, m_folder.filePath(path));
    QCOMPARE(watcher.texts(), QStringList(text));
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files), files);
    for (const QString& file : files)
        QVERIFY(content(m_folder.filePath(file)).contains(bytes));
}

void test_file_export_thread::other_commands_do_nothing_data()
{
    QTest::addColumn<int>("cmd");
    for (const int cmd : {-1, 0, 2, 10, 1000000})
        QTest::addRow("%d", cmd) << cmd;
}

void test_file_export_thread::other_commands_do_nothing()
{
    QFETCH(int, cmd);
    box_watcher watcher;
    const log_capture log;
    run(cmd, {2}, m_folder.filePath("a"));
    QVERIFY(QDir(m_folder.path()).isEmpty());
    QCOMPARE(watcher.boxes.size(), 0);
    QVERIFY(!log.has("_export"));
}

void test_file_export_thread::parameters_are_stored_and_logged()
{
    const log_capture log;
    model_param param;
    param.projection.east = 512345.0;
    param.param7.rz = 6.25;
    param.param4.rt = 8.5;
    box_watcher watcher;
    m_exporter.export_file(2, 0, 11.0, 12.0, 0.25, param, &m_model, {}, {}, {}, {});
    QCOMPARE(m_exporter.cz, 11.0);
    QCOMPARE(m_exporter.dz, 12.0);
    QCOMPARE(m_exporter.pl, 0.25);
    QVERIFY(log.has("512345"));
    QVERIFY(log.has("6.25"));
    QVERIFY(log.has("8.5"));
}

void test_file_export_thread::flags_and_language_are_stored()
{
    m_exporter.export_file_check_flag({1, 0, 1}, "WGS1984");
    QCOMPARE(m_exporter.check_flags, (QList<int>{1, 0, 1}));
    QCOMPARE(m_exporter.system_name, QStringLiteral("WGS1984"));
    m_exporter.setlanguage(1);
    QCOMPARE(m_exporter.language, 1);
}

void test_file_export_thread::merged_replaces_the_file()
{
    box_watcher watcher;
    const QString path = m_folder.filePath("a.txt");
    for (const char* text : {"first and long", "second"}) {
        file_export_thread::export_merged(
            path, [text](QFile& file) { file.write(text); }, "title", "done");
        QCOMPARE(content(path), QByteArray(text));
    }
    QCOMPARE(watcher.boxes.size(), 2);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("title"));
    QCOMPARE(watcher.boxes[0].text, QStringLiteral("done"));
    QCOMPARE(watcher.boxes[0].buttons, QMessageBox::Ok);
}

void test_file_export_thread::merged_without_a_path_is_silent()
{
    box_watcher watcher;
    bool called = false;
    file_export_thread::export_merged(
        {}, [&](QFile&) { called = true; }, "title", "done");
    QVERIFY(!called);
    QCOMPARE(watcher.boxes.size(), 0);
}

void test_file_export_thread::merged_that_cannot_be_opened_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a folder") << "sub";
    QTest::newRow("in a folder that is not there") << "none/a.txt";
}

void test_file_export_thread::merged_that_cannot_be_opened()
{
    QFETCH(QString, name);
    QVERIFY(QDir(m_folder.path()).mkdir("sub"));
    box_watcher watcher;
    const log_capture log;
    const QString path = m_folder.filePath(name);
    bool called = false;
    file_export_thread::export_merged(
        path, [&](QFile&) { called = true; }, "title", "done");
    QVERIFY(!called);
    QCOMPARE(watcher.boxes.size(), 1); // and no word of success
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("Warning"));
    QCOMPARE(watcher.boxes[0].text, QStringLiteral("Failed to open file"));
    QVERIFY(log.texts().contains("Failed to open file:  \"" + path + '"'));
}

/// Whether the file could be opened is all that is told, and what was written stays.
void test_file_export_thread::a_failed_write_is_not_told()
{
#ifdef Q_OS_UNIX
    m_exporter.export_list.append({m_lists.table_list[3], {}, {}, {}, {}});
    const QString path = m_folder.filePath("a.txt");
    box_watcher watcher;
    {
        // No file grows beyond that: as on a disk that is full.
        const auto usual_handler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit usual{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
        rlimit narrow = usual;
        narrow.rlim_cur = 3;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &narrow), 0);
        const log_capture log; // and no line of it into a file that cannot grow
        file_export_thread::export_merged(
            path, [](QFile& file) { file.write("more than three"); }, "title", "done");
        m_exporter.export_each(m_folder.path(), "txt", write_name, "title", "each done");
        setrlimit(RLIMIT_FSIZE, &usual);
        std::signal(SIGXFSZ, usual_handler);
        QVERIFY(!log.has("Failed"));
    }
    QCOMPARE(watcher.texts(), QStringList({"done", "each done"}));
    QCOMPARE(content(path), QByteArray("mor"));
    QCOMPARE(content(m_folder.filePath("exported_data_1.txt")), QByteArray("a]]"));
#else
    QSKIP("no limit to a file's size at hand");
#endif
}

void test_file_export_thread::each_numbers_from_one_and_adds()
{
    box_watcher watcher;
    for (const int row : {2, 3, 5})
        m_exporter.export_list.append({m_lists.table_list[row], {}, {}, {}, {}});
    QByteArray expected[] = {"<well> & gate\n", "a]]>b\n", "东边的地块\n"};
    for (const int times : {1, 2}) {
        m_exporter.export_each(m_folder.path(), "txt", write_name, "title", "done");
        for (int at = 0; at < 3; ++at)
            QCOMPARE(content(m_folder.filePath(QStringLiteral("exported_data_%1.txt").arg(at + 1))),
                     expected[at].repeated(times));
    }
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files).size(), 3);
    QCOMPARE(watcher.texts(), QStringList({"done", "done"}));
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("title"));
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
}

void test_file_export_thread::each_without_a_folder_is_silent()
{
    box_watcher watcher;
    m_exporter.export_list.append(exportRecord{});
    bool called = false;
    m_exporter.export_each(
        {}, "txt", [&](QFile&, const exportRecord&) { called = true; }, "title", "done");
    QVERIFY(!called);
    QCOMPARE(watcher.boxes.size(), 0);
}

void test_file_export_thread::each_goes_on_after_a_file_that_cannot_be_opened()
{
    QVERIFY(QDir(m_folder.path()).mkdir("exported_data_2.txt")); // in the way
    for (const int row : {2, 3, 5})
        m_exporter.export_list.append({m_lists.table_list[row], {}, {}, {}, {}});
    box_watcher watcher;
    const log_capture log;
    m_exporter.export_each(m_folder.path(), "txt", write_name, "title", "done");
    QCOMPARE(watcher.texts(), QStringList({"Failed to open file", "done"}));
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("Warning"));
    QVERIFY(log.texts().contains("Failed to open file: \"" +
                                 m_folder.filePath("exported_data_2.txt") + '"'));
    QCOMPARE(content(m_folder.filePath("exported_data_1.txt")), QByteArray("<well> & gate\n"));
    QCOMPARE(content(m_folder.filePath("exported_data_3.txt")), QByteArray("东边的地块\n"));
}

void test_file_export_thread::record_paths_are_joined_in_the_platforms_way()
{
#ifdef Q_OS_WIN
    QCOMPARE(file_export_thread::record_file_path("C:/x", "csv", 1),
             QStringLiteral("C:/x\\exported_data_1.csv"));
    // Nothing trims a separator at the end.
    QCOMPARE(file_export_thread::record_file_path("C:\\", "gpx", 12),
             QStringLiteral("C:\\\\exported_data_12.gpx"));
#else
    QCOMPARE(file_export_thread::record_file_path("/tmp/x", "csv", 1),
             QStringLiteral("/tmp/x/exported_data_1.csv"));
    QCOMPARE(file_export_thread::record_file_path("/", "gpx", 12),
             QStringLiteral("/exported_data_12.gpx"));
    // A per cent sign in a folder's name is no place to fill.
    QCOMPARE(file_export_thread::record_file_path("/tmp/%1 %2", "csv", 3),
             QStringLiteral("/tmp/%1 %2/exported_data_3.csv"));
#endif
}

void test_file_export_thread::the_pointer_waits_but_not_over_boxes()
{
    box_watcher watcher;
    int over_box = -1;
    watcher.look = [&](QMessageBox*) { over_box = QApplication::overrideCursor()->shape(); };
    run(3, {0}, m_folder.filePath("a.csv"));
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(over_box, int(Qt::ArrowCursor));
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

void test_file_export_thread::stays_on_its_thread()
{
    const log_capture log;
    m_exporter.start();
    QVERIFY(m_exporter.wait());
    QVERIFY(log.has("file_export_thread ID:"));
    QCOMPARE(m_exporter.thread(), QThread::currentThread());
}

QTEST_MAIN(test_file_export_thread)
#include "test_file_export_thread.moc"
