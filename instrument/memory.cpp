#include "instrument/memory.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <array>

namespace instrument {

namespace {

QJsonArray point_to_json(const stored_point& point)
{
    return {point.longitude, point.latitude, point.altitude, point.speed,
            point.seconds,   point.heading,  point.hdop,     point.status};
}

} // namespace

QString kind_name(measurement_kind value)
{
    static constexpr std::array names{"area",  "distance", "waypoint",
                                      "track", "route",    "staking-out"};
    const auto index = static_cast<std::size_t>(value);
    return index < names.size() ? QString::fromLatin1(names[index])
                                : QStringLiteral("kind %1").arg(index);
}

QString table_line(const stored_measurement& measured, qsizetype number)
{
    QString line = QStringLiteral("%1  %2  0x%3  %4  %5  %6  %7")
                       .arg(number, 5)
                       .arg(kind_name(measured.kind), -11)
                       .arg(measured.mode, 2, 16, QLatin1Char('0'))
                       .arg(measured.points.size(), 6)
                       .arg(measured.area, 10)
                       .arg(measured.length / 10.0, 10, 'f', 1)
                       .arg(measured.start.toString(u"yyyy-MM-dd HH:mm:ss"));
    if (!measured.points.isEmpty()) {
        const stored_point& first = measured.points.constFirst();
        line += QStringLiteral("  %1  %2")
                    .arg(first.longitude / 1e7, 11, 'f', 7)
                    .arg(first.latitude / 1e7, 10, 'f', 7);
    }
    return line;
}

QString to_table(const memory& stored)
{
    QString table = QStringLiteral("   no  kind         mode  points     area m2    length m  "
                                   "start                longitude    latitude\n");
    qsizetype number = 0;
    for (const stored_measurement& measured : stored)
        table += table_line(measured, ++number) + QLatin1Char('\n');
    return table;
}

QJsonObject to_json_object(const stored_measurement& measured)
{
    QJsonArray points;
    for (const stored_point& point : measured.points)
        points.append(point_to_json(point));
    return {
        {QStringLiteral("identity"), static_cast<qint64>(measured.identity)},
        {QStringLiteral("kind"), static_cast<int>(measured.kind)},
        {QStringLiteral("kind_name"), kind_name(measured.kind)},
        {QStringLiteral("area"), static_cast<qint64>(measured.area)},
        {QStringLiteral("length"), static_cast<qint64>(measured.length)},
        {QStringLiteral("start"), measured.start.toString(u"yyyy-MM-ddTHH:mm:ss")},
        {QStringLiteral("end"), measured.end.toString(u"yyyy-MM-ddTHH:mm:ss")},
        {QStringLiteral("time_zone"), measured.time_zone},
        {QStringLiteral("mode"), measured.mode},
        {QStringLiteral("width"), measured.width},
        {QStringLiteral("price"), measured.price},
        {QStringLiteral("currency"), measured.currency},
        {QStringLiteral("points"), points},
    };
}

QByteArray to_json(const memory& stored)
{
    QJsonArray all;
    for (const stored_measurement& measured : stored)
        all.append(to_json_object(measured));
    return QJsonDocument(all).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace instrument
