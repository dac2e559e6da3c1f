#include "exchange/gpx.h"
#include "exchange/xml_text.h"

#include <QDebug>
#include <QFileDevice>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

/// The next part of a text before a separator; empty parts do not count. Empty
/// when there is none.
QStringView take_part(QStringView& text, QChar separator)
{
    while (text.startsWith(separator))
        text = text.sliced(1);
    const qsizetype end = text.indexOf(separator);
    const QStringView part = text.first(end < 0 ? text.size() : end);
    text = text.sliced(part.size());
    return part;
}

void write_ele(QXmlStreamWriter& xml, const gpx_point& point)
{
    xml.writeTextElement(QStringLiteral("ele"), xml_text(point.ele.toString()));
}

void write_position(QXmlStreamWriter& xml, const gpx_point& point)
{
    xml.writeAttribute(QStringLiteral("lat"), xml_text(point.lat.toString()));
    xml.writeAttribute(QStringLiteral("lon"), xml_text(point.lon.toString()));
}

void write_head(QXmlStreamWriter& xml, const exportRecord& record)
{
    xml.writeTextElement(QStringLiteral("name"), xml_text(record.name));
    write_gpx_desc(xml, record);
}

void write_points(QXmlStreamWriter& xml, const QString& element, const exportRecord& record)
{
    for (const gpx_point& point : split_point_lines(record.coordinates)) {
        xml.writeStartElement(element);
        write_position(xml, point);
        write_ele(xml, point);
        xml.writeEndElement();
    }
}

void write_waypoint(QXmlStreamWriter& xml, const exportRecord& record)
{
    xml.writeStartElement(QStringLiteral("wpt"));
    // A waypoint has one point, and an element one position.
    const QList<gpx_point> points = split_point_lines(record.coordinates).mid(0, 1);
    for (const gpx_point& point : points)
        write_position(xml, point);
    for (const gpx_point& point : points)
        write_ele(xml, point);
    write_head(xml, record);
    xml.writeEndElement();
}

void write_route(QXmlStreamWriter& xml, const exportRecord& record)
{
    xml.writeStartElement(QStringLiteral("rte"));
    write_head(xml, record);
    write_points(xml, QStringLiteral("rtept"), record);
    xml.writeEndElement();
}

void write_track(QXmlStreamWriter& xml, const exportRecord& record)
{
    xml.writeStartElement(QStringLiteral("trk"));
    write_head(xml, record);
    xml.writeStartElement(QStringLiteral("trkseg"));
    write_points(xml, QStringLiteral("trkpt"), record);
    xml.writeEndElement();
    xml.writeEndElement();
}

/// How each kind is written; others are left out.
struct shape
{
    const char16_t* method;
    void (*write)(QXmlStreamWriter& xml, const exportRecord& record);
};

constexpr shape shapes[] = {
    {u"航点", write_waypoint}, {u"航线", write_route}, {u"距离", write_route},
    {u"面积", write_track},    {u"航迹", write_track},
};

void write_record(QXmlStreamWriter& xml, const exportRecord& record)
{
    const auto* found = std::ranges::find_if(
        shapes, [&](const shape& one) { return record.method == QStringView(one.method); });
    if (found != std::end(shapes))
        found->write(xml, record);
}

void tell_whether_written(QIODevice& device)
{
    auto* file = qobject_cast<QFileDevice*>(&device);
    if (file == nullptr)
        return;
    if (file->flush() && file->error() == QFileDevice::NoError)
        qDebug() << "GPX file successfully written to " << file->fileName();
    else
        qCritical() << "Error writing GPX file: " << file->errorString();
}

} // namespace

void write_gpx_merged(QIODevice& device, const QList<exportRecord>& records, int /*mode*/)
{
    const QString gpx = QStringLiteral("http://www.topografix.com/GPX/1/1");
    const QString schema_instance = QStringLiteral("http://www.w3.org/2001/XMLSchema-instance");
    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("gpx"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.1"));
    xml.writeAttribute(QStringLiteral("creator"), QStringLiteral("Velmo"));
    xml.writeDefaultNamespace(gpx);
    xml.writeNamespace(schema_instance, QStringLiteral("xsi"));
    xml.writeAttribute(schema_instance, QStringLiteral("schemaLocation"),
                       gpx + QStringLiteral(" ") + gpx + QStringLiteral("/gpx.xsd"));
    xml.writeStartElement(QStringLiteral("metadata"));
    xml.writeTextElement(QStringLiteral("name"), QStringLiteral("Sample GPX File"));
    xml.writeTextElement(QStringLiteral("author"), QStringLiteral("Marlund"));
    xml.writeEndElement();
    for (const exportRecord& record : records)
        write_record(xml, record);
    xml.writeEndDocument();
    tell_whether_written(device);
}

void write_gpx_single(QIODevice& device, const exportRecord& record, int mode)
{
    write_gpx_merged(device, {record}, mode);
}

void write_gpx_desc(QXmlStreamWriter& xml, const exportRecord& record)
{
    xml.writeStartElement(QStringLiteral("desc"));
    const auto write = [&xml](const QString& element, const QString& value) {
        xml.writeTextElement(element, xml_text(value));
    };
    write(QStringLiteral("time"), record.time);
    write(QStringLiteral("measurementMethod"), record.method);
    write(QStringLiteral("slopeDegrees"), record.slope);
    write(QStringLiteral("muValue"), QStringLiteral("667"));
    write(QStringLiteral("unitPrice"), record.hd);
    write(QStringLiteral("distance"), record.distance);
    write(QStringLiteral("areaSquareMeters"), record.areameter);
    write(QStringLiteral("areaMu"), record.areamu);
    write(QStringLiteral("totalPrice"), record.totalprices);
    write(QStringLiteral("pointCount"), record.numpoint);
    write(QStringLiteral("dataCount"), record.numrecord);
    write(QStringLiteral("name"), record.name);
    xml.writeEndElement();
}

QList<gpx_point> split_point_lines(const QString& coordinates)
{
    QList<gpx_point> points;
    for (QStringView line : QStringView(coordinates).tokenize(u'\n', Qt::SkipEmptyParts)) {
        const QStringView longitude = take_part(line, u',');
        const QStringView latitude = take_part(line, u',');
        points.append({latitude, longitude, take_part(line, u',')});
    }
    return points;
}
