#pragma once

#include <QList>
#include <QPointF>
#include <QSize>
#include <QString>
#include <QStringList>

#include <span>
#include <utility>
#include <vector>

/// Where the drawing puts the points of its measurements: in pixels of the
/// widget, x to the right and y upwards from the lower left corner.
struct drawing_layout
{
    /// The points of measurement `index`; none for a text without a pair.
    [[nodiscard]] std::span<const QPointF> figure(std::size_t index) const
    {
        const std::size_t first = index == 0 ? 0 : ends[index - 1];
        return std::span(points).subspan(first, ends[index] - first);
    }

    std::vector<QPointF> points;   ///< of all measurements, in their order
    std::vector<std::size_t> ends; ///< end of each measurement in `points`
};

/// A number beside a figure; `at` is the left end of its base line.
struct drawing_label
{
    QPointF at;
    QString text;
};

/// Centre of the drawing. With the information frame shown it moves away from
/// the lower right corner, where the frame lies.
[[nodiscard]] QPoint drawing_centre(QSize size, bool frame_shown);

/// Lays out coordinate texts (longitude, latitude, longitude and so on in
/// degrees, separated by commas) in a widget of `size`.
///
/// The first point of all is put on the centre and the others around it, 1e-8
/// degrees to the pixel; then the middle of all is moved to the centre, and
/// where a point lies outside the widget, all are drawn towards the centre by
/// steps of 0.9. Nothing is ever magnified.
///
/// Empty parts count as absent, and so does a last part without a partner. Texts
/// may come from any file: a part that cannot be read is 0, and so is one that
/// is not finite or beyond all reason (1e20 and more). A centre outside the
/// widget, in a widget smaller than the frame, cannot be fitted to: there the
/// shrinking ends within a pixel of it.
[[nodiscard]] drawing_layout lay_out_drawing(const QStringList& texts, QSize size,
                                             bool frame_shown);

/// The labels of a layout: beside the first point of each measurement its row in
/// the main table, counted from 1. `rows` pairs an index of a measurement with
/// its row; the last pair of an index counts, and without one there is no label.
/// A measurement without points has its label in the corner (0, 0).
[[nodiscard]] std::vector<drawing_label> label_drawing(const drawing_layout& layout,
                                                       const QList<std::pair<int, int>>& rows);
