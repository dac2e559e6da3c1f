#pragma once

#include "coordinates/coordinate_system.h"
#include "core/records.h"

#include <QThread>

class JsonFileManager;
class QStandardItemModel;
class QWebEngineView;
class graphic_widget;

/// The hub between the window and the workers. Most of it forwards; its own are
/// the relation lists, what a tick means for the other tables and for the map,
/// and the deletion of measurements.
///
/// Everything here runs in the GUI thread, and an emit returns after all slots
/// have run.
class thread_key : public QThread
{
    Q_OBJECT
    // The meta-object system must know what the signatures point to.
    Q_MOC_INCLUDE(<QStandardItemModel>)
    Q_MOC_INCLUDE(<QWebEngineView>)
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")
    Q_MOC_INCLUDE("presentation/graphic_widget.h")

public:
    explicit thread_key(QObject* parent = nullptr);
    ~thread_key() override;

    relation_list relation_area;
    relation_list relation_distance;
    relation_list relation_point;
    relation_list relation_airline;
    relation_list relation_track;
    relation_list relation_fangyang;

    /// Per-type row of the first pair whose main row is `main_row`, or -1.
    static int find_type_row(int main_row, const relation_list& relation);
    /// Main row of the first pair whose per-type row is `type_row`, or -1.
    static int find_main_row(int type_row, const relation_list& relation);

    /// Sends the scripts that draw a measurement: begin, one append for each
    /// 1000 numbers, finish. Sends nothing for a row outside `data_msg` or one
    /// with fewer than two numbers.
    void draw_row(int main_row, const QString& map_kind, const QStringList& data_msg);
    /// Sends the script that deletes a measurement's figure.
    void erase_row(int main_row, const QString& map_kind, const QStringList& data_msg);

signals:
    void data_finished(int command, QList<measuringData> table_list, QStringList data_msg,
                       QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);
    void key_set_progressbar(int percent);
    void send_cmd_to_serial_thread(int command, QList<measuringData> table_list,
                                   QStringList data_msg, QStringList data_msg_altitude,
                                   QList<QList<point_msg>> point_msg_all);
    void send_cmd_to_file_import_thread(QString path, int mode, JsonFileManager* js, int sys_index);
    void send_cmd_to_import_data_to_device_thread(QStandardItemModel* model,
                                                  QList<measuringData> Table_list,
                                                  QStringList Data_msg_altitude);
    void send_LED_control(bool connected);
    void send_LED_2_control(bool connected);
    void send_cmd_to_picture_export_thread(QWebEngineView* m_parentWebEngineView,
                                           graphic_widget* m_parentwidgetView, int picture_flag,
                                           QString file_path);
    void send_cmd_to_file_export_thread(int cmd, int mode, double cz, double dz, double pl,
                                        model_param m_ModelParam, QStandardItemModel* model,
                                        QList<measuringData> table_list,
                                        QStringList data_msg_altitude, QString file_path,
                                        QList<QList<point_msg>> point_msg_all);
    void send_cmd_to_file_export_thread_check_flag(QList<int> check_flags, QString system_name);
    void send_cmd_to_software_upgrade_thread(QString version, int language);
    void send_cmd_to_software_upgrade_thread_down_file();
    void send_set_ui_to_updata_form(QString bytesReceived, QString bytesTotal, int progressBar);
    void send_cloud_updata_to_hardware_updata_thread();
    void send_sure_to_hardware_updata_thread(QString combobox);
    void send_local_updata_to_hardware_updata_thread();
    void send_add_comboBox_to_hardware_updata_form(QString value);
    void send_updata_progress_hardware_updata_form(int percent);
    /// Checked count, area in square metres, area in mu, length, points,
    /// records, and the checked measurements.
    void information(QString checked, QString areameter, QString areamu, QString length,
                     QString points, QString records, QList<widgetData> checked_data);
    void draw_map_signal(QString script);
    void delete_map_signal(QString script);
    /// Declared, never emitted or connected.
    void re_init_model_table();
    void send_delete_table_data(QList<measuringData> table_list, QStringList data_msg,
                                QStringList data_msg_altitude,
                                QList<QList<point_msg>> point_msg_all);

public slots:
    // Forwarding, from the window.
    void recv_read_data_sign_from_velmo(QList<measuringData> table_list, QStringList data_msg,
                                        QStringList data_msg_altitude,
                                        QList<QList<point_msg>> point_msg_all);
    void recv_import_file_sign_from_velmo(QString path, int mode, JsonFileManager* js,
                                          int sys_index);
    void recv_device_sign_from_velmo(QStandardItemModel* model, QList<measuringData> table_list,
                                     QStringList data_msg_altitude);
    void recv_software_upgrade_sign_from_velmo(QString version, int language);
    void recv_marlund_sign_from_velmo();

