// DXF drawings: what is written, byte by byte and as GDAL reads it, and what is
// read out of drawings of many makers.

#include "coordinates/transforms.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/test_creation_class.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_records.h"

#include <QDir>
#include <QLoggingCategory>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <clocale>
#include <locale>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

/// A group of a drawing: its code and its value.
using group = std::pair<int, QByteArray>;
using groups = QList<group>;

groups groups_of(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> lines = file.readAll().split('\n');
    groups all;
    for (qsizetype i = 0; i + 1 < lines.size(); i += 2)
        all.append({lines[i].trimmed().toInt(), lines[i + 1]});
    return all;
}

/// The groups of a section or table, without the ones that bound it.
groups between(const groups& all, const groups& begin, const group& end)
{
    for (qsizetype i = 0; i + begin.size() <= all.size(); ++i) {
        if (all.mid(i, begin.size()) == begin) {
            const qsizetype from = i + begin.size();
            return all.mid(from, all.indexOf(end, from) - from);
        }
    }
    return {};
}

groups section(const groups& all, const char* name)
{
    return between(all, {{0, "SECTION"}, {2, name}}, {0, "ENDSEC"});
}

groups table(const groups& all, const char* name)
{
    return between(all, {{0, "TABLE"}, {2, name}}, {0, "ENDTAB"});
}

/// Values of one group code.
QList<QByteArray> values(const groups& all, int code)
{
    QList<QByteArray> found;
    for (const auto& [one, value] : all) {
        if (one == code)
            found.append(value);
    }
    return found;
}

/// An entity as GDAL reads it.
struct gdal_entity
{
    QString type;
    QList<double> numbers;
};

/// Equal as far as the text of the numbers goes.
bool close_to(const QList<double>& numbers, const QList<double>& expected)
{
    return std::equal(numbers.begin(), numbers.end(), expected.begin(), expected.end(),
                      [](double left, double right) { return std::abs(left - right) < 1e-5; });
}

QList<gdal_entity> read_with_gdal(const QString& path)
{
    QProcess ogrinfo;
    ogrinfo.start("ogrinfo", {"-ro", "-al", "-q", path});
    if (!ogrinfo.waitForFinished(60'000) || ogrinfo.exitCode() != 0) {
        qWarning() << "ogrinfo:" << ogrinfo.errorString() << ogrinfo.readAllStandardError();
        return {};
    }
    static const QRegularExpression pattern(R"(^\s+(POINT|LINESTRING)(?: Z)? \(([^)]*)\))",
                                            QRegularExpression::MultilineOption);
    static const QRegularExpression between_numbers("[ ,]");
    QList<gdal_entity> entities;
    const QString output = QString::fromUtf8(ogrinfo.readAllStandardOutput());
    for (const QRegularExpressionMatch& match : pattern.globalMatch(output)) {
        gdal_entity entity{match.captured(1), {}};
        for (const QString& number : match.captured(2).split(between_numbers))
            entity.numbers.append(number.toDouble());
        entities.append(entity);
    }
    return entities;
}

exportRecord record(const QString& method, const QStringList& lines)
{
    exportRecord one;
    one.method = method;
    one.numpoint = QString::number(lines.size());
    for (const QString& line : lines)
        one.coordinates += line + '\n';
    return one;
}

/// A system whose zone is 39, the one that the reader takes for granted, or any
/// other.
CoordinateSystem system_at(double meridian)
{
    CoordinateSystem system;
    system.name = "field";
    system.changzhou = 6378137.0;
    system.duanzhou = 6356752.314140355;
    system.pianlv = 0.003352811;
    system.type = 2;
    system.ellipsoid = 2;
    system.l0 = meridian;
    return system;
}

plane_position plane_of(double latitude, double longitude, const CoordinateSystem& system)
{
    geodetic_position position{latitude, longitude, 0};
    model_param param = flat_parameters(system);
    return wgs84_to_plane(position, param, system.changzhou, system.duanzhou, system.pianlv);
}

/// Text of a drawing out of entities of our own making.
QByteArray drawing(const groups& entities, const groups& blocks = {})
{
    groups all;
    if (!blocks.isEmpty())
        all += groups{{0, "SECTION"}, {2, "BLOCKS"}} + blocks + groups{{0, "ENDSEC"}};
    all += groups{{0, "SECTION"}, {2, "ENTITIES"}} + entities + groups{{0, "ENDSEC"}, {0, "EOF"}};
    QByteArray text;
    for (const auto& [code, value] : all)
        text += QByteArray::number(code) + '\n' + value + '\n';
    return text;
}

groups point_entity(const QByteArray& x, const QByteArray& y, const QByteArray& z = "0.0")
{
    return {{0, "POINT"}, {8, "0"}, {10, x}, {20, y}, {30, z}};
}

} // namespace

class test_dxf : public QObject
{
    Q_OBJECT

private slots:
    void init();

    // writing
    void sections_and_tables_stand_in_their_order();
    void entities_have_their_attributes();
    void points_come_before_polylines();
    void one_point_is_a_point_of_any_kind();
    void areas_stay_open();
    void vertex_count_is_that_of_the_record();
    void degrees_are_scaled_in_all_spherical_modes();
    void plane_coordinates_lose_their_zone();
    void an_easting_below_zero_stays_below();
    void parameters_are_logged();
    void damaged_lines_are_passed_over();
    void empty_parts_are_passed_over();
    void a_record_without_points_draws_nothing();
    void a_record_without_points_gets_an_empty_file();
    void folders_are_made();
    void a_folder_that_cannot_be_made_is_told();
    void a_file_that_cannot_be_opened_is_told();
    void each_record_gets_a_file();
    void each_stops_at_a_file_that_cannot_be_opened();
    void an_empty_path_is_silent();
    void names_may_be_chinese();
    void gdal_reads_what_is_written_data();
    void gdal_reads_what_is_written();

    // reading
    void what_was_written_comes_back();
    void degrees_are_read_in_all_spherical_modes();
    void equal_entities_are_all_read();
    void time_loses_its_separators_from_the_second_record_on();
    void waypoints_in_plane_modes_do_not_survive();
    void polylines_are_taken_for_zone_39();
    void vertices_keep_their_altitude();
    void corpus_data();
    void corpus();
    void binary_drawings_hold_nothing();
    void truncated_drawings_end();
    void big_drawings_are_read();
    void faces_are_printed();
    void only_regular_files_are_read_data();
    void only_regular_files_are_read();
    void hostile_drawings_are_refused_data();
    void hostile_drawings_are_refused();
#ifdef Q_OS_LINUX
    void a_refused_drawing_is_closed();
#endif

