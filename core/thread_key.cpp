#include "core/thread_key.h"

#include "coordinates/json_file_manager.h"
#include "core/code_tables.h"
#include "exchange/export_formats.h"
#include "maker.h"
#include "presentation/graphic_widget.h"
#include "presentation/selection_totals.h"

#include <QDebug>
#include <QDesktopServices>
#include <QStandardItemModel>
#include <QUrl>
#include <QWebEngineView>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace {

/// Command of send_cmd_to_serial_thread: start a read.
constexpr int start_read = 1;

/// Commands of data_finished: where the lists come from.
enum data_origin
{
    from_device = 0,
    from_file = 1
};

/// Numbers in one append script: 500 points, which keeps each script short for
/// lines of many thousands of points.
constexpr qsizetype numbers_per_script = 1000;

/// Draws of this process, of all hubs. Never reset, so that no two figures of a
/// page share an identifier.
int draw_counter = 0;

/// Rows of measurement_kinds; `every_kind` stands for all of them.
enum kind_row
{
    every_kind = -1,
    kind_area,
    kind_distance,
    kind_point,
    kind_airline,
    kind_track,
    kind_fangyang,
};
static_assert(measurement_kinds[kind_area].number == 0 &&
              measurement_kinds[kind_distance].number == 1 &&
              measurement_kinds[kind_point].number == 2 &&
              measurement_kinds[kind_airline].number == 4 &&
              measurement_kinds[kind_track].number == 3 &&
              measurement_kinds[kind_fangyang].number == 5);

/// The relation list of each row of measurement_kinds.
constexpr std::array<relation_list thread_key::*, measurement_kinds.size()> relations{
    &thread_key::relation_area,    &thread_key::relation_distance, &thread_key::relation_point,
    &thread_key::relation_airline, &thread_key::relation_track,    &thread_key::relation_fangyang,
};

/// The main table and those of the kinds, in the order of measurement_kinds.
struct table_models
{
    QStandardItemModel* all;
    std::array<QStandardItemModel*, measurement_kinds.size()> of_kind;
};

bool tick_of(const QStandardItemModel& model, int row)
{
    return model.index(row, 0).data(Qt::DisplayRole).toBool();
}

/// Writes a check cell; a row of -1 has none, and nothing happens.
void set_tick(QStandardItemModel& model, int row, bool ticked)
{
    model.setData(model.index(row, 0), ticked, Qt::EditRole);
}

QString map_kind_of(int kind)
{
    return kind >= 0 ? measurement_kinds[static_cast<std::size_t>(kind)].map_kind.toString()
                     : QString();
}

/// Kind of the measurement in `row`: an index in measurement_kinds, -1 for a
/// record of no kind and for a row behind the end of the list.
int kind_of(const QList<measuringData>& table_list, int row)
{
    return row < table_list.size() ? kind_index(table_list.at(row).method) : -1;
}

/// A relation list read once for `rows` rows, so that walking a table of many
/// thousands of rows stays linear. Entry i is what `find_type_row` (`key` is
/// the pair's second) or `find_main_row` (`key` is its first) gives for i.
std::vector<int> looked_up(const relation_list& relation, int std::pair<int, int>::*key,
                           int std::pair<int, int>::*value, int rows)
{
    std::vector<int> found(static_cast<std::size_t>(rows), -1);
    // Backwards, so that the first of several pairs with one key is what stays.
    for (auto pair = relation.crbegin(); pair != relation.crend(); ++pair) {
        const int at = (*pair).*key;
        if (at >= 0 && at < rows)
            found[static_cast<std::size_t>(at)] = (*pair).*value;
    }
    return found;
}

void draw_or_erase(thread_key& hub, bool draw, int row, const QString& map_kind,
                   const QStringList& data_msg)
{
    if (draw)
        hub.draw_row(row, map_kind, data_msg);
    else
        hub.erase_row(row, map_kind, data_msg);
}

