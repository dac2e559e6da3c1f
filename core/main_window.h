#pragma once

#include "core/records.h"
#include "presentation/measurement_tables.h"

#include <QMainWindow>
#include <QTranslator>

#include <array>
#include <memory>

class JsonFileManager;
class QAction;
class QCheckBox;
class QLabel;
class QStandardItem;
class QStandardItemModel;
class QTimer;
class QWebChannel;
class thread_key;
class zuobiaoForm_homepage;

namespace Ui {
class MainWindow;
}

/// The only long-lived window. It keeps the program's master copy of the four
/// lists, shows them in seven tables, on the map and in the drawing, and turns
/// clicks into signals to the hub.
class MainWindow : public QMainWindow
{
    Q_OBJECT
    // The meta-object system must know what the signatures point to.
    Q_MOC_INCLUDE(<QStandardItemModel>)
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    thread_key* key = nullptr;
    QStandardItemModel* model = nullptr;
    QStandardItemModel* model_area = nullptr;
    QStandardItemModel* model_point = nullptr;
    QStandardItemModel* model_distance = nullptr;
    QStandardItemModel* model_airline = nullptr;
    QStandardItemModel* model_track = nullptr;
    QStandardItemModel* model_fangyang = nullptr;
    std::unique_ptr<Ui::MainWindow> ui;
    QString version = QStringLiteral("V3.2.3");
    QTimer* timer = nullptr;
    qint32 language = 0;  ///< 0 Chinese, 1 English
    qint32 map_shown = 1; ///< 1 while the map is in front, 0 while the drawing is
    QWebChannel* web_channel = nullptr;
    JsonFileManager* js = nullptr;
    zuobiaoForm_homepage* coordinate_form = nullptr; ///< the open settings form, or null
    relation_list relation_area;
    relation_list relation_distance;
    relation_list relation_point;
    relation_list relation_airline;
    relation_list relation_track;
    relation_list relation_fangyang;
    QStringList data_msg;
    QStringList data_msg_altitude;
    QList<measuringData> table_list;
    QList<QList<point_msg>> point_msg_all;
    qint32 mode_flag = 0; ///< coordinate format
    qint32 sys_index = 0; ///< index of the chosen coordinate system
    qint32 frame_shown = 1;

