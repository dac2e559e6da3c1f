#include "tiles.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRegularExpression>

#include <cmath>

namespace {

constexpr int side = 256;

int number_in(const QString& request, const char* names)
{
    const QRegularExpression pattern(QStringLiteral("[?&](?:%1)=(\\d+)").arg(QLatin1String(names)));
    return pattern.match(request).captured(1).toInt();
}

/// A line that goes on from tile to tile: its height depends on the place alone.
QPainterPath wave(double first_x, double height, double depth)
{
    QPainterPath path;
    for (int x = 0; x <= side; x += 8) {
        const double angle = (first_x * side + x) * 2 * 3.14159265358979 / (2 * side);
        const QPointF point(x, height + depth * std::sin(angle));
        x == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    return path;
}

} // namespace

QByteArray tiles::picture_for(const QString& request)
{
    const int x = number_in(request, "x|TILECOL");
    const int y = number_in(request, "y|TILEROW");
    const int z = number_in(request, "z|TILEMATRIX");
    const bool names_alone =
        request.contains(QLatin1String("/cva_w/")) || request.contains(QLatin1String("/eva_w/"));
    const bool english = request.contains(QLatin1String("lang=en")) ||
                         request.contains(QLatin1String("hl=en")) ||
                         request.contains(QLatin1String("/eva_w/"));
    const bool names = names_alone || !request.contains(QLatin1String("/vec_w/"));
    const QColor road = request.contains(QLatin1String("google"))     ? QColor(0xf6, 0xcf, 0x8a)
                        : request.contains(QLatin1String("tianditu")) ? QColor(0xd8, 0xc3, 0xdf)
                                                                      : QColor(0xff, 0xff, 0xff);

    QImage tile(side, side, QImage::Format_ARGB32_Premultiplied);
    tile.fill(names_alone ? QColor(Qt::transparent) : QColor(land));
    QPainter painter(&tile);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!names_alone) {
        painter.setPen(QPen(QColor(0xb5, 0xd3, 0xe7), 12));
        painter.drawPath(wave(x, 70, 22));
        painter.setPen(QPen(road, 7));
        painter.drawPath(wave(x + 0.5, 180, 12));
        painter.drawLine(150, 0, 150, side);
    }
    if (names) {
        painter.setPen(QColor(0x8a, 0x85, 0x78));
        painter.drawText(QRect(8, 120, side, 20), (english ? QStringLiteral("Tile %1/%2/%3")
                                                           : QStringLiteral("图块 %1/%2/%3"))
                                                      .arg(z)
                                                      .arg(x)
                                                      .arg(y));
    }
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    tile.save(&buffer, "PNG");
    return bytes;
}
