#pragma once

#include <QWidget>

class QComboBox;
class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;

/// The window of the firmware upgrade: the images on the update host, a local
/// file, the choice confirmed, the progress. Its words are Chinese in both
/// languages; the buttons' pictures follow the language.
class hardwareupdata : public QWidget
{
    Q_OBJECT

public:
    explicit hardwareupdata(QWidget* parent = nullptr);

    QProgressBar* progressBar;
    QPushButton* pushButton;   ///< looks on the update host
    QPushButton* pushButton_2; ///< takes a local file
    QPushButton* pushButton_3; ///< confirms the choice
    QComboBox* comboBox;       ///< the images on the update host
    QLabel* label;
    QFrame* line;

signals:
    void send_signal_cloud_updata();
    void send_signal_local_updata();
    void send_signal_sure(QString combobox);

public slots:
    /// 0 Chinese, any other value English.
    void setlanguage(int language);
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();
    void on_pushButton_3_clicked();
    void recv_add_comboBox_value(QString value);
    void recv_updata_progress_value(int percent);
};
