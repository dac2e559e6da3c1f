// The window's side of the seven tables: rebuild, ticks, edits. One table of
// kinds stands behind the slots that come in sixes and sevens.

#include "core/main_window.h"
#include "core/main_window_form.h"
#include "presentation/check_box_delegate.h"

#include <QDebug>
#include <QStandardItemModel>
#include <QTableView>

#include <algorithm>

namespace {

/// What is the window's own for each kind, in the order of measurement_kinds.
struct kind_surface
{
    QStandardItemModel* MainWindow::*model;
    QTableView* Ui::MainWindow::*view;
    relation_list MainWindow::*relation;
    void (MainWindow::*item_changed)(QStandardItem*);
    void (MainWindow::*tick_changed)(bool);
    const char* name_words; ///< log words of an edited name
    const char* time_words; ///< log words of an edited time
};

constexpr std::array<kind_surface, measurement_kinds.size()> surfaces{{
    {&MainWindow::model_area, &Ui::MainWindow::areatableView, &MainWindow::relation_area,
     &MainWindow::onAreaTableDataChanged, &MainWindow::area_table_change,
     "通过面积表更新数据名称: 主表行", "Updated area table time: main row"},
    {&MainWindow::model_distance, &Ui::MainWindow::distableView, &MainWindow::relation_distance,
     &MainWindow::onDistanceTableDataChanged, &MainWindow::dist_table_change,
     "通过距离表更新数据名称: 主表行", "Updated distance table time: main row"},
    {&MainWindow::model_point, &Ui::MainWindow::pointtableView, &MainWindow::relation_point,
     &MainWindow::onPointTableDataChanged, &MainWindow::point_table_change,
     "通过航点表更新数据名称: 主表行", "Updated point table time: main row"},
    {&MainWindow::model_airline, &Ui::MainWindow::linetableView, &MainWindow::relation_airline,
     &MainWindow::onAirlineTableDataChanged, &MainWindow::line_table_change,
     "通过航线表更新数据名称: 主表行", "Updated line table time: main row"},
    {&MainWindow::model_track, &Ui::MainWindow::tracktableView, &MainWindow::relation_track,
     &MainWindow::onTrackTableDataChanged, &MainWindow::track_table_change,
     "通过航迹表更新数据名称: 主表行", "Updated track table time: main row"},
    {&MainWindow::model_fangyang, &Ui::MainWindow::fangyangtableView,
     &MainWindow::relation_fangyang, &MainWindow::onFangyangTableDataChanged,
     &MainWindow::fangyang_table_change, "通过放样表更新数据名称: 主表行",
     "Updated fangyang table time: main row"},
}};

enum kind : size_t
{
    area,
    distance,
    point,
    airline,
    track,
    fangyang
};

} // namespace

// Rebuild

void MainWindow::recast_table(int /*command*/, QList<measuringData> incoming_table,
                              QStringList incoming_data, QStringList incoming_altitude,
                              QList<QList<point_msg>> incoming_points)
{
    // A read that broke off can deliver lists of different lengths.
    const qsizetype whole = std::min({incoming_table.size(), incoming_data.size(),
                                      incoming_altitude.size(), incoming_points.size()});
    table_list += incoming_table.first(whole);
    data_msg += incoming_data.first(whole);
    data_msg_altitude += incoming_altitude.first(whole);
    point_msg_all += incoming_points.first(whole);
    rebuild_tables();
}

void MainWindow::reset_table_data(QList<measuringData> new_table, QStringList new_data,
                                  QStringList new_altitude, QList<QList<point_msg>> new_points)
{
    table_list = new_table;
    data_msg = new_data;
    data_msg_altitude = new_altitude;
    point_msg_all = new_points;
    rebuild_tables();
}

void MainWindow::rebuild_tables()
{
    init_table_models();
    // With nothing to show, the relations of the last rebuild stay in force.
    if (table_list.isEmpty())
        return;
    qDebug() << "全部数组中有：" << table_list.size();
    emit relation_table(relation_area, relation_distance, relation_point, relation_airline,
                        relation_track, relation_fangyang);
}

void MainWindow::init_table_models()
{
    // The old ones may still be in use further up the call stack.
    const auto renew = [this](QStandardItemModel*& one) {
        if (one != nullptr) {
            one->disconnect(this);
            one->deleteLater();
        }
        one = new QStandardItemModel(this);
    };
    renew(model);
    for (const kind_surface& surface : surfaces)
        renew(this->*surface.model);

    // Filled before they are shown: the views learn of all rows at once.
    measurement_tables::kind_relations fresh =
        measurement_tables::fill(*model, kind_models(), table_list, language);
    if (!table_list.isEmpty()) {
        for (size_t kind = 0; kind < surfaces.size(); ++kind)
            this->*surfaces[kind].relation = std::move(fresh[kind]);
    }

    const auto show = [this](QTableView* view, QStandardItemModel* shown, bool main_table,
                             auto item_changed, auto tick_changed) {
        const CheckBoxDelegate* ticks =
            measurement_tables::show(*view, *shown, headings(main_table));
        connect(ticks, &CheckBoxDelegate::checkboxStateChanged, this, tick_changed);
        connect(shown, &QStandardItemModel::itemChanged, this, item_changed);
    };
    show(ui->alltableView, model, true, &MainWindow::onAllTableDataChanged,
         &MainWindow::all_table_change);
    for (const kind_surface& surface : surfaces)
        show(*ui.*surface.view, this->*surface.model, false, surface.item_changed,
             surface.tick_changed);
}

