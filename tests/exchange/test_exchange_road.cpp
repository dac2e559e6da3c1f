// The whole road of a file, through the real window and its dialogs: rows are
// ticked and exported, and the file is imported again.

#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "exchange/file_import_thread.h"
#include "exchange/input_window.h"
#include "exchange/output_window.h"
#include "support/box_watcher.h"
#include "support/file_dialog_user.h"
#include "support/sample_records.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

class test_exchange_road : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void there_and_back_data();
    void there_and_back();
    void there_and_back_as_xml_data();
    void there_and_back_as_xml();
    void csv_messages_are_chinese_in_english();
    void drawings_there_and_back_data();
    void drawings_there_and_back();
    void waypoints_there_and_back_as_a_workbook();
    void a_filled_in_template_stands_in_the_tables();
    void nothing_ticked_asks_for_the_path_first();
    void a_failed_import_leaves_the_tables_alone();
    void a_failed_kml_import_leaves_the_tables_alone();
    void the_same_file_twice_shows_its_records_twice();

private:
    void export_as(int format, const QString& path);
    /// Presses the import's button, or another one of its dialog.
    void import(const QString& path, const char* button = "pushButton_2");

    application_objects m_objects{};
    MainWindow* m_window = nullptr;
    QTemporaryDir m_folder;
    QString m_path; ///< where programs are found
};

void test_exchange_road::initTestCase()
{
    m_path = qEnvironmentVariable("PATH");
    qputenv("PATH", ""); // without adb in reach the device worker polls nothing
    install_default_font();
    m_objects = make_application_objects();
    m_window = m_objects.window;
    m_window->show();
}

void test_exchange_road::init()
{
    sample_lists lists = sample_records();
    // Record 0 has a comma in its name and record 7 has none: a file without quotes
    // cannot hold them.
    for (const int row : {7, 0}) {
        lists.table_list.removeAt(row);
        lists.data_msg.removeAt(row);
        lists.data_msg_altitude.removeAt(row);
        lists.point_msg_all.removeAt(row);
    }
    m_window->reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                               lists.point_msg_all);
    m_window->ui->checkBox->setChecked(false);
}

void test_exchange_road::cleanupTestCase()
{
    delete m_window;
}

void test_exchange_road::export_as(int format, const QString& path)
{
    file_dialog_user user;
    user.path = path;
    QTest::mouseClick(m_window->ui->data_output_file, Qt::LeftButton);
    auto* dialog = m_window->findChild<outputWindow*>();
    QVERIFY(dialog != nullptr);
    dialog->findChild<QComboBox*>("export_format")->setCurrentIndex(format);
    QTest::mouseClick(dialog->findChild<QPushButton*>("pushButton"), Qt::LeftButton);
    QCOMPARE(user.dialogs.size(), 1);
    QVERIFY(dialog->isVisible()); // for another format
    delete dialog;
}

void test_exchange_road::import(const QString& path, const char* button)
{
    file_dialog_user user;
    user.path = path;
    QTest::mouseClick(m_window->ui->data_input_file, Qt::LeftButton);
    auto* dialog = m_window->findChild<input_window*>();
    QVERIFY(dialog != nullptr);
    QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
    QCOMPARE(user.dialogs.size(), 1);
    delete dialog;
}

void test_exchange_road::there_and_back_data()
{
    QTest::addColumn<int>("mode");
    for (const int mode : {0, 2, 3})
        QTest::addRow("mode %d", mode) << mode;
}

void test_exchange_road::there_and_back()
{
    QFETCH(int, mode);
    const QString path = m_folder.filePath(QStringLiteral("mode %1.csv").arg(mode));
    const QList<measuringData> before = m_window->table_list;
    const QStringList geometry = m_window->data_msg_altitude;
    const QList<int> ticked{0, 1, 2, 3, 6};
    for (const int row : ticked)
        m_window->model->setData(m_window->model->index(row, 0), true);
    m_window->setmodeflag(mode, m_window->js, 0);

    box_watcher watcher;
    export_as(0, path);
    QCOMPARE(watcher.texts(), QStringList("csv多数据合并导出成功"));
    QVERIFY(QFile::exists(path));

    watcher.boxes.clear();
    import(path);
    m_window->setmodeflag(0, m_window->js, 0);
    QCOMPARE(watcher.texts(), QStringList("csv多数据文件导入成功"));

    // What was there is there still, and the read records stand behind it.
    const qsizetype old = before.size();
    QCOMPARE(m_window->table_list.size(), old + ticked.size());
    QCOMPARE(m_window->table_list.mid(0, old), before);
    QCOMPARE(m_window->model->rowCount(), static_cast<int>(old + ticked.size()));
    for (qsizetype at = 0; at < ticked.size(); ++at) {
        const measuringData& read = m_window->table_list[old + at];
        const measuringData& source = before[ticked[at]];
        QCOMPARE(read.name, source.name);
        QCOMPARE(read.method, source.method);
        QCOMPARE(read.time, source.time);
        QCOMPARE(read.areameter, source.areameter);
        QCOMPARE(read.price, source.hd);
        QCOMPARE(read.numrecord, QString::number(ticked.size()));
        const int row = static_cast<int>(old + at);
        QCOMPARE(m_window->model->index(row, 2).data().toString(), source.name);
        QCOMPARE(m_window->model->index(row, 3).data().toString(), source.time);
        QCOMPARE(m_window->point_msg_all[old + at].size(), read.numpoint.toInt());
        if (mode == 0)
            QCOMPARE(m_window->data_msg_altitude[old + at], geometry[ticked[at]]);
        else
            QCOMPARE(m_window->data_msg_altitude[old + at].count('\n'), read.numpoint.toInt());
    }
}