/// Walks the main table. A row of `only` (of any of the six kinds with
/// `every_kind`) is ticked in both its tables with `clicked`; without `clicked`
/// the tick of the main table is copied to the other. Then every row is drawn
/// where it is ticked and erased where it is not.
///
/// The map kind is that of the last row so written: any other row goes to the
/// map under the kind of the row before it, under an empty one where there is
/// none before. And the map hears of all rows, whatever `only` is.
void walk_main_table(thread_key& hub, kind_row only, std::optional<bool> clicked,
                     const table_models& models, const QList<measuringData>& table_list,
                     const QStringList& data_msg)
{
    const int rows = models.all->rowCount();
    std::array<std::vector<int>, measurement_kinds.size()> type_rows;
    for (std::size_t kind = 0; kind < type_rows.size(); ++kind)
        type_rows[kind] = looked_up(hub.*relations[kind], &std::pair<int, int>::second,
                                    &std::pair<int, int>::first, rows);
    QString map_kind;
    for (int row = 0; row < rows; ++row) {
        const bool tick = clicked.has_value() ? *clicked : tick_of(*models.all, row);
        const int kind = kind_of(table_list, row);
        if (kind >= 0 && (only == every_kind || only == kind)) {
            const auto at = static_cast<std::size_t>(kind);
            map_kind = map_kind_of(kind);
            if (clicked.has_value())
                set_tick(*models.all, row, tick);
            set_tick(*models.of_kind[at], type_rows[at][static_cast<std::size_t>(row)], tick);
        }
        draw_or_erase(hub, tick, row, map_kind, data_msg);
    }
}

/// The box of a tab has changed to `clicked`.
void tab_box_changed(thread_key& hub, kind_row kind, bool clicked, const table_models& models,
                     const QList<measuringData>& table_list, const QStringList& data_msg)
{
    qDebug() << "clicked" << clicked;
    walk_main_table(hub, kind, clicked, models, table_list, data_msg);
}

/// A tick in the table of `kind` has changed; the window has cleared the map.
/// `clicked` is the success of the change, the ticks are read from the table.
///
/// Only the rows of the table that changed are drawn, so a change in the table
/// of one kind leaves the map with the ticked rows of that kind alone.
void table_changed(thread_key& hub, kind_row kind, bool clicked, const table_models& models,
                   const QList<measuringData>& table_list, const QStringList& data_msg)
{
    qDebug() << "clicked" << clicked;
    if (!clicked)
        return;
    if (kind == every_kind) {
        walk_main_table(hub, kind, std::nullopt, models, table_list, data_msg);
        return;
    }
    const auto at = static_cast<std::size_t>(kind);
    const QStandardItemModel& table = *models.of_kind[at];
    const int rows = table.rowCount();
    const std::vector<int> main_rows = looked_up(hub.*relations[at], &std::pair<int, int>::first,
                                                 &std::pair<int, int>::second, rows);
    const QString map_kind = map_kind_of(kind);
    for (int row = 0; row < rows; ++row) {
        const bool tick = tick_of(table, row);
        const int main_row = main_rows[static_cast<std::size_t>(row)];
        set_tick(*models.all, main_row, tick);
        draw_or_erase(hub, tick, main_row, map_kind, data_msg);
    }
}

/// `list` without the entries at `rows`, which ascend.
template <typename T>
QList<T> without_rows(const QList<T>& list, const QList<int>& rows)
{
    QList<T> kept;
    kept.reserve(list.size());
    auto next = rows.cbegin();
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (next != rows.cend() && *next == i)
            ++next;
        else
            kept.append(list.at(i));
    }
    return kept;
}

} // namespace

thread_key::thread_key(QObject* parent) : QThread(parent) {}

thread_key::~thread_key()
{
    wait(); // `run` ends by itself; a QThread must not be destroyed before it has
    qDebug() << "thread_key is destroyed.";
}

