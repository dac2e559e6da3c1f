// DXF drawings: each measurement is a point or an open polyline, and points and
// polylines of any drawing come back as waypoints and tracks.

#include "coordinates/transforms.h"
#include "exchange/coordinate_mode.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"
#include "exchange/test_creation_class.h"
#include "presentation/quick_number.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <dxflib/dl_dxf.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace {

/// The log of single vertices, of which there can be millions: nothing is
/// formatted when nobody reads it.
const QLoggingCategory& vertex_log()
{
    return *QLoggingCategory::defaultCategory();
}

/// Degrees stand in a drawing as millionths, so that CAD programs, which work in
/// drawing units, do not see all of a field in one spot.
constexpr double units_per_degree = 1'000'000.0;

/// In a plane format the zone number stands in the millions of the easting.
constexpr double metres_per_zone = 1'000'000.0;

/// A drawing holds eastings without their zone; a polyline that is read is taken
/// to lie in zone 39, wherever it came from.
constexpr double read_zone_offset = 39'000'000.0;

/// What dxflib can print: it has 256 bytes for a number. Nothing on the globe is
/// that far away.
constexpr double largest_ordinate = 1e15;

struct parsed_point
{
    double longitude, latitude, altitude;
};

/// The points of a record's coordinate lines. A line that is not three numbers
/// is logged and passed over.
std::vector<parsed_point> dxf_parse_coordinates(const QString& coordinates, int mode)
{
    const double factor = is_plane(mode) ? 1.0 : units_per_degree;
    std::vector<parsed_point> points;
    for (const QStringView line : QStringView(coordinates).tokenize(u'\n', Qt::SkipEmptyParts)) {
        std::array<double, 3> values{};
        std::size_t count = 0;
        bool valid = true;
        for (const QStringView part : line.tokenize(u',', Qt::SkipEmptyParts)) {
            const double value = quick_to_double(part, &valid);
            valid = valid && std::abs(value) < largest_ordinate && count < values.size();
            if (!valid)
                break;
            values[count++] = value;
        }
        if (valid && count == values.size())
            points.push_back({values[0] * factor, values[1] * factor, values[2]});
        else
            qDebug() << "Invalid entry format: " << line;
    }
    return points;
}

/// Puts records into a store as the entities that stand for them.
struct entity_maker
{
    int mode;
    model_param param;
    double a, b, f; ///< axes, metres, and flattening

    void add(const exportRecord& record, Test_CreationClass& store)
    {
        const std::vector<parsed_point> points = dxf_parse_coordinates(record.coordinates, mode);
        if (points.empty())
            return; // a damaged text: there is nothing to draw
        if (points.size() == 1) {
            store.points.push_back(drawn(points.front()));
            return;
        }
        Test_CreationClass::polyline line{{record.numpoint.toInt(), 0, 0, 0}, {}};
        line.vertices.reserve(points.size());
        for (const parsed_point& point : points) {
            const DL_PointData at = drawn(point);
            line.vertices.emplace_back(at.x, at.y, at.z);
        }
        store.polylines.push_back(std::move(line));
    }

private:
    DL_PointData drawn(const parsed_point& point)
    {
        if (!is_plane(mode))
            return {point.longitude, point.latitude, point.altitude};
        geodetic_position position{point.latitude, point.longitude, point.altitude};
        const plane_position plane = wgs84_to_plane(position, param, a, b, f);
        const double easting = plane.y - std::trunc(plane.y / metres_per_zone) * metres_per_zone;
        return mode == yx_mode ? DL_PointData{plane.x, easting, point.altitude}
                               : DL_PointData{easting, plane.x, point.altitude};
    }
};

/// Gives the dimension style its text style. dxflib remembers a text style only by the
/// name "Standard"; of another it writes whatever stood in memory.
class drawing_writer : public DL_WriterA
{
public:
    using DL_WriterA::DL_WriterA;

    void dxfHex(int code, int value) const override
    {
        constexpr int text_style_code = 340;
        const bool refers = in_dimension_style && code == text_style_code;
        DL_WriterA::dxfHex(code, refers ? static_cast<int>(text_style) : value);
    }

