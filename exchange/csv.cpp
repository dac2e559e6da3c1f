#include "exchange/csv.h"

#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"

#include <QDebug>
#include <QFile>

void file_export_thread::one_csv_export(int mode, model_param m_ModelParam, QString file_path)
{
    const file_coordinates form{mode, m_ModelParam, cz, dz, pl};
    export_merged(
        file_path, [&](QFile& file) { write_csv_merged(file, export_list, form, language); },
        QStringLiteral("csv"), tr("csv多数据合并导出成功"));
}

void file_export_thread::more_csv_export(int mode, model_param m_ModelParam, QString file_path)
{
    const file_coordinates form{mode, m_ModelParam, cz, dz, pl};
    export_each(
        file_path, QStringLiteral("csv"),
        [&](QFile& file, const exportRecord& record) {
            write_csv_single(file, record, form, language);
        },
        QStringLiteral("csv"), tr("csv单数据分开导出成功"));
}

void file_import_thread::import_csv(const QString& path)
{
    qDebug() << "~~~~~~~~~~~~~~~~~~import csv";
    csv_rows rows;
    read_csv_rows(path, rows);
    const std::optional<QString> done = take_csv_rows(rows);
    if (!done) {
        show_warning(tr("导入"), tr("csv文件导入失败"));
        return;
    }
    if (done->isEmpty())
        return;
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    show_information(tr("导入"), *done);
}

std::optional<QString> file_import_thread::take_csv_rows(const csv_rows& rows)
{
    const std::optional<csv_reading> reading = find_csv_records(rows);
    if (!reading)
        return std::nullopt;
    const qsizetype before = table_list.size();
    const file_coordinates form = reading->form == csv_form::summary
                                      ? file_coordinates{}
                                      : file_coordinates{mode, m_ModelParam, cz, dz, pl};
    for (const csv_record& record : reading->records) {
        if (!take_csv_record(rows, record, form))
            return std::nullopt;
    }
    switch (reading->form) {
    case csv_form::blocks: return tr("csv多数据文件导入成功");
    case csv_form::single:
        return table_list.size() > before ? tr("csv单数据文件导入成功") : QString();
    case csv_form::summary: return tr("csv文件导入成功");
    }
    return std::nullopt;
}

bool file_import_thread::take_csv_record(const csv_rows& rows, const csv_record& record,
                                         const file_coordinates& form)
{
    // The file's text is compared with what texts before it became: unless they are
    // degrees, no two records are equal.
    const std::optional<QString> promised = csv_promised_lines(rows, record);
    if (promised && in_results(record.values, *promised)) {
        qDebug() << "tableList have this data";
        return true;
    }
    table_list.append(record.values);
    const std::optional<csv_points> points = read_csv_points(rows, record, form);
    if (!points)
        return false;
    append_geometry(points->data, points->lines, record.end - record.first);
    return true;
}
