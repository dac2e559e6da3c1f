#include "exchange/file_import_thread.h"

#include "coordinates/json_file_manager.h"
#include "coordinates/transforms.h"
#include "exchange/chosen_system.h"
#include "exchange/message_boxes.h"

#include <QDebug>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

struct importer
{
    const char* suffix;
    void (file_import_thread::*read)(const QString& path);
};

constexpr importer importers[] = {
    {"kml", &file_import_thread::import_kml},    {"csv", &file_import_thread::import_csv},
    {"dxf", &file_import_thread::import_dxf},    {"gpx", &file_import_thread::import_gpx},
    {"xlsx", &file_import_thread::import_excel},
};

size_t hash_of(const measuringData& record, const QString& lines)
{
    return qHashMulti(0, record.name, record.distance, record.numrecord, record.areameter, lines);
}

bool same(const measuringData& left, const measuringData& right)
{
    return left.name == right.name && left.distance == right.distance &&
           left.numrecord == right.numrecord && left.areameter == right.areameter;
}

struct geometry
{
    QString data;  ///< the plain pairs
    QString lines; ///< the lines with altitudes
};

/// The texts of a record's points. In a foreign file points can lack altitudes:
/// those at the end that have none get 0.
geometry geometry_texts(const exportRecord& record)
{
    geometry texts;
    const qsizetype points = record.coordinate_pairs.size();
    if (points == 0)
        return texts;
    const auto& [longitude, latitude] = record.coordinate_pairs.first();
    const qsizetype pair_size = longitude.size() + latitude.size() + 2;
    texts.data.reserve(points * pair_size);
    texts.lines.reserve(points * (pair_size + record.altitudes.value(0).size() + 1));
    for (qsizetype k = 0; k < points; ++k) {
        const auto& [first, second] = record.coordinate_pairs[k];
        if (k > 0)
            texts.data.append(u',');
        texts.data.append(first).append(u',').append(second);
        texts.lines.append(first).append(u',').append(second).append(u',');
        if (k < record.altitudes.size())
            texts.lines.append(record.altitudes[k]);
        else
            texts.lines.append(u'0');
        texts.lines.append(u'\n');
    }
    return texts;
}

/// The point of a file: it has no accuracy, speed, heading or time of its own.
point_msg file_point()
{
    const QString zero = QStringLiteral("0");
    return {zero, zero, zero, zero, zero};
}

} // namespace

void file_import_thread::import_file(QString path, int new_mode, JsonFileManager* js, int sys_index)
{
    table_list.clear();
    data_msg.clear();
    data_msg_altitude.clear();
    point_msg_all.clear();
    m_known.clear();

    mode = new_mode;
    const CoordinateSystem system = chosen_system(js, sys_index);
    m_ModelParam = flat_parameters(system);
    cz = system.changzhou;
    dz = system.duanzhou;
    pl = system.pianlv;

    if (path.isEmpty())
        return;
    const QString suffix = QFileInfo(path).suffix();
    const auto* found = std::ranges::find_if(
        importers, [&suffix](const importer& one) { return suffix == QLatin1String(one.suffix); });
    if (found == std::end(importers))
        return;
    const wait_pointer busy;
    (this->*found->read)(path);
}

void file_import_thread::append_to_results(tail_options options)
{
    for (const exportRecord& read : std::as_const(working_list)) {
        measuringData record;
        record.numpoint = read.numpoint;
        record.method = read.method;
        record.slope = read.slope;
        record.price = read.hd; // the writers put the unit of the price in the price's place
        record.distance = read.distance;
        record.areameter = read.areameter;
        if (options.take_areamu)
            record.areamu = read.areamu;
        record.totalprices = read.totalprices;
        record.time = read.time;
        record.numrecord = read.numrecord;
        record.name = read.name;

        const auto [data, lines] = geometry_texts(read);
        if (options.drop_duplicates && in_results(record, lines)) {
            qDebug() << "table_list have this data";
            continue;
        }
        table_list.append(record);
        append_geometry(data, lines, read.coordinate_pairs.size());
    }
}

bool file_import_thread::in_results(const measuringData& record, const QString& lines) const
{
    const auto [first, last] = m_known.equal_range(hash_of(record, lines));
    return std::any_of(first, last, [&](qsizetype at) {
        return same(table_list[at], record) && data_msg_altitude[at] == lines;
    });
}

void file_import_thread::append_geometry(const QString& data, const QString& lines,
                                         qsizetype points)
{
    static const point_msg point = file_point();
    m_known.insert(hash_of(table_list.last(), lines), data_msg_altitude.size());
    data_msg.append(data);
    data_msg_altitude.append(lines);
    point_msg_all.append(QList<point_msg>(points, point));
}

QString file_import_thread::normalize_datetime(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^(\d{4})[-/](\d{1,2})[-/](\d{1,2})[T\s](\d{1,2}):(\d{1,2}):(\d{1,2})(?:\.\d{3})?$)"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return text;
    const auto two_digits = [&match](int group) {
        return match.captured(group).rightJustified(2, QLatin1Char('0'));
    };
    const QString time = QStringLiteral("%1-%2-%3 %4:%5:%6")
                             .arg(match.captured(1), two_digits(2), two_digits(3), two_digits(4),
                                  two_digits(5), two_digits(6));
    qDebug() << "dateTimeStr:   " << text;
    qDebug() << "time:   " << time;
    return time;
}

void file_import_thread::setlanguage(int newValue)
{
    language = newValue;
}

void file_import_thread::run()
{
    qDebug() << "file_import_thread ID:" << QThread::currentThreadId();
}
