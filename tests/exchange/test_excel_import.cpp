// Workbooks that are read: by the layout's rules, as other programs write them,
// and bad ones.

#include "coordinates/transforms.h"
#include "core/code_tables.h"
#include "exchange/excel_package.h"
#include "exchange/excel_template.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_records.h"
#include "workbook_tools.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <xlsxdocument.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

using sheet_rows = std::pair<QString, QList<QStringList>>;

/// A summary of the kind with these cells by their head in English.
QStringList summary_row(const QString& kind, const QMap<QString, QString>& cells)
{
    QStringList row = full_heads(kind, 1).first(summary_columns(kind));
    for (QString& cell : row)
        cell = cells.value(cell);
    return row;
}

/// A row of a sheet that has points: a summary, which may be empty, and the cells
/// of a point behind it.
QStringList point_row(const QString& kind, QStringList summary, const QStringList& point)
{
    summary.resize(summary_columns(kind));
    return summary + point;
}

const QMap<QString, QString> area_cells{{"NO.", "1"},
                                        {"Time Zone", "UTC+08:00"},
                                        {"Start Time", "2025/1/5 9:3:7"},
                                        {"End Time", "2025/1/5 10:30:00"},
                                        {"Device ID", "24081530"},
                                        {"Measurement Mode", "智能坡地"},
                                        {"Parameters", "3.5"},
                                        {"Slope", "1.5"},
                                        {"Area Unit", "Hectare"},
                                        {"Area", "1.25"},
                                        {"Area (Square Meters)", "12500"},
                                        {"Distance Unit", "公里"},
                                        {"Distance", "1.5"},
                                        {"Currency Unit", "Euro"},
                                        {"Unit Price", "1.75"},
                                        {"Total Price", "9.5"},
                                        {"Coordinate System", "WGS - 84"},
                                        {"Remarks", "by the river"}};

const QStringList one_point{"1", "2025-01-05 09:03:08", "104.5", "30.25", "500.5", "0.8"};
const QStringList next_point{"2", "2025-01-05 09:03:09", "104.6", "30.35", "501", "0.9"};

/// The smallest sound sheet of a kind: one measurement of one point.
QList<QStringList> sound_sheet(const QString& kind, int language = 1)
{
    const QStringList heads = full_heads(kind, language);
    QStringList row;
    for (const QString& head : full_heads(kind, 1)) {
        if (head == "Longitude")
            row.append("104.5");
        else if (head == "Latitude")
            row.append("30.25");
        else if (head.startsWith("N"))
            row.append("1");
        else
            row.append("0");
    }
    return {heads, row};
}

} // namespace

class test_excel_import : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // the rules
    void an_area_is_read();
    void a_distance_is_read();
    void waypoints_are_read();
    void a_route_is_read();
    void a_track_is_read();
    void a_stake_out_is_read();
    void a_record_has_the_rows_up_to_the_next();
    void unsupplied_cells_become_zero();
    void altitudes_are_copied_data();
    void altitudes_are_copied();
    void heads_are_checked_one_by_one_data();
    void heads_are_checked_one_by_one();
    void heads_of_either_language_are_taken();
    void plane_modes_have_their_own_heads();
    void an_exported_sheet_name_is_refused_data();
    void an_exported_sheet_name_is_refused();
    void sheets_without_a_measurement_are_refused_data();
    void sheets_without_a_measurement_are_refused();
    void a_failure_keeps_what_earlier_sheets_had();
    void modes_read_their_coordinates_data();
    void modes_read_their_coordinates();
    void what_is_no_coordinate_is_refused_data();
    void what_is_no_coordinate_is_refused();
    void minus_one_fails_where_it_is_a_degree();
    void zones_are_not_looked_at_data();
    void zones_are_not_looked_at();
    void equal_records_come_once();
    void equal_records_of_two_kinds_come_once();
    void every_import_has_its_own_records();
    void charts_are_told_and_passed_over();
    void exported_waypoints_come_back_data();
    void exported_waypoints_come_back();

    // other programs and bad files
    void the_template_can_be_read_as_it_is_data();
    void the_template_can_be_read_as_it_is();
    void the_template_is_for_degrees_data();
    void the_template_is_for_degrees();
    void a_person_fills_in_the_template_data();
    void a_person_fills_in_the_template();
    void variants_give_the_same_records_data();
    void variants_give_the_same_records();
    void numbers_have_no_exponent_data();
    void numbers_have_no_exponent();
    void booleans_are_words();
    void dates_count_from_their_epoch_data();
    void dates_count_from_their_epoch();
    void bad_files_are_refused_data();
    void bad_files_are_refused();
    void only_regular_files_are_opened_data();
    void only_regular_files_are_opened();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    /// Writes a workbook and imports it.
    void import(const QList<sheet_rows>& sheets, int mode = 0, int language = 0);
    void import_file(const QString& from, int mode = 0, int language = 0);
    /// What a plane position in m_system is in degrees.
    QString degrees_of(double x, double y) const;
    /// The box that a refused import ends with.
    void verify_refused(const char* chinese, QMessageBox::Icon icon = QMessageBox::Warning);

    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_corpus;
    std::unique_ptr<file_import_thread> m_importer;
    std::unique_ptr<box_watcher> m_boxes;
    CoordinateSystem m_system;
    qsizetype m_delivered = 0;
};

void test_excel_import::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_importer = std::make_unique<file_import_thread>();
    m_boxes = std::make_unique<box_watcher>();
    m_delivered = 0;
    connect(m_importer.get(), &file_import_thread::read_data_finished, this,
            [this](const auto&... lists) {
                ++m_delivered;
                QCOMPARE(std::tie(lists...),
                         std::tie(m_importer->table_list, m_importer->data_msg,
                                  m_importer->data_msg_altitude, m_importer->point_msg_all));
            });
}