void test_exchange_road::there_and_back_as_xml_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QList<int>>("ticked");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<bool>("in_english");
    for (const bool in_english : {false, true}) {
        const char* language = in_english ? "English" : "Chinese";
        // Rows 1 and 2 have names that a description in KML cannot hold.
        QTest::addRow("KML, %s", language)
            << 6 << "a.kml" << QList<int>{0, 3, 6}
            << QStringList{"kml文件导出成功", "kml文件导入成功"} << in_english;
        QTest::addRow("GPX, %s", language)
            << 4 << "a.gpx" << QList<int>{0, 1, 2, 3, 6}
            << QStringList{"gpx多数据合并导出成功", "gpx文件导入成功"} << in_english;
    }
}

void test_exchange_road::there_and_back_as_xml()
{
    QFETCH(int, format);
    QFETCH(QString, file);
    QFETCH(QList<int>, ticked);
    QFETCH(QStringList, messages);
    QFETCH(bool, in_english);
    const QTemporaryDir folder;
    const QString path = folder.filePath(file);
    const QList<measuringData> before = m_window->table_list;
    const QStringList geometry = m_window->data_msg_altitude;
    for (const int row : ticked)
        m_window->model->setData(m_window->model->index(row, 0), true);

    // The messages are Chinese in both languages.
    QTranslator english;
    if (in_english) {
        QVERIFY(english.load("./en_CN.qm"));
        QVERIFY(QCoreApplication::installTranslator(&english));
        QCOMPARE(QCoreApplication::translate("MainWindow", "数据列表"), "Data List");
    }
    box_watcher watcher;
    export_as(format, path);
    import(path);
    QCOMPARE(watcher.texts(), messages);

    const qsizetype old = before.size();
    QCOMPARE(m_window->table_list.size(), old + ticked.size());
    QCOMPARE(m_window->table_list.mid(0, old), before);
    QCOMPARE(m_window->model->rowCount(), static_cast<int>(old + ticked.size()));
    for (qsizetype at = 0; at < ticked.size(); ++at) {
        const measuringData& read = m_window->table_list[old + at];
        const measuringData& source = before[ticked[at]];
        QCOMPARE(read.name.trimmed(), source.name.trimmed());
        QCOMPARE(read.method, source.method);
        QCOMPARE(read.time, source.time);
        QCOMPARE(read.areameter, source.areameter);
        QCOMPARE(read.price, source.hd);
        QCOMPARE(read.numrecord, source.numrecord);
        const int row = static_cast<int>(old + at);
        QCOMPARE(m_window->model->index(row, 2).data().toString(), read.name);
        QCOMPARE(m_window->model->index(row, 3).data().toString(), source.time);
        QCOMPARE(m_window->point_msg_all[old + at].size(), read.numpoint.toInt());
        QCOMPARE(m_window->data_msg_altitude[old + at], geometry[ticked[at]]);
    }
}