    // the store
    void blocks_keep_their_entities();
    void lines_of_blocks_are_not_counted();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    QString write(const QString& name, const QByteArray& text) const;
    void write_merged(const QList<exportRecord>& records, int mode = 0,
                      const CoordinateSystem& system = system_at(105));
    void import(const QString& path, int mode = 0, const CoordinateSystem& system = system_at(105));

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<file_export_thread> m_exporter;
    std::unique_ptr<file_import_thread> m_importer;
    std::unique_ptr<box_watcher> m_boxes;
    qsizetype m_delivered = 0; ///< how often results were handed on
};

void test_dxf::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_exporter = std::make_unique<file_export_thread>();
    m_importer = std::make_unique<file_import_thread>();
    m_boxes = std::make_unique<box_watcher>();
    m_delivered = 0;
    connect(m_importer.get(), &file_import_thread::read_data_finished, this,
            [this] { ++m_delivered; });
}

QString test_dxf::write(const QString& name, const QByteArray& text) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("no %s", qPrintable(name));
    return file.fileName();
}

void test_dxf::write_merged(const QList<exportRecord>& records, int mode,
                            const CoordinateSystem& system)
{
    m_exporter->export_list = records;
    m_exporter->cz = system.changzhou;
    m_exporter->dz = system.duanzhou;
    m_exporter->pl = system.pianlv;
    m_exporter->one_dxf_export(mode, flat_parameters(system), path("out.dxf"));
}

void test_dxf::import(const QString& from, int mode, const CoordinateSystem& system)
{
    m_importer->mode = mode;
    m_importer->m_ModelParam = flat_parameters(system);
    m_importer->cz = system.changzhou;
    m_importer->dz = system.duanzhou;
    m_importer->pl = system.pianlv;
    m_importer->table_list.clear();
    m_importer->data_msg.clear();
    m_importer->data_msg_altitude.clear();
    m_importer->point_msg_all.clear();
    m_importer->import_dxf(from);
}

void test_dxf::sections_and_tables_stand_in_their_order()
{
    write_merged({record("航点", {"104.5,30.25,500.5"})});
    QCOMPARE(m_boxes->boxes.size(), 1);
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Information);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("dxf"));
    QCOMPARE(m_boxes->boxes[0].text, QStringLiteral("dxf多数据合并导出成功"));

    const groups all = groups_of(path("out.dxf"));
    QCOMPARE(all[0].first, 999); // the library's banner
    QVERIFY(all[0].second.startsWith("dxflib "));
    QCOMPARE(all.mid(1, 6), (groups{{0, "SECTION"},
                                    {2, "HEADER"},
                                    {9, "$ACADVER"},
                                    {1, "AC1015"},
                                    {9, "$HANDSEED"},
                                    {5, "FFFF"}}));
    QList<QByteArray> names;
    for (qsizetype i = 0; i + 1 < all.size(); ++i) {
        if (all[i] == group{0, "SECTION"} || all[i] == group{0, "TABLE"})
            names.append(all[i + 1].second);
    }
    QCOMPARE(names, (QList<QByteArray>{"HEADER", "TABLES", "VPORT", "LTYPE", "LAYER", "STYLE",
                                       "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD", "BLOCKS",
                                       "ENTITIES", "OBJECTS"}));
    QCOMPARE(all.last(), (group{0, "EOF"}));

    // Handles count from 48; those below are the library's tables.
    QCOMPARE(values(table(all, "VPORT"), 5).value(1), QByteArray("30"));

    const groups linetypes = table(all, "LTYPE");
    QCOMPARE(values(linetypes, 70), (QList<QByteArray>{"3", "0", "0", "0"})); // count, flags
    QCOMPARE(values(linetypes, 2), (QList<QByteArray>{"BYBLOCK", "BYLAYER", "CONTINUOUS"}));
    QCOMPARE(values(linetypes, 73), QList<QByteArray>(3, "0"));   // elements
    QCOMPARE(values(linetypes, 40), QList<QByteArray>(3, "0.0")); // pattern length

    const groups layers = table(all, "LAYER");
    QCOMPARE(values(layers, 2), (QList<QByteArray>{"0", "mainlayer", "anotherlayer"}));
    QCOMPARE(values(layers, 70), (QList<QByteArray>{"3", "0", "0", "0"}));
    QCOMPARE(values(layers, 62), (QList<QByteArray>{"250", "250", "5"}));
    QCOMPARE(values(layers, 6), QList<QByteArray>(3, "CONTINUOUS"));
    QCOMPARE(values(layers, 370), QList<QByteArray>(3, "100"));
    QCOMPARE(values(layers, 420), QList<QByteArray>());

    const groups style = table(all, "STYLE");
    QCOMPARE(values(style, 2), QList<QByteArray>{"standard"});
    QCOMPARE(values(style, 70), (QList<QByteArray>{"1", "0"}));
    QCOMPARE(values(style, 71), QList<QByteArray>{"0"}); // generation flags
    QCOMPARE(values(style, 40), QList<QByteArray>{"2.5"});
    QCOMPARE(values(style, 41), QList<QByteArray>{"1.0"});
    QCOMPARE(values(style, 50), QList<QByteArray>{"0.0"});
    QCOMPARE(values(style, 42), QList<QByteArray>{"2.5"});
    QCOMPARE(values(style, 1000).value(0), QByteArray("txt"));
    QCOMPARE(values(style, 4), QList<QByteArray>{""});

    QCOMPARE(values(table(all, "APPID"), 2), QList<QByteArray>{"ACAD"});
    QCOMPARE(values(table(all, "APPID"), 70), (QList<QByteArray>{"1", "0"}));
    for (const int size : {41, 42, 44, 147, 140})
        QCOMPARE(values(table(all, "DIMSTYLE"), size), QList<QByteArray>{"1.0"});
    // Its text style is the one above (behind the handle of the table).
    QCOMPARE(values(table(all, "DIMSTYLE"), 340), QList<QByteArray>{values(style, 5).value(1)});

    const groups blocks = section(all, "BLOCKS");
    QCOMPARE(values(blocks, 2),
             (QList<QByteArray>{"*Model_Space", "*Paper_Space", "*Paper_Space0"}));
    QCOMPARE(values(blocks, 0),
             (QList<QByteArray>{"BLOCK", "ENDBLK", "BLOCK", "ENDBLK", "BLOCK", "ENDBLK"}));
    QCOMPARE(values(blocks, 70), QList<QByteArray>(3, "0"));
    for (const int axis : {10, 20, 30})
        QCOMPARE(values(blocks, axis), QList<QByteArray>(3, "0.0"));
}