    /// Clears all tables and fills fresh models from `table_list`. All ticks are
    /// clear afterwards; the map keeps its figures.
    void rebuild_tables();
    /// Makes fresh models from `table_list`, with headers for the language in
    /// force, shows and connects them, and releases the old ones.
    void init_table_models();
    /// Copies a name to the row's cell in all tables.
    void syncDataNameToOtherTables(int mainTableRow, const QString& newName);
    void updateDataNameInAllTables(int mainTableRow, const QString& newName);
    /// Copies a time to the row's cell in all tables.
    void updateDataTimeInAllTables(int mainTableRow, const QString& newTime);

signals:
    void send_btm_sign_to_threadkey_read_data(QList<measuringData> table_list, QStringList data_msg,
                                              QStringList data_msg_altitude,
                                              QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_software_upgrade(QString version, int language);
    void send_btm_sign_to_threadkey_import_file(QString path, int mode, JsonFileManager* js,
                                                int sys_index);
    void send_btm_sign_to_threadkey_device(QStandardItemModel* model,
                                           QList<measuringData> table_list,
                                           QStringList data_msg_altitude);
    void send_btm_sign_to_threadkey_marlund();
    void send_btm_sign_to_threadkey_delete_tableandmap(QStandardItemModel* model,
                                                       QList<measuringData> table_list,
                                                       QStringList data_msg,
                                                       QStringList data_msg_altitude,
                                                       QList<QList<point_msg>> point_msg_all);
    void send_check_sign_to_threadkey_other(QStandardItemModel* model,
                                            QList<measuringData> table_list, QStringList data_msg);
    void variableChanged(int newValue);
    void zuobiaochanged(int m, JsonFileManager* js, int system_index, int language);
    void relation_table(QList<std::pair<int, int>> area, QList<std::pair<int, int>> distance,
                        QList<std::pair<int, int>> point, QList<std::pair<int, int>> airline,
                        QList<std::pair<int, int>> track, QList<std::pair<int, int>> fangyang);

    // The box of a tab that ticks all its rows has changed.
    void send_check_all(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                        QStandardItemModel* model_distance, QStandardItemModel* model_point,
                        QStandardItemModel* model_airline, QStandardItemModel* model_track,
                        QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                        QStringList data_msg);
    void send_check_mianji(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                           QStandardItemModel* model_distance, QStandardItemModel* model_point,
                           QStandardItemModel* model_airline, QStandardItemModel* model_track,
                           QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                           QStringList data_msg);
    void send_check_juli(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                         QStandardItemModel* model_distance, QStandardItemModel* model_point,
                         QStandardItemModel* model_airline, QStandardItemModel* model_track,
                         QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                         QStringList data_msg);
    void send_check_hangdian(bool clicked, QStandardItemModel* model,
                             QStandardItemModel* model_area, QStandardItemModel* model_distance,
                             QStandardItemModel* model_point, QStandardItemModel* model_airline,
                             QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                             QList<measuringData> table_list, QStringList data_msg);
    void send_check_hangxian(bool clicked, QStandardItemModel* model,
                             QStandardItemModel* model_area, QStandardItemModel* model_distance,
                             QStandardItemModel* model_point, QStandardItemModel* model_airline,
                             QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                             QList<measuringData> table_list, QStringList data_msg);
    void send_check_hangji(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                           QStandardItemModel* model_distance, QStandardItemModel* model_point,
                           QStandardItemModel* model_airline, QStandardItemModel* model_track,
                           QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                           QStringList data_msg);
    void send_check_fangyang(bool clicked, QStandardItemModel* model,
                             QStandardItemModel* model_area, QStandardItemModel* model_distance,
                             QStandardItemModel* model_point, QStandardItemModel* model_airline,
                             QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                             QList<measuringData> table_list, QStringList data_msg);

    // A tick in a table has changed; `clicked` is the success of the change.
    void send_all_table_change(bool clicked, QStandardItemModel* model,
                               QStandardItemModel* model_area, QStandardItemModel* model_distance,
                               QStandardItemModel* model_point, QStandardItemModel* model_airline,
                               QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                               QList<measuringData> table_list, QStringList data_msg);
    void send_area_table_change(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg);
    void send_dist_table_change(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg);
    void send_point_table_change(bool clicked, QStandardItemModel* model,
                                 QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                 QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                 QStandardItemModel* model_track,
                                 QStandardItemModel* model_fangyang,
                                 QList<measuringData> table_list, QStringList data_msg);
    void send_line_table_change(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg);
    void send_track_table_change(bool clicked, QStandardItemModel* model,
                                 QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                 QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                 QStandardItemModel* model_track,
                                 QStandardItemModel* model_fangyang,
                                 QList<measuringData> table_list, QStringList data_msg);
    void
    send_fangyang_table_change(bool clicked, QStandardItemModel* model,
                               QStandardItemModel* model_area, QStandardItemModel* model_distance,
                               QStandardItemModel* model_point, QStandardItemModel* model_airline,
                               QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                               QList<measuringData> table_list, QStringList data_msg);

public slots:
    void on_data_read_clicked();
    void on_data_to_device_clicked();
    void on_data_output_file_clicked();
    void on_data_input_file_clicked();
    void on_delect_tableandmap_clicked();
    void on_pushButton_map_clicked();
    void on_pushButton_graph_clicked();
    void on_print_clicked();
    void on_softwareupgrade_clicked();
    void on_hardwareupgrade_clicked();
    void on_marlund_clicked();
    void on_tuxing_control_clicked();

    // From the hub and the device worker.
    /// Appends what all four lists have and rebuilds. Nothing is compared.
    void recast_table(int command, QList<measuringData> table_list, QStringList data_msg,
                      QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);
    /// Replaces the lists and rebuilds.
    void reset_table_data(QList<measuringData> table_list, QStringList data_msg,
                          QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);
    void set_progressbar(int percent);
    void set_read_button(bool enabled);
    void set_LED(bool connected);
    void set_LED_2(bool connected);
    /// Runs a script in the map page.
    void draw_map(QString script);
    /// Drops the script: a figure goes only when the map is cleared.
    void delete_map(QString script);
    void set_information(QString checked, QString areameter, QString areamu, QString length,
                         QString points, QString records, QList<widgetData> checked_data);

    // From the dialogs.
    void setmodeflag(int m, JsonFileManager* js, int sys_index);
    void recv_input_signal(QString path);

    // From the models, the tab boxes and the delegates.
    void onAllTableDataChanged(QStandardItem* item);
    void onAreaTableDataChanged(QStandardItem* item);
    void onDistanceTableDataChanged(QStandardItem* item);
    void onPointTableDataChanged(QStandardItem* item);
    void onAirlineTableDataChanged(QStandardItem* item);
    void onTrackTableDataChanged(QStandardItem* item);
    void onFangyangTableDataChanged(QStandardItem* item);
    void check_all(int clicked);
    void check_mianji(int clicked);
    void check_juli(int clicked);
    void check_hangdian(int clicked);
    void check_hangxian(int clicked);
    void check_hangji(int clicked);
    void check_fangyang(int clicked);
    void all_table_change(bool clicked);
    void area_table_change(bool clicked);
    void dist_table_change(bool clicked);
    void point_table_change(bool clicked);
    void line_table_change(bool clicked);
    void track_table_change(bool clicked);
    void fangyang_table_change(bool clicked);

    // From the menus.
    void show_coordinate_settings();
    void show_instructions();
    void show_about();
    void show_download();
    void choose_map(QAction* chosen);
    void choose_language(QAction* chosen);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    using check_signal = void (MainWindow::*)(bool, QStandardItemModel*, QStandardItemModel*,
                                              QStandardItemModel*, QStandardItemModel*,
                                              QStandardItemModel*, QStandardItemModel*,
                                              QStandardItemModel*, QList<measuringData>,
                                              QStringList);

    void connect_menus();
    void connect_check_boxes();
    void start_web_view();
    void load_page(const QString& page);
    void run_script(const QString& script);
    void clear_map() { run_script(QStringLiteral("clearMap()")); }
    void style_buttons();
    void style_view_buttons();
    void set_menu_texts();
    /// Qt's own words, those of its file and print dialogs and standard buttons, in
    /// the language of the window.
    void choose_qt_texts();
    void write_connection_text();
    void set_lamp(QLabel* lamp, bool connected);
    [[nodiscard]] bool confirm_quit();
    void quit_if_confirmed();
    /// Shows a dialog in the middle of the window, before all others unless `modality`
    /// says otherwise. It is deleted when it is closed.
    void show_in_the_middle(QWidget* dialog, Qt::WindowModality modality = Qt::ApplicationModal);

    [[nodiscard]] QStringList headings(bool main_table) const;
    [[nodiscard]] measurement_tables::kind_models kind_models() const;
    void send_check(check_signal signal, bool clicked);
    void kind_table_changed(size_t kind, const QStandardItem& item);
    void take_edit(const QStandardItem& item, int main_row, const char* name_words,
                   const char* time_words);
    void write_everywhere(int main_row, int column, const QString& text);

    QTranslator m_qt_chinese;
    bool m_connected = false;      ///< what the connection text says
    bool m_quit_confirmed = false; ///< the close question was answered with Yes
};
