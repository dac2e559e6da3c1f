// CSV files: what is written, byte for byte, and what is read of our own, foreign
// and damaged ones.

#include "coordinates/json_file_manager.h"
#include "coordinates/transforms.h"
#include "exchange/csv.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_records.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QStringConverter>
#include <QTemporaryDir>
#include <QTest>

#include <random>

namespace {

const QString failure = QStringLiteral("csv文件导入失败");
const QString blocks_read = QStringLiteral("csv多数据文件导入成功");
const QString single_read = QStringLiteral("csv单数据文件导入成功");
const QString summary_read = QStringLiteral("csv文件导入成功");

/// WGS 84, Gauss in zone 35 of three degrees, no calibration.
CoordinateSystem zone_35()
{
    CoordinateSystem system;
    system.name = "zone 35";
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

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

constexpr const char* zh_header =
    "序号,名字,时间,数据条数,方式,坡度,平方米/亩,面积(平方米),面积(亩),行程(米),单价,总价\n";

/// A block as the merged form has it.
QByteArray block(const QByteArray& name, int numpoint, const QByteArray& points)
{
    return QByteArray(zh_header) + "0," + name + ",2024-03-05 07:08:09," +
           QByteArray::number(numpoint) + ",航线,1.5,667,20.5,0.03,30.5,5,99.5\n" +
           "经度,纬度,海拔\n" + points;
}

/// A file of one record, as no writer of ours makes it.
QByteArray single(int numpoint, const QByteArray& points)
{
    return "名字,时间\nfield,2024-03-05 07:08:09," + QByteArray::number(numpoint) +
           ",面积,1.5,667,20.5,0.03,30.5,5,99.5\n经度,纬度,海拔\n" + points;
}

QByteArray summary(const QByteArray& area, const QByteArray& numpoint, const QByteArray& points)
{
    return "A(m*m):" + area + ",L(m):12.5,N:" + numpoint + ",T:2024-03-05 07:08:09,name:field\n" +
           "lon,lat,alt\n" + points;
}

/// Half of the last digit that is written, and of that which is read: degrees.
double half_a_digit(int mode)
{
    constexpr double last_read = 1e-12;
    const double last_written = mode == 2 ? 1e-4 / 60 : 1e-2 / 3600;
    return (last_written + last_read) / 2;
}

/// What a number of degrees is after its way through minutes (mode 2) or seconds
/// (mode 3), but for the rounding of its last digit. Minutes lose the sign. A fraction
/// of a second that rounds up to 1 is written as .00: a second is lost.
double read_again(const QString& degrees, int mode)
{
    const QString digits = QString(degrees).remove('-').remove('.');
    constexpr qint64 degree = 1'000'000'000'000; // twelve decimals
    constexpr qint64 nearly_one = degree / 1000 * 995;
    const qint64 whole = digits.toLongLong() / degree;
    const qint64 rest = digits.toLongLong() % degree;
    const bool second_lost = mode == 3 && rest * 3600 % degree >= nearly_one;
    return static_cast<double>(degrees.startsWith('-') ? -whole : whole) +
           static_cast<double>(rest) / static_cast<double>(degree) -
           (second_lost ? 1.0 / 3600 : 0.0);
}

} // namespace

class test_csv : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void golden_data();
    void golden();
    void single_has_one_point_line_fewer_unless_in_degrees_data();
    void single_has_one_point_line_fewer_unless_in_degrees();
    void single_lacks_the_first_cell();
    void cell_of_the_ratio_data();
    void cell_of_the_ratio();
    void the_unit_of_the_price_stands_for_the_price();
    void first_record_is_number_0();
    void headers_follow_the_language();
    void missing_numbers_count_as_0();
    void text_without_a_final_feed();
    void per_cent_signs_are_text();
    void one_write_for_each_record();
    void merged_closes_its_device();
    void altitude_is_not_converted();
    void messages_after_an_export();
    void more_files_twice_doubles_them();

    void round_trip_of_the_merged_form_data();
    void round_trip_of_the_merged_form();
    void round_trip_in_plane_coordinates_data();
    void round_trip_in_plane_coordinates();
    void one_file_for_each_record_cannot_be_read_again();
    void an_english_header_is_refused();
    void an_empty_name_makes_a_row_too_short();
    void a_comma_in_a_name_moves_the_cells();

    void forms_data();
    void forms();
    void single_fields();
    void blocks_fields();
    void summary_fields();
    void summary_area_in_mu();
    void points_by_mode_data();
    void points_by_mode();
    void plane_cells_that_are_no_number_count_as_0();
    void negative_latitudes_lose_the_sign_of_their_minutes();
    void a_mode_that_is_none_keeps_the_points_only();
    void equal_blocks_data();
    void equal_blocks();
    void a_single_record_twice_ends_without_a_word();
    void promised_points_data();
    void promised_points();

    void refused_data();
    void refused();
    void a_failure_in_the_third_block_delivers_nothing();
    void after_a_failure_the_next_import_shows_its_own();
    void a_folder_is_refused();
    void a_file_that_is_not_there_is_refused();
    void a_file_of_one_long_line_is_refused();
    void rows_are_lines_that_are_not_empty();
    void encodings_data();
    void encodings();
    void corpus_data();
    void corpus();
    void mutations_data();
    void mutations();

private:
    QString write(const QByteArray& bytes);
    /// Imports the bytes; the text of the only box.
    QString import(const QByteArray& bytes, int mode = 0);
    QString import_file(const QString& path, int mode = 0);
    /// The record alone in the merged or in the other form.
    QByteArray written(const exportRecord& record, int mode, bool merged);
    exportRecord record(int row) const;

    file_export_thread m_exporter;
    file_import_thread m_importer;
    JsonFileManager m_store;
    sample_lists m_lists = sample_records();
    QTemporaryDir m_folder;
    int m_delivered = 0; ///< deliveries of the last import
};

