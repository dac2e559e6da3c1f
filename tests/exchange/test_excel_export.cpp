// Workbooks that are written, as openpyxl and LibreOffice read them.

#include "coordinates/transforms.h"
#include "core/code_tables.h"
#include "exchange/excel_template.h"
#include "exchange/excel_workbook.h"
#include "exchange/file_export_thread.h"
#include "exchange/input_window.h"
#include "support/box_watcher.h"
#include "support/file_dialog_user.h"
#include "support/log_capture.h"
#include "support/sample_records.h"
#include "workbook_tools.h"

#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

namespace {

constexpr int all_modes = 5;

CoordinateSystem field_system()
{
    CoordinateSystem system;
    system.name = "=field & co";
    system.changzhou = 6378137.0;
    system.duanzhou = 6356752.314140355;
    system.pianlv = 0.003352811;
    system.type = 2;
    system.ellipsoid = 2;
    system.l0 = 117;
    return system;
}

QList<exportRecord> sample_export()
{
    const sample_lists samples = sample_records();
    QList<exportRecord> records;
    for (qsizetype i = 0; i < samples.table_list.size(); ++i) {
        exportRecord one;
        static_cast<measuringData&>(one) = samples.table_list[i];
        one.coordinates = samples.data_msg_altitude[i];
        one.points = samples.point_msg_all[i];
        records.append(one);
    }
    // What is not supplied: cells that stay empty.
    exportRecord bare;
    bare.method = "面积";
    bare.md = bare.jd = bare.hd = QString();
    records.append(bare);
    exportRecord bare_distance;
    bare_distance.method = "距离";
    bare_distance.zj = "55.5";
    records.append(bare_distance);
    // Its identity counts for the straight line, not the line's own value.
    exportRecord no_straight;
    no_straight.method = "距离";
    no_straight.id = "7";
    no_straight.zj = "0";
    records.append(no_straight);
    return records;
}

/// What the cells of a point are to hold: zone, first, second, altitude.
QStringList point_texts(const QString& line, int mode)
{
    const QStringList parts = line.split(',');
    const double longitude = parts[0].toDouble();
    const double latitude = parts[1].toDouble();
    if (mode == 2) {
        const dm_text first = degrees_to_dm(longitude, false);
        const dm_text second = degrees_to_dm(latitude, true);
        return {"", first.degrees + "°" + first.minutes + "′",
                second.degrees + "°" + second.minutes + "′", parts[2]};
    }
    if (mode == 3) {
        const dms_text first = degrees_to_dms(longitude, false);
        const dms_text second = degrees_to_dms(latitude, true);
        return {
            "", first.degrees + "°" + first.minutes + "′" + first.seconds + first.fraction + "″",
            second.degrees + "°" + second.minutes + "′" + second.seconds + second.fraction + "″",
            parts[2]};
    }
    if (mode == 1 || mode == 4) {
        geodetic_position position{latitude, longitude, parts[2].toDouble()};
        const CoordinateSystem system = field_system();
        model_param param = flat_parameters(system);
        const plane_position plane =
            wgs84_to_plane(position, param, system.changzhou, system.duanzhou, system.pianlv);
        const QString x = QString::number(plane.x, 'f', 2);
        const QString y = QString::number(plane.y, 'f', 2);
        if (mode == 1)
            return {y.left(2), x, y.mid(2), parts[2]};
        return {y.left(2), y.mid(2), x, parts[2]};
    }
    return {"", parts[0], parts[1], parts[2]};
}

QString unless_zero(const QString& text)
{
    return text == "0" ? QString() : text;
}

/// The cells of a record's summary, by the rules that the file has.
QStringList summary_cells(const exportRecord& one, int number, int language)
{
    const QString no = QString::number(number);
    const QString zone = timezone_code_to_text(one.timezone);
    const QString id = unless_zero(one.id);
    const QString end = unless_zero(one.endtime);
    const QString system = field_system().name;
    const QString md = one.md.isEmpty() ? "" : area_unit_code_to_text(one.md, language);
    const QString jd = one.jd.isEmpty() ? "" : length_unit_code_to_text(one.jd, language);
    const QString hd = one.hd.isEmpty() ? "" : currency_code_to_text(one.hd, language);
    const QString area = area_to_unit(one.md, one.areameter);
    const QString length = length_to_unit(one.jd, one.distance);
    const QString mode = mode_code_to_text(one.mode, language);
    switch (kinds.indexOf(one.method)) {
    case 0:
        return {no,     zone, one.time,      end, id,     mode, "",        unless_zero(one.slope),
                md,     area, one.areameter, jd,  length, hd,   one.price, one.totalprices,
                system, ""};
    case 1:
        return {no,     zone, one.time,  end,
                id,     mode, jd,        one.id == "0" ? QString() : one.zj,
                length, hd,   one.price, one.totalprices,
                system, ""};
    case 2: return {no, zone, id, system, one.time};
    case 3: return {no, zone, one.time, id, one.numpoint, jd, length, md, area, system, ""};
    case 4: return {no, zone, one.time, end, id, one.numpoint, jd, length, system, ""};
    default: return {no, zone, one.time, id, one.numpoint, jd, length, system, ""};
    }
}

/// The workbook that records make, without its style.
QList<std::pair<QString, QList<QStringList>>>
expected_book(const QList<exportRecord>& records, bool summary, bool points, int language, int mode)
{
    QList<std::pair<QString, QList<QStringList>>> book;
    const auto sheet = [&book](const QString& name) -> QList<QStringList>* {
        for (auto& [one, rows] : book) {
            if (one == name)
                return &rows;
        }
        return nullptr;
    };
    const auto in_mode = [mode](const QStringList& heads) {
        return mode == 1 || mode == 4 ? plane_heads(heads) : heads;
    };
    QMap<QString, int> numbers;
    for (const exportRecord& one : records) {
        const int kind = static_cast<int>(kinds.indexOf(one.method));
        if (kind < 0)
            continue;
        const int number = ++numbers[one.method];
        const QString word = language == 0 ? kinds[kind] : english_kinds[kind];
        const QStringList lines = one.coordinates.split('\n', Qt::SkipEmptyParts);
        if (one.method == "航点") {
            if (sheet(word) == nullptr)
                book.append({word,
                             {in_mode(summary ? full_heads(one.method, language)
                                              : point_heads(one.method, language))}});
            QStringList row = summary ? summary_cells(one, number, language)
                                      : QStringList{QString::number(number), one.time};
            row += point_texts(lines[0], mode);
            row += {one.points[0].hdop, one.points[0].speed, one.points[0].angle};
            if (summary)
                row += "";
            sheet(word)->append(row);
            continue;
        }
        const QStringList head = summary_cells(one, number, language);
        if (!points) {
            QStringList heads = full_heads(one.method, language).first(head.size());
            if (language == 1)
                heads[0] = "No.";
            if (sheet(word) == nullptr)
                book.append({word, {heads}});
            sheet(word)->append(head);
            continue;
        }
        book.append({word + QString::number(number),
                     {in_mode(summary ? full_heads(one.method, language)
                                      : point_heads(one.method, language))}});
        QList<QStringList>& rows = book.last().second;
        const bool zoned = kind >= 2;
        const qsizetype width = rows[0].size();
        for (qsizetype k = 0; k < std::max<qsizetype>(lines.size(), summary ? 1 : 0); ++k) {
            QStringList row = !summary ? QStringList()
                              : k == 0 ? head
                                       : QStringList(head.size(), "");
            if (k < lines.size()) {
                QStringList texts = point_texts(lines[k], mode);
                if (!zoned)
                    texts.removeFirst();
                row += QStringList{QString::number(k + 1), one.points[k].time} + texts +
                       QStringList{one.points[k].hdop};
            }
            row.resize(width);
            rows.append(row);
        }
    }
    return book;
}

/// How two books of cells differ; empty if they do not.
QString difference(const read_book& read,
                   const QList<std::pair<QString, QList<QStringList>>>& expected)
{
    if (read.size() != expected.size())
        return QStringLiteral("%1 sheets, not %2").arg(read.size()).arg(expected.size());
    for (qsizetype i = 0; i < read.size(); ++i) {
        const auto& [name, rows] = expected[i];
        if (read[i].name != name)
            return QStringLiteral("sheet %1, not %2").arg(read[i].name, name);
        if (read[i].rows.size() != rows.size())
            return QStringLiteral("%1: %2 rows, not %3")
                .arg(name)
                .arg(read[i].rows.size())
                .arg(rows.size());
        for (qsizetype row = 0; row < rows.size(); ++row) {
            for (qsizetype column = 0;
                 column < std::max(rows[row].size(), read[i].rows[row].size()); ++column) {
                const QString is = read[i].rows[row].value(column);
                const QString should = rows[row].value(column);
                if (is != should)
                    return QStringLiteral("%1, row %2, column %3: \"%4\", not \"%5\"")
                        .arg(name)
                        .arg(row + 1)
                        .arg(column + 1)
                        .arg(is, should);
            }
        }
    }
    return {};
}

} // namespace