void thread_key::run()
{
    qDebug() << "thread_key ID:" << QThread::currentThreadId();
}

int thread_key::find_type_row(int main_row, const relation_list& relation)
{
    const auto pair = std::find_if(relation.cbegin(), relation.cend(),
                                   [main_row](const auto& one) { return one.second == main_row; });
    return pair != relation.cend() ? pair->first : -1;
}

int thread_key::find_main_row(int type_row, const relation_list& relation)
{
    const auto pair = std::find_if(relation.cbegin(), relation.cend(),
                                   [type_row](const auto& one) { return one.first == type_row; });
    return pair != relation.cend() ? pair->second : -1;
}

// All scripts are filled with the form of arg() that takes all texts at once: a
// coordinate text may come from a file and hold "%1" itself, which must not be
// taken for a place to fill.

void thread_key::draw_row(int main_row, const QString& map_kind, const QStringList& data_msg)
{
    if (main_row < 0 || main_row >= data_msg.size())
        return;
    QList<QStringView> numbers = QStringView(data_msg.at(main_row)).split(u',', Qt::SkipEmptyParts);
    if (numbers.size() < 2)
        return;
    if (numbers.size() % 2 != 0)
        numbers.removeLast();

    const QString id = QStringLiteral("draw_%1_%2")
                           .arg(QString::number(main_row), QString::number(++draw_counter));
    emit draw_map_signal(QStringLiteral("beginLocatedCityPacket(\"%1\",%2)").arg(id, map_kind));
    for (qsizetype first = 0; first < numbers.size(); first += numbers_per_script) {
        const qsizetype end = std::min(first + numbers_per_script, numbers.size());
        QString packet;
        for (qsizetype i = first; i < end; ++i) {
            if (i > first)
                packet += u',';
            packet += numbers.at(i).trimmed();
        }
        emit draw_map_signal(
            QStringLiteral("appendLocatedCityPacket(\"%1\",[%2])").arg(id, packet));
    }
    emit draw_map_signal(QStringLiteral("finishLocatedCityPacket(\"%1\")").arg(id));
}

void thread_key::erase_row(int main_row, const QString& map_kind, const QStringList& data_msg)
{
    if (main_row < 0 || main_row >= data_msg.size())
        return;
    emit delete_map_signal(
        QStringLiteral("deleteDrawnPolygons(%1,%2)").arg(map_kind, data_msg.at(main_row)));
}

void thread_key::recv_read_data_sign_from_velmo(QList<measuringData> table_list,
                                                QStringList data_msg, QStringList data_msg_altitude,
                                                QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_serial_thread(start_read, table_list, data_msg, data_msg_altitude,
                                   point_msg_all);
}

void thread_key::recv_import_file_sign_from_velmo(QString path, int mode, JsonFileManager* js,
                                                  int sys_index)
{
    emit send_cmd_to_file_import_thread(path, mode, js, sys_index);
}

void thread_key::recv_device_sign_from_velmo(QStandardItemModel* model,
                                             QList<measuringData> table_list,
                                             QStringList data_msg_altitude)
{
    emit send_cmd_to_import_data_to_device_thread(model, table_list, data_msg_altitude);
}

void thread_key::recv_software_upgrade_sign_from_velmo(QString version, int language)
{
    emit send_cmd_to_software_upgrade_thread(version, language);
}

void thread_key::recv_marlund_sign_from_velmo()
{
    QDesktopServices::openUrl(QUrl(QString::fromUtf8(maker::home_page)));
}

void thread_key::recv_set_progressbar(int percent)
{
    emit key_set_progressbar(percent);
}

void thread_key::recv_read_data_finished(QList<measuringData> table_list, QStringList data_msg,
                                         QStringList data_msg_altitude,
                                         QList<QList<point_msg>> point_msg_all)
{
    emit data_finished(from_device, table_list, data_msg, data_msg_altitude, point_msg_all);
}