    unsigned long text_style = 0; ///< its handle
    bool in_dimension_style = false;
};

void write_tables(DL_Dxf& dxf, drawing_writer& writer)
{
    writer.sectionTables();
    dxf.writeVPort(writer);

    writer.tableLinetypes(3);
    dxf.writeLinetype(writer, {"BYBLOCK", "BYBLOCK", 0, 0, 0.0});
    dxf.writeLinetype(writer, {"BYLAYER", "BYLAYER", 0, 0, 0.0});
    dxf.writeLinetype(writer, {"CONTINUOUS", "Continuous", 0, 0, 0.0});
    writer.tableEnd();

    struct layer
    {
        const char* name;
        int colour;
    };
    writer.tableLayers(3);
    for (const layer& one : {layer{"0", DL_Codes::black}, layer{"mainlayer", DL_Codes::black},
                             layer{"anotherlayer", DL_Codes::blue}})
        dxf.writeLayer(writer, {one.name, 0}, {"", one.colour, 100, "CONTINUOUS", 1.0});
    writer.tableEnd();

    writer.tableStyle(1);
    writer.text_style = writer.getNextHandle();
    dxf.writeStyle(writer, {"standard", 0, 2.5, 1.0, 0.0, 0, 2.5, "txt", ""});
    writer.tableEnd();

    dxf.writeView(writer);
    dxf.writeUcs(writer);

    writer.tableAppid(1);
    dxf.writeAppid(writer, "ACAD");
    writer.tableEnd();

    writer.in_dimension_style = true;
    dxf.writeDimStyle(writer, 1.0, 1.0, 1.0, 1.0, 1.0);
    writer.in_dimension_style = false;
    dxf.writeBlockRecord(writer);
    writer.tableEnd();
    writer.sectionEnd();
}

void write_blocks(DL_Dxf& dxf, DL_WriterA& writer)
{
    writer.sectionBlocks();
    for (const char* name : {"*Model_Space", "*Paper_Space", "*Paper_Space0"}) {
        dxf.writeBlock(writer, {name, 0, 0.0, 0.0, 0.0});
        dxf.writeEndBlock(writer, name);
    }
    writer.sectionEnd();
}

void write_entities(DL_Dxf& dxf, DL_WriterA& writer, const Test_CreationClass& store)
{
    const DL_Attributes attributes("mainlayer", 7, -1, -1, "BYLAYER");
    writer.sectionEntities();
    for (const DL_PointData& point : store.points)
        dxf.writePoint(writer, point, attributes);
    for (const Test_CreationClass::polyline& line : store.polylines) {
        dxf.writePolyline(writer, line.data, attributes);
        for (const DL_VertexData& vertex : line.vertices)
            dxf.writeVertex(writer, vertex);
        dxf.writePolylineEnd(writer);
    }
    writer.sectionEnd();
}

/// Writes the drawing; tells the user and returns false if the file cannot be
/// opened.
bool write_drawing(const QString& path, const Test_CreationClass& store)
{
    DL_Dxf dxf;
    const QString native = QDir::toNativeSeparators(path);
    // As DL_Dxf::out() does, which makes a writer of its own; this version is its default.
    drawing_writer writer(QFile::encodeName(native).constData(), DL_Codes::AC1015);
    if (writer.openFailed()) {
        qDebug() << "Cannot open DXF file for writing:" << native;
        show_warning(file_export_thread::tr("Warning"),
                     file_export_thread::tr("Failed to open file"));
        return false;
    }
    dxf.writeHeader(writer);
    writer.sectionEnd();
    write_tables(dxf, writer);
    write_blocks(dxf, writer);
    write_entities(dxf, writer, store);
    dxf.writeObjects(writer);
    dxf.writeObjectsEnd(writer);
    writer.dxfEOF();
    writer.close();
    return true;
}

/// Takes what dxflib reads and stops it, by an exception, at what it would not
/// survive: it reserves as many vertices, knots and so on as an entity claims,
/// and goes on for ever where a file gives errors instead of an end.
class guarded_creation : public Test_CreationClass
{
public:
    explicit guarded_creation(qint64 file_size)
        : m_pairs_left(file_size / 2 + 2), m_claims_left(file_size / shortest_claimed)
    {
    }

