#include "support/file_dialog_user.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

file_dialog_user::file_dialog_user(QObject* parent) : QObject(parent)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &file_dialog_user::check);
    m_timer.start();
}

void file_dialog_user::check()
{
    QWidget* const front = QApplication::activeModalWidget();
    if (auto* question = qobject_cast<QMessageBox*>(front);
        question != nullptr && qobject_cast<QFileDialog*>(question->parentWidget()) != nullptr) {
        if (QAbstractButton* yes = question->button(QMessageBox::Yes))
            yes->click();
        return;
    }
    auto* dialog = qobject_cast<QFileDialog*>(front);
    if (dialog == nullptr || !dialog->isVisible())
        return;
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    auto* buttons = dialog->findChild<QDialogButtonBox*>();
    if (look)
        look(dialog);
    dialogs.append({dialog->windowTitle(), dialog->nameFilters(), dialog->acceptMode(),
                    dialog->fileMode(), dialog->options(), dialog->directory().path(),
                    name->text()});
    if (path.isEmpty()) {
        buttons->button(QDialogButtonBox::Cancel)->click();
        return;
    }
    name->setText(path);
    for (QAbstractButton* button : buttons->buttons()) {
        if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
            button->click();
    }
}
