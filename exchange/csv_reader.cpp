#include "coordinates/transforms.h"
#include "exchange/csv.h"

#include <QDebug>
#include <QFile>
#include <QStringConverter>

#include <algorithm>
#include <array>

// Rows

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

// Records

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

qsizetype promised_points(const measuringData& values)
{
    return std::max(values.numpoint.toInt(), 0);
}

bool have_points(const csv_rows& rows, qsizetype first, qsizetype end)
{
    constexpr std::size_t point_cells = 3;
    if (end > rows.size())
        return false;
    for (qsizetype row = first; row < end; ++row) {
        if (rows[row].size() < point_cells)
            return false;
    }
    return true;
}

/// Appends the record below the row \a header, with its name in \a column, and its
/// points, which end before the row \a end. False if something is missing.
bool append_record(const csv_rows& rows, qsizetype header, std::size_t column, qsizetype end,
                   const QString& count, QList<csv_record>& records)
{
    // A file may end with a record that has no points, and then without their header.
    const qsizetype row = header + 1;
    const qsizetype first = std::min(row + 2, rows.size());
    if (row >= rows.size() || first > end || rows[row].size() < column + record_fields.size() ||
        !have_points(rows, first, end))
        return false;
    csv_record record{.values = {}, .first = first, .end = end};
    for (std::size_t at = 0; at < record_fields.size(); ++at) {
        if (record_fields[at] != nullptr)
            record.values.*record_fields[at] = rows[row][column + at].toString();
    }
    record.values.numrecord = count;
    records.append(record);
    return true;
}

bool append_single(const csv_rows& rows, QList<csv_record>& records)
{
    return append_record(rows, 0, 0, rows.size(), QStringLiteral("1"), records);
}

/// Records with their number before the name, each below a header of its own.
bool append_blocks(const csv_rows& rows, QList<csv_record>& records)
{
    QList<qsizetype> headers;
    for (qsizetype row = 0; row < rows.size(); ++row) {
        if (rows.cell(row, 0) == block_key)
            headers.append(row);
    }
    const QString count = QString::number(headers.size());
    for (qsizetype k = 0; k < headers.size(); ++k) {
        const qsizetype end = headers.value(k + 1, rows.size());
        if (!append_record(rows, headers[k], 1, end, count, records))
            return false;
    }
    return true;
}

/// The record in the labels of row 0, with as many points from row 2 on as it says.
bool append_summary(const csv_rows& rows, QList<csv_record>& records)
{
    measuringData values;
    for (std::size_t at = 0; at < summary_fields.size(); ++at) {
        // A label, a colon and a value. A time ends at its own first colon.
        const QList<QStringView> parts = rows.cell(0, at).split(u':', Qt::SkipEmptyParts);
        if (parts.size() < 2)
            return false;
        values.*summary_fields[at] = parts[1].toString();
    }
    values.method = QStringLiteral("面积");
    values.areamu = QString::number(values.areameter.toDouble() / 667.0, 'f', 2);
    values.numrecord = QStringLiteral("1");

    const qsizetype points = promised_points(values);
    const qsizetype first = std::min<qsizetype>(2, rows.size());
    if (!have_points(rows, first, first + points))
        return false;
    records.append({.values = values, .first = first, .end = first + points});
    return true;
}

} // namespace

std::optional<csv_reading> find_csv_records(const csv_rows& rows)
{
    const QStringView first = rows.cell(0, 0);
    csv_reading reading{};
    bool whole = false;
    if (first == block_key) {
        reading.form = csv_form::blocks;
        whole = append_blocks(rows, reading.records);
    } else if (first == single_key) {
        reading.form = csv_form::single;
        whole = append_single(rows, reading.records);
    } else if (first.left(first.indexOf(u':')) == summary_key) {
        reading.form = csv_form::summary;
        whole = append_summary(rows, reading.records);
    } else
        qDebug() << "第一个：" << first;
    return whole ? std::optional(std::move(reading)) : std::nullopt;
}

// Points

namespace {

void append_line(QString& text, QStringView first, QStringView second, QStringView altitude)
{
    text.append(first).append(u',').append(second).append(u',').append(altitude).append(u'\n');
}

void append_degrees(csv_points& points, QStringView longitude, QStringView latitude,
                    QStringView altitude)
{
    if (!points.data.isEmpty())
        points.data.append(u',');
    points.data.append(longitude).append(u',').append(latitude);
    append_line(points.lines, longitude, latitude, altitude);
}

/// Degrees with twelve decimals of a cell with minutes, or minutes and seconds. Empty
/// if it cannot be read.
QString degrees_of_cell(QStringView cell, int mode)
{
    const QString text = cell.toString();
    const double degrees = mode == minutes_mode ? dm_to_degrees(text) : dms_to_degrees(text);
    constexpr double unreadable = -1.0; // also of a cell that means just that
    return degrees == unreadable ? QString() : QString::number(degrees, 'f', 12);
}

bool append_point(csv_points& points, std::span<const QStringView> cells,
                  const file_coordinates& form)
{
    switch (form.mode) {
    case degrees_mode: append_degrees(points, cells[0], cells[1], cells[2]); return true;
    case xy_mode:
    case yx_mode: {
        const auto [longitude, latitude] =
            degrees_of_plane(form, cells[0].toDouble(), cells[1].toDouble());
        append_degrees(points, longitude, latitude, cells[2]);
        return true;
    }
    case minutes_mode:
    case seconds_mode: {
        const QString longitude = degrees_of_cell(cells[0], form.mode);
        const QString latitude = degrees_of_cell(cells[1], form.mode);
        if (longitude.isEmpty() || latitude.isEmpty())
            return false;
        append_degrees(points, longitude, latitude, cells[2]);
        return true;
    }
    default: return true;
    }
}

} // namespace

std::optional<QString> csv_promised_lines(const csv_rows& rows, const csv_record& record)
{
    const qsizetype points = promised_points(record.values);
    if (points > record.end - record.first)
        return std::nullopt;
    QString lines;
    for (qsizetype row = record.first; row < record.first + points; ++row)
        append_line(lines, rows[row][0], rows[row][1], rows[row][2]);
    return lines;
}

std::optional<csv_points> read_csv_points(const csv_rows& rows, const csv_record& record,
                                          const file_coordinates& form)
{
    csv_points points;
    for (qsizetype row = record.first; row < record.end; ++row) {
        if (!append_point(points, rows[row], form))
            return std::nullopt;
    }
    return points;
}
