#include "exchange/kml.h"
#include "exchange/xml_text.h"

#include <QDateTime>
#include <QDebug>
#include <QFileDevice>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>

namespace {

QString time_text(const QDateTime& time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

/// The parts of a text between commas; empty ones do not count.
struct tuple
{
    std::array<QStringView, 3> parts;
    qsizetype count = 0; ///< may be more than are kept
};

tuple tuple_of(QStringView text)
{
    tuple found;
    for (qsizetype begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = begin;
        while (end < text.size() && text[end] != u',')
            ++end;
        if (begin == end)
            continue;
        if (found.count < std::ssize(found.parts))
            found.parts[static_cast<std::size_t>(found.count)] = text.sliced(begin, end - begin);
        ++found.count;
    }
    return found;
}

/// Puts a text among those that the record keeps, and gives it without the blanks
/// at its ends. Points are read from there.
QStringView keep(QStringView text, exportRecord& record)
{
    record.kept_texts.append(text.toString());
    return QStringView(record.kept_texts.last()).trimmed();
}

/// Appends a point of two or three parts; another count is none.
void append_point(const tuple& point, const file_coordinates& form, exportRecord& record)
{
    if (point.count < 2 || point.count > 3 || form.mode < degrees_mode || form.mode > yx_mode)
        return;
    const auto [first, second, third] = point.parts;
    if (is_plane(form.mode))
        record.coordinate_pairs.append(degrees_of_plane(form, first.toDouble(), second.toDouble()));
    else
        record.coordinate_pairs.emplaceBack(exportRecord::shared(first),
                                            exportRecord::shared(second));
    record.altitudes.append(point.count == 3 ? exportRecord::shared(third) : QStringLiteral("0"));
}

/// Appends the points of the tuples between white space, and tells how many
/// tuples there were.
qsizetype append_points(QStringView text, const file_coordinates& form, exportRecord& record)
{
    text = keep(text, record);
    // The record says how many there will be, and may say anything: no more than there
    // is room for with tuples of a usual length.
    constexpr qsizetype usual_tuple = 16; // characters
    const qsizetype promised =
        std::clamp<qsizetype>(record.numpoint.toInt(), 0, text.size() / usual_tuple);
    record.coordinate_pairs.reserve(promised);
    record.altitudes.reserve(promised);
    qsizetype count = 0;
    for (qsizetype i = 0; i < text.size();) {
        while (i < text.size() && is_blank(text[i].unicode()))
            ++i;
        const qsizetype begin = i;
        while (i < text.size() && !is_blank(text[i].unicode()))
            ++i;
        if (i == begin)
            break;
        ++count;
        append_point(tuple_of(text.sliced(begin, i - begin).trimmed()), form, record);
    }
    return count;
}

/// Appends the points of the lines, and tells how many lines there were. Tuples
/// side by side on a line are no point.
qsizetype append_lines(QStringView text, const file_coordinates& form, exportRecord& record)
{
    qsizetype count = 0;
    for (const QStringView line : keep(text, record).tokenize(u'\n', Qt::SkipEmptyParts)) {
        ++count;
        tuple point = tuple_of(line);
        for (QStringView& part : point.parts)
            part = part.trimmed();
        append_point(point, form, record);
    }
    return count;
}

/// The kind that a geometry of another program becomes, or null.
const char16_t* kind_of_geometry(QStringView element)
{
    if (element == QLatin1String("Point"))
        return u"航点";
    if (element == QLatin1String("LineString"))
        return u"航线";
    if (element == QLatin1String("Polygon"))
        return u"航迹";
    return nullptr;
}

/// The values of a description: what the label must be, or begin with.
struct description_item
{
    const char16_t* label;
    bool whole;
    QString measuringData::*field;
};

/// In the order in which the labels are tried.
constexpr description_item description_items[] = {
    {u"时", false, &measuringData::time},
    {u"测量方式", true, &measuringData::method},
    {u"坡度（度数）", true, &measuringData::slope},
    {u"坡度（度）", true, &measuringData::slope},
    {u"单价（元", false, &measuringData::hd},
    {u"行程（米", false, &measuringData::distance},
    {u"面积（平方米", false, &measuringData::areameter},
    {u"面积（亩", false, &measuringData::areamu},
    {u"总价（元", false, &measuringData::totalprices},
    {u"点数", true, &measuringData::numpoint},
    {u"数据条数", true, &measuringData::numrecord},
    {u"名字", true, &measuringData::name},
};

void take_item(QStringView label, QStringView value, exportRecord& record)
{
    const auto* item =
        std::ranges::find_if(description_items, [label](const description_item& one) {
            const QStringView wanted(one.label);
            return one.whole ? label == wanted : label.startsWith(wanted);
        });
    if (item == std::end(description_items))
        return;
    // Kinds are words of two characters.
    const qsizetype length =
        item->field == &measuringData::method ? std::min<qsizetype>(2, value.size()) : value.size();
    record.*item->field = value.first(length).toString();
}

/// A record that has no name of its own takes what the Placemark's name tells.
void take_identity(exportRecord& record, const QString& placemark_name, qsizetype points)
{
    const QDateTime time = QDateTime::fromString(placemark_name, QStringLiteral("yyyyMMddHHmm"));
    record.name = placemark_name;
    record.numpoint = QString::number(points);
    record.numrecord = QStringLiteral("1");
    record.time = time_text(QDateTime::fromSecsSinceEpoch(time.toSecsSinceEpoch()));
}

bool is_whole(const exportRecord& record)
{
    return !record.coordinate_pairs.isEmpty() &&
           record.coordinate_pairs.size() == record.altitudes.size() && !record.method.isEmpty() &&
           record.method != QLatin1String("0");
}

} // namespace

kml_reading read_kml(QIODevice& file, const file_coordinates& form)
{
    kml_reading reading;
    reading.result = parse_kml_own(file, form, reading.records);
    if (reading.result != kml_failed && !reading.records.isEmpty() &&
        std::ranges::all_of(reading.records, is_whole))
        return reading;
    if (parse_kml_fallback(file, reading.records)) {
        reading.result = kml_own;
        qDebug() << "KML imported with geometry fallback:" << reading.records.size();
    } else
        reading.result = kml_failed;
    return reading;
}

kml_result parse_kml_own(QIODevice& file, const file_coordinates& form,
                         QList<exportRecord>& records)
{
    records.clear();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qDebug() << "Failed to open file";
        return kml_plain;
    }
    qDebug() << "Open file is successed";

