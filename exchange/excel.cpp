// Excel workbooks: measurements go out sheet by sheet and come back from sheets
// of the same layout.

#include "coordinates/transforms.h"
#include "core/code_tables.h"
#include "exchange/coordinate_mode.h"
#include "exchange/excel_package.h"
#include "exchange/excel_workbook.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"

#include <QBuffer>
#include <QDebug>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

using enum excel_field;

bool given(const QString& text)
{
    return text != QStringLiteral("0");
}

/// The cell of a measurement under a summary column; empty: no cell.
QString record_cell(excel_field field, const exportRecord& record, const QString& system_name,
                    int language)
{
    switch (field) {
    case time_zone: return timezone_code_to_text(record.timezone);
    case time: return record.time;
    case end_time: return given(record.endtime) ? record.endtime : QString();
    case id: return given(record.id) ? record.id : QString();
    case excel_field::mode: return mode_code_to_text(record.mode, language);
    case slope: return given(record.slope) ? record.slope : QString();
    case area_unit:
        return record.md.isEmpty() ? QString() : area_unit_code_to_text(record.md, language);
    case area: return area_to_unit(record.md, record.areameter);
    case square_metres: return record.areameter;
    case length_unit:
        return record.jd.isEmpty() ? QString() : length_unit_code_to_text(record.jd, language);
    // Written for the instrument's own records: those have an identity.
    case straight: return given(record.id) ? record.zj : QString();
    case length: return length_to_unit(record.jd, record.distance);
    case currency:
        return record.hd.isEmpty() ? QString() : currency_code_to_text(record.hd, language);
    case price: return record.price;
    case total: return record.totalprices;
    case points: return record.numpoint;
    case excel_field::system: return system_name;
    default: return {};
    }
}

/// The cells of one point.
struct point_cells
{
    QString zone, first, second, altitude;
    point_msg point;

    [[nodiscard]] QString cell(excel_field field) const
    {
        switch (field) {
        case point_time: return point.time;
        case excel_field::zone: return zone;
        case excel_field::first: return first;
        case excel_field::second: return second;
        case excel_field::altitude: return altitude;
        case hdop: return point.hdop;
        case speed: return point.speed;
        case angle: return point.angle;
        default: return {};
        }
    }
};

QString minutes_text(double degrees, bool is_latitude)
{
    const dm_text text = degrees_to_dm(degrees, is_latitude);
    return text.degrees + QStringLiteral("°") + text.minutes + QStringLiteral("′");
}

QString seconds_text(double degrees, bool is_latitude)
{
    const dms_text text = degrees_to_dms(degrees, is_latitude);
    return text.degrees + QStringLiteral("°") + text.minutes + QStringLiteral("′") + text.seconds +
           text.fraction + QStringLiteral("″");
}

/// Writes the measurements of one export.
class excel_exporter
{
public:
    excel_exporter(const file_export_thread& from, int mode, const model_param& param)
        : m_from(from), m_mode(mode), m_param(param), m_workbook(from.language, mode)
    {
    }

    void add(const exportRecord& record)
    {
        const auto kind = std::ranges::find(excel_kinds, record.method, &excel_kind::method);
        if (kind == excel_kinds.end())
            return;
        const qsizetype place = kind - excel_kinds.begin();
        const bool summary = m_from.check_flags.value(2 * place) != 0;
        const bool points = m_from.check_flags.value(2 * place + 1) != 0;
        if (!summary && !points)
            return;
        const auto index = static_cast<std::size_t>(place);
        const int number = ++m_numbers[index];
        if (points && !kind->one_row_each) {
            excel_sheet own = m_workbook.add_sheet(*kind, summary, points, QString::number(number));
            write_rows(own, record, number, true);
            return;
        }
        excel_sheet& shared = m_shared[index];
        if (!shared)
            shared = m_workbook.add_sheet(*kind, summary, points);
        write_rows(shared, record, number, kind->one_row_each);
    }

