#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"

#include <QDebug>

void file_export_thread::excel_export(int /*mode*/, model_param /*m_ModelParam*/, QString file_path)
{
    qWarning() << "excel export is not there yet:" << file_path;
}

void file_import_thread::import_excel(const QString& path)
{
    qWarning() << "excel import is not there yet:" << path;
}
