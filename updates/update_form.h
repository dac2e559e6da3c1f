#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

/// The window of the check for a newer version of the program: fetches it at a
/// press and shows how far the transfer is. Its texts are Chinese in both
/// languages.
class updateForm : public QWidget
{
    Q_OBJECT

public:
    explicit updateForm(QWidget* parent = nullptr);

    int language = 0; ///< 0 Chinese, 1 English; no text consults it

    QPushButton* pushButton;
    QProgressBar* progressBar;
    QLabel* bytesReceived;
    QLabel* bytesTotal;
    QLabel *label, *label_2;

signals:
    void send_dowmfile_signal_to_software_upgrade();

public slots:
    void on_pushButton_clicked();
    /// Shows sizes and percent; below zero, where the total is not known, the bar
    /// is busy without an end.
    void set_ui(QString received, QString total, int percent);
};
