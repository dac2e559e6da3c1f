#pragma once

#include "core/records.h"

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

signals:
    void read_data_finished(QList<measuringData> table_list, QStringList data_msg,
                            QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);

public slots:
    void import_file(QString path, int mode, JsonFileManager* js, int sys_index);
    void setlanguage(int newValue);

protected:
    void run() override;
};
