#include "exchange/file_import_thread.h"

#include "coordinates/json_file_manager.h"

#include <QDebug>

void file_import_thread::import_file(QString path, int /*mode*/, JsonFileManager* /*js*/,
                                     int /*sys_index*/)
{
    qWarning() << "file import is not there yet:" << path;
}

void file_import_thread::setlanguage(int newValue)
{
    language = newValue;
}

void file_import_thread::run()
{
    qDebug() << "file_import_thread ID:" << QThread::currentThreadId();
}