    bool save(const QString& path) { return m_workbook.save(path); }

private:
    /// The summary goes into the first row, each point into one.
    void write_rows(excel_sheet& sheet, const exportRecord& record, int number, bool with_points)
    {
        const QList<QStringView> lines =
            with_points ? QStringView(record.coordinates).split(u'\n', Qt::SkipEmptyParts)
                        : QList<QStringView>();
        const qsizetype rows = std::max<qsizetype>(lines.size(), 1);
        for (qsizetype row = 0; row < rows; ++row, ++sheet.rows) {
            const bool has_point = row < lines.size();
            const point_cells point =
                has_point ? cells_of(lines[row], record.points.value(row)) : point_cells();
            for (std::size_t at = 0; at < sheet.columns.size(); ++at) {
                const excel_field field = sheet.columns[at].field;
                QString text;
                if (field == point_number)
                    text = has_point ? QString::number(row + 1) : QString();
                else if (field > point_number)
                    text = point.cell(field);
                else if (row == 0)
                    text = field == excel_field::number
                               ? QString::number(number)
                               : record_cell(field, record, m_from.system_name, m_from.language);
                m_workbook.write(sheet, static_cast<int>(at), text);
            }
        }
    }

    point_cells cells_of(QStringView line, const point_msg& point)
    {
        const QList<QStringView> parts = line.split(u',');
        const QStringView longitude = parts.value(0);
        const QStringView latitude = parts.value(1);
        const QStringView altitude = parts.value(2);
        point_cells cells{{}, {}, {}, altitude.toString(), point};
        switch (m_mode) {
        case minutes_mode:
            cells.first = minutes_text(longitude.toDouble(), false);
            cells.second = minutes_text(latitude.toDouble(), true);
            break;
        case seconds_mode:
            cells.first = seconds_text(longitude.toDouble(), false);
            cells.second = seconds_text(latitude.toDouble(), true);
            break;
        case xy_mode:
        case yx_mode: {
            geodetic_position position{latitude.toDouble(), longitude.toDouble(),
                                       altitude.toDouble()};
            const plane_position plane =
                wgs84_to_plane(position, m_param, m_from.cz, m_from.dz, m_from.pl);
            // The zone is the first two characters, also where it has one digit.
            const QString y = QString::number(plane.y, 'f', 2);
            cells.zone = y.left(2);
            cells.first = QString::number(plane.x, 'f', 2);
            cells.second = y.mid(2);
            if (m_mode == yx_mode)
                std::swap(cells.first, cells.second);
            break;
        }
        default:
            cells.first = longitude.toString();
            cells.second = latitude.toString();
            break;
        }
        return cells;
    }

    const file_export_thread& m_from;
    int m_mode;
    model_param m_param;
    excel_workbook m_workbook;
    std::array<int, excel_kinds.size()> m_numbers{};        ///< measurements so far
    std::array<excel_sheet, excel_kinds.size()> m_shared{}; ///< sheets of several measurements
};

/// Reads one workbook into the results of an import.
class excel_importer
{
public:
    explicit excel_importer(file_import_thread& into) : m_into(into) {}

    enum class outcome
    {
        read,
        wrong_format,
        failed
    };

    outcome read_sheet(const excel_kind& kind, const sheet_texts& cells)
    {
        if (!cells.is_valid() || cells.rows() == 0)
            return outcome::failed;
        const QStringList heads = cells.row(0);
        if (heads != kind.heads(true, true, 0, m_into.mode) &&
            heads != kind.heads(true, true, 1, m_into.mode))
            return outcome::wrong_format;
        // A sheet begins with a measurement: there is none to add a point to.
        if (cells.rows() < 2 || (!kind.one_row_each && cells.text(1, 0).isEmpty()))
            return outcome::failed;

        int records = 0;
        for (qsizetype row = 1; row < cells.rows(); ++row)
            records += cells.text(row, 0).isEmpty() ? 0 : 1;
        for (qsizetype row = 1; row < cells.rows();) {
            qsizetype next = row + 1;
            while (!kind.one_row_each && next < cells.rows() && cells.text(next, 0).isEmpty())
                ++next;
            if (!read_record(kind, cells, row, next, records))
                return outcome::failed;
            row = next;
        }
        return outcome::read;
    }

private:
    bool read_record(const excel_kind& kind, const sheet_texts& cells, qsizetype first_row,
                     qsizetype next_row, int records)
    {
        measuringData measure = summary(kind, cells, first_row);
        measure.numpoint = QString::number(next_row - first_row);
        measure.numrecord = QString::number(records);
        if (kind.one_row_each)
            qDebug() << "!!!!!!!!!!!!!!";
        else
            qDebug() << "measure.numpoint  " << measure.numpoint;

        QString data;
        QString lines;
        QList<point_msg> points;
        for (qsizetype row = first_row; row < next_row; ++row) {
            const std::optional<QString> pair = position(kind, cells, row);
            // A comma or a line feed would break the line.
            const QString altitude =
                zero_if_empty(cell(kind, cells, row, excel_field::altitude).trimmed());
            if (!pair || !finite_number(altitude))
                return false;
            if (!data.isEmpty())
                data.append(QLatin1Char(','));
            data.append(*pair);
            lines.append(*pair + QLatin1Char(',') + altitude + QLatin1Char('\n'));
            points.append(point(kind, cells, row));
        }
        if (is_known(measure, lines, points)) {
            qDebug() << "tableList have this data";
            return true;
        }
        m_known.insert(hash_of(measure, lines), m_into.table_list.size());
        m_into.table_list.append(measure);
        m_into.data_msg.append(data);
        m_into.data_msg_altitude.append(lines);
        m_into.point_msg_all.append(points);
        return true;
    }

