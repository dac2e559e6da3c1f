#include "exchange/csv.h"

#include "coordinates/transforms.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"

#include <QDebug>
#include <QFile>
#include <QStringBuilder>
#include <QStringConverter>

#include <algorithm>
#include <array>

namespace {

enum coordinate_mode
{
    degrees_mode,
    xy_mode,
    minutes_mode,
    seconds_mode,
    yx_mode,
};

bool is_plane(int mode)
{
    return mode == xy_mode || mode == yx_mode;
}

/// How coordinates that are computed are written.
QString twelve_decimals(double value)
{
    return QString::number(value, 'f', 12);
}

} // namespace

// Writing

namespace {

const QString literal_mu = QStringLiteral("667"); // square metres in a mu

QString record_header(int language)
{
    return language == 0
               ? QStringLiteral("序号,名字,时间,数据条数,方式,坡度,平方米/亩,面积(平方米),面积(亩),"
                                "行程(米),单价,总价\n")
               : QStringLiteral("NO., Name, Time, Number of data entries,Measurement Mode, Slope, "
                                "Area(Ratio), Area(Square Meters),Area (Mu), Distance(Meters), "
                                "Unit Price, Total Price\n");
}

QString point_header(int mode, int language)
{
    if (is_plane(mode))
        return language == 0 ? QStringLiteral("X,Y,海拔\n") : QStringLiteral("X,Y,Altitude\n");
    return language == 0 ? QStringLiteral("经度,纬度,海拔\n")
                         : QStringLiteral("Longitude,Latitude,Altitude\n");
}

/// The record without its number. The unit of the price stands under the price,
/// where the reader expects it.
QStringList record_cells(const exportRecord& record, const QString& mu_cell)
{
    return {record.name,     record.time, record.numpoint,   record.method,
            record.slope,    mu_cell,     record.areameter,  record.areamu,
            record.distance, record.hd,   record.totalprices};
}

QString row_of(const QStringList& cells)
{
    return cells.join(QLatin1Char(',')) + QLatin1Char('\n');
}

QString minutes_text(double degrees, bool is_latitude)
{
    const dm_text text = degrees_to_dm(degrees, is_latitude);
    return text.degrees + u'°' + text.minutes + u'′';
}

QString seconds_text(double degrees, bool is_latitude)
{
    const dms_text text = degrees_to_dms(degrees, is_latitude);
    return text.degrees + u'°' + text.minutes + u'′' + text.seconds + text.fraction + u'″';
}

/// The system that plane coordinates are written in.
struct plane_system
{
    model_param param;
    double a = 0.0, b = 0.0, f = 0.0;
};

/// The point line of \a source, a line of "longitude,latitude,altitude" in which
/// missing numbers count as 0. The altitude is not converted.
QString point_line(QStringView source, int mode, plane_system& system)
{
    const QList<QStringView> parts = source.split(u',');
    const double longitude = parts.value(0).toDouble();
    const double latitude = parts.value(1).toDouble();
    QString first;
    QString second;
    switch (mode) {
    case minutes_mode:
        first = minutes_text(longitude, false);
        second = minutes_text(latitude, true);
        break;
    case seconds_mode:
        first = seconds_text(longitude, false);
        second = seconds_text(latitude, true);
        break;
    default: {
        geodetic_position position{latitude, longitude, parts.value(2).toDouble()};
        const plane_position plane =
            wgs84_to_plane(position, system.param, system.a, system.b, system.f);
        first = twelve_decimals(mode == xy_mode ? plane.x : plane.y);
        second = twelve_decimals(mode == xy_mode ? plane.y : plane.x);
    }
    }
    return first % u',' % second % u',' % parts.value(2, u"0") % u'\n';
}

/// The point lines of a record. Unless the coordinates stay as they are, the
/// last part of the split is left out: with empty parts kept that is what stands
/// behind the final line feed, with empty parts dropped it is the last point.
QString point_lines(const QString& coordinates, Qt::SplitBehavior empty_parts, int mode,
                    plane_system& system)
{
    if (mode < xy_mode || mode > yx_mode)
        return coordinates;
    const QList<QStringView> lines = QStringView(coordinates).split(u'\n', empty_parts);
    QString converted;
    converted.reserve(coordinates.size() + lines.size() * 8);
    for (qsizetype at = 0; at + 1 < lines.size(); ++at)
        converted += point_line(lines[at], mode, system);
    return converted;
}

} // namespace

void file_export_thread::one_csv_export(int mode, model_param m_ModelParam, QString file_path)
{
    export_merged(
        file_path, [&](QFile& file) { write_csv_merged(file, export_list, mode, m_ModelParam); },
        QStringLiteral("csv"), tr("csv多数据合并导出成功"));
}

void file_export_thread::more_csv_export(int mode, model_param m_ModelParam, QString file_path)
{
    export_each(
        file_path, QStringLiteral("csv"),
        [&](QFile& file, const exportRecord& record) {
            write_csv_single(file, record, mode, m_ModelParam);
        },
        QStringLiteral("csv"), tr("csv单数据分开导出成功"));
}