    void processCodeValuePair(unsigned int code, const std::string& value) override
    {
        if (--m_pairs_left < 0)
            throw std::runtime_error("more groups than the file has room for");
        if (code == 0)
            m_entity = value;
        else if (is_count(code))
            m_claims_left -= std::max(std::strtoll(value.c_str(), nullptr, 10), 0LL);
        if (m_claims_left < 0)
            throw std::runtime_error("more vertices than the file has room for");
    }

private:
    /// Bytes of the shortest thing that is counted, a knot: "40\n0\n".
    static constexpr qint64 shortest_claimed = 5;

    /// Whether dxflib reserves memory by this group of the entity.
    [[nodiscard]] bool is_count(unsigned int code) const
    {
        switch (code) {
        case 90: return m_entity == "LWPOLYLINE";
        case 72:
        case 73:
        case 74: return m_entity == "SPLINE";
        case 76: return m_entity == "LEADER";
        default: return false;
        }
    }

    qint64 m_pairs_left;
    qint64 m_claims_left;
    std::string m_entity;
};

/// The numbers of a drawing have a decimal point wherever the program runs.
class point_locale
{
public:
    ~point_locale()
    {
        std::locale::global(m_streams);
        std::setlocale(LC_ALL, m_texts.c_str());
    }

private:
    const std::string m_texts = std::setlocale(LC_ALL, nullptr);
    const std::locale m_streams = std::locale::global(std::locale::classic());
};

/// Reads the drawing. Only a regular file is handed to dxflib, which never
/// returns from a folder.
bool read_drawing(const QString& path, Test_CreationClass& store)
{
    if (!QFileInfo(path).isFile())
        return false;
    // The steps of DL_Dxf::in(), which would leave the file open and the locale
    // changed when the store stops it.
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(
        std::fopen(QFile::encodeName(path).constData(), "rt"), std::fclose);
    if (!file)
        return false;
    const point_locale restored;
    try {
        DL_Dxf dxf;
        std::istringstream nothing;
        dxf.in(nothing, &store); // sets what its constructor leaves open
        while (dxf.readDxfGroups(file.get(), &store)) {
        }
        return true;
    } catch (const std::exception& error) {
        qDebug() << "dxf:" << error.what();
        return false;
    }
}

/// Longitude and latitude of an entity's place, degrees.
struct place
{
    double longitude, latitude;
};

/// Turns places in a drawing into positions.
struct place_reader
{
    int mode;
    const model_param& param;
    double a, b, f; ///< axes, metres, and flattening

    /// The easting stands before the northing here and has no zone, so that
    /// waypoints in plane formats do not survive a round trip.
    [[nodiscard]] place of_point(const DL_PointData& point) const
    {
        if (!is_plane(mode))
            return {point.x / units_per_degree, point.y / units_per_degree};
        return mode == xy_mode ? from_plane({point.x, point.y, point.z})
                               : from_plane({point.y, point.x, point.z});
    }

    [[nodiscard]] place of_vertex(const DL_VertexData& vertex) const
    {
        if (!is_plane(mode))
            return {vertex.x / units_per_degree, vertex.y / units_per_degree};
        const plane_position plane =
            mode == xy_mode ? plane_position{vertex.y, read_zone_offset + vertex.x, vertex.z}
                            : plane_position{vertex.x, read_zone_offset + vertex.y, vertex.z};
        const place result = from_plane(plane);
        qCDebug(vertex_log).noquote()
            << "x:" << QString::number(plane.x, 'f', 2) << "y:" << QString::number(plane.y, 'f', 2);
        qCDebug(vertex_log).noquote() << "lon:" << QString::number(result.longitude, 'f', 12)
                                      << "lat:" << QString::number(result.latitude, 'f', 12);
        return result;
    }

private:
    [[nodiscard]] place from_plane(const plane_position& plane) const
    {
        const geodetic_position position = plane_to_wgs84(plane, param, a, b, f);
        return {position.l, position.b};
    }
};

