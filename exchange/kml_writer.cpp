#include "exchange/kml.h"
#include "exchange/xml_text.h"

#include <QXmlStreamWriter>

#include <algorithm>
#include <array>

namespace {

/// The values of a record as they stand in a description. Four separators are
/// ASCII colons, eight are full-width ones.
QString description_template()
{
    static const QString text =
        QStringList{
            QStringLiteral("<h4>时间:%1</h4>"),
            QStringLiteral("<h4>测量方式:%2</h4>"),
            QStringLiteral("<h4>坡度（度数）:%3</h4>"),
            QStringLiteral("<h4>亩值（平方米）:%4</h4>"),
            QStringLiteral("<h4>单价（元）：%5</h4>"),
            QStringLiteral("<h4>行程（米）：%6</h4>"),
            QStringLiteral("<h4>面积（平方米）：%7</h4>"),
            QStringLiteral("<h4>面积（亩）：%8</h4>"),
            QStringLiteral("<h4>总价（元）：%9</h4>"),
            QStringLiteral("<h4>点数：%10</h4>"),
            QStringLiteral("<h4>数据条数：%11</h4>"),
            QStringLiteral("<h4>名字：%12</h4>"),
        }
            .join(QLatin1Char('\n') + QString(32, QLatin1Char(' '))) +
        QLatin1Char('\n');
    return text;
}

QString description_of(const exportRecord& record)
{
    return description_template().arg(record.time, record.method, record.slope,
                                      QStringLiteral("667"), record.hd, record.distance,
                                      record.areameter, record.areamu, record.totalprices,
                                      record.numpoint, record.numrecord, record.name);
}

/// The elements around the coordinates of a kind, from the outside.
struct geometry
{
    const char16_t* method;
    std::array<const char*, 3> elements;
};

constexpr geometry geometries[] = {
    {u"航点", {"Point"}},
    {u"航线", {"LineString"}},
    {u"距离", {"LineString"}},
    {u"航迹", {"LineString"}},
    {u"面积", {"Polygon", "outerBoundaryIs", "LinearRing"}},
};

/// Whether the text is ASCII without anything that XML escapes, as coordinates
/// are. Without a branch in the loop, so that the compiler can make it wide.
bool needs_no_escape(const QString& text)
{
    const auto* units = reinterpret_cast<const char16_t*>(text.utf16());
    unsigned other = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = units[i];
        other |= static_cast<unsigned>((unit < u' ') & (unit != u'\n'));
        other |= static_cast<unsigned>((unit > u'~') | (unit == u'<') | (unit == u'>') |
                                       (unit == u'&') | (unit == u'"'));
    }
    return other == 0;
}

/// Coordinates are nearly all of a file and hold nothing to escape: they go round
/// the writer, which looks at each character, straight to its device.
void write_coordinates(QXmlStreamWriter& xml, const QString& coordinates)
{
    xml.writeStartElement(QStringLiteral("coordinates"));
    xml.writeCharacters(QStringLiteral("\n"));
    if (needs_no_escape(coordinates))
        xml.device()->write(coordinates.toLatin1());
    else
        xml.writeCharacters(xml_text(coordinates));
    xml.writeEndElement();
}

void write_geometry(QXmlStreamWriter& xml, const exportRecord& record)
{
    const auto* found = std::ranges::find_if(
        geometries, [&](const geometry& one) { return record.method == QStringView(one.method); });
    if (found == std::end(geometries))
        return;
    for (const char* element : found->elements) {
        if (element != nullptr)
            xml.writeStartElement(QLatin1String(element));
    }
    write_coordinates(xml, record.coordinates);
    for (const char* element : found->elements) {
        if (element != nullptr)
            xml.writeEndElement();
    }
}

} // namespace

void write_kml(QIODevice& device, const QList<exportRecord>& records, int /*mode*/)
{
    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("kml"));
    xml.writeDefaultNamespace(QStringLiteral("http://www.opengis.net/kml/2.2"));
    xml.writeStartElement(QStringLiteral("Document"));
    for (const exportRecord& record : records) {
        xml.writeStartElement(QStringLiteral("Placemark"));
        xml.writeTextElement(QStringLiteral("name"), xml_text(record.name));
        xml.writeTextElement(QStringLiteral("visibility"), QStringLiteral("1"));
        xml.writeStartElement(QStringLiteral("description"));
        xml.writeCDATA(xml_text(description_of(record)));
        xml.writeEndElement();
        write_geometry(xml, record);
        xml.writeEndElement();
    }
    xml.writeEndDocument();
}