void test_excel_import::initTestCase()
{
    // Where clocks are five minutes and 43 seconds off in 1899, and in summer an
    // hour.
    qputenv("TZ", "Asia/Shanghai");
    m_system.name = "field";
    m_system.changzhou = 6378137.0;
    m_system.duanzhou = 6356752.314140355;
    m_system.pianlv = 0.003352811;
    m_system.type = 2;
    m_system.ellipsoid = 2;
    m_system.l0 = 117;

    init();
    save_excel_template(m_corpus.filePath("template-zh.xlsx"), 0);
    save_excel_template(m_corpus.filePath("template-en.xlsx"), 1);
    QVERIFY(QDir(m_corpus.path()).mkdir("variants"));
    const auto file = [this](const QString& name) { return m_corpus.filePath(name); };
    QVERIFY(run_script("workbook.py", {"corpus", file("template-en.xlsx"), file("variants")}));
    QVERIFY(run_script("workbook.py",
                       {"resave", file("template-en.xlsx"), file("variants/openpyxl.xlsx")}));
    QVERIFY(QDir(m_corpus.path()).mkdir("office"));
    QStringList jobs;
    for (const char* name : {"template-en.xlsx", "template-zh.xlsx", "variants/openpyxl.xlsx"})
        jobs << "save" << file(name) << file("office/" + QFileInfo(name).fileName());
    for (const char* language : {"zh", "en"})
        jobs << "fill" << file(QStringLiteral("template-%1.xlsx").arg(language))
             << file(QStringLiteral("office/filled-%1.xlsx").arg(language)) << language;
    QVERIFY(run_script("office.py", jobs));
}

void test_excel_import::import(const QList<sheet_rows>& sheets, int mode, int language)
{
    QXlsx::Document document;
    for (const auto& [name, rows] : sheets) {
        document.addSheet(name);
        for (int row = 0; row < rows.size(); ++row) {
            for (int column = 0; column < rows[row].size(); ++column) {
                if (!rows[row][column].isEmpty())
                    document.currentWorksheet()->writeString(row + 1, column + 1,
                                                             rows[row][column]);
            }
        }
    }
    QVERIFY(document.saveAs(path("in.xlsx")));
    import_file(path("in.xlsx"), mode, language);
}

void test_excel_import::import_file(const QString& from, int mode, int language)
{
    m_importer->mode = mode;
    m_importer->language = language;
    m_importer->m_ModelParam = flat_parameters(m_system);
    m_importer->cz = m_system.changzhou;
    m_importer->dz = m_system.duanzhou;
    m_importer->pl = m_system.pianlv;
    m_importer->table_list.clear();
    m_importer->data_msg.clear();
    m_importer->data_msg_altitude.clear();
    m_importer->point_msg_all.clear();
    m_boxes->boxes.clear();
    m_delivered = 0;
    m_importer->import_excel(from);
}

QString test_excel_import::degrees_of(double x, double y) const
{
    const geodetic_position at =
        plane_to_wgs84({x, y, 0}, flat_parameters(m_system), m_system.changzhou, m_system.duanzhou,
                       m_system.pianlv);
    return QString::number(at.l, 'f', 12) + ',' + QString::number(at.b, 'f', 12);
}

void test_excel_import::verify_refused(const char* chinese, QMessageBox::Icon icon)
{
    QCOMPARE(m_boxes->texts(), QStringList(chinese));
    QCOMPARE(m_boxes->boxes[0].icon, icon);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("导入"));
    QCOMPARE(m_delivered, 0);
}

void test_excel_import::an_area_is_read()
{
    const log_capture log;
    import({{ "Area",
              { full_heads("面积", 1),
                point_row("面积", summary_row("面积", area_cells), one_point),
                point_row("面积", {}, next_point) } }},
           0, 1);
    QCOMPARE(m_boxes->boxes.size(), 1);
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Information);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("import"));
    QCOMPARE(m_boxes->boxes[0].text, QStringLiteral("Excel multi-data file import successful"));
    QCOMPARE(m_delivered, 1);
    QVERIFY(log.has("工作表： \"Area\""));
    QVERIFY(log.has("measure.numpoint   \"2\""));

    measuringData expected;
    expected.method = "面积";
    expected.numpoint = "2";
    expected.numrecord = "1";
    expected.timezone = "11";
    expected.time = "2025-01-05 09:03:07";
    expected.name = "202501050903";
    expected.endtime = "2025/1/5 10:30:00";
    expected.id = "24081530";
    expected.mode = "7";
    expected.slope = "1.5";
    expected.md = "3";
    expected.areameter = "12500";
    expected.areamu = "18.74062969"; // 12500 / 667
    expected.jd = "2";
    expected.distance = "1500.00000000";
    expected.hd = "3";
    expected.price = "1.75";
    expected.totalprices = "9.5";
    QCOMPARE(m_importer->table_list, QList<measuringData>{expected});
    QCOMPARE(m_importer->data_msg,
             QStringList("104.500000000000,30.250000000000,104.600000000000,30.350000000000"));
    // Altitudes are copied as they stand.
    QCOMPARE(m_importer->data_msg_altitude, QStringList("104.500000000000,30.250000000000,500.5\n"
                                                        "104.600000000000,30.350000000000,501\n"));
    QCOMPARE(m_importer->point_msg_all,
             (QList<QList<point_msg>>{{{"0.8", "0", "0", "2025-01-05 09:03:08", "0"},
                                       {"0.9", "0", "0", "2025-01-05 09:03:09", "0"}}}));
}

