#pragma once

#include <QPointer>
#include <QWidget>

class JsonFileManager;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class zuobiaoForm;

/// Chooses how coordinates appear and in which stored system, and manages the
/// systems.
///
/// The coordinate format, `modeflag`, is 0 for decimal degrees, 1 for plane
/// coordinates X then Y, 2 for degrees and minutes, 3 for degrees, minutes and
/// seconds, 4 for plane coordinates Y then X. The system matters for 1 and 4 only.
class zuobiaoForm_homepage : public QWidget
{
    Q_OBJECT
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    explicit zuobiaoForm_homepage(QWidget* parent = nullptr);
    ~zuobiaoForm_homepage() override;

    qint32 language = 0; ///< 0 Chinese, any other English
    qint32 modeflag = 0;
    qint32 sys_index = 0; ///< index of the system the form was opened with
    JsonFileManager* js = nullptr;

signals:
    /// Fills an editor: its mode, and the index of the system in the store.
    void zuobiaochanged(JsonFileManager* js, int mode, int sys_index, int language);
    /// Confirmed. The index is -1 when there is no system.
    void modeflagchange(int m, JsonFileManager* js, int sys_index);

public slots:
    void set_up(int m, JsonFileManager* js, int system_index, int language);
    void on_pushButton_clicked();   ///< confirm
    void on_pushButton_2_clicked(); ///< cancel
    void on_pushButton_3_clicked(); ///< check
    void on_pushButton_4_clicked(); ///< edit
    void on_pushButton_5_clicked(); ///< delete
    void on_pushButton_6_clicked(); ///< new

private:
    void make_format_box();
    void make_systems_box();
    void write_texts();
    void enable_for_frame();
    void fill_systems(int index);
    void open_editor(int mode);

    QGroupBox* groupBox;
    QRadioButton* radioButton;   ///< plane coordinates
    QRadioButton* radioButton_2; ///< spherical coordinates
    QComboBox* comboBox;         ///< order of plane coordinates
    QComboBox* comboBox_2;       ///< notation of degrees
    QGroupBox* groupBox_2;
    QLabel* label;
    QComboBox* comboBox_3; ///< the systems
    QPushButton* pushButton;
    QPushButton* pushButton_2;
    QPushButton* pushButton_3;
    QPushButton* pushButton_4;
    QPushButton* pushButton_5;
    QPushButton* pushButton_6;
    QPointer<zuobiaoForm> m_editor; ///< the open one, or null
};
