#include "exchange/file_export_thread.h"

#include "exchange/export_formats.h"
#include "exchange/message_boxes.h"
#include "presentation/graphic_widget.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QStandardItemModel>
#include <QWebEngineView>

#include <algorithm>

namespace {

void warn_unopened()
{
    show_warning(QStringLiteral("Warning"), QStringLiteral("Failed to open file"));
}

} // namespace

void log_parameters(const model_param& param)
{
    const model_param::projection_block& block = param.projection;
    qDebug() << "model_param:" << param.type << param.ellipsoid << block.utm_mode << block.method
             << block.l0 << block.k0 << block.east << block.north << block.tall;
    const seven_parameters& p7 = param.param7;
    qDebug() << "param7:" << p7.dx << p7.dy << p7.dz << p7.rx << p7.ry << p7.rz << p7.k;
    const model_param::plane_parameters& p4 = param.param4;
    qDebug() << "param4:" << p4.dx << p4.dy << p4.rt << p4.k;
}

void file_export_thread::export_file(int cmd, int mode, double new_cz, double new_dz, double new_pl,
                                     model_param m_ModelParam, QStandardItemModel* model,
                                     QList<measuringData> Table_list, QStringList Data_msg_altitude,
                                     QString file_path, QList<QList<point_msg>> point_msg_all)
{
    cz = new_cz;
    dz = new_dz;
    pl = new_pl;
    log_parameters(m_ModelParam);
    if (!select_checked_rows(model, Table_list, Data_msg_altitude, point_msg_all))
        return;
    const auto* format = std::ranges::find(export_formats, cmd, &export_format::command);
    if (cmd == export_nothing || format == export_formats.end())
        return;
    qDebug() << format->label;
    const wait_pointer busy;
    switch (format->command) {
    case export_nothing: break;
    case export_kml: kml_export(mode, m_ModelParam, file_path); break;
    case export_one_csv: one_csv_export(mode, m_ModelParam, file_path); break;
    case export_more_csv: more_csv_export(mode, m_ModelParam, file_path); break;
    case export_one_dxf: one_dxf_export(mode, m_ModelParam, file_path); break;
    case export_more_dxf: more_dxf_export(mode, m_ModelParam, file_path); break;
    case export_one_gpx: one_gpx_export(mode, file_path); break;
    case export_more_gpx: more_gpx_export(mode, file_path); break;
    case export_excel: excel_export(mode, m_ModelParam, file_path); break;
    }
}

bool file_export_thread::select_checked_rows(const QStandardItemModel* model,
                                             const QList<measuringData>& Table_list,
                                             const QStringList& Data_msg_altitude,
                                             const QList<QList<point_msg>>& point_msg_all)
{
    export_list.clear();
    const int rows = model == nullptr ? 0 : model->rowCount();
    for (int row = 0; row < rows; ++row) {
        if (!model->index(row, 0).data().toBool())
            continue;
        export_list.append({Table_list[row], {}, {}, Data_msg_altitude[row], point_msg_all[row]});
    }
    if (!export_list.isEmpty())
        return true;
    if (language == 0)
        show_warning(QStringLiteral("警告"), QStringLiteral("未勾选数据"));
    else
        show_warning(QStringLiteral("Warning"), QStringLiteral("Unselected data"));
    return false;
}

void file_export_thread::export_merged(const QString& path, const merged_writer& write,
                                       const QString& title, const QString& done)
{
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        qDebug() << "Failed to open file: " << path;
        warn_unopened();
        return;
    }
    write(file);
    file.close();
    show_information(title, done);
}

void file_export_thread::export_each(const QString& folder, const QString& suffix,
                                     const record_writer& write, const QString& title,
                                     const QString& done) const
{
    if (folder.isEmpty())
        return;
    qsizetype number = 0;
    for (const exportRecord& record : export_list) {
        QFile file(record_file_path(folder, suffix, ++number));
        // Append: an export into the folder of an earlier one adds to its files.
        if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
            qDebug() << "Failed to open file:" << file.fileName();
            warn_unopened();
            continue;
        }
        write(file, record);
    }
    show_information(title, done);
}

QString file_export_thread::record_file_path(const QString& folder, const QString& suffix,
                                             qsizetype number)
{
    const QString name = QStringLiteral("exported_data_%1.%2").arg(number).arg(suffix);
#ifdef Q_OS_WIN
    return folder + QLatin1Char('\\') + name;
#else
    return QDir(folder).filePath(name);
#endif
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
