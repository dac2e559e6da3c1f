#include "device/message_box.h"

#include <QApplication>

void show_message_box(QMessageBox::Icon icon, const QString& title, const QString& text)
{
    QWidget* const in_front = QApplication::activeWindow();
    if (icon == QMessageBox::Warning)
        QMessageBox::warning(in_front, title, text);
    else
        QMessageBox::information(in_front, title, text);
}