void test_dxf::entities_have_their_attributes()
{
    write_merged({record("航点", {"104.5,30.25,500.5"}),
                  record("距离", {"104.5,30.25,500.5", "104.6,30.35,501.5"})});
    groups entities = section(groups_of(path("out.dxf")), "ENTITIES");
    // The handles count; what they count from is the library's.
    entities.removeIf([](const group& one) { return one.first == 5; });
    QCOMPARE(entities, (groups{{0, "POINT"},
                               {100, "AcDbEntity"},

                               {8, "mainlayer"},
                               {62, "7"},
                               {370, "-1"},
                               {48, "1.0"},
                               {6, "BYLAYER"},
                               {100, "AcDbPoint"},
                               {10, "104500000.0"},
                               {20, "30250000.0"},
                               {30, "500.5"},
                               {0, "LWPOLYLINE"},
                               {100, "AcDbEntity"},
                               {8, "mainlayer"},
                               {62, "7"},
                               {370, "-1"},
                               {48, "1.0"},
                               {6, "BYLAYER"},
                               {100, "AcDbPolyline"},
                               {90, "2"},
                               {70, "0"},
                               {10, "104500000.0"},
                               {20, "30250000.0"},
                               {10, "104600000.0"},
                               {20, "30350000.0"}}));
}

void test_dxf::points_come_before_polylines()
{
    write_merged({record("面积", {"104,30,1", "104,31,1", "105,30,1"}),
                  record("航点", {"106,30,1"}), record("航迹", {"107,30,1", "107,31,1"}),
                  record("航点", {"108,30,1"})});
    const groups entities = section(groups_of(path("out.dxf")), "ENTITIES");
    QCOMPARE(values(entities, 0),
             (QList<QByteArray>{"POINT", "POINT", "LWPOLYLINE", "LWPOLYLINE"}));
    QCOMPARE(values(entities, 10),
             (QList<QByteArray>{"106000000.0", "108000000.0", "104000000.0", "104000000.0",
                                "105000000.0", "107000000.0", "107000000.0"}));
}

void test_dxf::one_point_is_a_point_of_any_kind()
{
    write_merged({record("航迹", {"104,30,1"}), record("航线", {"104,30,1", "104,31,1"})});
    QCOMPARE(values(section(groups_of(path("out.dxf")), "ENTITIES"), 0),
             (QList<QByteArray>{"POINT", "LWPOLYLINE"}));
}

void test_dxf::areas_stay_open()
{
    write_merged({record("面积", {"104,30,1", "104,31,1", "105,30,1"})});
    const groups entities = section(groups_of(path("out.dxf")), "ENTITIES");
    QCOMPARE(values(entities, 70), QList<QByteArray>{"0"});
    QCOMPARE(values(entities, 10).size(), 3); // the first point does not come again
}

void test_dxf::vertex_count_is_that_of_the_record()
{
    exportRecord one = record("面积", {"104,30,1", "104,31,1", "105,30,1"});
    one.numpoint = "7";
    write_merged({one});
    QCOMPARE(values(section(groups_of(path("out.dxf")), "ENTITIES"), 90), QList<QByteArray>{"7"});
}

void test_dxf::degrees_are_scaled_in_all_spherical_modes()
{
    for (const int mode : {0, 2, 3}) {
        write_merged({record("航点", {"-70.25,-33.5,-1.5"})}, mode);
        const groups entities = section(groups_of(path("out.dxf")), "ENTITIES");
        QCOMPARE(values(entities, 10), QList<QByteArray>{"-70250000.0"});
        QCOMPARE(values(entities, 20), QList<QByteArray>{"-33500000.0"});
        QCOMPARE(values(entities, 30), QList<QByteArray>{"-1.5"});
    }
}

void test_dxf::plane_coordinates_lose_their_zone()
{
    const CoordinateSystem system = system_at(117);
    const plane_position plane = plane_of(30.25, 117.5, system);
    QCOMPARE(std::trunc(plane.y / 1e6), 39.0);
    const double easting = plane.y - 39e6;

    write_merged({record("航点", {"117.5,30.25,500.5"})}, 1, system);
    QList<gdal_entity> entities = read_with_gdal(path("out.dxf"));
    QCOMPARE(entities.size(), 1);
    QVERIFY(close_to(entities[0].numbers, {easting, plane.x, 500.5}));

    write_merged({record("航点", {"117.5,30.25,500.5"})}, 4, system);
    entities = read_with_gdal(path("out.dxf"));
    QCOMPARE(entities.size(), 1);
    QVERIFY(close_to(entities[0].numbers, {plane.x, easting, 500.5}));
}

/// The whole millions go, towards zero.
void test_dxf::an_easting_below_zero_stays_below()
{
    CoordinateSystem system = system_at(117);
    system.east = -41'000'000.0;
    const plane_position plane = plane_of(30.25, 117.5, system);
    QVERIFY(plane.y < 0);
    write_merged({record("航点", {"117.5,30.25,500.5"})}, 1, system);
    const QList<gdal_entity> entities = read_with_gdal(path("out.dxf"));
    QCOMPARE(entities.size(), 1);
    QVERIFY(entities[0].numbers[0] < 0 && entities[0].numbers[0] > -1e6);
    QCOMPARE(std::round(entities[0].numbers[0] - plane.y) / 1e6,
             std::floor(-plane.y / 1e6)); // whole millions
}

void test_dxf::parameters_are_logged()
{
    const log_capture log;
    model_param param;
    param.projection.east = 512345.0;
    m_exporter->export_list = {record("航点", {"104,30,1"})};
    m_exporter->one_dxf_export(0, param, path("out.dxf"));
    QVERIFY(log.has("512345"));
}

void test_dxf::damaged_lines_are_passed_over()
{
    const log_capture log;
    write_merged({record("面积", {"104,30,1", "104,31", "x,31,1", "104,31,1,5", ",,", "inf,30,1",
                                  "1e300,30,1", "105,30,1"})});
    const groups entities = section(groups_of(path("out.dxf")), "ENTITIES");
    QCOMPARE(values(entities, 10), (QList<QByteArray>{"104000000.0", "105000000.0"}));
    for (const char* line : {"104,31", "x,31,1", "104,31,1,5", "1e300,30,1"})
        QVERIFY(log.has(QStringLiteral("Invalid entry format:  \"%1\"").arg(line)));
}

