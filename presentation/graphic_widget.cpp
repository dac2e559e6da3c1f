#include "presentation/graphic_widget.h"

#include <QPainter>

void graphic_widget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
}
