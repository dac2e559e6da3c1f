#include "exchange/gpx.h"
#include "exchange/xml_text.h"

#include <QDebug>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

/// A copy of the text among those that the record keeps: in pieces of growing size,
/// as memory for each number of a point would take longer than reading it.
QString keep(QStringView text, exportRecord& record)
{
    constexpr qsizetype first_piece = 64; // characters
    QStringList& pieces = record.kept_texts;
    if (pieces.isEmpty() || pieces.last().capacity() - pieces.last().size() < text.size()) {
        const qsizetype size = pieces.isEmpty() ? first_piece : 2 * pieces.last().size();
        pieces.append(QString());
        pieces.last().reserve(std::max(size, text.size()));
    }
    QString& piece = pieces.last();
    piece.append(text); // within its capacity, so what is there stays in its place
    return exportRecord::shared(QStringView(piece).last(text.size()));
}

/// Appends the position of the point on whose start element `xml` stands.
void append_position(const QXmlStreamReader& xml, exportRecord& record)
{
    const QXmlStreamAttributes attributes = xml.attributes();
    record.coordinate_pairs.emplaceBack(keep(attributes.value(QLatin1String("lon")), record),
                                        keep(attributes.value(QLatin1String("lat")), record));
}

/// Appends the text of the element on whose start `xml` stands.
void append_altitude(QXmlStreamReader& xml, exportRecord& record)
{
    record.altitudes.append(keep(xml.readElementText(), record));
}

/// A point of a route or a track. Without `ele` its altitude is missing.
void read_point(QXmlStreamReader& xml, QLatin1String element, exportRecord& record)
{
    append_position(xml, record);
    while (next_element_within(xml, element)) {
        if (xml.name() == QLatin1String("ele"))
            append_altitude(xml, record);
    }
}

void read_waypoint(QXmlStreamReader& xml, exportRecord& record)
{
    append_position(xml, record);
    while (next_element_within(xml, QLatin1String("wpt"))) {
        if (xml.name() == QLatin1String("ele"))
            append_altitude(xml, record);
        else if (xml.name() == QLatin1String("desc"))
            parse_gpx_desc(xml, record);
    }
}

void read_route(QXmlStreamReader& xml, exportRecord& record)
{
    while (next_element_within(xml, QLatin1String("rte"))) {
        if (xml.name() == QLatin1String("rtept"))
            read_point(xml, QLatin1String("rtept"), record);
        else if (xml.name() == QLatin1String("desc"))
            parse_gpx_desc(xml, record);
    }
}

void read_track(QXmlStreamReader& xml, exportRecord& record)
{
    while (next_element_within(xml, QLatin1String("trk"))) {
        if (xml.name() == QLatin1String("trkseg")) {
            while (next_element_within(xml, QLatin1String("trkseg"))) {
                if (xml.name() == QLatin1String("trkpt"))
                    read_point(xml, QLatin1String("trkpt"), record);
            }
        } else if (xml.name() == QLatin1String("desc"))
            parse_gpx_desc(xml, record);
    }
}

struct element_reader
{
    QLatin1String element;
    void (*read)(QXmlStreamReader& xml, exportRecord& record);
};

constexpr element_reader readers[] = {
    {QLatin1String("wpt"), read_waypoint},
    {QLatin1String("trk"), read_track},
    {QLatin1String("rte"), read_route},
};

struct desc_item
{
    QLatin1String element;
    QString measuringData::*field;
};

constexpr desc_item desc_items[] = {
    {QLatin1String("time"), &measuringData::time},
    {QLatin1String("measurementMethod"), &measuringData::method},
    {QLatin1String("slopeDegrees"), &measuringData::slope},
    {QLatin1String("unitPrice"), &measuringData::hd},
    {QLatin1String("distance"), &measuringData::distance},
    {QLatin1String("areaSquareMeters"), &measuringData::areameter},
    {QLatin1String("areaMu"), &measuringData::areamu},
    {QLatin1String("totalPrice"), &measuringData::totalprices},
    {QLatin1String("pointCount"), &measuringData::numpoint},
    {QLatin1String("dataCount"), &measuringData::numrecord},
    {QLatin1String("name"), &measuringData::name},
};

/// Reads up to the end of the root. Behind it another document may follow, from
/// an export into the same folder.
bool read_document(QXmlStreamReader& xml, QList<exportRecord>& records)
{
    const QLatin1String root("gpx");
    if (!xml.readNextStartElement() || xml.name() != root ||
        xml.attributes().value(QLatin1String("creator")) != QLatin1String("Velmo")) {
        qCritical() << "Invalid GPX file or unexpected namespace";
        return false;
    }
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.hasError() && xml.name() == root)
            return true;
        if (!xml.isStartElement())
            continue;
        const auto* found = std::ranges::find_if(
            readers, [&xml](const element_reader& one) { return xml.name() == one.element; });
        if (found == std::end(readers))
            continue;
        exportRecord record;
        found->read(xml, record);
        records.append(record);
    }
    return false;
}

} // namespace

bool parse_gpx(QIODevice& file, QList<exportRecord>& records)
{
    records.clear();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCritical() << "Failed to open file:" << file.errorString();
        return false;
    }
    QXmlStreamReader xml(&file);
    const bool read = read_document(xml, records);
    if (xml.hasError())
        qCritical() << "XML Parsing Error:" << xml.errorString();
    file.close();
    return read;
}

void parse_gpx_desc(QXmlStreamReader& xml, exportRecord& record)
{
    if (!xml.isStartElement() || xml.name() != QLatin1String("desc"))
        return;
    while (xml.readNextStartElement()) {
        const auto* item = std::ranges::find_if(
            desc_items, [&xml](const desc_item& one) { return xml.name() == one.element; });
        if (item == std::end(desc_items))
            xml.skipCurrentElement();
        else
            record.*item->field = xml.readElementText();
    }
}
