#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"

#include <QDebug>

void file_export_thread::one_csv_export(int /*mode*/, model_param /*m_ModelParam*/,
                                        QString file_path)
{
    qWarning() << "one_csv export is not there yet:" << file_path;
}

void file_export_thread::more_csv_export(int /*mode*/, model_param /*m_ModelParam*/,
                                         QString file_path)
{
    qWarning() << "more_csv export is not there yet:" << file_path;
}

void file_import_thread::import_csv(const QString& path)
{
    qWarning() << "csv import is not there yet:" << path;
}
