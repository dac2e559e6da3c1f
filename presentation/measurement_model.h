#pragma once

#include <QStandardItemModel>

/// A table of measurements. A cell's tooltip is its text, which can be longer
/// than its column.
class measurement_model : public QStandardItemModel
{
    Q_OBJECT

public:
    using QStandardItemModel::QStandardItemModel;

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override
    {
        const bool tip = role == Qt::ToolTipRole && index.column() > 0;
        return QStandardItemModel::data(index, tip ? Qt::DisplayRole : role);
    }
};