class test_excel_export : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void cells_are_as_they_should_be_data();
    void cells_are_as_they_should_be();
    void style_is_the_same_everywhere();
    void libreoffice_reads_the_same_cells();
    void each_flag_is_for_its_own_kind();
    void literal_cells();
    void texts_stay_texts();
    void one_digit_zones_split_wrongly();
    void nothing_chosen_gives_an_empty_workbook();
    void an_empty_path_is_silent();
    void a_file_that_cannot_be_saved_is_told_data();
    void a_file_that_cannot_be_saved_is_told();
    void a_full_disk_leaves_the_old_file();
    void a_failed_save_leaves_the_old_file();
    void template_is_filled_with_examples_data();
    void template_is_filled_with_examples();
    void template_button_asks_for_a_path();
    void template_button_without_a_path();
    void template_that_cannot_be_saved_is_told();

private:
    struct variant
    {
        bool summary, points;
        int language, mode;
        QString path;
    };

    QString path(const QString& name) const { return m_folder->filePath(name); }
    void write(const QString& to, const QList<exportRecord>& records, const QList<int>& flags,
               int language, int mode);

    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_books;
    QList<variant> m_variants;
    QMap<QString, read_book> m_read;
    std::unique_ptr<box_watcher> m_boxes;
};

void test_excel_export::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_boxes = std::make_unique<box_watcher>();
}

