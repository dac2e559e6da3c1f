#pragma once

#include <QList>
#include <QPoint>

class QAbstractItemView;

// Looks at the window's tables. GUI thread only.

namespace tables {

constexpr int name_column = 2;
constexpr int time_column = 3;

constexpr const char* main_view = "alltableView";
/// In the order of measurement_kinds.
constexpr const char* kind_views[] = {"areatableView", "distableView",   "pointtableView",
                                      "linetableView", "tracktableView", "fangyangtableView"};

[[nodiscard]] QAbstractItemView* view(const char* name);
[[nodiscard]] int rows(const char* name = main_view);
/// Ticked rows of the main table.
[[nodiscard]] int ticked_rows();
/// The other rows of the main table.
[[nodiscard]] QList<int> rows_without_tick();
/// Screen place of a cell's middle; the view is scrolled to it.
[[nodiscard]] QPoint cell(const char* name, int row, int column);

} // namespace tables