void test_excel_import::a_distance_is_read()
{
    import(
        {{ "距离",
           { full_heads("距离", 0),
             point_row("距离",
                       {"1", "UTC-03:00", "2025-01-05T09:03:07.123", "2025-01-05 09:04:00", "7",
                        "Ordinary Distance", "英里", "99.5", "2", "USD", "3", "4", "s", "r"},
                       one_point) } }});
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("导入"));
    measuringData expected;
    expected.method = "距离";
    expected.numpoint = "1";
    expected.numrecord = "1";
    expected.timezone = "18";
    expected.time = "2025-01-05 09:03:07";
    expected.name = "202501050903";
    expected.endtime = "2025-01-05 09:04:00";
    expected.id = "7";
    expected.mode = "9";
    expected.jd = "3";
    expected.distance = "3218.68800000";
    expected.zj = "99.5"; // in the unit of the sheet
    expected.hd = "1";    // an unknown currency
    expected.price = "3";
    expected.totalprices = "4";
    QCOMPARE(m_importer->table_list, QList<measuringData>{expected});
}

void test_excel_import::waypoints_are_read()
{
    const log_capture log;
    import(
        {{ "Waypoint",
           { full_heads("航点", 1),
             {"1", "UTC+01:00", "7", "s", "2025/1/5 9:3:7", "39", "104.5", "30.25", "500.5", "0.8",
              "1.5", "180", "r"},
             { "2",
               "x",
               "8",
               "s",
               "no time",
               "",
               "104.6",
               "30.35",
               "501",
               "0.9",
               "",
               "",
               "" } } }});
    QCOMPARE(m_importer->table_list.size(), 2);
    QCOMPARE(log.texts().count(" !!!!!!!!!!!!!!") + log.texts().count("!!!!!!!!!!!!!!"), 2);
    measuringData expected;
    expected.method = "航点";
    expected.numpoint = "1";
    expected.numrecord = "2";
    expected.timezone = "3";
    expected.id = "7";
    expected.time = "2025-01-05 09:03:07";
    expected.name = "202501050903";
    QCOMPARE(m_importer->table_list[0], expected);
    expected.timezone = "11"; // an unknown zone
    expected.id = "8";
    expected.time = "no time";
    expected.name = "notime";
    QCOMPARE(m_importer->table_list[1], expected);
    QCOMPARE(m_importer->data_msg,
             (QStringList{"104.500000000000,30.250000000000", "104.600000000000,30.350000000000"}));
    QCOMPARE(m_importer->point_msg_all,
             (QList<QList<point_msg>>{{{"0.8", "1.5", "180", "2025-01-05 09:03:07", "0"}},
                                      {{"0.9", "0", "0", "no time", "0"}}}));
}

/// The column of the area's unit holds a word where a code is looked up, so that
/// every route comes to mu, with the area in whatever unit the sheet has.
void test_excel_import::a_route_is_read()
{
    for (int language = 0; language < 2; ++language) {
        import({{ "Route",
                  { full_heads("航线", 1),
                    point_row("航线",
                              {"1", "UTC+08:00", "2025-01-05 09:03:07", "7", "1", "Meter", "12.5",
                               "Hectare", "2.5", "s", "r"},
                              {"1", "", "39", "104.5", "30.25", "500.5", "0.8"}) } }},
               0, language);
        QCOMPARE(m_importer->table_list.size(), 1);
        measuringData expected;
        expected.method = "航线";
        expected.numpoint = "1";
        expected.numrecord = "1";
        expected.timezone = "11";
        expected.time = "2025-01-05 09:03:07";
        expected.name = "202501050903";
        expected.id = "7";
        expected.jd = "1";
        expected.distance = "12.5";
        expected.md = language == 0 ? "亩" : "MU";
        expected.areameter = "25000.00000000";
        expected.areamu = "2.5";
        QCOMPARE(m_importer->table_list[0], expected);
    }
}

void test_excel_import::a_track_is_read()
{
    import(
        {{ "航迹",
           { full_heads("航迹", 0),
             point_row("航迹",
                       {"1", "UTC+08:00", "2025-01-05 09:03:07", "2025-01-05 09:04:00", "7", "99",
                        "英尺", "10", "s", "r"},
                       {"1", "", "39", "104.5", "30.25", "500.5", "0.8"}) } }});
    measuringData expected;
    expected.method = "航迹";
    expected.numpoint = "1"; // the rows count, not the cell
    expected.numrecord = "1";
    expected.timezone = "11";
    expected.time = "2025-01-05 09:03:07";
    expected.name = "202501050903";
    expected.endtime = "2025-01-05 09:04:00";
    expected.id = "7";
    expected.jd = "5";
    expected.distance = "3.04800000";
    QCOMPARE(m_importer->table_list, QList<measuringData>{expected});
}

void test_excel_import::a_stake_out_is_read()
{
    import(
        {{ "Staking Out",
           { full_heads("放样", 1),
             point_row("放样",
                       {"1", "UTC+08:00", "2025-01-05 09:03:07", "7", "2", "Code", "10", "s", "r"},
                       {"1", "", "39", "104.5", "30.25", "500.5", "0.8"}),
             point_row("放样", {}, {"2", "", "39", "104.6", "30.35", "501", "0.9"}) } }});
    measuringData expected;
    expected.method = "放样";
    expected.numpoint = "2";
    expected.numrecord = "1";
    expected.timezone = "11";
    expected.time = "2025-01-05 09:03:07";
    expected.name = "202501050903";
    expected.id = "7";
    expected.jd = "4";
    expected.distance = "9.14400000";
    QCOMPARE(m_importer->table_list, QList<measuringData>{expected});
    QCOMPARE(m_importer->point_msg_all[0][0], (point_msg{"0.8", "0", "0", "0", "0"}));
}

void test_excel_import::a_record_has_the_rows_up_to_the_next()
{
    const auto row = [](const QString& number, const QString& longitude) {
        QStringList point = one_point;
        point[2] = longitude;
        return point_row("面积", {number}, point);
    };
    import(
        {{ "面积",
           { full_heads("面积", 0),
             row("1", "101"),
             row("", "102"),
             row("", "103"),
             row("x", "104"),
             row("7", "105"),
             row("", "106") } }});
    QStringList counts;
    for (const measuringData& one : m_importer->table_list) {
        counts.append(one.numpoint);
        QCOMPARE(one.numrecord, QStringLiteral("3"));
    }
    QCOMPARE(counts, (QStringList{"3", "1", "2"}));
    QCOMPARE(m_importer->point_msg_all[0].size(), 3);
    QVERIFY(m_importer->data_msg[2].startsWith("105.000000000000,"));
    QVERIFY(m_importer->data_msg[2].contains("106.000000000000,"));
}