void test_excel_export::write(const QString& to, const QList<exportRecord>& records,
                              const QList<int>& flags, int language, int mode)
{
    const CoordinateSystem system = field_system();
    file_export_thread exporter;
    exporter.export_list = records;
    exporter.language = language;
    exporter.cz = system.changzhou;
    exporter.dz = system.duanzhou;
    exporter.pl = system.pianlv;
    exporter.export_file_check_flag(flags, system.name);
    exporter.excel_export(mode, flat_parameters(system), to);
}

/// Every choice of blocks in both languages and all modes, written once and read
/// once.
void test_excel_export::initTestCase()
{
    init();
    const QList<exportRecord> records = sample_export();
    QStringList paths;
    for (const auto& [summary, points] : {std::pair{true, true}, {true, false}, {false, true}}) {
        QList<int> flags;
        for (int kind = 0; kind < 6; ++kind)
            flags << summary << points;
        for (int language = 0; language < 2; ++language) {
            for (int mode = 0; mode < all_modes; ++mode) {
                const QString name = QStringLiteral("s%1p%2-%3-%4.xlsx")
                                         .arg(summary)
                                         .arg(points)
                                         .arg(language == 0 ? "zh" : "en")
                                         .arg(mode);
                paths.append(m_books.filePath(name));
                m_variants.append({summary, points, language, mode, paths.last()});
                write(paths.last(), records, flags, language, mode);
                QCOMPARE(m_boxes->texts(), QStringList("Excel文件导出成功"));
                QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Information);
                QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("Excel"));
                m_boxes->boxes.clear();
            }
        }
    }
    m_read = read_with_openpyxl(paths);
    QCOMPARE(m_read.size(), 30);
}

void test_excel_export::cells_are_as_they_should_be_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < m_variants.size(); ++i)
        QTest::newRow(qPrintable(QFileInfo(m_variants[i].path).baseName())) << i;
}

void test_excel_export::cells_are_as_they_should_be()
{
    QFETCH(int, index);
    const variant& one = m_variants[index];
    const QString differs =
        difference(m_read[one.path],
                   expected_book(sample_export(), one.summary, one.points, one.language, one.mode));
    QVERIFY2(differs.isEmpty(), qPrintable(differs));
}

void test_excel_export::style_is_the_same_everywhere()
{
    for (const read_book& book : m_read) {
        for (const read_sheet& sheet : book) {
            QCOMPARE(sheet.types, QStringList("s"));
            QCOMPARE(sheet.fonts, QStringList("Noto Sans 15"));
            QCOMPARE(sheet.height, 30.0);
            QCOMPARE(sheet.widths, QList<double>(sheet.rows[0].size(), 20.0));
        }
    }
}