void test_csv::init()
{
    m_store.systems = {zone_35()};
    const CoordinateSystem system = zone_35();
    m_exporter.cz = system.changzhou;
    m_exporter.dz = system.duanzhou;
    m_exporter.pl = system.pianlv;
    m_exporter.language = 0;
    m_exporter.export_list.clear();
    for (int row = 0; row < m_lists.table_list.size(); ++row)
        m_exporter.export_list.append(record(row));
}

exportRecord test_csv::record(int row) const
{
    return {m_lists.table_list[row],
            {},
            {},
            m_lists.data_msg_altitude[row],
            m_lists.point_msg_all[row]};
}

QString test_csv::write(const QByteArray& bytes)
{
    QFile file(m_folder.filePath("import.csv"));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return file.fileName();
}

QString test_csv::import_file(const QString& path, int mode)
{
    box_watcher watcher;
    const QSignalSpy finished(&m_importer, &file_import_thread::read_data_finished);
    m_importer.import_file(path, mode, &m_store, 0);
    m_delivered = static_cast<int>(finished.size());
    if (watcher.boxes.size() != 1)
        return QStringLiteral("%1 boxes").arg(watcher.boxes.size());
    const box_watcher::seen_box& box = watcher.boxes[0];
    const bool failed = box.text == failure;
    if (box.title != QStringLiteral("导入") ||
        box.icon != (failed ? QMessageBox::Warning : QMessageBox::Information) ||
        m_delivered != (failed ? 0 : 1))
        return QStringLiteral("the wrong box: ") + box.title + box.text;
    return box.text;
}

QString test_csv::import(const QByteArray& bytes, int mode)
{
    return import_file(write(bytes), mode);
}

QByteArray test_csv::written(const exportRecord& one, int mode, bool merged)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (merged)
        write_csv_merged(buffer, {one}, form_of(mode), m_exporter.language);
    else
        write_csv_single(buffer, one, form_of(mode), m_exporter.language);
    return buffer.data();
}

// Writing

void test_csv::golden_data()
{
    QTest::addColumn<bool>("merged");
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("mode");
    for (const bool merged : {true, false}) {
        for (const char* language : {"zh", "en"}) {
            for (int mode = 0; mode < 5; ++mode)
                QTest::addRow("%s, %s, mode %d", merged ? "merged" : "single", language, mode)
                    << merged << QString(language) << mode;
        }
    }
}

void test_csv::golden()
{
    QFETCH(bool, merged);
    QFETCH(QString, language);
    QFETCH(int, mode);
    const QTemporaryDir folder;
    m_exporter.setlanguage(language == "zh" ? 0 : 1);
    const model_param param = flat_parameters(zone_35());
    box_watcher watcher;
    QByteArray bytes;
    if (merged) {
        const QString path = folder.filePath("a.csv");
        m_exporter.one_csv_export(mode, param, path);
        bytes = content(path);
    } else {
        m_exporter.more_csv_export(mode, param, folder.path());
        for (qsizetype number = 1; number <= m_exporter.export_list.size(); ++number)
            bytes += content(folder.filePath(QStringLiteral("exported_data_%1.csv").arg(number)));
    }
    const QByteArray expected =
        content(QStringLiteral(TEST_FILES "/golden/%1_%2_mode%3.csv")
                    .arg(merged ? "merged" : "single", language, QString::number(mode)));
    const QList<QByteArray> lines = bytes.split('\n');
    const QList<QByteArray> expected_lines = expected.split('\n');
    for (qsizetype at = 0; at < std::min(lines.size(), expected_lines.size()); ++at)
        QCOMPARE(lines[at], expected_lines[at]);
    QVERIFY(bytes == expected);
}

void test_csv::single_has_one_point_line_fewer_unless_in_degrees_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("lines");
    for (int mode = 0; mode < 5; ++mode)
        QTest::addRow("mode %d", mode) << mode << (mode == 0 ? 3 : 2);
}

void test_csv::single_has_one_point_line_fewer_unless_in_degrees()
{
    QFETCH(int, mode);
    QFETCH(int, lines);
    constexpr int headers_and_record = 3;
    const exportRecord three_points = record(1);
    QCOMPARE(written(three_points, mode, true).count('\n'), headers_and_record + 3);
    QCOMPARE(written(three_points, mode, false).count('\n'), headers_and_record + lines);
    // A waypoint is left without its point.
    QCOMPARE(written(record(2), mode, false).count('\n'), headers_and_record + (mode == 0 ? 1 : 0));
    // Nothing to leave out.
    QCOMPARE(written(record(9), mode, false).count('\n'), headers_and_record);
}

void test_csv::single_lacks_the_first_cell()
{
    const QByteArrayList lines = written(record(1), 0, false).split('\n');
    QCOMPARE(lines[0].split(',').size(), 12);
    QCOMPARE(lines[1].split(',').size(), 11);
    QVERIFY(lines[1].startsWith("He said \"far\","));
}

void test_csv::cell_of_the_ratio_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("single");
    for (int mode = 0; mode < 5; ++mode)
        QTest::addRow("mode %d", mode)
            << mode << QByteArray(mode == 1 || mode == 4 ? "11.04" : "667");
}

void test_csv::cell_of_the_ratio()
{
    QFETCH(int, mode);
    QFETCH(QByteArray, single);
    QCOMPARE(written(record(1), mode, false).split('\n')[1].split(',')[5], single);
    QCOMPARE(written(record(1), mode, true).split('\n')[1].split(',')[6], QByteArray("667"));
}

void test_csv::the_unit_of_the_price_stands_for_the_price()
{
    exportRecord one = record(1);
    one.hd = "the unit";
    one.price = "the price";
    for (const int mode : {0, 1}) {
        QCOMPARE(written(one, mode, true).split('\n')[1].split(',')[10], QByteArray("the unit"));
        QCOMPARE(written(one, mode, false).split('\n')[1].split(',')[9], QByteArray("the unit"));
        QVERIFY(!written(one, mode, true).contains("the price"));
        QVERIFY(!written(one, mode, false).contains("the price"));
    }
}

void test_csv::first_record_is_number_0()
{
    QVERIFY(written(record(1), 0, true).split('\n')[1].startsWith("0,"));
}