void test_exchange_road::csv_messages_are_chinese_in_english()
{
    QTranslator english;
    QVERIFY(english.load("./en_CN.qm"));
    QVERIFY(QCoreApplication::installTranslator(&english));
    QCOMPARE(QCoreApplication::translate("MainWindow", "数据列表"), "Data List");

    const QTemporaryDir folder;
    const QString merged = folder.filePath("merged.csv");
    const auto written = [&folder](const char* name, const QByteArray& bytes) {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()
                   ? file.fileName()
                   : QString();
    };
    m_window->model->setData(m_window->model->index(0, 0), true);
    box_watcher watcher;
    export_as(0, merged);
    export_as(1, folder.path());
    import(merged);
    import(written("single.csv", "名字\na,b,0,航点,1,667,2,3,4,5,6\n"));
    import(written("summary.csv", "A(m*m):1,L:2,N:0,T:4,name:5\n"));
    import(written("foreign.csv", "lat,lon\n1,2\n"));
    const QStringList texts{"csv多数据合并导出成功", "csv单数据分开导出成功",
                            "csv多数据文件导入成功", "csv单数据文件导入成功",
                            "csv文件导入成功",       "csv文件导入失败"};
    QCOMPARE(watcher.texts(), texts);
    for (qsizetype at = 0; at < texts.size(); ++at)
        QCOMPARE(watcher.boxes[at].title, at < 2 ? QStringLiteral("csv") : QStringLiteral("导入"));
}

/// Points come back before lines, and areas as tracks.
void test_exchange_road::drawings_there_and_back_data()
{
    QTest::addColumn<bool>("in_english");
    QTest::newRow("Chinese") << false;
    QTest::newRow("English") << true;
}

void test_exchange_road::drawings_there_and_back()
{
    QFETCH(bool, in_english);
    // The messages are Chinese in both languages.
    QTranslator english;
    if (in_english) {
        QVERIFY(english.load("./en_CN.qm"));
        QVERIFY(QCoreApplication::installTranslator(&english));
        QCOMPARE(QCoreApplication::translate("MainWindow", "数据列表"), "Data List");
    }
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.dxf");
    const QStringList plain = m_window->data_msg;
    const qsizetype old = m_window->table_list.size();
    for (const int row : {0, 1, 2, 3, 6}) // row 1 is the waypoint of these
        m_window->model->setData(m_window->model->index(row, 0), true);
    box_watcher watcher;
    export_as(2, path);
    export_as(3, folder.path());
    import(path);
    m_objects.import->import_file(folder.filePath("missing.dxf"), 0, m_window->js, 0);
    QCOMPARE(watcher.texts(), (QStringList{"dxf多数据合并导出成功", "dxf单数据分开导出成功",
                                           "dxf文件导入成功", "打开dxf文件失败"}));
    QStringList titles;
    for (const box_watcher::seen_box& box : watcher.boxes)
        titles.append(box.title);
    QCOMPARE(titles, (QStringList{"dxf", "dxf", "导入", "dxf"}));

    QStringList methods;
    for (qsizetype at = old; at < m_window->table_list.size(); ++at) {
        const measuringData& read = m_window->table_list[at];
        methods.append(read.method);
        const int row = static_cast<int>(at);
        QCOMPARE(m_window->model->index(row, 2).data().toString(), read.name);
        QCOMPARE(m_window->model->index(row, 3).data().toString(), read.time);
        QCOMPARE(m_window->point_msg_all[at].size(), read.numpoint.toInt());
    }
    QCOMPARE(methods, (QStringList{"航点", "航点", "航迹", "航迹", "航迹"}));
    QCOMPARE(m_window->data_msg.mid(old),
             (QStringList{plain[1], plain[6], plain[0], plain[2], plain[3]}));
    QCOMPARE(m_window->model->rowCount(), static_cast<int>(old + 5));
}

/// The one sheet that an export writes and an import takes.
void test_exchange_road::waypoints_there_and_back_as_a_workbook()
{
    const QString path = m_folder.filePath("a.xlsx");
    const qsizetype old = m_window->table_list.size();
    for (const int row : {1, 6})
        m_window->model->setData(m_window->model->index(row, 0), true);
    box_watcher watcher;
    export_as(8, path);
    import(path);
    QCOMPARE(watcher.texts(), (QStringList{"Excel文件导出成功", "Excel多数据文件导入成功"}));
    QCOMPARE(m_window->table_list.size(), old + 2);
    for (const auto& [row, read] : {std::pair(1, old), std::pair(6, old + 1)}) {
        const measuringData& source = m_window->table_list[row];
        QCOMPARE(m_window->table_list[read].method, QStringLiteral("航点"));
        QCOMPARE(m_window->table_list[read].time, source.time);
        QCOMPARE(m_window->table_list[read].id, source.id);
        QCOMPARE(m_window->data_msg_altitude[read], m_window->data_msg_altitude[row]);
        QCOMPARE(m_window->model->index(static_cast<int>(read), 3).data().toString(), source.time);
    }
}

