#include "presentation/graphic_widget.h"

#include "presentation/drawing_layout.h"

#include <QFont>
#include <QPaintEngine>
#include <QPainter>
#include <QPen>
#include <QTransform>

#include <array>
#include <cmath>

namespace {

/// A waypoint is a small square of single points, so that it is seen.
void draw_waypoint(QPainter& painter, QPointF at)
{
    static constexpr std::array<QPointF, 9> square{
        {{0, 0}, {1, 0}, {-1, 0}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}, {0, -1}, {0, 1}}};
    for (const QPointF& offset : square)
        painter.drawPoint(at + offset);
}

void draw_figure(QPainter& painter, std::span<const QPointF> points)
{
    if (points.size() > 1)
        painter.drawPolyline(points.data(), static_cast<int>(points.size()));
    else if (points.size() == 1)
        draw_waypoint(painter, points.front());
}

/// Pixels of the screen to one of the widget, if a picture made beforehand comes
/// out just as what is drawn directly: on whole pixels of an image. Otherwise 0,
/// as for a printer or a screen with one and a half pixels to one.
int whole_pixel_ratio(const QPainter& painter)
{
    const int ratio = qRound(painter.device()->devicePixelRatio());
    const QTransform to_device = painter.deviceTransform();
    const QTransform whole(ratio, 0, 0, ratio, std::round(to_device.dx()),
                           std::round(to_device.dy()));
    return painter.paintEngine()->type() == QPaintEngine::Raster && to_device == whole ? ratio : 0;
}

} // namespace

void graphic_widget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const contents wanted{draw_data,
                          draw_rows,
                          frame_shown != 0,
                          size(),
                          whole_pixel_ratio(painter),
                          painter.device()->logicalDpiY()};
    if (wanted.pixel_ratio == 0) {
        draw(painter);
        return;
    }
    if (wanted != m_painted) {
        m_picture = QImage(size() * wanted.pixel_ratio, QImage::Format_RGB32);
        m_picture.setDevicePixelRatio(wanted.pixel_ratio);
        m_picture.setDotsPerMeterX(qRound(wanted.dots_per_inch / 0.0254));
        m_picture.setDotsPerMeterY(m_picture.dotsPerMeterX());
        QPainter picture(&m_picture);
        draw(picture);
        m_painted = wanted;
    }
    painter.drawImage(QPoint(0, 0), m_picture);
}

void graphic_widget::draw(QPainter& painter) const
{
    const drawing_layout layout = lay_out_drawing(draw_data, size(), frame_shown != 0);

    painter.setViewport(rect());                        // an image counts in its own pixels
    painter.setWindow(0, height(), width(), -height()); // y upwards
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), Qt::white);
    painter.setPen(QPen(QBrush(Qt::black, Qt::SolidPattern), 1.0, Qt::SolidLine, Qt::SquareCap,
                        Qt::BevelJoin));
    for (std::size_t index = 0; index < layout.ends.size(); ++index)
        draw_figure(painter, layout.figure(index));

    // Text turned upright again, and its places with it.
    painter.save();
    painter.setTransform(QTransform::fromScale(1.0, -1.0));
    painter.setFont(QFont(QStringLiteral("Arial"), 6, 700));
    for (const drawing_label& label : label_drawing(layout, draw_rows))
        painter.drawText(QPointF(label.at.x(), -label.at.y()), label.text);
    painter.restore();
}