void test_dxf::empty_parts_are_passed_over()
{
    write_merged({record("面积", {"104,,30,1", ",105,30,1,"})});
    const groups entities = section(groups_of(path("out.dxf")), "ENTITIES");
    QCOMPARE(values(entities, 10), (QList<QByteArray>{"104000000.0", "105000000.0"}));
    QCOMPARE(values(entities, 20), (QList<QByteArray>{"30000000.0", "30000000.0"}));
}

void test_dxf::a_record_without_points_gets_an_empty_file()
{
    m_exporter->export_list = {record("面积", {}), record("航点", {"104,30,1"})};
    m_exporter->more_dxf_export(0, {}, m_folder->path());
    QCOMPARE(m_boxes->texts(), QStringList("dxf单数据分开导出成功"));
    const groups empty = groups_of(path("exported_data_1.dxf"));
    QCOMPARE(section(empty, "ENTITIES"), groups());
    QCOMPARE(empty.last(), (group{0, "EOF"}));
    QCOMPARE(values(section(groups_of(path("exported_data_2.dxf")), "ENTITIES"), 0),
             QList<QByteArray>{"POINT"});
}

void test_dxf::a_record_without_points_draws_nothing()
{
    write_merged({record("面积", {}), record("航点", {"104,30,1"})});
    QCOMPARE(values(section(groups_of(path("out.dxf")), "ENTITIES"), 0),
             QList<QByteArray>{"POINT"});
}

void test_dxf::folders_are_made()
{
    m_exporter->export_list = {record("航点", {"104,30,1"})};
    m_exporter->one_dxf_export(0, {}, path("a/b/out.dxf"));
    QVERIFY(QFile::exists(path("a/b/out.dxf")));
}

void test_dxf::a_folder_that_cannot_be_made_is_told()
{
    write("file", "");
    m_exporter->export_list = {record("航点", {"104,30,1"})};
    m_exporter->one_dxf_export(0, {}, path("file/out.dxf"));
    QCOMPARE(m_boxes->texts(), QStringList("Failed to create directory"));
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("Warning"));
}

void test_dxf::a_file_that_cannot_be_opened_is_told()
{
    QVERIFY(QDir(m_folder->path()).mkdir("out.dxf"));
    const log_capture log;
    write_merged({record("航点", {"104,30,1"})});
    QCOMPARE(m_boxes->texts(), QStringList("Failed to open file"));
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("Warning"));
    QVERIFY(log.has("Cannot open DXF file for writing: \"" + path("out.dxf")));
}

void test_dxf::each_record_gets_a_file()
{
    m_exporter->export_list = {record("面积", {"104,30,1", "104,31,1", "105,30,1"}),
                               record("航点", {"106,30,1"}),
                               record("航线", {"107,30,1", "107,31,1"})};
    m_exporter->more_dxf_export(0, {}, m_folder->path());
    QCOMPARE(m_boxes->texts(), QStringList("dxf单数据分开导出成功"));
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("dxf"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files),
             (QStringList{"exported_data_1.dxf", "exported_data_2.dxf", "exported_data_3.dxf"}));
    const char* types[] = {"LINESTRING", "POINT", "LINESTRING"};
    for (int number = 1; number <= 3; ++number) {
        const QList<gdal_entity> entities =
            read_with_gdal(path(QStringLiteral("exported_data_%1.dxf").arg(number)));
        QCOMPARE(entities.size(), 1);
        QCOMPARE(entities[0].type, QString(types[number - 1]));
    }
    // A second time replaces the files.
    const QByteArray before = groups_of(path("exported_data_1.dxf")).last().second;
    m_exporter->more_dxf_export(0, {}, m_folder->path());
    QCOMPARE(groups_of(path("exported_data_1.dxf")).count({0, "EOF"}), 1);
    QCOMPARE(before, QByteArray("EOF"));
}

void test_dxf::each_stops_at_a_file_that_cannot_be_opened()
{
    QVERIFY(QDir(m_folder->path()).mkdir("exported_data_2.dxf"));
    m_exporter->export_list = {record("航点", {"104,30,1"}), record("航点", {"105,30,1"}),
                               record("航点", {"106,30,1"})};
    m_exporter->more_dxf_export(0, {}, m_folder->path());
    QCOMPARE(m_boxes->texts(), QStringList("Failed to open file"));
    QVERIFY(QFile::exists(path("exported_data_1.dxf")));
    QVERIFY(!QFile::exists(path("exported_data_3.dxf")));
    // The folder itself is not made.
    m_exporter->more_dxf_export(0, {}, path("new"));
    QCOMPARE(m_boxes->texts().last(), QStringLiteral("Failed to open file"));
    QVERIFY(!QFile::exists(path("new")));
}

void test_dxf::an_empty_path_is_silent()
{
    m_exporter->export_list = {record("航点", {"104,30,1"})};
    m_exporter->more_dxf_export(0, {}, {});
    m_exporter->one_dxf_export(0, {}, {});
    QCOMPARE(m_boxes->boxes.size(), 0);
}

void test_dxf::names_may_be_chinese()
{
    m_exporter->export_list = {record("航点", {"104.5,30.25,500.5"})};
    m_exporter->one_dxf_export(0, {}, path("北面 地块.dxf"));
    QVERIFY(QFile::exists(path("北面 地块.dxf")));
    import(path("北面 地块.dxf"));
    QCOMPARE(m_importer->data_msg, QStringList("104.500000000000,30.250000000000"));
}

void test_dxf::gdal_reads_what_is_written_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode <= 4; ++mode)
        QTest::addRow("mode %d", mode) << mode;
}

void test_dxf::gdal_reads_what_is_written()
{
    QFETCH(int, mode);
    const bool plane = mode == 1 || mode == 4;
    const CoordinateSystem system = system_at(105);
    const sample_lists samples = sample_records();
    QList<exportRecord> records;
    QList<gdal_entity> points;
    QList<gdal_entity> lines;
    for (qsizetype i = 0; i < samples.table_list.size(); ++i) {
        exportRecord one;
        static_cast<measuringData&>(one) = samples.table_list[i];
        one.coordinates = samples.data_msg_altitude[i];
        records.append(one);
        QList<double> numbers;
        const QStringList texts = one.coordinates.split('\n', Qt::SkipEmptyParts);
        for (const QString& text : texts) {
            const QStringList parts = text.split(',');
            double x = parts[0].toDouble() * 1e6;
            double y = parts[1].toDouble() * 1e6;
            if (plane) {
                const plane_position at =
                    plane_of(parts[1].toDouble(), parts[0].toDouble(), system);
                x = at.y - std::trunc(at.y / 1e6) * 1e6;
                y = at.x;
            }
            if (mode == 4)
                std::swap(x, y);
            numbers << x << y;
            if (texts.size() == 1)
                numbers << parts[2].toDouble();
        }
        if (texts.size() == 1)
            points.append({"POINT", numbers});
        else if (!texts.isEmpty())
            lines.append({"LINESTRING", numbers});
    }
    write_merged(records, mode, system);
    const QList<gdal_entity> read = read_with_gdal(path("out.dxf"));
    const QList<gdal_entity> expected = points + lines;
    QVERIFY(expected.size() > 5);
    QCOMPARE(read.size(), expected.size());
    for (qsizetype i = 0; i < read.size(); ++i) {
        QCOMPARE(read[i].type, expected[i].type);
        QVERIFY(close_to(read[i].numbers, expected[i].numbers));
    }
}

