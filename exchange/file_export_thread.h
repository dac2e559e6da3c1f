#pragma once

#include "coordinates/coordinate_system.h"
#include "core/records.h"
#include "exchange/export_record.h"

#include <QThread>

class QStandardItemModel;
class QWebEngineView;
class graphic_widget;

/// Writes ticked measurements to files, and pictures. The writers are not there
/// yet.
class file_export_thread : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE(<QStandardItemModel>)
    Q_MOC_INCLUDE(<QWebEngineView>)
    Q_MOC_INCLUDE("presentation/graphic_widget.h")

public:
    using QThread::QThread;

    QList<exportRecord> export_list; ///< the ticked rows, rebuilt for every command
    QList<int> check_flags;          ///< the twelve choices for Excel
    QString system_name;             ///< name of the chosen coordinate system
    double cz = 0.0, dz = 0.0;       ///< semi-major and semi-minor axis of this command, metres
    double pl = 0.0;                 ///< flattening of this command
    int language = 0;                ///< 0 Chinese, other values English

    void kml_export(int mode, model_param m_ModelParam, QString file_path);
    void one_csv_export(int mode, model_param m_ModelParam, QString file_path);
    void more_csv_export(int mode, model_param m_ModelParam, QString file_path);
    void one_gpx_export(int mode, QString file_path);
    void more_gpx_export(int mode, QString file_path);
    void one_dxf_export(int mode, model_param m_ModelParam, QString file_path);
    void more_dxf_export(int mode, model_param m_ModelParam, QString file_path);
    void excel_export(int mode, model_param m_ModelParam, QString file_path);

    void picture_export(QWebEngineView* m_parentWebEngineView, graphic_widget* m_parentwidgetView,
                        int picture_flag, QString file_path);

public slots:
    void export_file(int cmd, int mode, double cz, double dz, double pl, model_param m_ModelParam,
                     QStandardItemModel* model, QList<measuringData> Table_list,
                     QStringList Data_msg_altitude, QString file_path,
                     QList<QList<point_msg>> point_msg_all);
    void export_file_check_flag(QList<int> flags, QString name);
    void setlanguage(int newValue);

protected:
    void run() override;
};