    // Forwarding, from the workers.
    void recv_set_progressbar(int percent);
    void recv_read_data_finished(QList<measuringData> table_list, QStringList data_msg,
                                 QStringList data_msg_altitude,
                                 QList<QList<point_msg>> point_msg_all);
    void recv_import_data_finished(QList<measuringData> table_list, QStringList data_msg,
                                   QStringList data_msg_altitude,
                                   QList<QList<point_msg>> point_msg_all);
    void recv_LED_control_from_serial(bool connected);
    void recv_LED_2_control_from_serial(bool connected);
    void recv_set_ui_from_soft_upgrade_thread(QString bytesReceived, QString bytesTotal,
                                              int progressBar);
    void recv_add_comboBox_value_from_hardware_upgrade_thread(QString value);
    void recv_updata_progress_from_hardware_upgrade_thread(int percent);

    // Forwarding, from the dialogs.
    void recv_kml_sign_from_output(QString file_path, int mode, double cz, double dz, double pl,
                                   model_param m_ModelParam, QStandardItemModel* model,
                                   QList<measuringData> table_list, QStringList data_msg_altitude,
                                   QList<QList<point_msg>> point_msg_all);
    void recv_one_csv_sign_from_output(QString file_path, int mode, double cz, double dz, double pl,
                                       model_param m_ModelParam, QStandardItemModel* model,
                                       QList<measuringData> table_list,
                                       QStringList data_msg_altitude,
                                       QList<QList<point_msg>> point_msg_all);
    void recv_more_csv_sign_from_output(QString file_path, int mode, double cz, double dz,
                                        double pl, model_param m_ModelParam,
                                        QStandardItemModel* model, QList<measuringData> table_list,
                                        QStringList data_msg_altitude,
                                        QList<QList<point_msg>> point_msg_all);
    void recv_one_dxf_sign_from_output(QString file_path, int mode, double cz, double dz, double pl,
                                       model_param m_ModelParam, QStandardItemModel* model,
                                       QList<measuringData> table_list,
                                       QStringList data_msg_altitude,
                                       QList<QList<point_msg>> point_msg_all);
    void recv_more_dxf_sign_from_output(QString file_path, int mode, double cz, double dz,
                                        double pl, model_param m_ModelParam,
                                        QStandardItemModel* model, QList<measuringData> table_list,
                                        QStringList data_msg_altitude,
                                        QList<QList<point_msg>> point_msg_all);
    void recv_one_gpx_sign_from_output(QString file_path, int mode, double cz, double dz, double pl,
                                       model_param m_ModelParam, QStandardItemModel* model,
                                       QList<measuringData> table_list,
                                       QStringList data_msg_altitude,
                                       QList<QList<point_msg>> point_msg_all);
    void recv_more_gpx_sign_from_output(QString file_path, int mode, double cz, double dz,
                                        double pl, model_param m_ModelParam,
                                        QStandardItemModel* model, QList<measuringData> table_list,
                                        QStringList data_msg_altitude,
                                        QList<QList<point_msg>> point_msg_all);
    void recv_excel_sign_from_output(QList<int> check_flags, QString file_path, int mode, double cz,
                                     double dz, double pl, model_param m_ModelParam,
                                     QStandardItemModel* model, QList<measuringData> table_list,
                                     QStringList data_msg_altitude,
                                     QList<QList<point_msg>> point_msg_all, QString system_name);
    void recv_picture_sign_from_output(QString file_path, QWebEngineView* m_parentWebEngineView,
                                       graphic_widget* m_parentwidgetView, int picture_flag);
    void recv_updata_form_down_file();
    void recv_cloud_updata_from_hardware_updata();
    void recv_sure_from_hardware_updata(QString combobox);
    void recv_local_updata_from_hardware_updata();