void test_excel_export::libreoffice_reads_the_same_cells()
{
    // Each choice of blocks in both languages, and each mode at least once.
    QStringList jobs;
    QMap<QString, variant> saved;
    for (qsizetype i = 0; i < m_variants.size(); i += all_modes) {
        const variant& one = m_variants[i + i / all_modes % all_modes];
        const QString to = path(QFileInfo(one.path).fileName());
        saved.insert(to, one);
        jobs << "save" << one.path << to;
    }
    QVERIFY(run_script("office.py", jobs));
    const QMap<QString, read_book> read = read_with_openpyxl(saved.keys());
    QCOMPARE(read.keys(), saved.keys());
    for (auto book = read.begin(); book != read.end(); ++book) {
        const variant& one = saved[book.key()];
        const QString differs = difference(
            *book, expected_book(sample_export(), one.summary, one.points, one.language, one.mode));
        QVERIFY2(differs.isEmpty(), qPrintable(QFileInfo(one.path).baseName() + ": " + differs));
        for (const read_sheet& sheet : *book) {
            // It gives Chinese cells its own Chinese face.
            for (const QString& font : sheet.fonts)
                QVERIFY2(font.startsWith("Noto Sans") && font.endsWith(" 15"), qPrintable(font));
            QCOMPARE(sheet.height, 30.0);
            QCOMPARE(sheet.widths, QList<double>(sheet.rows[0].size(), 20.0));
        }
    }
}

void test_excel_export::each_flag_is_for_its_own_kind()
{
    const QList<exportRecord> records = sample_export();
    QStringList paths;
    for (int flag = 0; flag < 12; ++flag) {
        QList<int> flags(12, 0);
        flags[flag] = 1;
        paths.append(path(QStringLiteral("flag%1.xlsx").arg(flag)));
        write(paths.last(), records, flags, 1, 0);
    }
    const QMap<QString, read_book> read = read_with_openpyxl(paths);
    for (int flag = 0; flag < 12; ++flag) {
        const QString kind = kinds[flag / 2];
        QList<exportRecord> of_kind;
        for (const exportRecord& one : records) {
            if (one.method == kind)
                of_kind.append(one);
        }
        const bool summary = flag % 2 == 0;
        const QString differs =
            difference(read[paths[flag]], expected_book(of_kind, summary, !summary, 1, 0));
        QVERIFY2(differs.isEmpty(),
                 qPrintable(QStringLiteral("flag %1: %2").arg(flag).arg(differs)));
    }
}