void test_dxf::what_was_written_comes_back()
{
    write_merged({record("面积", {"104.5,30.25,500.5", "104.6,30.25,501", "104.6,30.35,502"}),
                  record("航点", {"104.5,30.25,500.55"}),
                  record("距离", {"-104.5,-30.25,500.5", "104.000000123,30.25,501"})});
    m_boxes->boxes.clear();
    const log_capture log;
    import(path("out.dxf"));
    QCOMPARE(m_delivered, 1);
    QCOMPARE(m_boxes->boxes.size(), 1);
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Information);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("导入"));
    QCOMPARE(m_boxes->boxes[0].text, QStringLiteral("dxf文件导入成功"));
    QVERIFY(log.has("自制dxf文件"));
    QVERIFY(log.has("点数: 1 多边数: 2 线数: 0"));
    QVERIFY(log.has("多边形点数 : 3"));
    QVERIFY(log.has("table show"));

    QStringList methods;
    QStringList counts;
    for (const measuringData& one : m_importer->table_list) {
        methods.append(one.method);
        counts.append(one.numpoint);
    }
    QCOMPARE(methods, (QStringList{"航点", "航迹", "航迹"})); // an area comes back as a track
    QCOMPARE(counts, (QStringList{"1", "3", "2"}));
    QCOMPARE(m_importer->data_msg,
             (QStringList{"104.500000000000,30.250000000000",
                          "104.500000000000,30.250000000000,104.600000000000,30.250000000000,"
                          "104.600000000000,30.350000000000",
                          "-104.500000000000,-30.250000000000,104.000000123000,30.250000000000"}));
    // The vertices of a drawing have no altitude.
    QCOMPARE(m_importer->data_msg_altitude,
             (QStringList{"104.500000000000,30.250000000000,500.6\n",
                          "104.500000000000,30.250000000000,0.0\n"
                          "104.600000000000,30.250000000000,0.0\n"
                          "104.600000000000,30.350000000000,0.0\n",
                          "-104.500000000000,-30.250000000000,0.0\n"
                          "104.000000123000,30.250000000000,0.0\n"}));
    const point_msg none{"0", "0", "0", "0", "0"};
    QCOMPARE(m_importer->point_msg_all,
             (QList<QList<point_msg>>{{none}, {none, none, none}, {none, none}}));

    measuringData rest = m_importer->table_list[1];
    rest.numpoint = rest.method = rest.time = rest.name = "0";
    QCOMPARE(rest, measuringData());
}

void test_dxf::degrees_are_read_in_all_spherical_modes()
{
    const QString from = write(
        "degrees.dxf",
        drawing(
            point_entity("104500000", "30250000", "7") +
            groups{{0, "LWPOLYLINE"}, {8, "0"}, {90, "1"}, {10, "-70250000"}, {20, "-33500000"}}));
    for (const int mode : {0, 2, 3}) {
        import(from, mode, system_at(117));
        QCOMPARE(m_importer->data_msg, (QStringList{"104.500000000000,30.250000000000",
                                                    "-70.250000000000,-33.500000000000"}));
    }
}

void test_dxf::equal_entities_are_all_read()
{
    const groups line{{0, "LWPOLYLINE"}, {8, "0"}, {90, "1"}, {10, "1000000"}, {20, "2000000"}};
    const groups point = point_entity("1000000", "2000000");
    import(write("equal.dxf", drawing(point + line + point + line)));
    QCOMPARE(m_importer->data_msg, QStringList(4, "1.000000000000,2.000000000000"));
    QCOMPARE(m_importer->table_list.size(), 4);
}

void test_dxf::time_loses_its_separators_from_the_second_record_on()
{
    write_merged({record("航点", {"104.5,30.25,1"}), record("航点", {"104.6,30.25,1"}),
                  record("航迹", {"104.5,30.25,1", "104.6,30.25,1"})});
    import(path("out.dxf"));
    QCOMPARE(m_importer->table_list.size(), 3);
    const QString time = m_importer->table_list[0].time;
    static const QRegularExpression separated(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d$)");
    QVERIFY(separated.match(time).hasMatch());
    const QString digits = QString(time).remove('-').remove(' ').remove(':');
    QCOMPARE(m_importer->table_list[1].time, digits);
    QCOMPARE(m_importer->table_list[2].time, digits);
    for (const measuringData& one : m_importer->table_list)
        QCOMPARE(one.name, digits.left(12));
}

void test_dxf::waypoints_in_plane_modes_do_not_survive()
{
    const CoordinateSystem system = system_at(117);
    for (const int mode : {1, 4}) {
        write_merged({record("航点", {"117.5,30.25,500.5"})}, mode, system);
        import(path("out.dxf"), mode, system);
        // The easting is taken for the northing, and there is no zone.
        plane_position plane = plane_of(30.25, 117.5, system);
        plane = {plane.y - 39e6, plane.x, 500.5};
        const geodetic_position expected = plane_to_wgs84(
            plane, flat_parameters(system), system.changzhou, system.duanzhou, system.pianlv);
        QCOMPARE(m_importer->data_msg[0],
                 QString::number(expected.l, 'f', 12) + ',' + QString::number(expected.b, 'f', 12));
        QVERIFY(std::abs(expected.b - 30.25) > 1);
    }
}

