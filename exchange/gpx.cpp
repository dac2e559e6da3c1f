#include "exchange/gpx.h"

#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"

#include <QDebug>
#include <QFile>

void file_export_thread::one_gpx_export(int mode, QString file_path)
{
    export_merged(
        file_path, [this, mode](QFile& file) { write_gpx_merged(file, export_list, mode); },
        QStringLiteral("gpx"), tr("gpx多数据合并导出成功"));
}

void file_export_thread::more_gpx_export(int mode, QString file_path)
{
    export_each(
        file_path, QStringLiteral("gpx"),
        [mode](QFile& file, const exportRecord& record) { write_gpx_single(file, record, mode); },
        QStringLiteral("gpx"), tr("gpx单数据分开导出成功"));
}

void file_import_thread::import_gpx(const QString& path)
{
    qDebug() << "Selected GPX file: " << path;
    QFile file(path);
    if (!parse_gpx(file, working_list)) {
        // Not a warning, unlike the other formats.
        show_information(tr("导入"), tr("gpx文件导入失败"));
        return;
    }
    append_to_results({.drop_duplicates = false, .take_areamu = false});
    qDebug() << "table show";
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    show_information(tr("导入"), tr("gpx文件导入成功"));
}