    // Logic of the hub's own.
    void change_table_relation(QList<std::pair<int, int>> area, QList<std::pair<int, int>> distance,
                               QList<std::pair<int, int>> point, QList<std::pair<int, int>> airline,
                               QList<std::pair<int, int>> track,
                               QList<std::pair<int, int>> fangyang);
    /// Deletes the measurements whose rows are ticked in `model`.
    void recv_delete_sign_from_velmo(QStandardItemModel* model, QList<measuringData> table_list,
                                     QStringList data_msg, QStringList data_msg_altitude,
                                     QList<QList<point_msg>> point_msg_all);
    /// Totals over the ticked rows of `model`.
    void check_countmsg(QStandardItemModel* model, QList<measuringData> table_list,
                        QStringList data_msg);

    // The box of a tab that ticks all its rows has changed to `clicked`.
    void recv_check_all(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                        QStandardItemModel* model_distance, QStandardItemModel* model_point,
                        QStandardItemModel* model_airline, QStandardItemModel* model_track,
                        QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                        QStringList data_msg);
    void recv_check_mianji(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                           QStandardItemModel* model_distance, QStandardItemModel* model_point,
                           QStandardItemModel* model_airline, QStandardItemModel* model_track,
                           QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                           QStringList data_msg);
    void recv_check_juli(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                         QStandardItemModel* model_distance, QStandardItemModel* model_point,
                         QStandardItemModel* model_airline, QStandardItemModel* model_track,
                         QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                         QStringList data_msg);
    void recv_check_hangdian(bool clicked, QStandardItemModel* model,
                             QStandardItemModel* model_area, QStandardItemModel* model_distance,
                             QStandardItemModel* model_point, QStandardItemModel* model_airline,
                             QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                             QList<measuringData> table_list, QStringList data_msg);
    void recv_check_hangxian(bool clicked, QStandardItemModel* model,
                             QStandardItemModel* model_area, QStandardItemModel* model_distance,
                             QStandardItemModel* model_point, QStandardItemModel* model_airline,
                             QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                             QList<measuringData> table_list, QStringList data_msg);
    void recv_check_hangji(bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
                           QStandardItemModel* model_distance, QStandardItemModel* model_point,
                           QStandardItemModel* model_airline, QStandardItemModel* model_track,
                           QStandardItemModel* model_fangyang, QList<measuringData> table_list,
                           QStringList data_msg);
    void recv_check_fangyang(bool clicked, QStandardItemModel* model,
                             QStandardItemModel* model_area, QStandardItemModel* model_distance,
                             QStandardItemModel* model_point, QStandardItemModel* model_airline,
                             QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                             QList<measuringData> table_list, QStringList data_msg);

    // The tick of a row has changed in a table; `clicked` is the success of the
    // change and not the tick.
    void recv_all_table_change(bool clicked, QStandardItemModel* model,
                               QStandardItemModel* model_area, QStandardItemModel* model_distance,
                               QStandardItemModel* model_point, QStandardItemModel* model_airline,
                               QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                               QList<measuringData> table_list, QStringList data_msg);
    void recv_area_table_change(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg);
    void recv_dist_table_change(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg);
    void recv_point_table_change(bool clicked, QStandardItemModel* model,
                                 QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                 QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                 QStandardItemModel* model_track,
                                 QStandardItemModel* model_fangyang,
                                 QList<measuringData> table_list, QStringList data_msg);
    void recv_line_table_change(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg);
    void recv_track_table_change(bool clicked, QStandardItemModel* model,
                                 QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                 QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                 QStandardItemModel* model_track,
                                 QStandardItemModel* model_fangyang,
                                 QList<measuringData> table_list, QStringList data_msg);
    void
    recv_fangyang_table_change(bool clicked, QStandardItemModel* model,
                               QStandardItemModel* model_area, QStandardItemModel* model_distance,
                               QStandardItemModel* model_point, QStandardItemModel* model_airline,
                               QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                               QList<measuringData> table_list, QStringList data_msg);

protected:
    void run() override;
};