/// One record of each shape with its cells written out.
void test_excel_export::literal_cells()
{
    exportRecord area;
    area.method = "面积";
    area.numpoint = "2";
    area.timezone = "11";
    area.time = "2024-3-5 7:8:9";
    area.endtime = "2024-3-5 8:0:0";
    area.id = "24081530";
    area.mode = "7";
    area.width = "3.5"; // does not reach the workbook
    area.slope = "1.5";
    area.md = "3";
    area.areameter = "12345";
    area.jd = "2";
    area.distance = "1500.0";
    area.hd = "3";
    area.price = "1.25";
    area.totalprices = "99.5";
    area.name = "North field";
    area.coordinates = "104.020575000000,30.611316000000,512.30\n"
                       "-0.500000000000,-30.000000000000,-1.00\n";
    area.points = {{"0.8", "1.0", "90", "2024-03-05 07:08:09", "1"},
                   {"0.9", "1.1", "91", "2024-03-05 07:08:10", "1"}};
    exportRecord waypoint;
    waypoint.method = "航点";
    waypoint.time = "2024-3-5 9:0:0";
    waypoint.timezone = "0";
    waypoint.coordinates = "117.500000000000,30.250000000000,500.50\n";
    waypoint.points = {{"0.7", "2.5", "180", "2024-03-05 09:00:01", "1"}};

    write(path("degrees.xlsx"), {area, waypoint}, QList<int>(12, 1), 1, 0);
    write(path("minutes.xlsx"), {area}, QList<int>(12, 1), 0, 2);
    write(path("seconds.xlsx"), {area}, QList<int>(12, 1), 0, 3);
    write(path("xy.xlsx"), {waypoint}, {1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1}, 0, 1);
    const QMap<QString, read_book> read = read_with_openpyxl(
        {path("degrees.xlsx"), path("minutes.xlsx"), path("seconds.xlsx"), path("xy.xlsx")});

    const read_book& degrees = read[path("degrees.xlsx")];
    QCOMPARE(degrees.size(), 2);
    QCOMPARE(degrees[0].name, QStringLiteral("Area1"));
    QCOMPARE(degrees[0].rows[1], (QStringList{"1",
                                              "UTC+08:00",
                                              "2024-3-5 7:8:9",
                                              "2024-3-5 8:0:0",
                                              "24081530",
                                              "Intelligent Slope",
                                              "",
                                              "1.5",
                                              "Hectare",
                                              "1.234500",
                                              "12345",
                                              "Kilometers",
                                              "1.500000",
                                              "Euro",
                                              "1.25",
                                              "99.5",
                                              "=field & co",
                                              "",
                                              "1",
                                              "2024-03-05 07:08:09",
                                              "104.020575000000",
                                              "30.611316000000",
                                              "512.30",
                                              "0.8"}));
    QCOMPARE(degrees[0].rows[2].mid(17),
             (QStringList{"", "2", "2024-03-05 07:08:10", "-0.500000000000", "-30.000000000000",
                          "-1.00", "0.9"}));
    QCOMPARE(degrees[1].name, QStringLiteral("Waypoint"));
    QCOMPARE(degrees[1].rows[1],
             (QStringList{"1", "", "", "=field & co", "2024-3-5 9:0:0", "", "117.500000000000",
                          "30.250000000000", "500.50", "0.7", "2.5", "180", ""}));

    const QStringList minutes = read[path("minutes.xlsx")][0].rows[1];
    QCOMPARE(minutes.mid(5, 9), (QStringList{"智能坡地", "", "1.5", "公顷", "1.234500", "12345",
                                             "公里", "1.500000", "欧元"}));
    QCOMPARE(minutes.mid(20, 2), (QStringList{"104°01.2345′", "30°36.6790′"}));
    QCOMPARE(read[path("minutes.xlsx")][0].rows[2].mid(20, 2),
             (QStringList{"-000°30.0000′", "-30°00.0000′"}));
    QCOMPARE(read[path("seconds.xlsx")][0].rows[1].mid(20, 2),
             (QStringList{"104°01′14.07″", "30°36′40.74″"}));

    const read_sheet xy = read[path("xy.xlsx")][0];
    QCOMPARE(xy.rows[0], (QStringList{"序号", "定位时间", "带号", "X", "Y", "海拔",
                                      "精度因子（HDOP）", "速度", "航向角"}));
    QCOMPARE(xy.rows[1], (QStringList{"1", "2024-3-5 9:0:0", "39", "3347932.81", "548122.06",
                                      "500.50", "0.7", "2.5", "180"}));
}

void test_excel_export::texts_stay_texts()
{
    exportRecord one;
    one.method = "航点";
    one.time = "https://example.org/";
    one.timezone = "11";
    one.id = "<b>007</b>";
    one.coordinates = "117.5,30.25,500.50\n";
    one.points = {{"=1+1", "1e3", "TRUE", "", "1"}};
    write(path("out.xlsx"), {one}, QList<int>(12, 1), 1, 0);
    const read_sheet sheet = read_with_openpyxl({path("out.xlsx")})[path("out.xlsx")][0];
    QCOMPARE(sheet.types, QStringList("s"));
    QCOMPARE(sheet.rows[1],
             (QStringList{"1", "UTC+08:00", "<b>007</b>", "=field & co", "https://example.org/", "",
                          "117.5", "30.25", "500.50", "=1+1", "1e3", "TRUE", ""}));
}

/// The zone is the first two characters of the y, whatever they are.
void test_excel_export::one_digit_zones_split_wrongly()
{
    CoordinateSystem system = field_system();
    system.l0 = 6; // zone 2
    exportRecord one;
    one.method = "航迹";
    one.coordinates = "6.500000000000,30.250000000000,500.50\n";
    one.points = {{}};
    file_export_thread exporter;
    exporter.export_list = {one};
    exporter.language = 1;
    exporter.cz = system.changzhou;
    exporter.dz = system.duanzhou;
    exporter.pl = system.pianlv;
    exporter.export_file_check_flag(QList<int>(12, 1), system.name);
    exporter.excel_export(1, flat_parameters(system), path("out.xlsx"));
    const read_sheet sheet = read_with_openpyxl({path("out.xlsx")})[path("out.xlsx")][0];
    QCOMPARE(sheet.name, QStringLiteral("Track1"));
    QCOMPARE(sheet.rows[1].mid(12, 3), (QStringList{"25", "3347932.81", "48122.06"}));
}

