#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <utility>

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
};
