#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"

#include <QDebug>

void file_export_thread::one_gpx_export(int /*mode*/, QString file_path)
{
    qWarning() << "one_gpx export is not there yet:" << file_path;
}

void file_export_thread::more_gpx_export(int /*mode*/, QString file_path)
{
    qWarning() << "more_gpx export is not there yet:" << file_path;
}

void file_import_thread::import_gpx(const QString& path)
{
    qWarning() << "gpx import is not there yet:" << path;
}
