#include "exchange/file_import_thread.h"

#include "coordinates/json_file_manager.h"
#include "coordinates/transforms.h"
#include "exchange/chosen_system.h"
#include "exchange/message_boxes.h"

#include <QDebug>
#include <QFileInfo>
#include <QLoggingCategory>
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

/// Copies a text to where \a to stands, and gives the place behind it.
QChar* put(QChar* to, QStringView text)
{
    return std::copy(text.begin(), text.end(), to);
}

/// The texts of a record's points. In a foreign file points can lack altitudes:
/// those at the end that have none get 0.
geometry geometry_texts(const exportRecord& record)
{
    const auto& pairs = record.coordinate_pairs;
    const auto altitude = [&record](qsizetype k) {
        return k < record.altitudes.size() ? QStringView(record.altitudes[k]) : QStringView(u"0");
    };
    qsizetype pair_size = 0;
    qsizetype altitude_size = 0;
    for (qsizetype k = 0; k < pairs.size(); ++k) {
        pair_size += pairs[k].first.size() + pairs[k].second.size() + 2;
        altitude_size += altitude(k).size() + 1;
    }
    if (pairs.isEmpty())
        return {};
    geometry texts{QString(pair_size - 1, Qt::Uninitialized),
                   QString(pair_size + altitude_size, Qt::Uninitialized)};
    QChar* data = texts.data.data();
    QChar* lines = texts.lines.data();
    for (qsizetype k = 0; k < pairs.size(); ++k) {
        QChar* const pair = lines;
        lines = put(lines, pairs[k].first);
        *lines++ = u',';
        lines = put(lines, pairs[k].second);
        if (k > 0)
            *data++ = u',';
        data = std::copy(pair, lines, data);
        *lines++ = u',';
        lines = put(lines, altitude(k));
        *lines++ = u'\n';
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
    m_file_points.clear();

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
    for (exportRecord& read : working_list) {
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
        const qsizetype points = read.coordinate_pairs.size();
        // The next record's texts take the place: it is half of the memory.
        read.coordinate_pairs = {};
        read.altitudes = {};
        read.kept_texts = {};
        if (options.drop_duplicates && in_results(record, lines)) {
            qDebug() << "table_list have this data";
            continue;
        }
        table_list.append(record);
        append_geometry(data, lines, points);
    }
}

bool file_import_thread::in_results(const measuringData& record, const QString& lines)
{
    for (qsizetype at = m_known.size(); at < table_list.size(); ++at)
        m_known.insert(hash_of(table_list[at], data_msg_altitude[at]), at);
    const auto [first, last] = m_known.equal_range(hash_of(record, lines));
    return std::any_of(first, last, [&](qsizetype at) {
        return same(table_list[at], record) && data_msg_altitude[at] == lines;
    });
}

void file_import_thread::append_geometry(const QString& data, const QString& lines,
                                         qsizetype points)
{
    QList<point_msg>& alike = m_file_points[points];
    if (alike.size() != points)
        alike = QList<point_msg>(points, file_point());
    data_msg.append(data);
    data_msg_altitude.append(lines);
    point_msg_all.append(alike);
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
    QString time = QStringLiteral("%1-%2-%3 %4:%5:%6")
                       .arg(match.captured(1), two_digits(2), two_digits(3), two_digits(4),
                            two_digits(5), two_digits(6));
    // Of each point: nothing is formatted when nobody reads it.
    const QLoggingCategory& log = *QLoggingCategory::defaultCategory();
    qCDebug(log) << "dateTimeStr:   " << text;
    qCDebug(log) << "time:   " << time;
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
