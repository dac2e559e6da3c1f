#include "presentation/check_box_delegate.h"

#include "presentation/measurement_tables.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionButton>

namespace {

/// The style's check box indicator, centred in the cell by integer halves.
QRect check_rect(const QStyleOptionViewItem& option)
{
    const QStyleOptionButton button;
    const QSize size =
        QApplication::style()->subElementRect(QStyle::SE_CheckBoxIndicator, &button).size();
    return {QPoint(option.rect.x() + option.rect.width() / 2 - size.width() / 2,
                   option.rect.y() + option.rect.height() / 2 - size.height() / 2),
            size};
}

/// Whether an event over a tick toggles it, and what the view is told if not.
enum class verdict
{
    toggles,
    used_up,
    not_ours
};

verdict judge(const QEvent* event, const QStyleOptionViewItem& option)
{
    switch (event->type()) {
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick: {
        const auto* mouse = static_cast<const QMouseEvent*>(event);
        const bool hit = mouse->button() == Qt::LeftButton &&
                         event->type() == QEvent::MouseButtonRelease &&
                         check_rect(option).contains(mouse->position().toPoint());
        return hit ? verdict::toggles : verdict::used_up;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<const QKeyEvent*>(event)->key();
        return key == Qt::Key_Space || key == Qt::Key_Select ? verdict::toggles : verdict::not_ours;
    }
    default: return verdict::not_ours;
    }
}

/// The other ticks that are selected together with this one.
QModelIndexList selected_with(const QModelIndex& index, const QWidget* widget)
{
    const auto* view = qobject_cast<const QAbstractItemView*>(widget);
    if (!view || !view->selectionModel() || !view->selectionModel()->isSelected(index))
        return {};
    QModelIndexList others = view->selectionModel()->selectedIndexes();
    others.removeIf([&](const QModelIndex& other) {
        return other.column() != index.column() || other == index;
    });
    return others;
}

bool is_ticked(const QModelIndex& index)
{
    return index.data(Qt::DisplayRole).toBool();
}

} // namespace

void CheckBoxDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const
{
    if (index.column() != measurement_tables::tick_column) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionButton button;
    button.rect = check_rect(option);
    button.state = QStyle::State_Enabled;
    button.state |= is_ticked(index) ? QStyle::State_On : QStyle::State_Off;
    QApplication::style()->drawControl(QStyle::CE_CheckBox, &button, painter);
}

bool CheckBoxDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                   const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (index.column() != measurement_tables::tick_column)
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    switch (judge(event, option)) {
    case verdict::used_up: return true;
    case verdict::not_ours: return false;
    case verdict::toggles: break;
    }
    const bool ticked = !is_ticked(index);
    if (event->type() == QEvent::KeyPress) {
        const QModelIndexList others = selected_with(index, option.widget);
        for (const QModelIndex& other : others)
            model->setData(other, ticked, Qt::EditRole);
    }
    emit checkboxStateChanged(model->setData(index, ticked, Qt::EditRole));
    return model->setData(index, ticked, Qt::EditRole);
}
