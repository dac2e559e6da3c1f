#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QTimer>

#include <functional>

/// Watches for the program's real message boxes, notes kind, title and text of
/// each, and answers it.
class box_watcher : public QObject
{
    Q_OBJECT

public:
    struct seen_box
    {
        QMessageBox::Icon icon;
        QString title;
        QString text;
        QMessageBox::StandardButtons buttons;
        QMessageBox::StandardButton default_button;
    };

    explicit box_watcher(QObject* parent = nullptr);

    /// The button pressed in boxes that have it; others get their default.
    QMessageBox::StandardButton answer = QMessageBox::NoButton;
    /// Run for each box before it is answered, for instance to take a picture.
    std::function<void(QMessageBox*)> look;

    QList<seen_box> boxes;
    [[nodiscard]] QStringList texts() const;

private:
    void check();

    QTimer m_timer;
};