void test_csv::headers_follow_the_language()
{
    for (const int language : {1, 2}) {
        m_exporter.setlanguage(language);
        QVERIFY(written(record(1), 0, true).startsWith("NO., Name, Time, Number of"));
    }
}

void test_csv::missing_numbers_count_as_0()
{
    exportRecord one = record(1);
    one.coordinates = "no commas\n104.5\n104.5,30.25\n";
    QCOMPARE(written(one, 2, true).split('\n').mid(3),
             (QByteArrayList{"000°00.0000′,00°00.0000′,0", "104°30.0000′,00°00.0000′,0",
                             "104°30.0000′,30°15.0000′,0", ""}));
    geodetic_position nothing;
    model_param param = flat_parameters(zone_35());
    const plane_position plane =
        wgs84_to_plane(nothing, param, m_exporter.cz, m_exporter.dz, m_exporter.pl);
    QCOMPARE(written(one, 1, true).split('\n')[3], QByteArray::number(plane.x, 'f', 12) + ',' +
                                                       QByteArray::number(plane.y, 'f', 12) + ",0");
    // In degrees the text is written as it stands.
    QVERIFY(written(one, 0, true).endsWith("no commas\n104.5\n104.5,30.25\n"));
}

void test_csv::text_without_a_final_feed()
{
    // What stands behind the last feed is left out, be it empty or a point.
    exportRecord one = record(1);
    one.coordinates = "104.5,30.25,1\n105.5,30.25,2";
    for (const bool merged : {true, false})
        QCOMPARE(written(one, 2, merged).count("′,"), 2);
    QVERIFY(written(one, 0, true).endsWith("\n104.5,30.25,1\n105.5,30.25,2"));
}

void test_csv::per_cent_signs_are_text()
{
    exportRecord one = record(1);
    one.name = "%1 %2 %12";
    one.time = "%3";
    QVERIFY(written(one, 0, true).contains("\n0,%1 %2 %12,%3,3,"));
    QVERIFY(written(one, 0, false).contains("\n%1 %2 %12,%3,3,"));
}

void test_csv::one_write_for_each_record()
{
    class counting_device : public QIODevice
    {
    public:
        int writes = 0;

    protected:
        qint64 readData(char*, qint64) override { return -1; }
        qint64 writeData(const char*, qint64 size) override
        {
            ++writes;
            return size;
        }
    };
    counting_device device;
    device.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    write_csv_merged(device, m_exporter.export_list, form_of(2), 0);
    QCOMPARE(device.writes, 10);
}

void test_csv::merged_closes_its_device()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    write_csv_merged(buffer, m_exporter.export_list, {}, 0);
    QVERIFY(!buffer.isOpen());
}

void test_csv::altitude_is_not_converted()
{
    exportRecord one = record(2);
    one.coordinates = "104.5,30.25,512.3 or so\n";
    for (int mode = 0; mode < 5; ++mode)
        QVERIFY(written(one, mode, true).endsWith(",512.3 or so\n"));
}

void test_csv::messages_after_an_export()
{
    const QTemporaryDir folder;
    // In Chinese whatever the language.
    for (const int language : {0, 1}) {
        m_exporter.setlanguage(language);
        box_watcher watcher;
        m_exporter.one_csv_export(0, {}, folder.filePath("a.csv"));
        m_exporter.more_csv_export(0, {}, folder.path());
        QCOMPARE(watcher.texts(), QStringList({"csv多数据合并导出成功", "csv单数据分开导出成功"}));
        for (const box_watcher::seen_box& box : watcher.boxes) {
            QCOMPARE(box.icon, QMessageBox::Information);
            QCOMPARE(box.title, QStringLiteral("csv"));
            QCOMPARE(box.buttons, QMessageBox::Ok);
        }
    }
    box_watcher watcher;
    m_exporter.one_csv_export(0, {}, {});
    m_exporter.more_csv_export(0, {}, {});
    QCOMPARE(watcher.texts(), QStringList());
    m_exporter.one_csv_export(0, {}, folder.path());
    QCOMPARE(watcher.texts(), QStringList("Failed to open file"));
}

void test_csv::more_files_twice_doubles_them()
{
    const QTemporaryDir folder;
    box_watcher watcher;
    m_exporter.export_list = m_exporter.export_list.mid(1, 3);
    m_exporter.more_csv_export(2, {}, folder.path());
    QByteArrayList first;
    for (const int number : {1, 2, 3})
        first += content(folder.filePath(QStringLiteral("exported_data_%1.csv").arg(number)));
    m_exporter.more_csv_export(2, {}, folder.path());
    for (const int number : {1, 2, 3})
        QCOMPARE(content(folder.filePath(QStringLiteral("exported_data_%1.csv").arg(number))),
                 first[number - 1] + first[number - 1]);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 3);
    // The merged form replaces.
    const QString path = folder.filePath("a.csv");
    m_exporter.one_csv_export(2, {}, path);
    const QByteArray once = content(path);
    m_exporter.one_csv_export(2, {}, path);
    QCOMPARE(content(path), once);
}

// Our own files read again

void test_csv::round_trip_of_the_merged_form_data()
{
    QTest::addColumn<int>("mode");
    for (const int mode : {0, 2, 3})
        QTest::addRow("mode %d", mode) << mode;
}

