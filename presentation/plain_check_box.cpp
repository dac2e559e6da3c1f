#include "presentation/plain_check_box.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOptionButton>

void plain_check_box::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOptionButton option;
    initStyleOption(&option);
    option.palette = QApplication::palette();
    // Without a widget the style does not meet the panel's rules.
    QPainter painter(this);
    QApplication::style()->drawControl(QStyle::CE_CheckBox, &option, &painter);
}
