#include "tables.h"

#include "stage.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>

QAbstractItemView* tables::view(const char* name)
{
    return qobject_cast<QAbstractItemView*>(stage::widget(QLatin1String(name)));
}

int tables::rows(const char* name)
{
    return view(name)->model()->rowCount();
}

int tables::ticked_rows()
{
    const QAbstractItemModel* model = view(main_view)->model();
    int ticked = 0;
    for (int row = 0; row < model->rowCount(); ++row)
        ticked += model->index(row, 0).data().toBool() ? 1 : 0;
    return ticked;
}

QList<int> tables::rows_without_tick()
{
    const QAbstractItemModel* model = view(main_view)->model();
    QList<int> without;
    for (int row = 0; row < model->rowCount(); ++row) {
        if (!model->index(row, 0).data().toBool())
            without += row;
    }
    return without;
}

QPoint tables::cell(const char* name, int row, int column)
{
    QAbstractItemView* const shown = view(name);
    const QModelIndex index = shown->model()->index(row, column);
    shown->scrollTo(index);
    return shown->viewport()->mapToGlobal(shown->visualRect(index).center());
}
