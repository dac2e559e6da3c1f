#include "coordinates/transforms.h"
#include "exchange/csv.h"

#include <QStringBuilder>

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

/// The first two cells of a point.
std::pair<QString, QString> position_cells(file_coordinates& form, double longitude,
                                           double latitude, double altitude)
{
    switch (form.mode) {
    case minutes_mode: return {minutes_text(longitude, false), minutes_text(latitude, true)};
    case seconds_mode: return {seconds_text(longitude, false), seconds_text(latitude, true)};
    default: return plane_of_degrees(form, longitude, latitude, altitude);
    }
}

/// The point line of \a source, a line of "longitude,latitude,altitude" in which
/// missing numbers count as 0. The altitude is not converted.
QString point_line(QStringView source, file_coordinates& form)
{
    const QList<QStringView> parts = source.split(u',');
    const auto number = [&parts](qsizetype at) { return parts.value(at).toDouble(); };
    const auto [first, second] = position_cells(form, number(0), number(1), number(2));
    return first % u',' % second % u',' % parts.value(2, u"0") % u'\n';
}

/// The point lines of a record. Unless the coordinates stay as they are, the
/// last part of the split is left out: with empty parts kept that is what stands
/// behind the final line feed, with empty parts dropped it is the last point.
QString point_lines(const QString& coordinates, Qt::SplitBehavior empty_parts,
                    file_coordinates& form)
{
    if (form.mode < xy_mode || form.mode > yx_mode)
        return coordinates;
    const QList<QStringView> lines = QStringView(coordinates).split(u'\n', empty_parts);
    QString converted;
    converted.reserve(coordinates.size() + lines.size() * 8);
    for (qsizetype at = 0; at + 1 < lines.size(); ++at)
        converted += point_line(lines[at], form);
    return converted;
}

} // namespace

void write_csv_merged(QIODevice& device, const QList<exportRecord>& records,
                      const file_coordinates& form, int language)
{
    file_coordinates scaled = form;
    for (qsizetype number = 0; number < records.size(); ++number) {
        const exportRecord& record = records[number];
        const QString block =
            record_header(language) +
            row_of(QStringList(QString::number(number)) + record_cells(record, literal_mu)) +
            point_header(form.mode, language) +
            point_lines(record.coordinates, Qt::KeepEmptyParts, scaled);
        device.write(block.toUtf8());
    }
    device.close();
}

void write_csv_single(QIODevice& device, const exportRecord& record, const file_coordinates& form,
                      int language)
{
    file_coordinates scaled = form;
    const QString block =
        record_header(language) +
        row_of(record_cells(record, is_plane(form.mode) ? record.areamu : literal_mu)) +
        point_header(form.mode, language) +
        point_lines(record.coordinates, Qt::SkipEmptyParts, scaled);
    device.write(block.toUtf8());
}
