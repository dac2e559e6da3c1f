#pragma once

#include "coordinates/coordinate_system.h"
#include "core/records.h"
#include "exchange/export_record.h"

#include <QThread>

class JsonFileManager;

/// Reads measurements from files. The readers are not there yet.
class file_import_thread : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    using QThread::QThread;

    int language = 0; ///< 0 Chinese, other values English

    double cz = 0.0, dz = 0.0;             ///< semi-major and semi-minor axis, metres
    double pl = 0.0;                       ///< flattening
    model_param m_ModelParam;              ///< the chosen system, flattened
    int mode = 0;                          ///< what the file's coordinates are taken to be
    QList<exportRecord> working_list;      ///< what a reader found, in file order
    QList<measuringData> table_list;       ///< result
    QStringList data_msg;                  ///< result
    QStringList data_msg_altitude;         ///< result
    QList<QList<point_msg>> point_msg_all; ///< result

    void import_kml(const QString& path);
    void import_csv(const QString& path);
    void import_gpx(const QString& path);
    void import_dxf(const QString& path);
    void import_excel(const QString& path);

signals:
    void read_data_finished(QList<measuringData> table_list, QStringList data_msg,
                            QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);

public slots:
    void import_file(QString path, int mode, JsonFileManager* js, int sys_index);
    void setlanguage(int newValue);

protected:
    void run() override;
};