void test_excel_export::nothing_chosen_gives_an_empty_workbook()
{
    write(path("out.xlsx"), sample_export(), QList<int>(12, 0), 1, 0);
    QCOMPARE(m_boxes->texts(), QStringList("Excel文件导出成功"));
    const read_book book = read_with_openpyxl({path("out.xlsx")})[path("out.xlsx")];
    QCOMPARE(book.size(), 1);
    QVERIFY(book[0].types.isEmpty());
}

void test_excel_export::an_empty_path_is_silent()
{
    write({}, sample_export(), QList<int>(12, 1), 1, 0);
    QCOMPARE(m_boxes->boxes.size(), 0);
}

void test_excel_export::a_file_that_cannot_be_saved_is_told_data()
{
    QTest::addColumn<QString>("to");
    QTest::newRow("a folder") << "folder";
    QTest::newRow("in a folder that is not there") << "missing/out.xlsx";
}

void test_excel_export::a_file_that_cannot_be_saved_is_told()
{
    QFETCH(QString, to);
    QVERIFY(QDir(m_folder->path()).mkdir("folder"));
    const QString target = QDir(m_folder->path()).filePath(to);
    const log_capture log;
    write(target, sample_export(), QList<int>(12, 1), 1, 0);
    QCOMPARE(m_boxes->texts(), QStringList("Failed to save file"));
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("Warning"));
    QVERIFY(log.has("Failed to save file:  \"" + target));
}

