#pragma once

#include "coordinates/form_parts.h"

#include <QString>
#include <QWidget>

#include <vector>

class JsonFileManager;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLayout;
class QLineEdit;
class QPushButton;
class QRadioButton;
struct CoordinateSystem;

/// Shows, edits or creates one stored coordinate system.
///
/// Lengths are metres, angles arc-seconds but for the central meridian, which has
/// degrees, minutes and seconds. A text that is no number counts as 0.
class zuobiaoForm : public QWidget
{
    Q_OBJECT
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    enum form_mode
    {
        check = 0, ///< everything disabled
        edit = 1,  ///< overwrites the system that `tuoqiu` names when confirmed
        create = 2 ///< adds a system; that of the index is the template
    };

    explicit zuobiaoForm(QWidget* parent = nullptr);

    qint32 language = 0; ///< 0 Chinese, any other English
    qint32 opened_mode = check;
    qint32 sys_index = 0; ///< index of the system the form was opened on
    JsonFileManager* js = nullptr;
    qint32 shown_ellipsoid = -1; ///< index of the system whose ellipsoid was shown last

signals:
    /// Fills a calculator that was just opened.
    void variableChanged(int newValue, JsonFileManager* js);

public slots:
    /// An index without a system shows a default-constructed one.
    void set_up(JsonFileManager* js, int mode, int system_index, int language);
    void on_pushButton_clicked();   ///< confirm
    void on_pushButton_2_clicked(); ///< cancel
    void on_pushButton_3_clicked(); ///< plane calibration
    void on_pushButton_4_clicked(); ///< calculate seven parameters
    void recive_seven_parameter(QString dx, QString dy, QString dz, QString rx, QString ry,
                                QString rz, QString k);
    /// Adds offsets to east and north.
    void recive_plane_calibration(QString dx, QString dy);

private:
    QWidget* make_name_row();
    QGroupBox* make_ellipsoid_box();
    QGroupBox* make_projection_box();
    QGroupBox* make_parameters_box();
    QLayout* make_buttons();
    /// Makes a line of the table of numbers: its field in the column after the
    /// label.
    void add_number(QGridLayout* grid, int row, int column, const char* name);
    void add_labelled(QGridLayout* grid, int row, int column, QWidget* field, const char* chinese,
                      const char* english);

    void write_texts();
    void remove_name_row();
    void show_system(CoordinateSystem system);
    void follow_ellipsoid();
    void enable_rows();
    void disable_everything();
    [[nodiscard]] QLineEdit* number(const char* name) const;
    [[nodiscard]] CoordinateSystem* system_at(int index) const;
    [[nodiscard]] bool is_complete() const;
    [[nodiscard]] int chosen_type() const;
    void read_into(CoordinateSystem& system) const;
    void create_system();
    void overwrite_system();
    template <typename Calculator, typename Result, typename Receiver>
    void open_calculator(Result result, Receiver receiver);

    std::vector<form_parts::text> m_texts;
    QWidget* m_name_row; ///< null when it has been removed
    QLineEdit* sys_name; ///< on it
    QComboBox* tuoqiu;
    QComboBox* mode;
    QComboBox* touyingdai;
    QLineEdit* center;   ///< degrees
    QLineEdit* center_2; ///< minutes
    QLineEdit* center_3; ///< seconds
    QRadioButton* radioButton;
    QRadioButton* radioButton_2;
    QRadioButton* radioButton_3;
    QPushButton* pushButton;
    QPushButton* pushButton_2;
    QPushButton* pushButton_3;
    QPushButton* pushButton_4;
    std::vector<QLineEdit*> m_numbers; ///< in the order of the table of numbers
};
