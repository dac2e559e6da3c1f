#include "presentation/graphic_widget.h"

#include "presentation/drawing_layout.h"

#include <QFont>
#include <QPainter>
#include <QPen>
#include <QTransform>

#include <array>

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

} // namespace

void graphic_widget::paintEvent(QPaintEvent* /*event*/)
{
    const drawing_layout layout = lay_out_drawing(draw_data, size(), frame_shown != 0);

    QPainter painter(this);
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
