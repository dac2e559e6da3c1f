#include "exchange/message_boxes.h"

#include <QApplication>
#include <QMessageBox>

namespace {

void show_box(QMessageBox::Icon icon, const QString& title, const QString& text)
{
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    QMessageBox(icon, title, text, QMessageBox::Ok, QApplication::activeWindow()).exec();
    QApplication::restoreOverrideCursor();
}

} // namespace

void show_information(const QString& title, const QString& text)
{
    show_box(QMessageBox::Information, title, text);
}

void show_warning(const QString& title, const QString& text)
{
    show_box(QMessageBox::Warning, title, text);
}

wait_pointer::wait_pointer()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

wait_pointer::~wait_pointer()
{
    QApplication::restoreOverrideCursor();
}
