#include "presentation/measurement_tables.h"

#include "presentation/check_box_delegate.h"

#include <QHeaderView>
#include <QItemDelegate>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QTableView>

#include <algorithm>
#include <vector>

namespace measurement_tables {

namespace {

/// Column widths in pixels. The last column of a per-type table takes the rest.
constexpr std::array<int, main_columns> widths{42, 40, 100, 128, 42};

QStandardItem* tick_item()
{
    auto* item = new QStandardItem;
    item->setEditable(false); // no text editor over a tick: the delegate toggles it
    return item;
}

QStandardItem* text_item(const QString& text)
{
    auto* item = new QStandardItem(text);
    item->setTextAlignment(Qt::AlignCenter);
    return item;
}

/// Puts a measurement into a row that the model has already.
void set_row(QStandardItemModel& model, int row, const measuringData& record)
{
    model.setItem(row, tick_column, tick_item());
    model.setItem(row, number_column, text_item(QString::number(row + 1)));
    model.setItem(row, name_column, text_item(record.name));
    model.setItem(row, time_column, text_item(record.time));
}

} // namespace

QString kind_word(const QString& method, int language)
{
    if (method == self_made_method)
        return (language == 0 ? self_made_method : self_made_english).toString();
    const int kind = kind_index(method);
    if (kind < 0)
        return {};
    const measurement_kind& entry = measurement_kinds[static_cast<size_t>(kind)];
    return (language == 0 ? entry.method : entry.english).toString();
}

kind_relations fill(QStandardItemModel& main, const kind_models& kinds,
                    const QList<measuringData>& table_list, int language)
{
    kind_relations relations;
    for (int row = 0; row < table_list.size(); ++row) {
        if (const int kind = kind_index(table_list[row].method); kind >= 0) {
            relation_list& relation = relations[static_cast<size_t>(kind)];
            relation.append({static_cast<int>(relation.size()), row});
        }
    }

    // All rows are made at once: a model that grows row by row is slow.
    main.setColumnCount(main_columns);
    main.setRowCount(static_cast<int>(table_list.size()));
    for (int row = 0; row < table_list.size(); ++row) {
        set_row(main, row, table_list[row]);
        main.setItem(row, type_column, text_item(kind_word(table_list[row].method, language)));
    }
    for (size_t kind = 0; kind < kinds.size(); ++kind) {
        kinds[kind]->setColumnCount(kind_columns);
        kinds[kind]->setRowCount(static_cast<int>(relations[kind].size()));
        for (const auto& [kind_row, main_row] : std::as_const(relations[kind]))
            set_row(*kinds[kind], kind_row, table_list[main_row]);
    }
    return relations;
}

CheckBoxDelegate* show(QTableView& view, QStandardItemModel& model, const QStringList& headings)
{
    model.setHorizontalHeaderLabels(headings);
    view.setModel(&model);

    auto* ticks = new CheckBoxDelegate(&model);
    view.setItemDelegate(ticks);
    auto* plain = new QItemDelegate(&model);
    for (int column = number_column; column < model.columnCount(); ++column)
        view.setItemDelegateForColumn(column, plain);

    QHeaderView* header = view.horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setMinimumSectionSize(0); // some styles ask for more than the narrow columns have
    header->setStretchLastSection(model.columnCount() == kind_columns);
    for (int column = 0; column < model.columnCount(); ++column)
        view.setColumnWidth(column, widths[static_cast<size_t>(column)]);
    view.verticalHeader()->hide();
    return ticks;
}

void write_everywhere(QStandardItemModel& main, const kind_models& kinds,
                      const std::array<const relation_list*, measurement_kinds.size()>& relations,
                      int main_row, int column, const QString& text)
{
    std::vector<QSignalBlocker> blockers;
    blockers.emplace_back(main);
    for (QStandardItemModel* model : kinds)
        blockers.emplace_back(model);

    const auto write = [column, &text](QStandardItemModel& model, int row) {
        if (row < 0 || row >= model.rowCount())
            return;
        if (QStandardItem* item = model.item(row, column); item != nullptr && item->text() != text)
            item->setText(text);
    };
    write(main, main_row);
    for (size_t kind = 0; kind < kinds.size(); ++kind) {
        const auto pair =
            std::find_if(relations[kind]->cbegin(), relations[kind]->cend(),
                         [main_row](const auto& one) { return one.second == main_row; });
        if (pair != relations[kind]->cend())
            write(*kinds[kind], pair->first);
    }
}

} // namespace measurement_tables