void file_export_thread::write_csv_merged(QIODevice& device, const QList<exportRecord>& list,
                                          int mode, const model_param& m_ModelParam) const
{
    plane_system system{m_ModelParam, cz, dz, pl};
    for (qsizetype number = 0; number < list.size(); ++number) {
        const exportRecord& record = list[number];
        const QString block =
            record_header(language) +
            row_of(QStringList(QString::number(number)) + record_cells(record, literal_mu)) +
            point_header(mode, language) +
            point_lines(record.coordinates, Qt::KeepEmptyParts, mode, system);
        device.write(block.toUtf8());
    }
    device.close();
}

void file_export_thread::write_csv_single(QIODevice& device, const exportRecord& record, int mode,
                                          const model_param& m_ModelParam) const
{
    plane_system system{m_ModelParam, cz, dz, pl};
    // Eleven cells under twelve headings, the area in mu in the place of the 667
    // in plane coordinates, and a point line fewer unless the mode is degrees:
    // that is how these files are known.
    const QString block =
        record_header(language) +
        row_of(record_cells(record, is_plane(mode) ? record.areamu : literal_mu)) +
        point_header(mode, language) +
        point_lines(record.coordinates, Qt::SkipEmptyParts, mode, system);
    device.write(block.toUtf8());
}

// Reading

csv_rows::csv_rows(const QByteArray& bytes)
{
    const auto marked = QStringConverter::encodingForData(bytes);
    m_text = QStringDecoder(marked.value_or(QStringConverter::Utf8)).decode(bytes);
    m_text.remove(u'\r'); // after the decoding: in UTF-16 it is not one byte
    for (QStringView rest = m_text; !rest.isEmpty();) {
        const qsizetype line_end = rest.indexOf(u'\n');
        QStringView line = line_end < 0 ? rest : rest.first(line_end);
        rest = line_end < 0 ? QStringView() : rest.sliced(line_end + 1);
        if (line.isEmpty())
            continue;
        while (!line.isEmpty()) {
            const qsizetype comma = line.indexOf(u',');
            const QStringView cell = comma < 0 ? line : line.first(comma);
            line = comma < 0 ? QStringView() : line.sliced(comma + 1);
            if (!cell.isEmpty())
                m_cells.append(cell);
        }
        m_ends.append(m_cells.size());
    }
}

std::span<const QStringView> csv_rows::operator[](qsizetype row) const
{
    const qsizetype first = row == 0 ? 0 : m_ends[row - 1];
    return {m_cells.cbegin() + first, m_cells.cbegin() + m_ends[row]};
}

QStringView csv_rows::cell(qsizetype row, std::size_t column) const
{
    if (row >= size())
        return {};
    const std::span<const QStringView> cells = (*this)[row];
    return column < cells.size() ? cells[column] : QStringView();
}

bool read_csv_rows(const QString& path, csv_rows& rows)
{
    rows = {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << "Failed to open file: " << file.errorString();
        return false;
    }
    rows = csv_rows(file.readAll());
    return true;
}

namespace {

const QString block_key = QStringLiteral("序号");
const QString single_key = QStringLiteral("名字");
const QString summary_key = QStringLiteral("A(m*m)");

/// Fields of a record's row from its name on; null for the cell that is not read.
constexpr std::array<QString measuringData::*, 11> record_fields{
    &measuringData::name,      &measuringData::time,        &measuringData::numpoint,
    &measuringData::method,    &measuringData::slope,       nullptr,
    &measuringData::areameter, &measuringData::areamu,      &measuringData::distance,
    &measuringData::price,     &measuringData::totalprices,
};

/// Fields of the summary's cells.
constexpr std::array<QString measuringData::*, 5> summary_fields{
    &measuringData::areameter, &measuringData::distance, &measuringData::numpoint,
    &measuringData::time,      &measuringData::name,
};

/// Cells of a point's row.
constexpr std::size_t point_cells = 3;

bool have_points(const csv_rows& rows, qsizetype first, qsizetype end)
{
    for (qsizetype row = first; row < end; ++row) {
        if (rows[row].size() < point_cells)
            return false;
    }
    return true;
}

void append_line(QString& text, QStringView first, QStringView second, QStringView altitude)
{
    text.append(first).append(u',').append(second).append(u',').append(altitude).append(u'\n');
}

/// The text by which a record is told from those before it: its first
/// \a points rows as they stand in the file.
QString raw_lines(const csv_rows& rows, qsizetype first, qsizetype points)
{
    QString lines;
    for (qsizetype row = first; row < first + points; ++row) {
        const auto cells = rows[row];
        append_line(lines, cells[0], cells[1], cells[2]);
    }
    return lines;
}

} // namespace

void file_import_thread::import_csv(const QString& path)
{
    qDebug() << "~~~~~~~~~~~~~~~~~~import csv";
    csv_rows rows;
    read_csv_rows(path, rows);
    const QString done = take_csv_rows(rows);
    if (done.isEmpty()) {
        show_warning(tr("导入"), tr("csv文件导入失败"));
        return;
    }
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    show_information(tr("导入"), done);
}