void test_csv::round_trip_of_the_merged_form()
{
    QFETCH(int, mode);
    const QString path = m_folder.filePath("round.csv");
    {
        box_watcher watcher;
        m_exporter.export_list.removeAt(7); // its name is empty
        m_exporter.export_list.removeAt(0); // its name has a comma
        m_exporter.one_csv_export(mode, {}, path);
    }
    QCOMPARE(import_file(path, mode), blocks_read);
    QCOMPARE(m_importer.table_list.size(), 8);
    for (qsizetype at = 0; at < 8; ++at) {
        const exportRecord& source = m_exporter.export_list[at];
        measuringData expected;
        expected.numpoint = source.numpoint;
        expected.method = source.method;
        expected.slope = source.slope;
        expected.price = source.hd;
        expected.distance = source.distance;
        expected.areamu = source.areamu;
        expected.areameter = source.areameter;
        expected.totalprices = source.totalprices;
        expected.time = source.time;
        expected.numrecord = "8";
        expected.name = source.name;
        QCOMPARE(m_importer.table_list[at], expected);
        QCOMPARE(m_importer.point_msg_all[at].size(), source.points.size());
        if (mode == 0) {
            QCOMPARE(m_importer.data_msg_altitude[at], source.coordinates);
            continue;
        }
        const QStringList lines = m_importer.data_msg_altitude[at].split('\n', Qt::SkipEmptyParts);
        const QStringList sources = source.coordinates.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), sources.size());
        for (qsizetype k = 0; k < lines.size(); ++k) {
            const QStringList numbers = lines[k].split(',');
            const QStringList wanted = sources[k].split(',');
            for (const int axis : {0, 1}) {
                const double off = numbers[axis].toDouble() - read_again(wanted[axis], mode);
                QVERIFY2(std::abs(off) <= half_a_digit(mode), qPrintable(wanted[axis]));
            }
            QCOMPARE(numbers[2], wanted[2]);
            QCOMPARE(numbers[0].section('.', 1).size(), 12);
        }
    }
    if (mode == 0)
        QCOMPARE(m_importer.data_msg[0],
                 QStringLiteral("104.000000000000,30.000000000000,104.500000000000,"
                                "30.250000000000,104.999999999999,30.999999999999"));
}

void test_csv::round_trip_in_plane_coordinates_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("XY") << 1;
    QTest::newRow("YX") << 4;
}

void test_csv::round_trip_in_plane_coordinates()
{
    QFETCH(int, mode);
    // Within the zone: elsewhere there is no way back.
    QCOMPARE(import(written(record(1), mode, true), mode), blocks_read);
    QCOMPARE(m_importer.table_list.size(), 1);
    const QStringList lines = m_importer.data_msg_altitude[0].split('\n', Qt::SkipEmptyParts);
    const QStringList sources = record(1).coordinates.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 3);
    for (qsizetype k = 0; k < 3; ++k) {
        const QStringList numbers = lines[k].split(',');
        const QStringList wanted = sources[k].split(',');
        QVERIFY(std::abs(numbers[0].toDouble() - wanted[0].toDouble()) < 1e-7);
        QVERIFY(std::abs(numbers[1].toDouble() - wanted[1].toDouble()) < 1e-7);
        QCOMPARE(numbers[2], wanted[2]);
    }
}

void test_csv::one_file_for_each_record_cannot_be_read_again()
{
    // Under the heading with the number stand eleven cells, one too few.
    for (int mode = 0; mode < 5; ++mode)
        QCOMPARE(import(written(record(1), mode, false), mode), failure);
}

void test_csv::an_english_header_is_refused()
{
    m_exporter.setlanguage(1);
    const log_capture log;
    QCOMPARE(import(written(record(1), 0, true)), failure);
    QVERIFY(log.has("第一个："));
    QVERIFY(log.has("NO."));
}

void test_csv::an_empty_name_makes_a_row_too_short()
{
    QCOMPARE(import(written(record(7), 0, true)), failure);
}

void test_csv::a_comma_in_a_name_moves_the_cells()
{
    QCOMPARE(import(written(record(0), 0, true)), blocks_read);
    QCOMPARE(m_importer.table_list[0].name, QStringLiteral("North field"));
    QCOMPARE(m_importer.table_list[0].time, QStringLiteral(" 2"));
    QCOMPARE(m_importer.table_list[0].numpoint, QStringLiteral("2024-03-10 07:08:09"));
    QCOMPARE(m_importer.point_msg_all[0].size(), 4);
}

// The three forms

void test_csv::forms_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("words");
    QTest::addColumn<int>("records");
    const QByteArray point = "104.5,30.5,500\n";
    QTest::newRow("blocks") << block("a", 1, point) << blocks_read << 1;
    QTest::newRow("two blocks") << block("a", 1, point) + block("b", 1, point) << blocks_read << 2;
    QTest::newRow("single") << single(1, point) << single_read << 1;
    QTest::newRow("summary") << summary("1334", "1", point) << summary_read << 1;
    QTest::newRow("empty lines between")
        << QByteArray("\n\n") + block("a", 1, "\n" + point + "\n\n") << blocks_read << 1;
    QTest::newRow("no feed at the end") << block("a", 1, point.trimmed()) << blocks_read << 1;
    QTest::newRow("without points") << block("a", 0, {}) << blocks_read << 1;
    QTest::newRow("ends with its record")
        << block("a", 0, {}).chopped(sizeof("经度,纬度,海拔")) << blocks_read << 1;
    QTest::newRow("single without points") << single(0, {}) << single_read << 1;
    QTest::newRow("summary without points") << summary("0", "0", {}) << summary_read << 1;
    QTest::newRow("summary of one row")
        << QByteArray("A(m*m):1,L:2,N:0,T:4,name:5") << summary_read << 1;
    QTest::newRow("cells beyond the last")
        << block("a", 1, "104.5,30.5,500,more,cells\n") << blocks_read << 1;
    QTest::newRow("any words in a single header")
        << single(1, point).replace("名字,时间", "名字") << single_read << 1;
    QTest::newRow("any words in the other headers")
        << block("a", 1, point).replace("经度,纬度,海拔", "x") << blocks_read << 1;
}

void test_csv::forms()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, words);
    QFETCH(int, records);
    QCOMPARE(import(bytes), words);
    QCOMPARE(m_importer.table_list.size(), records);
    QCOMPARE(m_importer.data_msg.size(), records);
    QCOMPARE(m_importer.data_msg_altitude.size(), records);
    QCOMPARE(m_importer.point_msg_all.size(), records);
    for (int at = 0; at < records; ++at) {
        const qsizetype points = m_importer.point_msg_all[at].size();
        QCOMPARE(m_importer.data_msg_altitude[at].count('\n'), points);
        if (points == 1) {
            QCOMPARE(m_importer.data_msg[at], QStringLiteral("104.5,30.5"));
            QCOMPARE(m_importer.data_msg_altitude[at], QStringLiteral("104.5,30.5,500\n"));
            QCOMPARE(m_importer.point_msg_all[at][0], (point_msg{"0", "0", "0", "0", "0"}));
        }
    }
}

