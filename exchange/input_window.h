#pragma once

#include <QWidget>

class QPushButton;

/// The import dialog: a template to fill in by hand, and a file to read.
class input_window : public QWidget
{
    Q_OBJECT

public:
    explicit input_window(QWidget* parent = nullptr);

    int language = 0; ///< 0 Chinese, other values English

    void setlanguage(int newValue);

signals:
    /// A file was chosen; the path is empty if the user chose none.
    void send_btm_sign_to_mainwindow_import_file(QString path);

public slots:
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();

private:
    QPushButton* m_template = nullptr;
    QPushButton* m_import = nullptr;
};