QString file_import_thread::take_csv_rows(const csv_rows& rows)
{
    const QStringView first = rows.cell(0, 0);
    if (first == block_key)
        return take_csv_blocks(rows) ? tr("csv多数据文件导入成功") : QString();
    if (first == single_key) {
        const csv_block block{.record = 1, .first_column = 0, .end = rows.size()};
        return take_csv_block(rows, block, QStringLiteral("1")) ? tr("csv单数据文件导入成功")
                                                                : QString();
    }
    if (first.left(first.indexOf(u':')) == summary_key)
        return take_csv_summary(rows) ? tr("csv文件导入成功") : QString();
    qDebug() << "第一个：" << first;
    return {};
}

bool file_import_thread::take_csv_blocks(const csv_rows& rows)
{
    QList<qsizetype> headers;
    for (qsizetype row = 0; row < rows.size(); ++row) {
        if (rows.cell(row, 0) == block_key)
            headers.append(row);
    }
    const QString count = QString::number(headers.size());
    for (qsizetype k = 0; k < headers.size(); ++k) {
        const csv_block block{
            .record = headers[k] + 1, .first_column = 1, .end = headers.value(k + 1, rows.size())};
        if (!take_csv_block(rows, block, count))
            return false;
    }
    return true;
}

bool file_import_thread::take_csv_block(const csv_rows& rows, const csv_block& block,
                                        const QString& count)
{
    // The record and its points must be whole. A block may end with its record
    // only at the end of the file: before another block a row is missing.
    const qsizetype first = std::min(block.record + 2, rows.size());
    if (block.record >= rows.size() || first > block.end ||
        rows[block.record].size() < block.first_column + record_fields.size() ||
        !have_points(rows, first, block.end))
        return false;

    measuringData record;
    for (std::size_t at = 0; at < record_fields.size(); ++at) {
        if (record_fields[at] != nullptr)
            record.*record_fields[at] = rows[block.record][block.first_column + at].toString();
    }
    record.numrecord = count;

    // A record that promises more points than it has is like no other.
    const qsizetype points = block.end - first;
    const qsizetype promised = std::max(record.numpoint.toInt(), 0);
    if (promised <= points && in_results(record, raw_lines(rows, first, promised))) {
        qDebug() << "tableList have this data";
        return true;
    }
    table_list.append(record);

    QString data;
    QString lines;
    for (qsizetype row = first; row < block.end; ++row) {
        const auto cells = rows[row];
        if (!append_csv_point(cells[0], cells[1], cells[2], data, lines))
            return false;
    }
    append_geometry(data, lines, points);
    return true;
}

bool file_import_thread::append_csv_point(QStringView a, QStringView b, QStringView altitude,
                                          QString& data, QString& lines) const
{
    const auto append = [&](QStringView longitude, QStringView latitude) {
        if (!data.isEmpty())
            data.append(u',');
        data.append(longitude).append(u',').append(latitude);
        append_line(lines, longitude, latitude, altitude);
    };
    switch (mode) {
    case degrees_mode: append(a, b); return true;
    case xy_mode:
    case yx_mode: {
        if (mode == yx_mode)
            std::swap(a, b);
        const geodetic_position position =
            plane_to_wgs84({a.toDouble(), b.toDouble(), 0.0}, m_ModelParam, cz, dz, pl);
        append(twelve_decimals(position.l), twelve_decimals(position.b));
        return true;
    }
    case minutes_mode:
    case seconds_mode: {
        const auto degrees = mode == minutes_mode ? dm_to_degrees : dms_to_degrees;
        const double longitude = degrees(a.toString());
        const double latitude = degrees(b.toString());
        constexpr double unreadable = -1.0; // also of a cell that means just that
        if (longitude == unreadable || latitude == unreadable)
            return false;
        append(twelve_decimals(longitude), twelve_decimals(latitude));
        return true;
    }
    default: return true;
    }
}

bool file_import_thread::take_csv_summary(const csv_rows& rows)
{
    measuringData record;
    for (std::size_t at = 0; at < summary_fields.size(); ++at) {
        // A label, a colon and a value. A time ends at its own first colon.
        const QList<QStringView> parts = rows.cell(0, at).split(u':', Qt::SkipEmptyParts);
        if (parts.size() < 2)
            return false;
        record.*summary_fields[at] = parts[1].toString();
    }
    record.method = QStringLiteral("面积");
    record.areamu = QString::number(record.areameter.toDouble() / 667.0, 'f', 2);
    record.numrecord = QStringLiteral("1");

    constexpr qsizetype first = 2;
    const qsizetype points = std::max(record.numpoint.toInt(), 0);
    if (points > 0 && (points > rows.size() - first || !have_points(rows, first, first + points)))
        return false;
    table_list.append(record);
    QStringList pairs;
    for (qsizetype row = first; row < first + points; ++row)
        pairs.append(rows.cell(row, 0) % u',' % rows.cell(row, 1));
    append_geometry(pairs.join(u','), raw_lines(rows, first, points), points);
    return true;
}