void test_dxf::polylines_are_taken_for_zone_39()
{
    for (const int mode : {1, 4}) {
        const CoordinateSystem at_39 = system_at(117);
        write_merged({record("航迹", {"117.5,30.25,500.5", "117.6,30.35,500.5"})}, mode, at_39);
        const log_capture log;
        import(path("out.dxf"), mode, at_39);
        QStringList numbers = m_importer->data_msg[0].split(',');
        QVERIFY(std::abs(numbers[0].toDouble() - 117.5) < 1e-7);
        QVERIFY(std::abs(numbers[1].toDouble() - 30.25) < 1e-7);
        QVERIFY(std::abs(numbers[2].toDouble() - 117.6) < 1e-7);
        const plane_position plane = plane_of(30.25, 117.5, at_39);
        QVERIFY(log.has("x: " + QString::number(plane.x, 'f', 2) +
                        " y: " + QString::number(plane.y, 'f', 2)));
        QVERIFY(log.has("lon: " + numbers[0] + " lat: " + numbers[1]));

        // Out of zone 35 it comes back 12 degrees east of where it was.
        const CoordinateSystem at_35 = system_at(105);
        write_merged({record("航迹", {"105.5,30.25,500.5", "105.6,30.35,500.5"})}, mode, at_35);
        import(path("out.dxf"), mode, at_35);
        numbers = m_importer->data_msg[0].split(',');
        QVERIFY(std::abs(numbers[0].toDouble() - 117.5) < 1e-7);
        QVERIFY(std::abs(numbers[1].toDouble() - 30.25) < 1e-7);
    }
}

void test_dxf::vertices_keep_their_altitude()
{
    const groups vertex{{0, "VERTEX"}, {8, "0"}, {10, "104000000"}, {20, "30000000"}, {30, "7.46"}};
    import(write("high.dxf", drawing(groups{{0, "POLYLINE"},
                                            {8, "0"},
                                            { 66,
                                              "1" }} +
                                     vertex +
                                     groups{{0, "SEQEND"},
                                            { 8,
                                              "0" }})));
    QCOMPARE(m_importer->data_msg_altitude, QStringList("104.000000000000,30.000000000000,7.5\n"));
}

void test_dxf::corpus_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("methods");
    QTest::addColumn<QStringList>("data");

    const groups r12_head{{0, "POLYLINE"}, {8, "0"}, {66, "1"}, {10, "0.0"}, {20, "0.0"}};
    const auto vertex = [](const QByteArray& x, const QByteArray& y) {
        return groups{{0, "VERTEX"}, {8, "0"}, {10, x}, {20, y}, {30, "7.5"}};
    };
    const groups end{{0, "SEQEND"}, {8, "0"}};
    const QString two = "104.000000000000,30.000000000000,104.100000000000,30.100000000000";
    const groups two_vertices = vertex("104000000", "30000000") + vertex("1.041E+08", "30100000");

    QTest::newRow("R12 polyline") << drawing(r12_head + two_vertices + end) << QStringList("航迹")
                                  << QStringList(two);
    QTest::newRow("R12 polyline, closed")
        << drawing(r12_head + groups{{70, "1"}} + two_vertices + end) << QStringList("航迹")
        << QStringList(two);
    QTest::newRow("two R12 polylines")
        << drawing(r12_head + two_vertices + end + r12_head + vertex("0", "0") + end)
        << QStringList{"航迹", "航迹"} << QStringList{two, "0.000000000000,0.000000000000"};
    QTest::newRow("R12 polyline without vertices")
        << drawing(r12_head + end) << QStringList("航迹") << QStringList("");
    QTest::newRow("vertex outside a polyline")
        << drawing(vertex("104000000", "30000000")) << QStringList() << QStringList();

    const groups light{{0, "LWPOLYLINE"},     {100, "AcDbEntity"}, {8, "0"},
                       {100, "AcDbPolyline"}, {90, "2"},           {70, "0"}};
    QTest::newRow("light polyline with bulges") << drawing(light + groups{{10, "104000000"},
                                                                          {20, "30000000"},
                                                                          {42, "0.5"},
                                                                          {10, "104100000"},
                                                                          {20, "30100000"},
                                                                          {42, "-1"}})
                                                << QStringList("航迹") << QStringList(two);
    QTest::newRow("light polyline with widths and an elevation")
        << drawing(light + groups{{38, "12"},
                                  {43, "1.5"},
                                  {10, "104000000"},
                                  {20, "30000000"},
                                  {40, "1"},
                                  {41, "2"},
                                  {10, "104100000"},
                                  {20, "30100000"}})
        << QStringList("航迹") << QStringList(two);
    groups closed = light;
    closed[5] = {70, "1"};
    QTest::newRow("light polyline, closed")
        << drawing(closed +
                   groups{{10, "104000000"}, {20, "30000000"}, {10, "104100000"}, {20, "30100000"}})
        << QStringList("航迹") << QStringList(two);
    groups claims_more = light;
    claims_more[4] = {90, "5"};
    QTest::newRow("light polyline of fewer vertices than it claims")
        << drawing(claims_more +
                   groups{{10, "104000000"}, {20, "30000000"}, {10, "104100000"}, {20, "30100000"}})
        << QStringList("航迹") << QStringList(two);

    const groups block_head{{0, "BLOCK"}, {8, "0"}, {2, "well"}, {70, "0"}, {10, "0"}, {20, "0"}};
    const groups block_end{{0, "ENDBLK"}, {8, "0"}};
    const groups line{{0, "LINE"}, {8, "0"}, {10, "1"}, {20, "2"}, {11, "3"}, {21, "4"}};
    const auto insert = [](const QByteArray& x) {
        return groups{{0, "INSERT"}, {8, "0"}, {2, "well"}, {10, x}, {20, "30000000"}};
    };
    QTest::newRow("points in a block come once and where the block has them")
        << drawing(insert("104000000") + insert("105000000"),
                   block_head + point_entity("103000000", "31000000", "5") + line + block_end)
        << QStringList("航点") << QStringList("103.000000000000,31.000000000000");
    QTest::newRow("polyline in a block")
        << drawing(insert("104000000"), block_head + light +
                                            groups{{10, "104000000"},
                                                   {20, "30000000"},
                                                   {10, "104100000"},
                                                   {20, "30100000"}} +
                                            block_end)
        << QStringList("航迹") << QStringList(two);
    QTest::newRow("empty block") << drawing(insert("104000000"), block_head + block_end)
                                 << QStringList() << QStringList();

    QTest::newRow("lines only") << drawing(line + line) << QStringList() << QStringList();
    QTest::newRow("other entities")
        << drawing(
               groups{{0, "CIRCLE"}, {8, "0"}, {10, "1"}, {20, "2"}, {40, "3"}} +
               groups{{0, "TEXT"}, {8, "0"}, {10, "1"}, {20, "2"}, {40, "3"}, {1, "\xe5\x8c\x97"}} +
               groups{{0, "MTEXT"}, {8, "0"}, {10, "1"}, {20, "2"}, {40, "3"}, {1, "a"}} +
               groups{{0, "SPLINE"},
                      {8, "0"},
                      {71, "3"},
                      {72, "2"},
                      {73, "1"},
                      {40, "0"},
                      {40, "1"},
                      {10, "0"},
                      {20, "0"}} +
               groups{
                   {0, "LEADER"}, {8, "0"}, {76, "2"}, {10, "0"}, {20, "0"}, {10, "1"}, {20, "1"}} +
               groups{{0, "HATCH"},
                      {8, "0"},
                      {91, "1"},
                      {92, "1"},
                      {93, "1"},
                      {72, "1"},
                      {10, "0"},
                      {20, "0"},
                      {11, "1"},
                      {21, "1"}} +
               groups{{0, "SOLID"}, {8, "0"}, {10, "1"}, {20, "2"}, {11, "1"}, {21, "1"}})
        << QStringList() << QStringList();
    QTest::newRow("point and polyline, points first")
        << drawing(
               light +
               groups{{10, "104000000"}, {20, "30000000"}, {10, "104100000"}, {20, "30100000"}} +
               point_entity("103000000", "31000000"))
        << QStringList{"航点", "航迹"} << QStringList{"103.000000000000,31.000000000000", two};
    QByteArray windows = drawing(point_entity("103000000", "31000000"));
    windows.replace("\n", "\r\n");
    QTest::newRow("Windows line ends")
        << windows << QStringList("航点") << QStringList("103.000000000000,31.000000000000");
    QTest::newRow("empty file") << QByteArray() << QStringList() << QStringList();
    QTest::newRow("one line feed") << QByteArray("\n") << QStringList() << QStringList();
    QTest::newRow("no drawing at all")
        << QByteArray("This is a letter.\nIt has lines.\n") << QStringList() << QStringList();
}

