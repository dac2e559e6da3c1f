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

/// The items of a table while it is put together, column by column: a model
/// takes a whole column at once much faster than as many rows.
class column_builder
{
public:
    column_builder(int columns, qsizetype rows) : m_columns(static_cast<size_t>(columns))
    {
        for (auto& column : m_columns)
            column.reserve(rows);
    }

    [[nodiscard]] int rows() const { return static_cast<int>(m_columns.front().size()); }

    void append(const measuringData& record, const QString& kind)
    {
        const QString number = QString::number(rows() + 1);
        m_columns[tick_column].append(tick_item());
        m_columns[number_column].append(text_item(number));
        m_columns[name_column].append(text_item(record.name));
        m_columns[time_column].append(text_item(record.time));
        if (m_columns.size() > type_column)
            m_columns[type_column].append(text_item(kind));
    }

    void move_into(QStandardItemModel& model)
    {
        if (rows() == 0)
            return;
        for (const auto& column : m_columns)
            model.appendColumn(column);
    }

private:
    std::vector<QList<QStandardItem*>> m_columns;
};

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
    column_builder all(main_columns, table_list.size());
    std::vector<column_builder> by_kind(kinds.size(), column_builder(kind_columns, 0));
    for (const measuringData& record : table_list) {
        const int main_row = all.rows();
        all.append(record, kind_word(record.method, language));
        const int kind = kind_index(record.method);
        if (kind < 0)
            continue;
        column_builder& table = by_kind[static_cast<size_t>(kind)];
        relations[static_cast<size_t>(kind)].append({table.rows(), main_row});
        table.append(record, {});
    }
    all.move_into(main);
    for (size_t kind = 0; kind < kinds.size(); ++kind)
        by_kind[kind].move_into(*kinds[kind]);
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
