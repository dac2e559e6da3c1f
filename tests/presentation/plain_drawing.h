#pragma once

#include <QPainter>
#include <QStringList>
#include <QWidget>

#include <utility>

/// The drawing done the plain way, one step after the other and all points
/// looked through again after each shrink: what the product's drawing must equal.
/// For finite numbers in a widget that has its centre inside only; it would not
/// end otherwise.
struct plain_drawing
{
    using points = QList<std::pair<double, double>>;

    static QList<points> lay_out(const QStringList& texts, int width, int height, int frame_shown)
    {
        const int cx = frame_shown == 0 ? width / 2 : (width - 240) / 2;
        const int cy = frame_shown == 0 ? height / 2 : (height - 130) / 2;
        double min_x = cx;
        double max_x = cx;
        double min_y = cy;
        double max_y = cy;
        bool first = true;
        double bx = 0;
        double by = 0;
        QList<points> figures;
        for (const QString& text : texts) {
            const QStringList parts = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
            points figure;
            for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
                const double x = parts[i].toDouble() * 1000000.0;
                const double y = parts[i + 1].toDouble() * 1000000.0;
                if (first) {
                    bx = x;
                    by = y;
                    figure.append({cx, cy});
                    first = false;
                } else {
                    figure.append({(x - bx) * 100.0 + cx, (y - by) * 100.0 + cy});
                }
                min_x = qMin(min_x, figure.last().first);
                max_x = qMax(max_x, figure.last().first);
                min_y = qMin(min_y, figure.last().second);
                max_y = qMax(max_y, figure.last().second);
            }
            figures.append(figure);
        }
        const double move_x = (min_x + max_x) * 0.5 - cx;
        const double move_y = (min_y + max_y) * 0.5 - cy;
        for (points& figure : figures) {
            for (auto& [x, y] : figure) {
                x -= move_x;
                y -= move_y;
            }
        }
        while (any_outside(figures, width, height)) {
            for (points& figure : figures) {
                for (auto& [x, y] : figure) {
                    x = shrunk(x, cx);
                    y = shrunk(y, cy);
                }
            }
        }
        return figures;
    }

    static bool any_outside(const QList<points>& figures, int width, int height)
    {
        for (const points& figure : figures) {
            for (const auto& [x, y] : figure) {
                if (x < 0 || x > width || y < 0 || y > height)
                    return true;
            }
        }
        return false;
    }

    static double shrunk(double p, double c)
    {
        return p < c ? c - (c - p) * 0.9 : (p - c) * 0.9 + c;
    }
};

class plain_drawing_widget : public QWidget
{
public:
    QStringList draw_data;
    QList<std::pair<int, int>> draw_rows;
    int frame_shown = 1;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const QList<plain_drawing::points> figures =
            plain_drawing::lay_out(draw_data, width(), height(), frame_shown);
        QPainter painter(this);
        painter.setWindow(0, height(), width(), -height());
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.fillRect(0, 0, width(), height(), Qt::white);
        QPen pen;
        pen.setBrush(QBrush(Qt::black, Qt::SolidPattern));
        pen.setWidthF(1.0);
        pen.setStyle(Qt::SolidLine);
        pen.setCapStyle(Qt::SquareCap);
        pen.setJoinStyle(Qt::BevelJoin);
        painter.setPen(pen);
        for (const plain_drawing::points& figure : figures) {
            if (figure.size() == 1) {
                const auto [x, y] = figure.first();
                painter.drawPoint(QPointF(x, y));
                painter.drawPoint(QPointF(x + 1, y));
                painter.drawPoint(QPointF(x - 1, y));
                painter.drawPoint(QPointF(x + 1, y + 1));
                painter.drawPoint(QPointF(x + 1, y - 1));
                painter.drawPoint(QPointF(x - 1, y + 1));
                painter.drawPoint(QPointF(x - 1, y - 1));
                painter.drawPoint(QPointF(x, y - 1));
                painter.drawPoint(QPointF(x, y + 1));
            } else if (figure.size() > 1) {
                QPolygonF line;
                for (const auto& [x, y] : figure)
                    line.append(QPointF(x, y));
                painter.drawPolyline(line);
            }
        }
        for (qsizetype i = 0; i < figures.size(); ++i) {
            const auto [x, y] = figures[i].isEmpty() ? std::pair(0.0, 0.0) : figures[i].first();
            int row = 0;
            bool paired = false;
            for (const auto& pair : draw_rows) {
                if (pair.first == i) {
                    row = pair.second;
                    paired = true;
                }
            }
            if (!paired)
                continue;
            painter.save();
            QTransform upright;
            upright.scale(1.0, -1.0);
            painter.setTransform(upright);
            painter.setFont(QFont(QStringLiteral("Arial"), 6, 700));
            painter.drawText(QPointF(x + 4.0, -y), QString::number(row + 1));
            painter.restore();
        }
    }
};
