#pragma once

#include <QStyledItemDelegate>

/// Draws the tick of column 0 as a check box and toggles it by mouse or
/// keyboard. Other columns are the base class's. By keyboard the other ticks that are
/// selected in the view become like it.
class CheckBoxDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

signals:
    /// A tick was toggled; `checked` is the success of the change and not the
    /// tick.
    void checkboxStateChanged(bool checked);
};
