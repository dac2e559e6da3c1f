#include "support/box_watcher.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPushButton>

box_watcher::box_watcher(QObject* parent) : QObject(parent)
{
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &box_watcher::check);
    m_timer.start();
}

QStringList box_watcher::texts() const
{
    QStringList all;
    for (const seen_box& box : boxes)
        all += box.text;
    return all;
}

void box_watcher::check()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr || !box->isVisible())
        return;
    QPushButton* default_button = box->defaultButton();
    if (default_button == nullptr) {
        for (QAbstractButton* candidate : box->buttons()) {
            if (auto* push = qobject_cast<QPushButton*>(candidate);
                push != nullptr && (push->isDefault() || default_button == nullptr))
                default_button = push;
        }
    }
    boxes.append(
        {box->icon(), box->windowTitle(), box->text(), box->standardButtons(),
         default_button != nullptr ? box->standardButton(default_button) : QMessageBox::NoButton});
    if (look)
        look(box);
    QAbstractButton* chosen = box->button(answer);
    if (chosen == nullptr)
        chosen = default_button;
    if (chosen != nullptr)
        chosen->click();
    else
        box->close();
}