void thread_key::recv_import_data_finished(QList<measuringData> table_list, QStringList data_msg,
                                           QStringList data_msg_altitude,
                                           QList<QList<point_msg>> point_msg_all)
{
    emit data_finished(from_file, table_list, data_msg, data_msg_altitude, point_msg_all);
}

void thread_key::recv_LED_control_from_serial(bool connected)
{
    emit send_LED_control(connected);
}

void thread_key::recv_LED_2_control_from_serial(bool connected)
{
    emit send_LED_2_control(connected);
}

void thread_key::recv_set_ui_from_soft_upgrade_thread(QString bytesReceived, QString bytesTotal,
                                                      int progressBar)
{
    emit send_set_ui_to_updata_form(bytesReceived, bytesTotal, progressBar);
}

void thread_key::recv_add_comboBox_value_from_hardware_upgrade_thread(QString value)
{
    emit send_add_comboBox_to_hardware_updata_form(value);
}

void thread_key::recv_updata_progress_from_hardware_upgrade_thread(int percent)
{
    emit send_updata_progress_hardware_updata_form(percent);
}

void thread_key::recv_kml_sign_from_output(QString file_path, int mode, double cz, double dz,
                                           double pl, model_param m_ModelParam,
                                           QStandardItemModel* model,
                                           QList<measuringData> table_list,
                                           QStringList data_msg_altitude,
                                           QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_kml, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_one_csv_sign_from_output(QString file_path, int mode, double cz, double dz,
                                               double pl, model_param m_ModelParam,
                                               QStandardItemModel* model,
                                               QList<measuringData> table_list,
                                               QStringList data_msg_altitude,
                                               QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_one_csv, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_more_csv_sign_from_output(QString file_path, int mode, double cz, double dz,
                                                double pl, model_param m_ModelParam,
                                                QStandardItemModel* model,
                                                QList<measuringData> table_list,
                                                QStringList data_msg_altitude,
                                                QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_more_csv, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_one_dxf_sign_from_output(QString file_path, int mode, double cz, double dz,
                                               double pl, model_param m_ModelParam,
                                               QStandardItemModel* model,
                                               QList<measuringData> table_list,
                                               QStringList data_msg_altitude,
                                               QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_one_dxf, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_more_dxf_sign_from_output(QString file_path, int mode, double cz, double dz,
                                                double pl, model_param m_ModelParam,
                                                QStandardItemModel* model,
                                                QList<measuringData> table_list,
                                                QStringList data_msg_altitude,
                                                QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_more_dxf, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_one_gpx_sign_from_output(QString file_path, int mode, double cz, double dz,
                                               double pl, model_param m_ModelParam,
                                               QStandardItemModel* model,
                                               QList<measuringData> table_list,
                                               QStringList data_msg_altitude,
                                               QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_one_gpx, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_more_gpx_sign_from_output(QString file_path, int mode, double cz, double dz,
                                                double pl, model_param m_ModelParam,
                                                QStandardItemModel* model,
                                                QList<measuringData> table_list,
                                                QStringList data_msg_altitude,
                                                QList<QList<point_msg>> point_msg_all)
{
    emit send_cmd_to_file_export_thread(export_more_gpx, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_excel_sign_from_output(
    QList<int> check_flags, QString file_path, int mode, double cz, double dz, double pl,
    model_param m_ModelParam, QStandardItemModel* model, QList<measuringData> table_list,
    QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all, QString system_name)
{
    // The choices first: the worker has them when the command arrives.
    emit send_cmd_to_file_export_thread_check_flag(check_flags, system_name);
    emit send_cmd_to_file_export_thread(export_excel, mode, cz, dz, pl, m_ModelParam, model,
                                        table_list, data_msg_altitude, file_path, point_msg_all);
}

void thread_key::recv_picture_sign_from_output(QString file_path,
                                               QWebEngineView* m_parentWebEngineView,
                                               graphic_widget* m_parentwidgetView, int picture_flag)
{
    emit send_cmd_to_picture_export_thread(m_parentWebEngineView, m_parentwidgetView, picture_flag,
                                           file_path);
}

void thread_key::recv_updata_form_down_file()
{
    emit send_cmd_to_software_upgrade_thread_down_file();
}

void thread_key::recv_cloud_updata_from_hardware_updata()
{
    emit send_cloud_updata_to_hardware_updata_thread();
}

void thread_key::recv_sure_from_hardware_updata(QString combobox)
{
    emit send_sure_to_hardware_updata_thread(combobox);
}

void thread_key::recv_local_updata_from_hardware_updata()
{
    emit send_local_updata_to_hardware_updata_thread();
}

void thread_key::change_table_relation(QList<std::pair<int, int>> area,
                                       QList<std::pair<int, int>> distance,
                                       QList<std::pair<int, int>> point,
                                       QList<std::pair<int, int>> airline,
                                       QList<std::pair<int, int>> track,
                                       QList<std::pair<int, int>> fangyang)
{
    relation_area = area;
    relation_distance = distance;
    relation_point = point;
    relation_airline = airline;
    relation_track = track;
    relation_fangyang = fangyang;
}

void thread_key::recv_delete_sign_from_velmo(QStandardItemModel* model,
                                             QList<measuringData> table_list, QStringList data_msg,
                                             QStringList data_msg_altitude,
                                             QList<QList<point_msg>> point_msg_all)
{
    QList<int> rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        if (tick_of(*model, row))
            rows.append(row);
    }
    for (auto row = rows.crbegin(); row != rows.crend(); ++row)
        erase_row(*row, map_kind_of(kind_of(table_list, *row)), data_msg);
    // The script of a row needs that row's entries only, so the lists can be
    // shortened in one go behind the last of them.
    emit send_delete_table_data(without_rows(table_list, rows), without_rows(data_msg, rows),
                                without_rows(data_msg_altitude, rows),
                                without_rows(point_msg_all, rows));
}

void thread_key::check_countmsg(QStandardItemModel* model, QList<measuringData> table_list,
                                QStringList data_msg)
{
    const selection_totals totals = totals_of(*model, table_list, data_msg);
    emit information(totals.checked, totals.areameter, totals.areamu, totals.length,
                     totals.points + tr("点"), totals.records + tr("条"), totals.checked_data);
}

void thread_key::recv_check_all(bool clicked, QStandardItemModel* model,
                                QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                QStandardItemModel* model_track, QStandardItemModel* model_fangyang,
                                QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, every_kind, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_check_mianji(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, kind_area, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_check_juli(bool clicked, QStandardItemModel* model,
                                 QStandardItemModel* model_area, QStandardItemModel* model_distance,
                                 QStandardItemModel* model_point, QStandardItemModel* model_airline,
                                 QStandardItemModel* model_track,
                                 QStandardItemModel* model_fangyang,
                                 QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, kind_distance, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_check_hangdian(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, kind_point, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_check_hangxian(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, kind_airline, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_check_hangji(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, kind_track, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_check_fangyang(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    tab_box_changed(
        *this, kind_fangyang, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_all_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, every_kind, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_area_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, kind_area, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_dist_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, kind_distance, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_point_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, kind_point, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_line_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, kind_airline, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_track_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, kind_track, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}

void thread_key::recv_fangyang_table_change(
    bool clicked, QStandardItemModel* model, QStandardItemModel* model_area,
    QStandardItemModel* model_distance, QStandardItemModel* model_point,
    QStandardItemModel* model_airline, QStandardItemModel* model_track,
    QStandardItemModel* model_fangyang, QList<measuringData> table_list, QStringList data_msg)
{
    table_changed(
        *this, kind_fangyang, clicked,
        {model,
         {model_area, model_distance, model_point, model_airline, model_track, model_fangyang}},
        table_list, data_msg);
}