void test_dxf::corpus()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, methods);
    QFETCH(QStringList, data);
    import(write("foreign.dxf", text));
    QCOMPARE(m_boxes->texts(), QStringList("dxf文件导入成功"));
    QCOMPARE(m_delivered, 1);
    QStringList read;
    for (const measuringData& one : m_importer->table_list)
        read.append(one.method);
    QCOMPARE(read, methods);
    QCOMPARE(m_importer->data_msg, data);
    for (qsizetype i = 0; i < data.size(); ++i) {
        const qsizetype points = data[i].isEmpty() ? 0 : (data[i].count(',') + 1) / 2;
        QCOMPARE(m_importer->table_list[i].numpoint, QString::number(points));
        QCOMPARE(m_importer->data_msg_altitude[i].count('\n'), points);
        QCOMPARE(m_importer->point_msg_all[i].size(), points);
    }
}

/// The library reads text only; a binary drawing has nothing that it knows.
void test_dxf::binary_drawings_hold_nothing()
{
    QByteArray bytes("AutoCAD Binary DXF\r\n\x1a\0", 22);
    const auto add = [&bytes](char code, const QByteArray& value) {
        bytes += code;
        bytes += '\0';
        bytes += value;
    };
    const QByteArray ordinate("\0\0\0\0\0\0\xf0\x3f", 8); // 1.0
    add(0, QByteArray("SECTION", 8));
    add(2, QByteArray("ENTITIES", 9));
    add(0, QByteArray("POINT", 6));
    for (const char code : {'\x0a', '\x14', '\x1e'})
        add(code, ordinate);
    add(0, QByteArray("ENDSEC", 7));
    add(0, QByteArray("EOF", 4));
    import(write("binary.dxf", bytes));
    QCOMPARE(m_boxes->texts(), QStringList("dxf文件导入成功"));
    QCOMPARE(m_importer->table_list.size(), 0);
}

void test_dxf::truncated_drawings_end()
{
    write_merged({record("航点", {"104.5,30.25,500.5"}),
                  record("面积", {"104.5,30.25,500.5", "104.6,30.25,501", "104.6,30.35,502"})});
    QFile whole(path("out.dxf"));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray text = whole.readAll();
    const qsizetype entities = text.indexOf("ENTITIES");
    QVERIFY(entities > 0);
    // An entity is there as soon as the next one begins.
    const qsizetype has_point = text.indexOf("LWPOLYLINE") + 11;
    const qsizetype has_line = text.indexOf("ENDSEC", has_point) + 7;
    QVERIFY(has_point > entities && has_line > has_point);
    for (qsizetype size = 0; size < text.size(); size += size < entities ? 801 : 13) {
        m_boxes->boxes.clear();
        import(write("cut.dxf", text.left(size)));
        QCOMPARE(m_boxes->texts(), QStringList("dxf文件导入成功"));
        QVERIFY(m_importer->table_list.size() <= 2);
        if (size < entities)
            QCOMPARE(m_importer->table_list.size(), 0);
        if (size >= has_point)
            QCOMPARE(m_importer->data_msg.value(0), "104.500000000000,30.250000000000");
        if (size >= has_line)
            QCOMPARE(m_importer->data_msg.value(1),
                     "104.500000000000,30.250000000000,104.600000000000,30.250000000000,"
                     "104.600000000000,30.350000000000");
    }
}

void test_dxf::big_drawings_are_read()
{
    constexpr qsizetype size = 50'000'000;
    constexpr int vertices = 100'000;
    QByteArray text = "0\nSECTION\n2\nENTITIES\n";
    text.reserve(size + 10'000'000);
    int lines = 0;
    while (text.size() < size) {
        text += "0\nLWPOLYLINE\n8\n0\n90\n" + QByteArray::number(vertices) + "\n70\n0\n";
        for (int i = 0; i < vertices; ++i)
            text += "10\n104500000.125\n20\n30250000.5\n";
        ++lines;
    }
    text += "0\nENDSEC\n0\nEOF\n";
    // A line of the log for each of a million vertices is not what is tried here.
    QLoggingCategory::setFilterRules("default.debug=false");
    import(write("big.dxf", text));
    QLoggingCategory::setFilterRules({});
    QCOMPARE(m_boxes->texts(), QStringList("dxf文件导入成功"));
    QCOMPARE(m_importer->table_list.size(), lines);
    QCOMPARE(m_importer->table_list.last().numpoint, QString::number(vertices));
    QCOMPARE(m_importer->data_msg_altitude.last().count('\n'), vertices);
    QVERIFY(m_importer->data_msg.last().endsWith("104.500000125000,30.250000500000"));
}