/// As a person does it: the template is saved, a row typed in at the spreadsheet
/// program, and the file imported.
void test_exchange_road::a_filled_in_template_stands_in_the_tables()
{
    const QString path = m_folder.filePath("template.xlsx");
    const QString filled = m_folder.filePath("filled.xlsx");
    box_watcher watcher;
    import(path, "pushButton");
    QCOMPARE(watcher.texts(), QStringList("Excel文件模版已下载"));

    QProcess office;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", m_path);
    office.setProcessEnvironment(environment);
    office.start("/usr/bin/python3",
                 {QStringLiteral(TEST_FILES "/office.py"), "fill", path, filled, "zh"});
    QVERIFY(office.waitForFinished(500'000));
    QVERIFY2(office.exitCode() == 0, office.readAllStandardError().constData());

    const qsizetype old = m_window->table_list.size();
    watcher.boxes.clear();
    import(filled);
    QCOMPARE(watcher.texts(), QStringList("Excel多数据文件导入成功"));
    QCOMPARE(m_window->table_list.size(), old + 14); // the examples are thirteen
    const qsizetype at = old + 2;
    const int row = static_cast<int>(at);
    QCOMPARE(m_window->model->index(row, 2).data().toString(), QStringLiteral("202603050708"));
    QCOMPARE(m_window->model->index(row, 3).data().toString(),
             QStringLiteral("2026-03-05 07:08:09"));
    const measuringData& typed = m_window->table_list[at];
    QCOMPARE(typed.method, QStringLiteral("面积"));
    QCOMPARE(typed.id, QStringLiteral("24081530"));
    QCOMPARE(typed.areameter, QStringLiteral("1667.5"));
    QCOMPARE(typed.totalprices, QStringLiteral("100000"));
    QCOMPARE(m_window->data_msg_altitude[at],
             QStringLiteral("126.650000000000,45.750000000000,120.5\n"
                            "126.650500000000,45.751000000000,121\n"
                            "126.651000000000,45.750500000000,122.25\n"));
    QCOMPARE(m_window->point_msg_all[at].size(), 3);
}

void test_exchange_road::nothing_ticked_asks_for_the_path_first()
{
    const QString path = m_folder.filePath("none.kml");
    box_watcher watcher;
    export_as(6, path);
    QCOMPARE(watcher.texts(), QStringList("未勾选数据"));
    QVERIFY(!QFile::exists(path));
    // In the words of the language.
    m_window->language = 1;
    export_as(6, path);
    m_window->language = 0;
    QCOMPARE(watcher.texts().last(), QStringLiteral("Unselected data"));
    QVERIFY(!QFile::exists(path));
}

void test_exchange_road::a_failed_import_leaves_the_tables_alone()
{
    const QString path = m_folder.filePath("bad.csv");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("序号,\n0,short\n");
    file.close();
    const QList<measuringData> before = m_window->table_list;
    box_watcher watcher;
    import(path);
    QCOMPARE(watcher.texts(), QStringList("csv文件导入失败"));
    QCOMPARE(m_window->table_list, before);
    watcher.boxes.clear();
    import({}); // cancelled
    QCOMPARE(watcher.texts(), QStringList());
    QCOMPARE(m_window->table_list, before);
}

void test_exchange_road::a_failed_kml_import_leaves_the_tables_alone()
{
    // Unlike a CSV file, it hands on lists, which are empty.
    const QString path = m_folder.filePath("bad.kml");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<kml><Placemark>");
    file.close();
    const QList<measuringData> before = m_window->table_list;
    const QStringList geometry = m_window->data_msg_altitude;
    const int rows = m_window->model->rowCount();
    QVERIFY(rows > 0);
    qsizetype handed_on = 0;
    const auto spy = connect(m_objects.import, &file_import_thread::read_data_finished, this,
                             [&](const QList<measuringData>& read) {
                                 QVERIFY(read.isEmpty());
                                 ++handed_on;
                             });
    box_watcher watcher;
    import(path);
    disconnect(spy);
    QCOMPARE(handed_on, 1);
    QCOMPARE(watcher.texts(), QStringList("kml文件导入失败"));
    QCOMPARE(m_window->table_list, before);
    QCOMPARE(m_window->data_msg_altitude, geometry);
    QCOMPARE(m_window->model->rowCount(), rows);
}

void test_exchange_road::the_same_file_twice_shows_its_records_twice()
{
    const QString path = m_folder.filePath("twice.csv");
    m_window->model->setData(m_window->model->index(0, 0), true);
    box_watcher watcher;
    export_as(0, path);
    const qsizetype before = m_window->table_list.size();
    import(path);
    import(path);
    QCOMPARE(m_window->table_list.size(), before + 2);
}

QTEST_MAIN(test_exchange_road)
#include "test_exchange_road.moc"
