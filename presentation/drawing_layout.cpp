#include "presentation/drawing_layout.h"

#include "presentation/quick_number.h"

#include <QPoint>
#include <QStringView>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace {

/// Space that the information frame takes from the drawing.
constexpr QSize frame_size(240, 130);

/// A label stands this far to the right of its point.
constexpr double label_distance = 4.0;

constexpr double shrink_step = 0.9;

/// Numbers from here on are no coordinates in any unit. The bound keeps the
/// count of shrink steps small and all sums finite.
constexpr double no_coordinate = 1e20;

/// Millionths of a degree.
double millionths(QStringView part)
{
    const double degrees = quick_to_double(part);
    // Also false for what is not a number.
    return std::abs(degrees) < no_coordinate ? degrees * 1000000.0 : 0.0;
}

/// The parts of a coordinate text between its commas, empty ones left out.
class coordinate_parts
{
public:
    explicit coordinate_parts(QStringView text) : m_rest(text) {}

    /// The next part, empty at the end.
    QStringView next()
    {
        while (m_rest.startsWith(u','))
            m_rest = m_rest.sliced(1);
        const auto comma = std::find(m_rest.cbegin(), m_rest.cend(), u',');
        const QStringView part = m_rest.first(comma - m_rest.cbegin());
        m_rest = m_rest.sliced(part.size());
        return part;
    }

private:
    QStringView m_rest;
};

/// Least and largest coordinate of one axis.
struct extent
{
    void add(double value)
    {
        least = std::min(least, value);
        largest = std::max(largest, value);
    }

    double least;
    double largest;
};

double shrunk(double value, double centre)
{
    // For a value below the centre this is centre - (centre - value) * 0.9 to the
    // last bit: only signs differ.
    return (value - centre) * shrink_step + centre;
}

bool fits(const extent& axis, double centre, double size)
{
    const bool inside = axis.least >= 0.0 && axis.largest <= size;
    // Inside always, unless the centre itself is not: there nothing else would
    // end the shrinking.
    const bool collapsed = axis.least >= centre - 1.0 && axis.largest <= centre + 1.0;
    return inside || collapsed;
}

/// How often all points must be shrunk for the extents to fit. Rounded addition
/// and multiplication by a positive number keep the order of their operands, so
/// the outermost points stay outermost and speak for all others.
int count_shrinks(extent x, extent y, QPointF centre, QSizeF size)
{
    int count = 0;
    while (!fits(x, centre.x(), size.width()) || !fits(y, centre.y(), size.height())) {
        x = {shrunk(x.least, centre.x()), shrunk(x.largest, centre.x())};
        y = {shrunk(y.least, centre.y()), shrunk(y.largest, centre.y())};
        ++count;
    }
    return count;
}

/// Moves and shrinks `Count` points at once, so that their chains of arithmetic,
/// each as long as there are steps, run side by side.
template <std::size_t Count>
void place(QPointF* points, QPointF move, QPointF centre, int shrinks)
{
    std::array<double, Count> x;
    std::array<double, Count> y;
    for (std::size_t i = 0; i < Count; ++i) {
        x[i] = points[i].x() - move.x();
        y[i] = points[i].y() - move.y();
    }
    for (int step = 0; step < shrinks; ++step) {
        for (std::size_t i = 0; i < Count; ++i)
            x[i] = shrunk(x[i], centre.x());
        for (std::size_t i = 0; i < Count; ++i)
            y[i] = shrunk(y[i], centre.y());
    }
    for (std::size_t i = 0; i < Count; ++i)
        points[i] = {x[i], y[i]};
}

void place_all(std::vector<QPointF>& points, QPointF move, QPointF centre, int shrinks)
{
    constexpr std::size_t together = 8;
    std::size_t at = 0;
    for (; at + together <= points.size(); at += together)
        place<together>(points.data() + at, move, centre, shrinks);
    for (; at < points.size(); ++at)
        place<1>(points.data() + at, move, centre, shrinks);
}

} // namespace

QPoint drawing_centre(QSize size, bool frame_shown)
{
    const QSize room = frame_shown ? size - frame_size : size;
    return {room.width() / 2, room.height() / 2}; // towards zero, as for all whole numbers
}

drawing_layout lay_out_drawing(const QStringList& texts, QSize size, bool frame_shown)
{
    const QPointF centre = drawing_centre(size, frame_shown);
    extent x{centre.x(), centre.x()};
    extent y{centre.y(), centre.y()};
    std::optional<QPointF> base;
    drawing_layout layout;
    layout.ends.reserve(static_cast<std::size_t>(texts.size()));
    for (const QString& text : texts) {
        coordinate_parts parts(text);
        for (;;) {
            const QStringView longitude = parts.next();
            const QStringView latitude = parts.next();
            if (latitude.isEmpty())
                break;
            const QPointF point(millionths(longitude), millionths(latitude));
            if (!base)
                base = point;
            const QPointF& placed =
                layout.points.emplace_back((point.x() - base->x()) * 100.0 + centre.x(),
                                           (point.y() - base->y()) * 100.0 + centre.y());
            x.add(placed.x());
            y.add(placed.y());
        }
        layout.ends.push_back(layout.points.size());
    }

    const QPointF move((x.least + x.largest) * 0.5 - centre.x(),
                       (y.least + y.largest) * 0.5 - centre.y());
    const int shrinks =
        count_shrinks({x.least - move.x(), x.largest - move.x()},
                      {y.least - move.y(), y.largest - move.y()}, centre, QSizeF(size));
    place_all(layout.points, move, centre, shrinks);
    return layout;
}

std::vector<drawing_label> label_drawing(const drawing_layout& layout,
                                         const QList<std::pair<int, int>>& rows)
{
    const std::size_t figures = layout.ends.size();
    std::vector<std::optional<qint64>> row_of(figures);
    for (const auto& [index, row] : rows) {
        if (index >= 0 && static_cast<std::size_t>(index) < figures)
            row_of[static_cast<std::size_t>(index)] = row;
    }
    std::vector<drawing_label> labels;
    labels.reserve(figures);
    for (std::size_t index = 0; index < figures; ++index) {
        if (!row_of[index])
            continue;
        const std::span<const QPointF> figure = layout.figure(index);
        const QPointF beside = figure.empty() ? QPointF() : figure.front();
        labels.push_back(
            {{beside.x() + label_distance, beside.y()}, QString::number(*row_of[index] + 1)});
    }
    return labels;
}