    [[nodiscard]] measuringData summary(const excel_kind& kind, const sheet_texts& cells,
                                        qsizetype row) const
    {
        const auto at = [&](excel_field field) { return cell(kind, cells, row, field); };
        const auto has = [&](excel_field field) { return kind.column_of(field) >= 0; };
        measuringData measure;
        measure.method = kind.method.toString();
        measure.timezone = timezone_text_to_code(at(time_zone));
        measure.time = zero_if_empty(file_import_thread::normalize_datetime(at(time)));
        measure.endtime = zero_if_empty(at(end_time));
        measure.id = zero_if_empty(at(id));
        measure.slope = zero_if_empty(at(slope));
        measure.price = zero_if_empty(at(price));
        measure.totalprices = zero_if_empty(at(total));
        measure.zj = zero_if_empty(at(straight));
        if (has(excel_field::mode))
            measure.mode = mode_text_to_code(at(excel_field::mode));
        if (has(currency))
            measure.hd = currency_text_to_code(at(currency));
        if (has(length)) {
            measure.jd = length_unit_text_to_code(at(length_unit));
            measure.distance = zero_if_empty(length_to_meter(at(length_unit), at(length)));
        }
        if (has(square_metres)) {
            measure.md = area_unit_text_to_code(at(area_unit));
            measure.areameter = zero_if_empty(at(square_metres));
            measure.areamu = QString::number(at(square_metres).toDouble() / 667.0, 'f', 8);
        } else if (has(area)) {
            // The column holds a unit's word, not its code, and the area stays in
            // that unit.
            measure.md = area_unit_code_to_text(at(area_unit), m_into.language);
            measure.areameter = zero_if_empty(area_to_square_meter(at(area_unit), at(area)));
            measure.areamu = zero_if_empty(at(area));
        }
        measure.name = measure.time;
        measure.name.remove(QLatin1Char('-')).remove(QLatin1Char(' ')).remove(QLatin1Char(':'));
        measure.name.truncate(12);
        return measure;
    }

    /// The point's own values; "0" for what its sheet has no column for.
    [[nodiscard]] static point_msg point(const excel_kind& kind, const sheet_texts& cells,
                                         qsizetype row)
    {
        const auto at = [&](excel_field field) {
            return zero_if_empty(cell(kind, cells, row, field));
        };
        return {at(hdop), at(speed), at(angle),
                file_import_thread::normalize_datetime(at(kind.one_row_each ? time : point_time)),
                QStringLiteral("0")};
    }

    /// Longitude and latitude of a row; nothing if it holds no coordinates.
    [[nodiscard]] std::optional<QString> position(const excel_kind& kind, const sheet_texts& cells,
                                                  qsizetype row) const
    {
        const std::optional<double> one = to_number(cell(kind, cells, row, first));
        const std::optional<double> other = to_number(cell(kind, cells, row, second));
        if (!one || !other)
            return {};
        double longitude = *one;
        double latitude = *other;
        if (is_plane(m_into.mode)) {
            // The column of the zone is not looked at: a y that lost its zone in an
            // export does not get it back.
            plane_position plane{*one, *other, 0.0};
            if (m_into.mode == yx_mode)
                std::swap(plane.x, plane.y);
            const geodetic_position at =
                plane_to_wgs84(plane, m_into.m_ModelParam, m_into.cz, m_into.dz, m_into.pl);
            longitude = at.l;
            latitude = at.b;
        }
        for (const double degrees : {longitude, latitude}) {
            constexpr double failure = -1.0; // of a conversion; no place has it by chance
            if (degrees == failure || !std::isfinite(degrees))
                return {};
        }
        return QString::number(longitude, 'f', 12) + QLatin1Char(',') +
               QString::number(latitude, 'f', 12);
    }