void test_excel_import::unsupplied_cells_become_zero()
{
    import(
        {{ "面积",
           { full_heads("面积", 0),
             point_row("面积", {"1"}, {"1", "", "104.5", "30.25", "", ""}) } }});
    measuringData expected;
    expected.method = "面积";
    expected.numpoint = "1";
    expected.numrecord = "1";
    expected.timezone = "11";
    expected.md = expected.jd = expected.hd = "1";
    expected.areamu = "0.00000000";
    QCOMPARE(m_importer->table_list, QList<measuringData>{expected});
    QCOMPARE(m_importer->data_msg_altitude, QStringList("104.500000000000,30.250000000000,0\n"));
    QCOMPARE(m_importer->point_msg_all, (QList<QList<point_msg>>{{{"0", "0", "0", "0", "0"}}}));
}

void test_excel_import::altitudes_are_copied_data()
{
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("altitude");
    for (const char* same : {"500.50", "-1", "0", "1e3", "+7"})
        QTest::newRow(same) << QString(same) << QString(same);
    // What would break the line does not get in.
    QTest::newRow("line feed behind") << "500.5\n"
                                      << "500.5";
    QTest::newRow("blanks around") << " 500.5 "
                                   << "500.5";
    QTest::newRow("a blank") << " "
                             << "0";
}

void test_excel_import::altitudes_are_copied()
{
    QFETCH(QString, cell);
    QFETCH(QString, altitude);
    import(
        {{ "面积",
           { full_heads("面积", 0),
             point_row("面积", {"1"}, {"1", "", "104.5", "30.25", cell, ""}) } }});
    QCOMPARE(m_importer->data_msg_altitude,
             QStringList("104.500000000000,30.250000000000," + altitude + '\n'));
}

void test_excel_import::heads_are_checked_one_by_one_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("language");
    for (const QString& kind : kinds) {
        for (int language = 0; language < 2; ++language)
            QTest::addRow("%s %d", qPrintable(kind), language) << kind << language;
    }
}

void test_excel_import::heads_are_checked_one_by_one()
{
    QFETCH(QString, kind);
    QFETCH(int, language);
    const QString name = language == 0 ? kind : english_kinds[kinds.indexOf(kind)];
    const QList<QStringList> sound = sound_sheet(kind, language);
    import({{ name, sound }});
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));

    QList<QList<QStringList>> wrong;
    for (qsizetype column = 0; column < sound[0].size(); ++column) {
        QList<QStringList> rows = sound;
        rows[0][column] += "x";
        wrong.append(rows);
    }
    QList<QStringList> rows = sound;
    rows[0].append("one more");
    wrong.append(rows);
    rows = sound;
    rows[0].removeLast();
    wrong.append(rows);
    rows = sound;
    rows[0][1] = full_heads(kind, 1 - language)[1]; // of the other language
    wrong.append(rows);
    if (language == 1) {
        // "NO." and "No. " are what they are.
        rows = sound;
        rows[0][0] = kind == "面积" ? "No." : "NO.";
        wrong.append(rows);
    }
    if (language == 1 && (kind == "航线" || kind == "航迹" || kind == "放样")) {
        rows = sound;
        rows[0][summary_columns(kind)] = "No.";
        wrong.append(rows);
    }
    for (const QList<QStringList>& sheet : wrong) {
        import({{ name, sheet }});
        verify_refused("Excel文件格式不正确");
    }
    import({{ name, wrong[0] }}, 0, 1);
    QCOMPARE(m_boxes->texts(), QStringList("Excel file format incorrect"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("import"));
}

void test_excel_import::heads_of_either_language_are_taken()
{
    import({{"面积", sound_sheet("面积", 1)}, { "Track", sound_sheet("航迹", 0) }}, 0, 1);
    QCOMPARE(m_boxes->texts(), QStringList("Excel multi-data file import successful"));
}

void test_excel_import::plane_modes_have_their_own_heads()
{
    QList<QStringList> rows = sound_sheet("面积");
    import({{ "Area", rows }}, 1);
    verify_refused("Excel文件格式不正确");
    rows[0] = plane_heads(rows[0]);
    import({{ "Area", rows }}, 0);
    verify_refused("Excel文件格式不正确");
    for (const int mode : {1, 4}) { // "X", "Y" in both
        import({{ "Area", rows }}, mode);
        QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    }
}

void test_excel_import::an_exported_sheet_name_is_refused_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"Area1", "面积1", "area", "Area ", "Sheet1", "Staking", "自制"})
        QTest::newRow(name) << QString(name);
}