void test_csv::single_fields()
{
    QCOMPARE(import(single(2, "104.5,30.5,500\n104.6,30.6,501\n")), single_read);
    measuringData expected;
    expected.name = "field";
    expected.time = "2024-03-05 07:08:09";
    expected.numpoint = "2";
    expected.method = "面积";
    expected.slope = "1.5";
    expected.areameter = "20.5";
    expected.areamu = "0.03";
    expected.distance = "30.5";
    expected.price = "5";
    expected.totalprices = "99.5";
    expected.numrecord = "1";
    QCOMPARE(m_importer.table_list, QList<measuringData>{expected});
    QCOMPARE(m_importer.data_msg, QStringList("104.5,30.5,104.6,30.6"));
    QCOMPARE(m_importer.data_msg_altitude, QStringList("104.5,30.5,500\n104.6,30.6,501\n"));
}

void test_csv::blocks_fields()
{
    QCOMPARE(import(block("field", 1, "104.5,30.5,500\n") + block("b", 1, "1,2,3\n") +
                    block("c", 0, {})),
             blocks_read);
    measuringData expected;
    expected.name = "field";
    expected.time = "2024-03-05 07:08:09";
    expected.numpoint = "1";
    expected.method = "航线";
    expected.slope = "1.5";
    expected.areameter = "20.5";
    expected.areamu = "0.03";
    expected.distance = "30.5";
    expected.price = "5";
    expected.totalprices = "99.5";
    expected.numrecord = "3";
    QCOMPARE(m_importer.table_list[0], expected);
    QCOMPARE(m_importer.data_msg, QStringList({"104.5,30.5", "1,2", ""}));
}

void test_csv::summary_fields()
{
    QCOMPARE(import(summary("1334", "2", "104.5,30.5,500\n104.6,30.6,501\nnot,looked,at\nx\n"), 1),
             summary_read);
    measuringData expected;
    expected.areameter = "1334";
    expected.distance = "12.5";
    expected.numpoint = "2";
    expected.time = "2024-03-05 07"; // cut at its own first colon
    expected.name = "field";
    expected.method = "面积";
    expected.areamu = "2.00";
    expected.numrecord = "1";
    QCOMPARE(m_importer.table_list, QList<measuringData>{expected});
    // Whatever the mode.
    QCOMPARE(m_importer.data_msg, QStringList("104.5,30.5,104.6,30.6"));
    QCOMPARE(m_importer.data_msg_altitude, QStringList("104.5,30.5,500\n104.6,30.6,501\n"));
    QCOMPARE(m_importer.point_msg_all[0].size(), 2);
}

void test_csv::summary_area_in_mu()
{
    const std::pair<const char*, const char*> areas[] = {
        {"1334", "2.00"}, {"667", "1.00"}, {"1000", "1.50"}, {"0", "0.00"}, {"none", "0.00"}};
    for (const auto& [metres, mu] : areas) {
        QCOMPARE(import(summary(metres, "0", {})), summary_read);
        QCOMPARE(m_importer.table_list[0].areamu, QString(mu));
    }
}

void test_csv::points_by_mode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("point");
    QTest::addColumn<QString>("pair"); // empty: the file is refused
    const auto row = [](int mode, const QByteArray& point, const QString& pair) {
        QTest::addRow("%d: %s", mode, point.constData()) << mode << point << pair;
    };
    row(0, "104.5,30.5", "104.5,30.5");
    row(0, "no,number", "no,number"); // taken as it is
    row(0, " 104.5 ,+30.50", " 104.5 ,+30.50");
    row(2, "104°30.0000′,30°15.0000′", "104.500000000000,30.250000000000");
    row(2, "104°30′,30°15′", "104.500000000000,30.250000000000");
    row(2, "104.5,30.25", {});
    row(2, "104°30.0000′,30.25", {});
    row(2, "104.5,30°15.0000′", {});
    row(2, "104°x′,30°15.0000′", {});
    row(2, "-1°0′,30°15′", {}); // exactly -1 counts as unreadable
    row(3, "104°30′36.00″,30°15′09″", "104.510000000000,30.252500000000");
    row(3, "104°30.0000′,30°15.0000′", {}); // minutes where seconds should be
    row(3, "104°30′36.00″,30°15′", {});
}

void test_csv::points_by_mode()
{
    QFETCH(int, mode);
    QFETCH(QByteArray, point);
    QFETCH(QString, pair);
    const QByteArray points = point + ",500.10\n";
    QCOMPARE(import(block("a", 1, points), mode), pair.isEmpty() ? failure : blocks_read);
    if (!pair.isEmpty()) {
        QCOMPARE(m_importer.data_msg, QStringList(pair));
        QCOMPARE(m_importer.data_msg_altitude, QStringList(pair + ",500.10\n"));
    }
    QCOMPARE(import(single(1, points), mode), pair.isEmpty() ? failure : single_read);
    // A summary is not converted.
    QCOMPARE(import(summary("1", "1", points), mode), summary_read);
    QCOMPARE(m_importer.data_msg, QStringList(QString::fromUtf8(point)));
}

void test_csv::plane_cells_that_are_no_number_count_as_0()
{
    const auto degrees_of = [](double x, double y) {
        const file_coordinates form = form_of(1);
        const geodetic_position at =
            plane_to_wgs84({x, y, 0.0}, form.param, form.cz, form.dz, form.pl);
        return QString::number(at.l, 'f', 12) + ',' + QString::number(at.b, 'f', 12);
    };
    QCOMPARE(import(block("a", 1, "x,35406081.2,500\n"), 1), blocks_read);
    QCOMPARE(m_importer.data_msg, QStringList(degrees_of(0.0, 35406081.2)));
    QCOMPARE(import(block("a", 1, "35406081.2,x,500\n"), 4), blocks_read);
    QCOMPARE(m_importer.data_msg, QStringList(degrees_of(0.0, 35406081.2)));
}

