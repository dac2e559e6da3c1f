#pragma once

#include <QFileDialog>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

/// Uses the program's real file dialogs, the toolkit's own ones: notes what each
/// asks, types a path and presses the button, or cancels. Also answers the
/// question whether a file is to be replaced, with yes.
class file_dialog_user : public QObject
{
    Q_OBJECT

public:
    struct seen_dialog
    {
        QString title;
        QStringList filters;
        QFileDialog::AcceptMode accept_mode;
        QFileDialog::FileMode file_mode;
        QFileDialog::Options options;
        QString directory; ///< where it stood, which is no folder that is not there
        QString file_name; ///< what it proposed
    };

    explicit file_dialog_user(QObject* parent = nullptr);

    /// What is typed into the next dialogs; a dialog is cancelled when it is empty.
    QString path;
    /// Run for each dialog before it is answered, for instance to take a picture.
    std::function<void(QFileDialog*)> look;

    QList<seen_dialog> dialogs;

private:
    void check();

    QTimer m_timer;
};