void test_excel_import::an_exported_sheet_name_is_refused()
{
    QFETCH(QString, name);
    import({{"Track", sound_sheet("航迹")},
            {name, sound_sheet("面积")},
            { "Route",
              sound_sheet("航线") }});
    verify_refused("Excel多数据文件导入失败", QMessageBox::Information);
    QCOMPARE(m_importer->table_list.size(), 1); // what stood before it
    import({{ name, sound_sheet("面积") }}, 0, 1);
    QCOMPARE(m_boxes->texts(), QStringList("Excel multi-data file import failed"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("import"));
}

void test_excel_import::sheets_without_a_measurement_are_refused_data()
{
    QTest::addColumn<QList<QStringList>>("rows");
    const QStringList heads = full_heads("面积", 1);
    QTest::newRow("empty sheet") << QList<QStringList>();
    QTest::newRow("heads alone") << QList<QStringList>{heads};
    QTest::newRow("a point without a measurement above it") << QList<QStringList>{
        heads, point_row("面积", {}, one_point), point_row("面积", {"1"}, next_point)};
}

void test_excel_import::sheets_without_a_measurement_are_refused()
{
    QFETCH(QList<QStringList>, rows);
    import({{ "Area", rows }});
    verify_refused("Excel文件导入失败");
    import({{ "Area", rows }}, 0, 1);
    QCOMPARE(m_boxes->texts(), QStringList("Excel file import failed"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("import"));
}

void test_excel_import::a_failure_keeps_what_earlier_sheets_had()
{
    QList<QStringList> bad = sound_sheet("航迹");
    bad[1][13] = "east";
    import({{"Area", sound_sheet("面积")}, {"Track", bad}, { "Route", sound_sheet("航线") }});
    verify_refused("Excel文件导入失败");
    QCOMPARE(m_importer->table_list.size(), 1);
    QCOMPARE(m_importer->table_list[0].method, QStringLiteral("面积"));
}

void test_excel_import::modes_read_their_coordinates_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("pair");
    QTest::newRow("degrees") << 0 << "-70.5"
                             << "30.25"
                             << "-70.500000000000,30.250000000000";
    QTest::newRow("degrees, exponent") << 0 << "1.045e2"
                                       << "30.25"
                                       << "104.500000000000,30.250000000000";
    QTest::newRow("minutes") << 2 << "104°30.0000′"
                             << "30°15.0000′"
                             << "104.500000000000,30.250000000000";
    QTest::newRow("seconds") << 3 << "104°30′36.00″"
                             << "30°15′00.00″"
                             << "104.510000000000,30.250000000000";
    QTest::newRow("XY") << 1 << "3347932.81"
                        << "39548122.06" << degrees_of(3347932.81, 39548122.06);
    QTest::newRow("YX") << 4 << "39548122.06"
                        << "3347932.81" << degrees_of(3347932.81, 39548122.06);
    QTest::newRow("XY without a zone") << 1 << "3347932.81"
                                       << "548122.06" << degrees_of(3347932.81, 548122.06);
}

void test_excel_import::modes_read_their_coordinates()
{
    QFETCH(int, mode);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, pair);
    QStringList heads = full_heads("面积", 1);
    if (mode == 1 || mode == 4)
        heads = plane_heads(heads);
    import({{ "Area",
              { heads,
                point_row("面积", {"1"}, {"1", "", first, second, "500.5", "1"}) } }},
           mode);
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    QCOMPARE(m_importer->data_msg, QStringList(pair));
    QCOMPARE(m_importer->data_msg_altitude, QStringList(pair + ",500.5\n"));
}

void test_excel_import::what_is_no_coordinate_is_refused_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("altitude");
    QTest::newRow("minutes, both empty") << 2 << ""
                                         << ""
                                         << "1";
    QTest::newRow("minutes, degrees given") << 2 << "104.5"
                                            << "30.25"
                                            << "1";
    QTest::newRow("minutes, second without a mark") << 2 << "104°30.0′"
                                                    << "30"
                                                    << "1";
    QTest::newRow("seconds, minutes given") << 3 << "104°30.0′"
                                            << "30°15.0′"
                                            << "1";
    QTest::newRow("degrees, both empty") << 0 << ""
                                         << ""
                                         << "1";
    QTest::newRow("degrees, a word") << 0 << "east"
                                     << "30.25"
                                     << "1";
    QTest::newRow("degrees, a decimal comma") << 0 << "104,5"
                                              << "30,25"
                                              << "1";
    QTest::newRow("degrees, no number") << 0 << "nan"
                                        << "30.25"
                                        << "1";
    QTest::newRow("plane, a word") << 1 << "3347932.81"
                                   << "west"
                                   << "1";
    QTest::newRow("altitude, a word") << 0 << "104.5"
                                      << "30.25"
                                      << "high";
    QTest::newRow("plane, no number") << 4 << "3347932.81"
                                      << "inf"
                                      << "1";
    for (const char* altitude : {"nan", "inf", "-inf", "1\n2", "1 2"})
        QTest::addRow("altitude, %s", altitude) << 0 << "104.5"
                                                << "30.25" << QString(altitude);
    QTest::newRow("altitude, a decimal comma") << 0 << "104.5"
                                               << "30.25"
                                               << "12,5";
}

void test_excel_import::what_is_no_coordinate_is_refused()
{
    QFETCH(int, mode);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, altitude);
    QStringList heads = full_heads("面积", 1);
    if (mode == 1 || mode == 4)
        heads = plane_heads(heads);
    import({{ "Area",
              { heads,
                point_row("面积", {"1"}, {"1", "t", first, second, altitude, "1"}) } }},
           mode);
    verify_refused("Excel文件导入失败");
    QCOMPARE(m_importer->table_list.size(), 0);
}

/// -1 is what a conversion gives for a failure; as metres it is a number.
void test_excel_import::minus_one_fails_where_it_is_a_degree()
{
    const auto import_pair = [this](int mode, const QString& first, const QString& second) {
        QStringList heads = full_heads("面积", 1);
        if (mode != 0)
            heads = plane_heads(heads);
        import({{ "Area",
                  { heads,
                    point_row("面积", {"1"}, {"1", "", first, second, "1", "1"}) } }},
               mode);
    };
    import_pair(0, "-1", "30.25");
    verify_refused("Excel文件导入失败");
    import_pair(0, "104.5", "-1.0");
    verify_refused("Excel文件导入失败");
    import_pair(0, "104.5", "-1.000000001");
    QCOMPARE(m_importer->data_msg, QStringList("104.500000000000,-1.000000001000"));
    for (const int mode : {1, 4}) {
        import_pair(mode, "-1", "-1");
        QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
        QCOMPARE(m_importer->data_msg, QStringList(degrees_of(-1, -1)));
    }
}