void test_dxf::faces_are_printed()
{
    Test_CreationClass store;
    // The process of the test reads its own output back.
    std::fflush(stdout);
    const int kept = dup(1);
    const QString file = path("stdout");
    QVERIFY(std::freopen(qPrintable(file), "w", stdout) != nullptr);
    store.add3dFace(DL_3dFaceData());
    std::fflush(stdout);
    dup2(kept, 1);
    close(kept);
    QFile printed(file);
    QVERIFY(printed.open(QIODevice::ReadOnly));
    QCOMPARE(printed.readAll(), QByteArray("3DFACE\n"));
    QVERIFY(store.points.empty() && store.polylines.empty() && store.solids.empty());
}

void test_dxf::only_regular_files_are_read_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"missing", "folder", "pipe", "device", "link to a folder"})
        QTest::newRow(kind) << QString(kind);
}

void test_dxf::only_regular_files_are_read()
{
    QFETCH(QString, kind);
    const QString x = path("x.dxf");
    if (kind == "folder")
        QVERIFY(QDir().mkdir(x));
    else if (kind == "pipe")
        QCOMPARE(mkfifo(qPrintable(x), 0600), 0);
    else if (kind == "device")
        QVERIFY(QFile::link("/dev/zero", x));
    else if (kind == "link to a folder")
        QVERIFY(QFile::link(m_folder->path(), x));
    import(x);
    QCOMPARE(m_boxes->boxes.size(), 1);
    QCOMPARE(m_boxes->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(m_boxes->boxes[0].title, QStringLiteral("dxf"));
    QCOMPARE(m_boxes->boxes[0].text, QStringLiteral("打开dxf文件失败"));
    QCOMPARE(m_delivered, 0);
    QCOMPARE(m_importer->table_list.size(), 0);
}

/// What the library itself would not survive: it believes every count.
void test_dxf::hostile_drawings_are_refused_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto claims = [](const char* entity, int code, const char* count) {
        return drawing({{0, entity}, {8, "0"}, {code, count}, {10, "1"}, {20, "2"}});
    };
    QTest::newRow("two thousand million vertices") << claims("LWPOLYLINE", 90, "2000000000");
    QTest::newRow("a count that wraps around") << claims("LWPOLYLINE", 90, "1073741825");
    QTest::newRow("a count beyond 64 bits") << claims("LWPOLYLINE", 90, "99999999999999999999999");
    QTest::newRow("knots") << claims("SPLINE", 72, "2000000000");
    QTest::newRow("control points") << claims("SPLINE", 73, "1431655766");
    QTest::newRow("fit points") << claims("SPLINE", 74, "1431655766");
    QTest::newRow("leader") << claims("LEADER", 76, "1431655766");
    QTest::newRow("a banner without a version")
        << QByteArray("999\ndxflib\n") + drawing(point_entity("1", "2"));
}

void test_dxf::hostile_drawings_are_refused()
{
    QFETCH(QByteArray, text);
    import(write("hostile.dxf", text));
    QCOMPARE(m_boxes->texts(), QStringList("打开dxf文件失败"));
    QCOMPARE(m_delivered, 0);
    QCOMPARE(m_importer->table_list.size(), 0);
}

#ifdef Q_OS_LINUX
/// Neither the file nor the locale stays as the library has it while it reads.
void test_dxf::a_refused_drawing_is_closed()
{
    const std::locale before = std::locale::global(std::locale("C.UTF-8"));
    const QString sound = write("sound.dxf", drawing(point_entity("1", "2")));
    const QString hostile = write("hostile.dxf", drawing({{0, "LWPOLYLINE"}, {90, "2000000000"}}));
    for (const QString& from : {sound, hostile}) {
        import(from);
        QCOMPARE(std::locale().name(), std::string("C.UTF-8"));
        QCOMPARE(std::setlocale(LC_NUMERIC, nullptr), "C.UTF-8");
        const QDir open("/proc/self/fd");
        QVERIFY(open.count() > 2);
        for (const QFileInfo& one : open.entryInfoList(QDir::Files | QDir::System))
            QVERIFY(one.symLinkTarget() != from);
    }
    QCOMPARE(m_boxes->texts(), (QStringList{"dxf文件导入成功", "打开dxf文件失败"}));
    std::locale::global(before);
}
#endif

void test_dxf::blocks_keep_their_entities()
{
    const DL_LineData line(1, 2, 3, 4, 5, 6);
    const DL_MTextData mtext(0, 0, 0, 1, 0, 0, 1, 1, 1, 1, 1, 1, "a", "standard", 0);
    Test_CreationClass store;
    QVERIFY(!store.in_block);
    store.addBlock({"full", 0, 0, 0, 0});
    QVERIFY(store.in_block);
    store.addLine(line);
    store.addLine(line);
    store.addSolid({});
    store.addMText(mtext);
    store.addPoint({1, 2, 3});
    store.addText({0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, "a", "standard", 0});
    store.endBlock();
    QVERIFY(!store.in_block);
    QCOMPARE(store.blocks.size(), 1U);
    QCOMPARE(store.blocks[0].lines.size(), 2U);
    QCOMPARE(store.blocks[0].solids.size(), 1U);
    QCOMPARE(store.blocks[0].mtexts.size(), 1U);
    QVERIFY(store.lines.empty() && store.solids.empty() && store.mtexts.empty());
    QCOMPARE(store.points.size(), 1U); // those of blocks stand with the others
    QCOMPARE(store.texts.size(), 1U);

    store.addBlock({"of a point", 0, 0, 0, 0});
    store.addPoint({1, 2, 3});
    store.endBlock();
    QCOMPARE(store.blocks.size(), 1U); // nothing of its own: it goes
    QCOMPARE(store.points.size(), 2U);

    store.addLine(line);
    store.addSolid({});
    store.addMText(mtext);
    QCOMPARE(store.lines.size(), 1U);
    QCOMPARE(store.solids.size(), 1U);
    QCOMPARE(store.mtexts.size(), 1U);
    QCOMPARE(store.blocks[0].lines.size(), 2U);
    QVERIFY(store.arcs.empty() && store.circles.empty());
}

void test_dxf::lines_of_blocks_are_not_counted()
{
    const groups line{{0, "LINE"}, {8, "0"}, {10, "1"}, {20, "2"}, {11, "3"}, {21, "4"}};
    const groups head{{0, "BLOCK"}, {8, "0"}, {2, "well"}, {70, "0"}, {10, "0"}, {20, "0"}};
    const log_capture log;
    import(write("lines.dxf", drawing(line + line, head + line +
                                                       groups{{0, "ENDBLK"},
                                                              { 8,
                                                                "0" }})));
    QVERIFY(log.has("点数: 0 多边数: 0 线数: 2"));
    QCOMPARE(m_importer->table_list.size(), 0);
}

QTEST_MAIN(test_dxf)
#include "test_dxf.moc"
