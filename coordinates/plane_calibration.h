#pragma once

#include "coordinates/form_parts.h"

#include <QWidget>

#include <vector>

class JsonFileManager;
class QLabel;
class QLineEdit;
class QPushButton;

/// A small calculator: the plane coordinates of one point as they are and as they
/// should be give the offsets to add, in metres.
class plane_calibration : public QWidget
{
    Q_OBJECT
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    explicit plane_calibration(QWidget* parent = nullptr);

signals:
    /// Confirmed: target minus source, as shown.
    void variableChanged(QString dx, QString dy);

public slots:
    /// Sets the texts for a language, 0 Chinese, any other English.
    void set_up(int language, JsonFileManager* js);
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();

private:
    void calculate();

    std::vector<form_parts::text> m_texts;
    QLineEdit* lineEdit;   ///< source X
    QLineEdit* lineEdit_2; ///< source Y
    QLineEdit* lineEdit_3; ///< target X
    QLineEdit* lineEdit_4; ///< target Y
    QLabel* label_dx;
    QLabel* label_dy;
    QPushButton* pushButton;   ///< confirm
    QPushButton* pushButton_2; ///< cancel
};