void test_excel_import::zones_are_not_looked_at_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("mode");
    for (const char* kind : {"航点", "航线", "航迹", "放样"}) {
        for (const int mode : {1, 4})
            QTest::addRow("%s %d", kind, mode) << QString(kind) << mode;
    }
}

/// A y without its zone stays without, whatever stands in the column of the zone.
void test_excel_import::zones_are_not_looked_at()
{
    QFETCH(QString, kind);
    QFETCH(int, mode);
    QList<QStringList> rows = sound_sheet(kind);
    rows[0] = plane_heads(rows[0]);
    rows[1][rows[0].indexOf("X")] = mode == 1 ? "3347932.81" : "548122.06";
    rows[1][rows[0].indexOf("Y")] = mode == 1 ? "548122.06" : "3347932.81";
    for (const char* zone : {"39", "", "west"}) {
        rows[1][rows[0].indexOf("Zone Number")] = zone;
        import({{ kind, rows }}, mode);
        QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
        QCOMPARE(m_importer->data_msg, QStringList(degrees_of(3347932.81, 548122.06)));
    }
}

void test_excel_import::equal_records_come_once()
{
    const log_capture log;
    const QStringList heads = full_heads("面积", 1);
    QMap<QString, QString> cells = area_cells;
    const QStringList first = point_row("面积", summary_row("面积", cells), one_point);
    cells["Device ID"] = "other";
    const QStringList other_device = point_row("面积", summary_row("面积", cells), one_point);
    cells["Start Time"] = "2025/1/5 9:3:8";
    const QStringList other_time = point_row("面积", summary_row("面积", cells), one_point);
    const QStringList other_place = point_row("面积", summary_row("面积", cells), next_point);
    import({{ "Area", { heads, first, other_device, other_time, other_place, first } }});
    QCOMPARE(m_importer->table_list.size(), 3); // the device is not compared
    QCOMPARE(m_importer->data_msg.size(), 3);
    QCOMPARE(m_importer->data_msg_altitude.size(), 3);
    QCOMPARE(m_importer->point_msg_all.size(), 3);
    QCOMPARE(log.texts().filter("tableList have this data").size(), 2);
}

/// The kind is not compared either.
void test_excel_import::equal_records_of_two_kinds_come_once()
{
    const QList<QStringList> area = sound_sheet("面积");
    import({{"Area", area}, { "Track", sound_sheet("航迹") }});
    QCOMPARE(m_importer->table_list.size(), 1);
    QCOMPARE(m_importer->table_list[0].method, QStringLiteral("面积"));
    QList<QStringList> track = sound_sheet("航迹");
    track[1][track[0].indexOf("Start Time")] = "2025-01-05 09:03:07";
    import({{"Area", area}, { "Track", track }});
    QCOMPARE(m_importer->table_list.size(), 2);
}

void test_excel_import::every_import_has_its_own_records()
{
    import({{ "Area", sound_sheet("面积") }});
    QCOMPARE(m_importer->table_list.size(), 1);
    import_file(path("in.xlsx"));
    QCOMPARE(m_importer->table_list.size(), 1);
}

void test_excel_import::charts_are_told_and_passed_over()
{
    QXlsx::Document document;
    document.addSheet("Track");
    const QList<QStringList> rows = sound_sheet("航迹");
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < rows[row].size(); ++column)
            document.write(row + 1, column + 1, rows[row][column]);
    }
    document.addSheet("Chart", QXlsx::AbstractSheet::ST_ChartSheet);
    QVERIFY(document.saveAs(path("chart.xlsx")));
    import_file(path("chart.xlsx"));
    QCOMPARE(m_boxes->texts(), (QStringList{"无法获取工作表: Chart", "Excel多数据文件导入成功"}));
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("导入"));
    QCOMPARE(m_importer->table_list.size(), 1);
    import_file(path("chart.xlsx"), 0, 1);
    QCOMPARE(m_boxes->texts()[0], QStringLiteral("Unable to get worksheet:Chart"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("import"));
}

void test_excel_import::exported_waypoints_come_back_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode <= 4; ++mode)
        QTest::addRow("mode %d", mode) << mode;
}

/// The one sheet that an export writes and an import takes.
void test_excel_import::exported_waypoints_come_back()
{
    QFETCH(int, mode);
    exportRecord waypoint;
    waypoint.method = "航点";
    waypoint.time = "2024-3-5 7:8:9";
    waypoint.timezone = "11";
    waypoint.id = "24081530";
    waypoint.coordinates = "117.500000000000,30.250000000000,500.50\n";
    waypoint.points = {{"0.8", "1.5", "180", "2024-03-05 07:08:09", "1"}};
    file_export_thread exporter;
    exporter.export_list = {waypoint};
    exporter.cz = m_system.changzhou;
    exporter.dz = m_system.duanzhou;
    exporter.pl = m_system.pianlv;
    exporter.export_file_check_flag(QList<int>(12, 1), "field");
    exporter.excel_export(mode, flat_parameters(m_system), path("out.xlsx"));
    import_file(path("out.xlsx"), mode);
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    QCOMPARE(m_importer->table_list.size(), 1);
    const measuringData& read = m_importer->table_list[0];
    QCOMPARE(read.time, QStringLiteral("2024-03-05 07:08:09"));
    QCOMPARE(read.id, QStringLiteral("24081530"));
    const QStringList numbers = m_importer->data_msg_altitude[0].trimmed().split(',');
    QCOMPARE(numbers[2], QStringLiteral("500.50"));
    if (mode == 1 || mode == 4) {
        // The zone stayed in its column: the place is another.
        geodetic_position position{30.25, 117.5, 500.5};
        model_param param = flat_parameters(m_system);
        const plane_position plane =
            wgs84_to_plane(position, param, m_system.changzhou, m_system.duanzhou, m_system.pianlv);
        QCOMPARE(QString::number(plane.y, 'f', 2).left(2), QStringLiteral("39"));
        QCOMPARE(m_importer->data_msg[0],
                 degrees_of(QString::number(plane.x, 'f', 2).toDouble(),
                            QString::number(plane.y, 'f', 2).mid(2).toDouble()));
        QVERIFY(std::abs(numbers[0].toDouble() - 117.5) > 1);
    } else {
        QVERIFY(std::abs(numbers[0].toDouble() - 117.5) < 1e-6);
        QVERIFY(std::abs(numbers[1].toDouble() - 30.25) < 1e-6);
    }
    QCOMPARE(m_importer->point_msg_all[0][0],
             (point_msg{"0.8", "1.5", "180", "2024-03-05 07:08:09", "0"}));
}