void test_csv::negative_latitudes_lose_the_sign_of_their_minutes()
{
    QCOMPARE(import(block("a", 1, "151°12.0000′,-33°30.0000′,58\n"), 2), blocks_read);
    QCOMPARE(m_importer.data_msg, QStringList("151.200000000000,-32.500000000000"));
}

void test_csv::a_mode_that_is_none_keeps_the_points_only()
{
    for (const int mode : {-1, 5}) {
        QCOMPARE(import(block("a", 2, "1,2,3\n4,5,6\n"), mode), blocks_read);
        QCOMPARE(m_importer.data_msg, QStringList(""));
        QCOMPARE(m_importer.data_msg_altitude, QStringList(""));
        QCOMPARE(m_importer.point_msg_all[0].size(), 2);
    }
}

void test_csv::equal_blocks_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("point");
    QTest::addColumn<int>("records");
    QTest::newRow("degrees") << 0 << QByteArray("104.5,30.5,500\n") << 1;
    // What is compared is the file's text, with what it was converted to.
    QTest::newRow("XY") << 1 << QByteArray("3388291.3,35406081.2,500\n") << 2;
    QTest::newRow("YX") << 4 << QByteArray("35406081.2,3388291.3,500\n") << 2;
    QTest::newRow("minutes") << 2 << QByteArray("104°30′,30°15′,500\n") << 2;
    QTest::newRow("seconds") << 3 << QByteArray("104°30′0″,30°15′0″,500\n") << 2;
    QTest::newRow("without points") << 1 << QByteArray() << 1;
}

void test_csv::equal_blocks()
{
    QFETCH(int, mode);
    QFETCH(QByteArray, point);
    QFETCH(int, records);
    const log_capture log;
    const QByteArray one = block("a", point.isEmpty() ? 0 : 1, point);
    QCOMPARE(import(one + one, mode), blocks_read);
    QCOMPARE(m_importer.table_list.size(), records);
    QCOMPARE(m_importer.data_msg.size(), records);
    QCOMPARE(m_importer.table_list[0].numrecord, QStringLiteral("2")); // both are counted
    QCOMPARE(log.has("tableList have this data"), records == 1);
    // Another name is another record.
    QCOMPARE(import(one + block("b", point.isEmpty() ? 0 : 1, point), mode), blocks_read);
    QCOMPARE(m_importer.table_list.size(), 2);
}

/// An import empties the results first, so that only its last step can meet a record
/// that is there already.
void test_csv::a_single_record_twice_ends_without_a_word()
{
    const QByteArray one = single(1, "104.5,30.5,500\n");
    QCOMPARE(import(one), single_read);
    const box_watcher watcher;
    const log_capture log;
    const QSignalSpy finished(&m_importer, &file_import_thread::read_data_finished);
    m_importer.import_csv(write(one));
    QVERIFY(log.has("tableList have this data"));
    QVERIFY(watcher.boxes.isEmpty());
    QVERIFY(finished.isEmpty());
    QCOMPARE(m_importer.table_list.size(), 1);
    m_importer.import_csv(write(single(1, "104.5,30.5,501\n")));
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].text, single_read);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_importer.table_list.size(), 2);
}

void test_csv::promised_points_data()
{
    QTest::addColumn<int>("numpoint");
    QTest::addColumn<int>("of_two"); // records that two equal blocks give
    // The comparison takes as many points as are promised, the conversion all.
    QTest::newRow("as many as there are") << 2 << 1;
    QTest::newRow("one fewer") << 1 << 2;
    QTest::newRow("none") << 0 << 2;
    QTest::newRow("negative") << -5 << 2;
    QTest::newRow("one more") << 3 << 2;
    QTest::newRow("a billion") << 1'000'000'000 << 2;
    QTest::newRow("the largest") << 2147483647 << 2;
}

void test_csv::promised_points()
{
    QFETCH(int, numpoint);
    QFETCH(int, of_two);
    const QByteArray points = "104.5,30.5,500\n104.6,30.6,501\n";
    const QByteArray one = block("a", numpoint, points);
    QCOMPARE(import(one), blocks_read);
    QCOMPARE(m_importer.point_msg_all[0].size(), 2);
    QCOMPARE(m_importer.table_list[0].numpoint, QString::number(numpoint));
    QCOMPARE(import(one + one), blocks_read);
    QCOMPARE(m_importer.table_list.size(), of_two);
    QCOMPARE(import(single(numpoint, points)), single_read);
    QCOMPARE(m_importer.point_msg_all[0].size(), 2);
    // In a summary the number rules.
    const bool too_many = numpoint > 2;
    QCOMPARE(import(summary("1", QByteArray::number(numpoint), points)),
             too_many ? failure : summary_read);
    if (!too_many)
        QCOMPARE(m_importer.point_msg_all[0].size(), std::max(numpoint, 0));
}

// What is refused

