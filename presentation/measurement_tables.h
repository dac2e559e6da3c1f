#pragma once

#include "core/code_tables.h"
#include "core/records.h"

#include <QList>
#include <QStringList>

#include <array>

class CheckBoxDelegate;
class QStandardItemModel;
class QTableView;

/// The building blocks of the seven measurement tables: one with all
/// measurements and one for each of measurement_kinds, in that order.
namespace measurement_tables {

/// Columns; the per-type tables end with the time.
enum column
{
    tick_column,
    number_column,
    name_column,
    time_column,
    type_column
};

inline constexpr int main_columns = 5;
inline constexpr int kind_columns = 4;

/// The six per-type models or relations, in the order of measurement_kinds.
using kind_models = std::array<QStandardItemModel*, measurement_kinds.size()>;
using kind_relations = std::array<relation_list, measurement_kinds.size()>;

/// Kind word of the main table for a record's `method`; empty for a method that
/// is none of the seven.
[[nodiscard]] QString kind_word(const QString& method, int language);

/// Appends a row for each measurement to the main model and to the model of its
/// kind, all with clear ticks, and returns which per-type row is which main row.
/// The models are expected to be fresh and in no view yet.
[[nodiscard]] kind_relations fill(QStandardItemModel& main, const kind_models& kinds,
                                  const QList<measuringData>& table_list, int language);

/// Puts the model into its view with a fresh delegate for the ticks and a plain
/// one for the rest, both owned by the model, and sets headers and widths.
/// Returns the delegate of the ticks.
CheckBoxDelegate* show(QTableView& view, QStandardItemModel& model, const QStringList& headings);

/// Writes `text` into `column` of a measurement's row in the main model and in
/// the model of its kind, wherever it differs. No signal leaves the models.
void write_everywhere(QStandardItemModel& main, const kind_models& kinds,
                      const std::array<const relation_list*, measurement_kinds.size()>& relations,
                      int main_row, int column, const QString& text);

} // namespace measurement_tables