    QXmlStreamReader xml(&file);
    QString placemark_name; // stays in force until another Placemark has one
    bool named_by_placemark = false;
    while (!xml.atEnd() && !named_by_placemark) {
        xml.readNext();
        if (!xml.isStartElement() || xml.name() != QLatin1String("Placemark"))
            continue;
        exportRecord record;
        while (next_element_within(xml, QLatin1String("Placemark"))) {
            if (xml.name() == QLatin1String("name"))
                placemark_name = xml.readElementText();
            else if (xml.name() == QLatin1String("description")) {
                if (parse_kml_description(xml, record) == 1) {
                    file.close();
                    parse_kml_placemarks(file, form, records);
                    return kml_plain;
                }
                qDebug() << "description";
            } else if (xml.name() == QLatin1String("coordinates")) {
                named_by_placemark = parse_kml_coordinates(xml, form, record, placemark_name) == 1;
                qDebug() << "coordinates";
            }
        }
        records.append(record);
    }
    file.close();
    if (xml.hasError()) {
        qDebug() << "XML Parsing Error:" << xml.errorString();
        return kml_failed;
    }
    return kml_own;
}

int parse_kml_description(QXmlStreamReader& xml, exportRecord& record)
{
    // Possessive, which changes no match: otherwise each character counts towards
    // PCRE's match limit, and a value of ten million would silently be lost.
    static const QRegularExpression item(
        QStringLiteral("<h4>([^<:：]*+)([:：])([^<]*+)(<h4>|</h4>)"));
    xml.readNext();
    if (!xml.isCDATA())
        return 1;
    const QString text = xml.text().toString();
    for (const QRegularExpressionMatch& match : item.globalMatch(text))
        take_item(match.capturedView(1).trimmed(), match.capturedView(3).trimmed(), record);
    return 0;
}

int parse_kml_coordinates(QXmlStreamReader& xml, const file_coordinates& form, exportRecord& record,
                          const QString& placemark_name)
{
    if (!xml.isStartElement() || xml.name() != QLatin1String("coordinates"))
        return 0;
    qDebug() << "into coordinates";
    qsizetype points = 0;
    while (!xml.atEnd() && !xml.isEndElement()) {
        xml.readNext();
        if (xml.isCharacters())
            points = append_points(xml.text(), form, record);
    }
    if (!record.name.isEmpty())
        return 0;
    take_identity(record, placemark_name, points);
    return 1;
}

void parse_kml_placemarks(QIODevice& file, const file_coordinates& form,
                          QList<exportRecord>& records)
{
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        const auto* named = qobject_cast<const QFileDevice*>(&file);
        qDebug() << "Cannot open file for reading:" << (named ? named->fileName() : QString());
        return;
    }
    records.clear();
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement() || xml.name() != QLatin1String("Placemark"))
            continue;
        qDebug() << "Found Placemark:";
        exportRecord record;
        while (next_element_within(xml, QLatin1String("Placemark"))) {
            const QStringView element = xml.name();
            if (element == QLatin1String("name")) {
                xml.readNext();
                record.name = xml.text().trimmed().toString();
                qDebug() << "Placemark Name:" << record.name;
            } else if (element == QLatin1String("description")) {
                xml.readNext();
                qDebug() << "Description:" << xml.text().trimmed();
            } else if (kind_of_geometry(element) != nullptr) {
                qDebug() << "Geometry Type:" << element;
                parseGeometry(xml, form, record);
            }
        }
        record.time = time_text(QDateTime::currentDateTime());
        records.append(record);
    }
    if (xml.hasError())
        qDebug() << "Parse error:" << xml.errorString();
    file.close();
}

void parseGeometry(QXmlStreamReader& xml, const file_coordinates& form, exportRecord& record)
{
    qDebug() << "into parsegeometry";
    if (const char16_t* kind = kind_of_geometry(xml.name()))
        record.method = QStringView(kind).toString();
    while (next_element_within(xml, QLatin1String("coordinates"))) {
        if (xml.name() != QLatin1String("coordinates"))
            continue;
        const QString text = xml.readElementText();
        qDebug() << "Coordinates:" << QStringView(text).trimmed();
        record.numpoint = QString::number(append_lines(text, form, record));
        return;
    }
}
