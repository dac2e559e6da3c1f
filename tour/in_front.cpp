#include "in_front.h"

#include "stage.h"
#include "tables.h"

#include "core/code_tables.h"
#include "core/main_window.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QLabel>

#include <array>

namespace {

/// The window.
MainWindow& window()
{
    QWidget* const found = stage::widget(QStringLiteral("centralWidget"))->window();
    if (qstrcmp(found->metaObject()->className(), "MainWindow") != 0)
        qFatal("no window");
    return *static_cast<MainWindow*>(found); // whose code is in the program
}

} // namespace

held_lists held()
{
    const MainWindow& one = window();
    return {one.table_list, one.data_msg, one.data_msg_altitude, one.point_msg_all};
}

int percent()
{
    return qobject_cast<QLabel*>(stage::widget(QStringLiteral("progressLabel")))
        ->text()
        .chopped(1)
        .toInt();
}

QWidget* window_of(const char* class_name)
{
    for (QWidget* one : QApplication::topLevelWidgets()) {
        if (one->isVisible() && qstrcmp(one->metaObject()->className(), class_name) == 0)
            return one;
    }
    return nullptr;
}

QString tables_differ(const held_lists& lists)
{
    const auto differs = [&lists](const QAbstractItemModel& model, int row, qsizetype main_row) {
        const auto text = [&](int column) { return model.index(row, column).data().toString(); };
        return text(tables::name_column) != lists.table_list[main_row].name ||
               text(tables::time_column) != lists.table_list[main_row].time;
    };
    const QAbstractItemModel& all = *tables::view(tables::main_view)->model();
    if (all.rowCount() != lists.table_list.size()) {
        return QStringLiteral("the main table shows %1 rows of %2")
            .arg(all.rowCount())
            .arg(lists.table_list.size());
    }
    std::array<int, measurement_kinds.size()> shown{};
    for (qsizetype i = 0; i < lists.table_list.size(); ++i) {
        const auto row = static_cast<int>(i);
        if (differs(all, row, i))
            return QStringLiteral("row %1 of the main table shows another measurement").arg(row);
        const int kind = kind_index(lists.table_list[i].method);
        if (kind < 0)
            continue;
        const auto at = static_cast<size_t>(kind);
        const QAbstractItemModel& table = *tables::view(tables::kind_views[at])->model();
        if (differs(table, shown[at], i))
            return QStringLiteral("row %1 of %2")
                .arg(shown[at])
                .arg(QLatin1String(tables::kind_views[at]));
        ++shown[at];
    }
    for (size_t kind = 0; kind < shown.size(); ++kind) {
        if (tables::rows(tables::kind_views[kind]) != shown[kind])
            return QStringLiteral("rows of %1").arg(QLatin1String(tables::kind_views[kind]));
    }
    return {};
}
