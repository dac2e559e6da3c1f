#include "exchange/kml.h"

#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"

#include <QDebug>
#include <QFile>

void file_export_thread::kml_export(int mode, model_param /*m_ModelParam*/, QString file_path)
{
    export_merged(
        file_path, [this, mode](QFile& file) { write_kml(file, export_list, mode); },
        QStringLiteral("kml"), tr("kml文件导出成功"));
}

void file_import_thread::import_kml(const QString& path)
{
    qDebug() << "Selected KML file: " << path;
    QFile file(path);
    kml_reading reading = read_kml(file, {mode, m_ModelParam, cz, dz, pl});
    working_list = std::move(reading.records);
    if (reading.result == kml_failed)
        show_warning(tr("导入"), tr("kml文件导入失败"));
    else {
        append_to_results({});
        qDebug() << "table show";
    }
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    // The texts are the opposite of what they say: users know them so.
    if (reading.result == kml_own)
        show_information(tr("导入"), tr("kml文件导入成功"));
    else if (reading.result == kml_plain)
        show_information(tr("导入"), tr("自制kml文件导入成功"));
}