void test_excel_import::the_template_can_be_read_as_it_is_data()
{
    QTest::addColumn<QString>("file");
    for (const char* file :
         {"template-zh.xlsx", "template-en.xlsx", "office/template-zh.xlsx",
          "office/template-en.xlsx", "variants/openpyxl.xlsx", "office/openpyxl.xlsx"})
        QTest::newRow(file) << QString(file);
}

/// Saved anew by other programs it gives the same.
void test_excel_import::the_template_can_be_read_as_it_is()
{
    QFETCH(QString, file);
    import_file(m_corpus.filePath(file));
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    QStringList methods;
    for (const measuringData& one : m_importer->table_list)
        methods.append(one.method);
    QCOMPARE(methods, (QStringList{"面积", "面积", "距离", "距离", "航点", "航点", "航点", "航线",
                                   "航线", "航迹", "航迹", "放样", "放样"}));
    const measuringData& area = m_importer->table_list[0];
    QCOMPARE(area.time, QStringLiteral("2025/1/15  9:30:00")); // two blanks: not normalised
    QCOMPARE(area.name, QStringLiteral("2025/1/15930"));
    QCOMPARE(area.numpoint, QStringLiteral("3"));
    QCOMPARE(area.id, QStringLiteral("00000000"));
    QCOMPARE(m_importer->data_msg[0],
             QStringLiteral("103.965113110000,30.965113110000,103.965213110000,30.965213110000,"
                            "103.965313110000,30.965313110000"));
    const QList<measuringData> records = m_importer->table_list;
    const QStringList lines = m_importer->data_msg_altitude;
    const QList<QList<point_msg>> points = m_importer->point_msg_all;
    import_file(m_corpus.filePath("template-en.xlsx"));
    if (!file.contains("-zh"))
        QCOMPARE(records, m_importer->table_list);
    QCOMPARE(lines, m_importer->data_msg_altitude);
    QCOMPARE(points, m_importer->point_msg_all);
}

void test_excel_import::the_template_is_for_degrees_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("text");
    for (const int mode : {1, 4})
        QTest::addRow("mode %d", mode) << mode << "Excel文件格式不正确"; // the heads
    for (const int mode : {2, 3})
        QTest::addRow("mode %d", mode) << mode << "Excel文件导入失败"; // the examples
}

/// It is written with degrees, whatever form the program is set to.
void test_excel_import::the_template_is_for_degrees()
{
    QFETCH(int, mode);
    QFETCH(QString, text);
    for (const char* file : {"template-zh.xlsx", "template-en.xlsx"}) {
        import_file(m_corpus.filePath(file), mode);
        verify_refused(qPrintable(text));
    }
}

void test_excel_import::a_person_fills_in_the_template_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("Chinese") << "zh";
    QTest::newRow("English") << "en";
}

void test_excel_import::a_person_fills_in_the_template()
{
    QFETCH(QString, language);
    import_file(m_corpus.filePath("office/filled-" + language + ".xlsx"));
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    QCOMPARE(m_importer->table_list.size(), 14);
    measuringData expected;
    expected.method = "面积";
    expected.numpoint = "3";
    expected.numrecord = "3";
    expected.timezone = "11";
    expected.time = "2026-03-05 07:08:09";
    expected.name = "202603050708";
    expected.endtime = "2026-03-05 08:09:10";
    expected.id = "24081530";
    expected.mode = "1";
    expected.slope = "1.5";
    expected.md = "1";
    expected.areameter = "1667.5";
    expected.areamu = "2.50000000";
    expected.jd = "1";
    expected.distance = "123.4";
    expected.hd = "1";
    expected.price = "1.1";
    expected.totalprices = "100000";
    QCOMPARE(m_importer->table_list[2], expected);
    QCOMPARE(m_importer->data_msg_altitude[2],
             QStringLiteral("126.650000000000,45.750000000000,120.5\n"
                            "126.650500000000,45.751000000000,121\n"
                            "126.651000000000,45.750500000000,122.25\n"));
    QCOMPARE(m_importer->point_msg_all[2],
             (QList<point_msg>{{"0.8", "0", "0", "2026-03-05 07:08:09", "0"},
                               {"0.9", "0", "0", "2026-03-05 07:08:10", "0"},
                               {"1.1", "0", "0", "2026-03-05 07:08:11", "0"}}));
}

void test_excel_import::variants_give_the_same_records_data()
{
    QTest::addColumn<QString>("variant");
    for (const char* variant : {"inline", "prefixed", "formulas", "absolute", "strict",
                                "other-names", "no-dimension", "small-dimension", "big-dimension",
                                "no-styles", "million-empty-rows", "styled-empty-cells", "merged",
                                "drawing", "runs", "shared-runs", "phonetic", "mixed-order"})
        QTest::newRow(variant) << QString(variant);
    // Numbers where texts were: "0" of a price is 0, and the like.
    QTest::newRow("numbers") << "numbers";
}

