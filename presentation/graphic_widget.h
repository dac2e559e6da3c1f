#pragma once

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <utility>

class QPainter;

/// The plain alternative to the map: white, with the outlines of all ticked
/// measurements at a scale that fits, each with its number in the main table.
/// It knows nothing but these fields, which the totals pass fills before each
/// repaint.
class graphic_widget : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    QStringList draw_data;                ///< plain coordinate text of each ticked measurement
    QList<std::pair<int, int>> draw_rows; ///< (index in draw_data, row in the main table)
    qint32 frame_shown = 1;               ///< non-zero while the information frame overlaps

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// What a picture is made of. Texts are shared, not copied.
    struct contents
    {
        QStringList data;
        QList<std::pair<int, int>> rows;
        bool frame_shown = false;
        QSize size;
        int pixel_ratio = 0;   ///< pixels of the device to one of the widget, along each axis
        int dots_per_inch = 0; ///< on which the size of the numbers depends
        bool operator==(const contents&) const = default;
    };

    void draw(QPainter& painter) const;

    // The totals pass asks for a repaint twice a second whether or not anything
    // has changed: the last picture on the screen is kept.
    contents m_painted;
    QImage m_picture;
};
