#pragma once

#include <QLatin1String>
#include <QObject>
#include <QString>

class QAbstractButton;
class QComboBox;
class QWidget;

// What the forms of the coordinate systems share. Their texts stand in the code in
// both languages and follow a number that they are opened with, not a translator.

namespace form_parts {

/// One of two texts: \a language 0 is Chinese, any other English.
QString in_language(int language, const char* chinese, const char* english);

/// A text in both languages and where it goes: on a label, a button or a group box,
/// into the title of any other widget.
struct text
{
    QWidget* widget;
    const char* chinese;
    const char* english;

    void write(int language) const;
};

template <typename Widget>
Widget* make(QWidget* parent, const char* name)
{
    auto* widget = new Widget(parent);
    widget->setObjectName(QLatin1String(name));
    return widget;
}

/// Gives a box of systems a width that does not follow their names, which may be
/// of any length.
void keep_width(QComboBox* box);

/// Enter and Escape in a form that is no dialog, wherever the focus is: Enter
/// presses the button that has the focus, else `enter`; Escape presses `escape`, or
/// closes the form where that is null.
class keys : public QObject
{
    Q_OBJECT

public:
    keys(QWidget* form, QAbstractButton* enter, QAbstractButton* escape);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* m_form;
    QAbstractButton* m_enter;
    QAbstractButton* m_escape;
};

} // namespace form_parts