void test_excel_import::variants_give_the_same_records()
{
    QFETCH(QString, variant);
    import_file(m_corpus.filePath("template-en.xlsx"));
    QList<measuringData> records = m_importer->table_list;
    const QStringList lines = m_importer->data_msg_altitude;
    const QList<QList<point_msg>> points = m_importer->point_msg_all;
    import_file(m_corpus.filePath("variants/" + variant + ".xlsx"));
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    if (variant == "numbers")
        records[0].id = records[1].id = "0"; // what 00000000 is as a number
    QCOMPARE(m_importer->table_list, records);
    QCOMPARE(m_importer->data_msg_altitude, lines);
    QCOMPARE(m_importer->point_msg_all, points);
}

void test_excel_import::numbers_have_no_exponent_data()
{
    QTest::addColumn<QString>("variant");
    QTest::newRow("with a type") << "typed-numbers";
    QTest::newRow("without a type") << "untyped-numbers";
}

/// Whatever spreadsheets store, and however large or small it is.
void test_excel_import::numbers_have_no_exponent()
{
    QFETCH(QString, variant);
    import_file(m_corpus.filePath("variants/" + variant + ".xlsx"));
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    const measuringData& area = m_importer->table_list[0];
    QCOMPARE(area.id, QStringLiteral("20000000"));
    QCOMPARE(area.slope, QStringLiteral("100000000000000000000"));
    QCOMPARE(area.areameter, QStringLiteral("100000"));
    QCOMPARE(area.areamu, QStringLiteral("149.92503748"));
    QCOMPARE(area.distance, QStringLiteral("1.1"));
    QCOMPARE(area.price, QStringLiteral("0.5"));
    QCOMPARE(area.totalprices, QStringLiteral("0.00001"));
}

void test_excel_import::booleans_are_words()
{
    import_file(m_corpus.filePath("variants/booleans.xlsx"));
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    QCOMPARE(m_importer->table_list[0].slope, QStringLiteral("true"));
    QCOMPARE(m_importer->table_list[1].slope, QStringLiteral("false"));
}

void test_excel_import::dates_count_from_their_epoch_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("times"); // day 61.5
    QTest::addColumn<QStringList>("ends");  // day 59 and day 0.25
    QTest::newRow("1900") << "dates-1900"
                          << QStringList{"2026-03-05 07:08:09", "1900-03-01 12:00:00"}
                          << QStringList{"1900-02-28 00:00:00", "1899-12-31 06:00:00"};
    QTest::newRow("1904") << "dates-1904"
                          << QStringList{"2026-03-05 07:08:09", "1904-03-02 12:00:00"}
                          << QStringList{"1904-02-29 00:00:00", "1904-01-01 06:00:00"};
}

void test_excel_import::dates_count_from_their_epoch()
{
    QFETCH(QString, file);
    QFETCH(QStringList, times);
    QFETCH(QStringList, ends);
    import_file(m_corpus.filePath("variants/" + file + ".xlsx"));
    QCOMPARE(m_boxes->texts(), QStringList("Excel多数据文件导入成功"));
    for (qsizetype at = 0; at < 2; ++at) {
        QCOMPARE(m_importer->table_list[at].time, times[at]);
        QCOMPARE(m_importer->table_list[at].endtime, ends[at]);
    }
}

void test_excel_import::bad_files_are_refused_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("text");
    const QString cannot_open = "无法打开Excel文件";
    for (const char* file : {"no-workbook",
                             "no-relations",
                             "no-sheet",
                             "cut-sheet",
                             "cut-strings",
                             "cut-workbook",
                             "empty-archive",
                             "cut-archive",
                             "another-archive",
                             "many-cells",
                             "many-strings",
                             "bomb",
                             "lying-bomb",
                             "damaged",
                             "no-places",
                             "odd-place",
                             "long-place",
                             "far-row",
                             "far-column",
                             "written-dates",
                             "another-root",
                             "few-strings",
                             "word-for-an-index",
                             "negative-for-an-index",
                             "fraction-for-an-index",
                             "far-for-an-index"})
        QTest::newRow(file) << QString(file) << cannot_open;
    QTest::newRow("formulas-never-computed") << "formulas-never-computed"
                                             << "Excel文件导入失败";
    QTest::newRow("entities") << "entities" << cannot_open;
    QTest::newRow("cell twice") << "cell-twice" << cannot_open;
    QTest::newRow("damage within a sheet") << "damaged-sheet" << cannot_open;
    QTest::newRow("dialog-sheet") << "dialog-sheet"
                                  << "Excel文件导入失败";
    QTest::newRow("no-strings") << "no-strings" << cannot_open;
}

void test_excel_import::bad_files_are_refused()
{
    QFETCH(QString, file);
    QFETCH(QString, text);
    const QString from = m_corpus.filePath("variants/" + file + ".xlsx");
    QVERIFY(QFile::exists(from));
    import_file(from);
    QCOMPARE(m_boxes->boxes.size(), 1);
    verify_refused(qPrintable(text));
    QCOMPARE(m_importer->table_list.size(), 0);
}

void test_excel_import::only_regular_files_are_opened_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"missing", "folder", "pipe", "device", "empty", "letter", "Excel 97"})
        QTest::newRow(kind) << QString(kind);
}

void test_excel_import::only_regular_files_are_opened()
{
    QFETCH(QString, kind);
    const QString x = path("x.xlsx");
    QFile file(x);
    if (kind == "folder")
        QVERIFY(QDir().mkdir(x));
    else if (kind == "pipe")
        QCOMPARE(mkfifo(qPrintable(x), 0600), 0);
    else if (kind == "device")
        QVERIFY(QFile::link("/dev/zero", x));
    else if (kind != "missing") {
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (kind == "letter")
            file.write("This is a letter.\n");
        if (kind == "Excel 97")
            file.write(QByteArray::fromHex("d0cf11e0a1b11ae1") + QByteArray(4096, '\0'));
        file.close();
    }
    import_file(x);
    verify_refused("无法打开Excel文件");
    import_file(x, 0, 1);
    QCOMPARE(m_boxes->texts(), QStringList("Cannot open Excel file"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("import"));
}

QTEST_MAIN(test_excel_import)
#include "test_excel_import.moc"
