#pragma once

#include "coordinates/coordinate_system.h"
#include "core/records.h"

#include <QPointer>
#include <QStandardItemModel>
#include <QWidget>

#include <array>

class JsonFileManager;
class QCheckBox;
class QComboBox;
class QTimer;
class QWebEngineView;
class graphic_widget;

/// The export dialog: the user chooses a format and a path, and the dialog sends
/// both on with what is to be written. It works on copies of the lists as they
/// were when it was opened, and stays open after an export.
class outputWindow : public QWidget
{
    Q_OBJECT
    Q_MOC_INCLUDE(<QWebEngineView>)
    Q_MOC_INCLUDE("presentation/graphic_widget.h")

public:
    explicit outputWindow(QWidget* parent = nullptr);

    QString system_name;                    ///< name of the chosen coordinate system
    QList<int> check_flags;                 ///< the twelve choices for Excel, 1 or 0
    QTimer* timer = nullptr;                ///< looks at the chosen format
    QWebEngineView* parentView = nullptr;   ///< the map of the main window
    graphic_widget* parentwidget = nullptr; ///< the drawing of the main window
    int picture_flag = 0;      ///< non-zero: a picture is taken of the map, else of the drawing
    int language = 0;          ///< 0 Chinese, other values English
    int mode = 0;              ///< coordinate format
    double cz = 0.0, dz = 0.0; ///< semi-major and semi-minor axis, metres
    double pl = 0.0;           ///< flattening
    QStringList data_msg_altitude;
    /// The first table's model, not owned. A rebuild of the tables ends it, and
    /// with it all ticks.
    QPointer<QStandardItemModel> model;
    QList<measuringData> table_list;
    QList<QList<point_msg>> point_msg_all;
    JsonFileManager* js = nullptr; ///< not owned
    model_param m_ModelParam;      ///< the chosen system, flattened
    int sys_index = 0;             ///< index of the chosen system

signals:
    void send_btm_sign_to_threadkey_kml(QString file_path, int mode, double cz, double dz,
                                        double pl, model_param m_ModelParam,
                                        QStandardItemModel* model, QList<measuringData> table_list,
                                        QStringList data_msg_altitude,
                                        QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_picture(QString file_path,
                                            QWebEngineView* m_parentWebEngineView,
                                            graphic_widget* m_parentwidgetView, int picture_flag);
    void send_btm_sign_to_threadkey_one_csv(QString file_path, int mode, double cz, double dz,
                                            double pl, model_param m_ModelParam,
                                            QStandardItemModel* model,
                                            QList<measuringData> table_list,
                                            QStringList data_msg_altitude,
                                            QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_more_csv(QString file_path, int mode, double cz, double dz,
                                             double pl, model_param m_ModelParam,
                                             QStandardItemModel* model,
                                             QList<measuringData> table_list,
                                             QStringList data_msg_altitude,
                                             QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_one_dxf(QString file_path, int mode, double cz, double dz,
                                            double pl, model_param m_ModelParam,
                                            QStandardItemModel* model,
                                            QList<measuringData> table_list,
                                            QStringList data_msg_altitude,
                                            QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_more_dxf(QString file_path, int mode, double cz, double dz,
                                             double pl, model_param m_ModelParam,
                                             QStandardItemModel* model,
                                             QList<measuringData> table_list,
                                             QStringList data_msg_altitude,
                                             QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_one_gpx(QString file_path, int mode, double cz, double dz,
                                            double pl, model_param m_ModelParam,
                                            QStandardItemModel* model,
                                            QList<measuringData> table_list,
                                            QStringList data_msg_altitude,
                                            QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_more_gpx(QString file_path, int mode, double cz, double dz,
                                             double pl, model_param m_ModelParam,
                                             QStandardItemModel* model,
                                             QList<measuringData> table_list,
                                             QStringList data_msg_altitude,
                                             QList<QList<point_msg>> point_msg_all);
    void send_btm_sign_to_threadkey_excel(
        QList<int> check_flags, QString file_path, int mode, double cz, double dz, double pl,
        model_param m_ModelParam, QStandardItemModel* model, QList<measuringData> table_list,
        QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all, QString system_name);

public slots:
    /// Fills the list of formats in that language and takes over the chosen
    /// coordinate system. To be called once.
    void setlanguage(int newValue);
    void set_parent_view(QWebEngineView* view, graphic_widget* widget, int flag);
    void on_pushButton_clicked();
    void one_CSV_clicked();
    void more_CSV_clicked();
    void one_DXF_clicked();
    void more_DXF_clicked();
    void one_GPX_clicked();
    void more_GPX_clicked();
    void kml_clicked();
    void picture_clicked();
    void excel_clicked();

private:
    using export_signal = void (outputWindow::*)(QString, int, double, double, double, model_param,
                                                 QStandardItemModel*, QList<measuringData>,
                                                 QStringList, QList<QList<point_msg>>);

    void enable_boxes();
    /// Asks where to; empty, after a warning, if the user does not say.
    QString ask_path(int format);
    void send(int format, export_signal signal);

    QComboBox* m_formats = nullptr;
    std::array<QCheckBox*, 12> m_boxes{}; ///< in the order of `check_flags`
};
