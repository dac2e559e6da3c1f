#include "coordinates/form_parts.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

namespace form_parts {

QString in_language(int language, const char* chinese, const char* english)
{
    return QString::fromUtf8(language == 0 ? chinese : english);
}

void text::write(int language) const
{
    const QString words = in_language(language, chinese, english);
    if (auto* label = qobject_cast<QLabel*>(widget); label != nullptr)
        label->setText(words);
    else if (auto* button = qobject_cast<QAbstractButton*>(widget); button != nullptr)
        button->setText(words);
    else if (auto* group = qobject_cast<QGroupBox*>(widget); group != nullptr)
        group->setTitle(words);
    else
        widget->setWindowTitle(words);
}

void keep_width(QComboBox* box)
{
    constexpr int characters = 20;
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(characters);
}

keys::keys(QWidget* form, QAbstractButton* enter, QAbstractButton* escape)
    : QObject(form), m_form(form), m_enter(enter), m_escape(escape)
{
    form->installEventFilter(this);
    if (auto* push = qobject_cast<QPushButton*>(enter); push != nullptr)
        push->setDefault(true);
}

bool keys::eventFilter(QObject* watched, QEvent* event)
{
    // Keys that no child wants arrive at the form.
    if (watched != m_form || event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (auto* focused = qobject_cast<QPushButton*>(m_form->focusWidget()); focused != nullptr)
            focused->click();
        else
            m_enter->click();
        return true;
    case Qt::Key_Escape:
        if (m_escape != nullptr)
            m_escape->click();
        else
            m_form->close();
        return true;
    default: return QObject::eventFilter(watched, event);
    }
}

} // namespace form_parts
