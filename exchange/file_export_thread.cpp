#include "exchange/file_export_thread.h"

#include "presentation/graphic_widget.h"

#include <QDebug>
#include <QStandardItemModel>
#include <QWebEngineView>

void file_export_thread::export_file(int cmd, int /*mode*/, double /*cz*/, double /*dz*/,
                                     double /*pl*/, model_param /*m_ModelParam*/,
                                     QStandardItemModel* /*model*/,
                                     QList<measuringData> /*Table_list*/,
                                     QStringList /*Data_msg_altitude*/, QString /*file_path*/,
                                     QList<QList<point_msg>> /*point_msg_all*/)
{
    qWarning() << "file export is not there yet, command:" << cmd;
}

void file_export_thread::export_file_check_flag(QList<int> flags, QString name)
{
    check_flags = flags;
    system_name = name;
}

void file_export_thread::setlanguage(int newValue)
{
    language = newValue;
}

void file_export_thread::run()
{
    qDebug() << "file_export_thread ID:" << QThread::currentThreadId();
}