/// A disk that is full looks to a process like a limit of its own.
void test_excel_export::a_full_disk_leaves_the_old_file()
{
    QFile file(path("out.xlsx"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write("what was there");
    file.close();
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit full = before;
    full.rlim_cur = 4096;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
    {
        const log_capture log; // and no line of it into a file that cannot grow
        write(path("out.xlsx"), sample_export(), QList<int>(12, 1), 1, 0);
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
        QVERIFY(log.has("Failed to save file:  \"" + path("out.xlsx")));
    }
    QCOMPARE(m_boxes->texts(), QStringList("Failed to save file"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("what was there"));
}

void test_excel_export::a_failed_save_leaves_the_old_file()
{
    write(path("out.xlsx"), sample_export(), QList<int>(12, 1), 1, 0);
    QFile file(path("out.xlsx"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    m_boxes->boxes.clear();
    // More points than a sheet has rows.
    excel_workbook workbook(1, 0);
    excel_sheet sheet = workbook.add_sheet(excel_kinds[4], false, true);
    sheet.rows = 1'048'576;
    workbook.write(sheet, 0, "1");
    QVERIFY(!workbook.save(path("out.xlsx")));
    QCOMPARE(m_boxes->texts(), QStringList("Failed to save file"));
    file.seek(0);
    QCOMPARE(file.readAll(), before);
}

void test_excel_export::template_is_filled_with_examples_data()
{
    QTest::addColumn<int>("language");
    QTest::newRow("Chinese") << 0;
    QTest::newRow("English") << 1;
}

void test_excel_export::template_is_filled_with_examples()
{
    QFETCH(int, language);
    save_excel_template(path("out.xlsx"), language);
    QCOMPARE(m_boxes->boxes.size(), 1);
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Information);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("Excel"));
    QCOMPARE(m_boxes->boxes[0].text,
             language == 0 ? "Excel文件模版已下载" : "Excel file template has been downloaded");
    const read_book book = read_with_openpyxl({path("out.xlsx")})[path("out.xlsx")];
    QCOMPARE(book.size(), 6);
    for (int kind = 0; kind < 6; ++kind) {
        const read_sheet& sheet = book[kind];
        QCOMPARE(sheet.name, language == 0 ? kinds[kind] : english_kinds[kind]);
        QCOMPARE(sheet.rows[0], full_heads(kinds[kind], language));
        QCOMPARE(sheet.rows.size(), kind == 2 ? 4 : 7);
        QCOMPARE(sheet.types, QStringList("s"));
        QCOMPARE(sheet.fonts, QStringList("Noto Sans 15"));
        QCOMPARE(sheet.height, 30.0);
        QCOMPARE(sheet.widths, QList<double>(sheet.rows[0].size(), 20.0));
        QStringList numbers;
        for (const QStringList& row : sheet.rows)
            numbers.append(row[0]);
        numbers.removeFirst();
        QCOMPARE(numbers, kind == 2 ? (QStringList{"1", "2", "3"})
                                    : (QStringList{"1", "", "", "2", "", ""}));
    }
    const QStringList area = book[0].rows[1];
    QCOMPARE(area.first(5), (QStringList{"1", "UTC+08:00", "2025/1/15  9:30:00",
                                         "2025/1/15  10:30:00", "00000000"}));
    QCOMPARE(area.mid(7),
             (QStringList{"0", "MU", "0", "0", "Meter", "0", "Yuan", "0", "0", "WGS - 84", "", "1",
                          "2025/1/15  9:30:00", "103.96511311", "30.96511311", "0", "0"}));
    QCOMPARE(area[5], language == 0 ? "普通面积" : "Common Area");
    const QString times = "UTC+08:00|2025/1/15  9:30:00";
    const QString both_times = times + "|2025/1/15  10:30:00";
    const QString distance_mode = language == 0 ? "普通距离" : "Ordinary Distance";
    const auto first_row = [&book](int kind) { return book[kind].rows[1].join('|'); };
    QCOMPARE(first_row(1), "1|" + both_times + "|00000000|" + distance_mode +
                               "|Meter|0|0|Yuan|0|0|WGS - 84||1|2025/1/15  9:30:00|"
                               "103.96571311|30.96571311|0|0");
    // The count is that of the points that follow.
    const QString end = "|Meter|0|WGS - 84||1|2025/1/15  9:30:00|0|";
    QCOMPARE(first_row(3), "1|" + times +
                               "|00000000|3|Meter|0|MU|0|WGS - 84||1|"
                               "2025/1/15  9:30:00|0|103.96661311|30.96661311|0|0");
    QCOMPARE(first_row(4),
             "1|" + both_times + "|00000000|3" + end + "103.96721311|30.96721311|0|0");
    QCOMPARE(first_row(5), "1|" + times + "|00000000|3" + end + "103.96781311|30.96781311|0|0");
    QCOMPARE(book[2].rows[1].first(6),
             (QStringList{"1", "UTC+08:00", "00000000", "WGS - 84", "2025/1/15  9:30:00", "0"}));
}

void test_excel_export::template_button_asks_for_a_path()
{
    input_window window;
    window.setlanguage(1);
    window.show();
    file_dialog_user user;
    user.path = path("template.xlsx");
    window.findChild<QPushButton*>("pushButton")->click();
    QCOMPARE(user.dialogs.size(), 1);
    QCOMPARE(user.dialogs[0].title, QStringLiteral("Export File"));
    QCOMPARE(user.dialogs[0].accept_mode, QFileDialog::AcceptSave);
    QCOMPARE(user.dialogs[0].filters, (QStringList{"Xlsx Files (*.xlsx)", "All Files (*)"}));
    QCOMPARE(user.dialogs[0].file_name, QStringLiteral("exported_data.xlsx"));
    QCOMPARE(m_boxes->texts(), QStringList("Excel file template has been downloaded"));
    QVERIFY(QFile::exists(path("template.xlsx")));
}

void test_excel_export::template_button_without_a_path()
{
    input_window window;
    window.show();
    file_dialog_user user;
    for (int language = 0; language < 2; ++language) {
        window.setlanguage(language);
        window.findChild<QPushButton*>("pushButton")->click();
        const box_watcher::seen_box box = m_boxes->boxes.takeLast();
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.title, language == 0 ? "警告" : "Warning");
        QCOMPARE(box.text, language == 0 ? "未选择文件路径或文件名"
                                         : "No file path or filename was selected");
    }
}

void test_excel_export::template_that_cannot_be_saved_is_told()
{
    save_excel_template(path("missing/template.xlsx"), 0);
    QCOMPARE(m_boxes->texts(), QStringList("Failed to save file"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("Warning"));
}

QTEST_MAIN(test_excel_export)
#include "test_excel_export.moc"
