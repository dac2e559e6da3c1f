#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"

#include <QDebug>

void file_export_thread::one_dxf_export(int /*mode*/, model_param /*m_ModelParam*/,
                                        QString file_path)
{
    qWarning() << "one_dxf export is not there yet:" << file_path;
}

void file_export_thread::more_dxf_export(int /*mode*/, model_param /*m_ModelParam*/,
                                         QString file_path)
{
    qWarning() << "more_dxf export is not there yet:" << file_path;
}

void file_import_thread::import_dxf(const QString& path)
{
    qWarning() << "dxf import is not there yet:" << path;
}