    /// The number that a coordinate's text stands for: degrees, or metres in a
    /// plane mode.
    [[nodiscard]] std::optional<double> to_number(const QString& text) const
    {
        switch (m_into.mode) {
        case minutes_mode: return dm_to_degrees(text);
        case seconds_mode: return dms_to_degrees(text);
        default: return finite_number(text);
        }
    }

    static std::optional<double> finite_number(const QString& text)
    {
        bool is_number = false;
        const double number = text.toDouble(&is_number);
        return is_number && std::isfinite(number) ? std::optional(number) : std::nullopt;
    }

    static QString cell(const excel_kind& kind, const sheet_texts& cells, qsizetype row,
                        excel_field field)
    {
        const int column = kind.column_of(field);
        return column < 0 ? QString() : cells.text(row, column);
    }

    static size_t hash_of(const measuringData& measure, const QString& lines)
    {
        return qHashMulti(0, measure.name, measure.time, lines);
    }

    /// Whether this file had a measurement of the same name, time and points.
    [[nodiscard]] bool is_known(const measuringData& measure, const QString& lines,
                                const QList<point_msg>& points) const
    {
        const auto [begin, end] = m_known.equal_range(hash_of(measure, lines));
        return std::any_of(begin, end, [&](qsizetype at) {
            return m_into.table_list[at].name == measure.name &&
                   m_into.table_list[at].time == measure.time &&
                   m_into.data_msg_altitude[at] == lines && m_into.point_msg_all[at] == points;
        });
    }

    file_import_thread& m_into;
    QMultiHash<size_t, qsizetype> m_known; ///< what is_known() compares, to the place of it
};

} // namespace

void file_export_thread::excel_export(int mode, model_param m_ModelParam, QString file_path)
{
    if (file_path.isEmpty())
        return;
    excel_exporter exporter(*this, mode, m_ModelParam);
    for (const exportRecord& record : std::as_const(export_list))
        exporter.add(record);
    if (exporter.save(file_path))
        show_information(QStringLiteral("Excel"), QStringLiteral("Excel文件导出成功"));
}

void file_import_thread::import_excel(const QString& path)
{
    const auto text = [this](const char* chinese, const char* english) {
        return QString::fromUtf8(language == 0 ? chinese : english);
    };
    const QString title = text("导入", "import");
    excel_package package = read_excel_package(path);
    QBuffer buffer(&package.bytes);
    buffer.open(QIODevice::ReadOnly);
    const QXlsx::Document document(&buffer);
    if (package.bytes.isEmpty() || !document.load()) {
        show_warning(title, text("无法打开Excel文件", "Cannot open Excel file"));
        return;
    }
    excel_importer importer(*this);
    const QStringList names = document.sheetNames();
    for (const QString& name : names) {
        auto* sheet = dynamic_cast<QXlsx::Worksheet*>(document.sheet(name));
        if (sheet == nullptr) {
            show_warning(title, text("无法获取工作表: ", "Unable to get worksheet:") + name);
            continue;
        }
        qDebug() << "工作表：" << name;
        const auto kind = std::ranges::find_if(excel_kinds, [&name](const excel_kind& one) {
            return name == one.method || name == one.english;
        });
        if (kind == excel_kinds.end()) {
            show_information(
                title, text("Excel多数据文件导入失败", "Excel multi-data file import failed"));
            return;
        }
        switch (importer.read_sheet(*kind, package.sheets.value(sheet->filePath()))) {
        case excel_importer::outcome::read: break;
        case excel_importer::outcome::wrong_format:
            show_warning(title, text("Excel文件格式不正确", "Excel file format incorrect"));
            return;
        case excel_importer::outcome::failed:
            show_warning(title, text("Excel文件导入失败", "Excel file import failed"));
            return;
        }
    }
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    show_information(title,
                     text("Excel多数据文件导入成功", "Excel multi-data file import successful"));
}