void test_csv::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray point = "104.5,30.5,500\n";
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("empty lines") << QByteArray("\n\r\n\n");
    QTest::newRow("commas") << QByteArray(",,,\n,,\n");
    QTest::newRow("commas first") << ",,\n" + block("a", 1, point);
    QTest::newRow("another header") << QByteArray("lat,lon,ele\n30.5,104.5,500\n");
    QTest::newRow("a blank before the key") << " " + block("a", 1, point);
    QTest::newRow("the key in quotes") << block("a", 1, point).replace("序号", "\"序号\"");
    QTest::newRow("semicolons") << block("a", 1, point).replace(',', ';');
    QTest::newRow("header alone") << QByteArray(zh_header);
    QTest::newRow("single header alone") << QByteArray("名字\n");
    QTest::newRow("two headers") << zh_header + block("a", 1, point);
    QTest::newRow("a block without its point header")
        << block("a", 0, {}).replace("经度,纬度,海拔\n", "") + block("b", 1, point);
    QTest::newRow("a block without its record")
        << block("a", 0, {}).replace(zh_header, "") + zh_header + zh_header;
    QTest::newRow("eleven cells") << block("a", 1, point).replace(",99.5\n", "\n");
    QTest::newRow("eleven cells in the second block")
        << block("a", 1, point) + block("b", 1, point).replace(",99.5\n", "\n");
    QTest::newRow("ten cells, single") << single(1, point).replace(",99.5\n", "\n");
    QTest::newRow("an empty cell") << block("a", 1, point).replace(",1.5,", ",,");
    QTest::newRow("a point of two cells") << block("a", 1, "104.5,30.5\n");
    QTest::newRow("a point with an empty cell") << block("a", 1, "104.5,,500\n");
    QTest::newRow("the last point of two cells") << block("a", 2, point + "104.5,30.5");
    QTest::newRow("a point of commas") << block("a", 1, point + ",,\n");
    QTest::newRow("a short point in a second, equal block")
        << block("a", 1, point) + block("a", 1, point + "104.5\n");
    QTest::newRow("single, a point of two cells") << single(1, point + "104.5,30.5\n");
    QTest::newRow("summary without a colon") << QByteArray("A(m*m)\n");
    QTest::newRow("summary without a value") << QByteArray("A(m*m):,L:2,N:0,T:4,name:5\n");
    QTest::newRow("summary of four cells") << QByteArray("A(m*m):1,L:2,N:0,T:4\n");
    QTest::newRow("summary with a cell without a colon")
        << QByteArray("A(m*m):1,L:2,N:0,T,name:5\n");
    QTest::newRow("summary, a point short") << summary("1", "2", point);
    QTest::newRow("summary, a point of two cells") << summary("1", "1", "104.5,30.5\n");
    QTest::newRow("summary without rows for its points")
        << QByteArray("A(m*m):1,L:2,N:1,T:4,name:5\n");
    QTest::newRow("summary, another key") << QByteArray("A(m²):1,L:2,N:0,T:4,name:5\n");
    QTest::newRow("summary, the key as a value") << QByteArray(":A(m*m),L:2,N:0,T:4,name:5\n");
}

void test_csv::refused()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(import(bytes), failure);
    QCOMPARE(m_delivered, 0);
}

void test_csv::a_failure_in_the_third_block_delivers_nothing()
{
    QByteArray bytes;
    for (const char* name : {"a", "b"})
        bytes += block(name, 1, "104°30′,30°15′,500\n");
    bytes += block("c", 2, "104°30′,30°15′,500\n104°30′,unreadable,500\n");
    QCOMPARE(import(bytes, 2), failure);
    QCOMPARE(m_delivered, 0);
    // The record in hand stays until the next import, with the two before.
    QCOMPARE(m_importer.table_list.size(), 3);
    QCOMPARE(m_importer.data_msg.size(), 2);
}

void test_csv::after_a_failure_the_next_import_shows_its_own()
{
    a_failure_in_the_third_block_delivers_nothing();
    QCOMPARE(import(block("d", 1, "104°30′,30°15′,500\n"), 2), blocks_read);
    QCOMPARE(m_importer.table_list.size(), 1);
    QCOMPARE(m_importer.table_list[0].name, QStringLiteral("d"));
    QCOMPARE(m_importer.data_msg.size(), 1);
}

void test_csv::a_folder_is_refused()
{
    QVERIFY(QDir(m_folder.path()).mkpath("x.csv"));
    const log_capture log;
    QCOMPARE(import_file(m_folder.filePath("x.csv")), failure);
    QVERIFY(log.has("Failed to open file: "));
}

void test_csv::a_file_that_is_not_there_is_refused()
{
    const log_capture log;
    QCOMPARE(import_file(m_folder.filePath("none.csv")), failure);
    QVERIFY(log.has("~~~~~~~~~~~~~~~~~~import csv"));
    QVERIFY(log.has("Failed to open file: "));
    csv_rows rows(QByteArray("a,b\n"));
    QVERIFY(!read_csv_rows(m_folder.filePath("none.csv"), rows));
    QCOMPARE(rows.size(), 0);
}

void test_csv::a_file_of_one_long_line_is_refused()
{
    const QString path = m_folder.filePath("long.csv");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray piece = QByteArray("104.5,").repeated(1'000'000 / 6);
    for (int megabytes = 0; megabytes < 200; ++megabytes)
        QVERIFY(file.write(piece) == piece.size());
    file.close();
    QCOMPARE(import_file(path), failure);
    QVERIFY(QFile::remove(path));
}

void test_csv::rows_are_lines_that_are_not_empty()
{
    const csv_rows rows(QByteArray("a,b,,c\n\n,,\r\n\r\n d , e\nlast"));
    QCOMPARE(rows.size(), 4);
    const auto cells = [&rows](qsizetype row) {
        QStringList all;
        for (const QStringView cell : rows[row])
            all += cell.toString();
        return all;
    };
    QCOMPARE(cells(0), QStringList({"a", "b", "c"}));
    QCOMPARE(cells(1), QStringList()); // not empty, though all its cells are
    QCOMPARE(cells(2), QStringList({" d ", " e"}));
    QCOMPARE(cells(3), QStringList("last"));
    QCOMPARE(rows.cell(0, 2), QStringView(u"c"));
    QVERIFY(rows.cell(0, 3).isEmpty());
    QVERIFY(rows.cell(1, 0).isEmpty());
    QVERIFY(rows.cell(4, 0).isEmpty());
}

