#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"

#include <QDebug>

void file_export_thread::kml_export(int /*mode*/, model_param /*m_ModelParam*/, QString file_path)
{
    qWarning() << "kml export is not there yet:" << file_path;
}

void file_import_thread::import_kml(const QString& path)
{
    qWarning() << "kml import is not there yet:" << path;
}