/// Gathers the texts of one record's points.
struct point_texts
{
    QString data; ///< with a comma behind each pair
    QString lines;
    qsizetype count = 0;

    explicit point_texts(std::size_t expected)
    {
        constexpr qsizetype pair = 34; // "-104.123456789012,-30.123456789012,"
        const auto points = static_cast<qsizetype>(expected);
        data.reserve(points * pair);
        lines.reserve(points * (pair + 8));
    }

    void add(const place& at, double altitude)
    {
        std::array<char16_t, 3 * (longest_quick_number + 1)> line;
        char16_t* end = quick_write(line.data(), at.longitude, 12);
        *end++ = u',';
        end = quick_write(end, at.latitude, 12);
        *end++ = u',';
        data.append(QStringView(line.data(), end));
        end = quick_write(end, altitude, 1);
        *end++ = u'\n';
        lines.append(QStringView(line.data(), end));
        ++count;
    }
};

/// A record of the import whose time is \a time. The time loses its separators
/// with the first name that is made of it, so that only the first record of a
/// file shows them.
measuringData drawn_record(const QString& method, QString& time)
{
    measuringData record;
    record.method = method;
    record.time = time;
    time.remove(QLatin1Char('-')).remove(QLatin1Char(' ')).remove(QLatin1Char(':'));
    record.name = time.left(12);
    return record;
}

} // namespace

void file_export_thread::one_dxf_export(int mode, model_param m_ModelParam, QString file_path)
{
    if (file_path.isEmpty())
        return;
    log_parameters(m_ModelParam);
    Test_CreationClass store;
    entity_maker entities{mode, m_ModelParam, cz, dz, pl};
    for (const exportRecord& record : std::as_const(export_list))
        entities.add(record, store);
    if (!QDir().mkpath(QFileInfo(file_path).absolutePath())) {
        show_warning(tr("Warning"), tr("Failed to create directory"));
        return;
    }
    if (write_drawing(file_path, store))
        show_information(tr("dxf"), tr("dxf多数据合并导出成功"));
}

void file_export_thread::more_dxf_export(int mode, model_param m_ModelParam, QString file_path)
{
    if (file_path.isEmpty())
        return;
    entity_maker entities{mode, m_ModelParam, cz, dz, pl};
    qsizetype number = 0;
    for (const exportRecord& record : std::as_const(export_list)) {
        Test_CreationClass store;
        entities.add(record, store);
        if (!write_drawing(record_file_path(file_path, QStringLiteral("dxf"), ++number), store))
            return;
    }
    show_information(tr("dxf"), tr("dxf单数据分开导出成功"));
}

void file_import_thread::import_dxf(const QString& path)
{
    guarded_creation store(QFileInfo(path).size());
    if (!read_drawing(path, store)) {
        show_warning(tr("dxf"), tr("打开dxf文件失败"));
        return;
    }
    QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    qDebug() << "自制dxf文件";
    qDebug() << "点数:" << store.points.size() << "多边数:" << store.polylines.size()
             << "线数:" << store.lines.size();

    const place_reader places{mode, m_ModelParam, cz, dz, pl};
    const auto append = [&](const QString& method, point_texts& texts) {
        measuringData record = drawn_record(method, time);
        record.numpoint = QString::number(texts.count);
        table_list.append(record);
        texts.data.chop(1);
        append_geometry(texts.data, texts.lines, texts.count);
    };
    for (const DL_PointData& point : store.points) {
        point_texts texts(1);
        texts.add(places.of_point(point), point.z);
        append(QStringLiteral("航点"), texts);
    }
    for (Test_CreationClass::polyline& line : store.polylines) {
        // Their memory is free for the texts of the next.
        const std::vector<DL_VertexData> vertices = std::move(line.vertices);
        point_texts texts(vertices.size());
        for (const DL_VertexData& vertex : vertices) {
            qCDebug(vertex_log) << "多边形点数 :" << vertices.size();
            texts.add(places.of_vertex(vertex), vertex.z);
        }
        append(QStringLiteral("航迹"), texts);
    }
    qDebug() << "table show";
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    show_information(tr("导入"), tr("dxf文件导入成功"));
}