QStringList MainWindow::headings(bool main_table) const
{
    QStringList words =
        language == 0 ? QStringList{QString(), tr("序号"), tr("数据名称"), tr("采集时间")}
                      : QStringList{QString(), tr("ID"), tr("Data Name"), tr("Acquisition Time")};
    if (main_table)
        words += language == 0 ? tr("类型") : tr("Type");
    return words;
}

measurement_tables::kind_models MainWindow::kind_models() const
{
    measurement_tables::kind_models models{};
    for (size_t kind = 0; kind < surfaces.size(); ++kind)
        models[kind] = this->*surfaces[kind].model;
    return models;
}

// Ticks

void MainWindow::send_check(check_signal signal, bool clicked)
{
    emit(this->*signal)(clicked, model, model_area, model_distance, model_point, model_airline,
                        model_track, model_fangyang, table_list, data_msg);
}

void MainWindow::check_all(int clicked)
{
    clear_map();
    send_check(&MainWindow::send_check_all, clicked != 0);
}

void MainWindow::check_mianji(int clicked)
{
    send_check(&MainWindow::send_check_mianji, clicked != 0);
}

void MainWindow::check_juli(int clicked)
{
    send_check(&MainWindow::send_check_juli, clicked != 0);
}

void MainWindow::check_hangdian(int clicked)
{
    send_check(&MainWindow::send_check_hangdian, clicked != 0);
}

void MainWindow::check_hangxian(int clicked)
{
    send_check(&MainWindow::send_check_hangxian, clicked != 0);
}

void MainWindow::check_hangji(int clicked)
{
    send_check(&MainWindow::send_check_hangji, clicked != 0);
}

void MainWindow::check_fangyang(int clicked)
{
    send_check(&MainWindow::send_check_fangyang, clicked != 0);
}
void MainWindow::all_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_all_table_change, clicked);
}

void MainWindow::area_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_area_table_change, clicked);
}

void MainWindow::dist_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_dist_table_change, clicked);
}

void MainWindow::point_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_point_table_change, clicked);
}

void MainWindow::line_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_line_table_change, clicked);
}

void MainWindow::track_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_track_table_change, clicked);
}

void MainWindow::fangyang_table_change(bool clicked)
{
    clear_map();
    send_check(&MainWindow::send_fangyang_table_change, clicked);
}

// Edits

void MainWindow::onAllTableDataChanged(QStandardItem* item)
{
    take_edit(*item, item->row(), "更新主表数据名称: 行", "Updated main table time: row");
}

void MainWindow::onAreaTableDataChanged(QStandardItem* item)
{
    kind_table_changed(area, *item);
}

void MainWindow::onDistanceTableDataChanged(QStandardItem* item)
{
    kind_table_changed(distance, *item);
}

void MainWindow::onPointTableDataChanged(QStandardItem* item)
{
    kind_table_changed(point, *item);
}

void MainWindow::onAirlineTableDataChanged(QStandardItem* item)
{
    kind_table_changed(airline, *item);
}

void MainWindow::onTrackTableDataChanged(QStandardItem* item)
{
    kind_table_changed(track, *item);
}

void MainWindow::onFangyangTableDataChanged(QStandardItem* item)
{
    kind_table_changed(fangyang, *item);
}

void MainWindow::kind_table_changed(size_t kind, const QStandardItem& item)
{
    const kind_surface& surface = surfaces[kind];
    const relation_list& relation = this->*surface.relation;
    const auto pair = std::find_if(relation.cbegin(), relation.cend(),
                                   [&item](const auto& one) { return one.first == item.row(); });
    if (pair != relation.cend())
        take_edit(item, pair->second, surface.name_words, surface.time_words);
}

void MainWindow::take_edit(const QStandardItem& item, int main_row, const char* name_words,
                           const char* time_words)
{
    if (main_row < 0 || main_row >= table_list.size())
        return;
    const QString text = item.text();
    switch (item.column()) {
    case measurement_tables::name_column:
        table_list[main_row].name = text;
        qDebug() << name_words << main_row << "新名称:" << text;
        syncDataNameToOtherTables(main_row, text);
        break;
    case measurement_tables::time_column:
        table_list[main_row].time = text;
        qDebug() << time_words << main_row << "time" << text;
        updateDataTimeInAllTables(main_row, text);
        break;
    default: break;
    }
}

void MainWindow::write_everywhere(int main_row, int column, const QString& text)
{
    std::array<const relation_list*, measurement_kinds.size()> relations{};
    for (size_t kind = 0; kind < surfaces.size(); ++kind)
        relations[kind] = &(this->*surfaces[kind].relation);
    measurement_tables::write_everywhere(*model, kind_models(), relations, main_row, column, text);
}

void MainWindow::syncDataNameToOtherTables(int mainTableRow, const QString& newName)
{
    write_everywhere(mainTableRow, measurement_tables::name_column, newName);
    qDebug() << "数据名称同步完成: 主表行" << mainTableRow << "新名称:" << newName;
}

void MainWindow::updateDataNameInAllTables(int mainTableRow, const QString& newName)
{
    syncDataNameToOtherTables(mainTableRow, newName);
}

void MainWindow::updateDataTimeInAllTables(int mainTableRow, const QString& newTime)
{
    write_everywhere(mainTableRow, measurement_tables::time_column, newTime);
    qDebug() << "Data time sync completed: main row" << mainTableRow << "time" << newTime;
}