void test_csv::encodings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("words");
    const QByteArray file = block("地块 🌾", 1, "104.5,30.5,500\n");
    const QString text = QString::fromUtf8(file);
    const auto encoded = [&](QStringConverter::Encoding encoding, const QString& what,
                             QStringConverter::Flags flags = QStringConverter::Flag::WriteBom) {
        return QByteArray(QStringEncoder(encoding, flags).encode(what));
    };
    QTest::newRow("UTF-8") << file << blocks_read;
    QTest::newRow("UTF-8 with a mark") << encoded(QStringConverter::Utf8, text) << blocks_read;
    for (const auto& [name, encoding] : {std::pair{"UTF-16 LE", QStringConverter::Utf16LE},
                                         std::pair{"UTF-16 BE", QStringConverter::Utf16BE},
                                         std::pair{"UTF-32 LE", QStringConverter::Utf32LE},
                                         std::pair{"UTF-32 BE", QStringConverter::Utf32BE}}) {
        QTest::newRow(name) << encoded(encoding, text) << blocks_read;
        QString windows = text;
        windows.replace('\n', "\r\n");
        QTest::addRow("%s, CR LF", name) << encoded(encoding, windows) << blocks_read;
        QTest::addRow("%s without a mark", name)
            << encoded(encoding, text, QStringConverter::Flag::Default) << failure;
    }
    QByteArray windows = file;
    QTest::newRow("CR LF") << windows.replace('\n', "\r\n") << blocks_read;
    QByteArray old = file;
    QTest::newRow("CR alone") << old.replace('\n', '\r') << failure; // one line
}

void test_csv::encodings()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, words);
    QCOMPARE(import(bytes), words);
    if (words == blocks_read) {
        QCOMPARE(m_importer.table_list[0].name, QStringLiteral("地块 🌾"));
        QCOMPARE(m_importer.data_msg_altitude[0], QStringLiteral("104.5,30.5,500\n"));
    }
}

void test_csv::corpus_data()
{
    QTest::addColumn<QString>("words");
    // What each file of the folder is, and what becomes of it.
    QTest::newRow("blocks_two.csv") << blocks_read;
    QTest::newRow("blocks_bom_crlf.csv") << blocks_read;
    QTest::newRow("blocks_utf16.csv") << blocks_read;
    QTest::newRow("blocks_gbk.csv") << failure;
    QTest::newRow("blocks_truncated_record.csv") << failure;
    QTest::newRow("blocks_truncated_point.csv") << failure;
    QTest::newRow("blocks_huge_numpoint.csv") << blocks_read;
    QTest::newRow("blocks_english.csv") << failure;
    QTest::newRow("single.csv") << single_read;
    QTest::newRow("summary.csv") << summary_read;
    QTest::newRow("summary_huge_numpoint.csv") << failure;
    QTest::newRow("empty.csv") << failure;
    QTest::newRow("nul_bytes.csv") << failure;
    QTest::newRow("binary.csv") << failure;
    QTest::newRow("foreign_waypoints.csv") << failure;
    QTest::newRow("foreign_quoted.csv") << failure;
    QTest::newRow("foreign_wkt.csv") << failure;
    QTest::newRow("foreign_semicolons.csv") << failure;
    QTest::newRow("kml_named_csv.csv") << failure;
}

void test_csv::corpus()
{
    QFETCH(QString, words);
    const QString path =
        QStringLiteral(TEST_FILES "/corpus/csv/") + QString(QTest::currentDataTag());
    QVERIFY(QFile::exists(path));
    QCOMPARE(import_file(path), words);
    if (words != failure)
        QVERIFY(!m_importer.table_list.isEmpty());
    // No file without a line above.
    static const qsizetype files =
        QDir(QStringLiteral(TEST_FILES "/corpus/csv")).entryList(QDir::Files).size();
    QCOMPARE(files, 19);
}

void test_csv::mutations_data()
{
    QTest::addColumn<QByteArray>("seed");
    QTest::addColumn<int>("mode");
    const QByteArray minutes = "104°30.5′,30°15.25′,500\n104°31.5′,-30°16.25′,501\n";
    const QByteArray degrees = "104.5,30.5,500\n104.6,30.6,501\n";
    QTest::newRow("blocks") << block("a", 2, degrees) + block("b", 2, degrees) << 0;
    QTest::newRow("blocks, XY") << block("a", 2, degrees) << 1;
    QTest::newRow("blocks, minutes") << block("a", 2, minutes) + block("b", 2, minutes) << 2;
    QTest::newRow("single, seconds") << single(2, "104°30′5.5″,30°15′2″,500\n") << 3;
    QTest::newRow("single, YX") << single(2, degrees) << 4;
    QTest::newRow("summary") << summary("1334", "2", degrees) << 0;
}

void test_csv::mutations()
{
    QFETCH(QByteArray, seed);
    QFETCH(int, mode);
    std::mt19937 random(20240305);
    const auto below = [&random](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<std::uint32_t>(limit));
    };
    const QByteArrayList pieces{
        ",",   "\n", ":", "序号", "名字", "°", "′", "″", "-1", "1000000000", QByteArray(1, '\0'),
        "\xff"};
    const log_capture log;
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = seed;
        for (qsizetype change = 0; change <= below(4); ++change) {
            const qsizetype at = below(bytes.size() + 1);
            switch (below(4)) {
            case 0: bytes.truncate(at); break;
            case 1: bytes.remove(at, below(20)); break;
            case 2: bytes.insert(at, pieces[below(pieces.size())]); break;
            default: bytes.insert(at, bytes.mid(below(bytes.size() + 1), below(60)));
            }
        }
        m_importer.import_file({}, mode, &m_store, 0); // empties the results
        if (!m_importer.take_csv_rows(csv_rows(bytes)))
            continue;
        // What is taken is whole: the four lists in step, a line for each point.
        const qsizetype records = m_importer.table_list.size();
        QCOMPARE(m_importer.data_msg.size(), records);
        QCOMPARE(m_importer.data_msg_altitude.size(), records);
        QCOMPARE(m_importer.point_msg_all.size(), records);
        for (qsizetype at = 0; at < records; ++at) {
            const qsizetype points = m_importer.point_msg_all[at].size();
            QCOMPARE(m_importer.data_msg_altitude[at].count('\n'), points);
            QCOMPARE(m_importer.data_msg_altitude[at].count(','), 2 * points);
            QCOMPARE(m_importer.data_msg[at].count(','), std::max(2 * points - 1, qsizetype(0)));
        }
    }
}

QTEST_MAIN(test_csv)
#include "test_csv.moc"
