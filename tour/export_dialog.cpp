#include "export_dialog.h"

#include "stage.h"

#include <QComboBox>
#include <QFileInfo>
#include <QMessageBox>

void export_as(const stage& at, const exchange_format& format, const QString& path)
{
    at.click(QStringLiteral("export_format"));
    at.press(QStringLiteral("Home"));
    for (int i = 0; i < format.index; ++i)
        at.press(QStringLiteral("Down"));
    at.press(QStringLiteral("Return"));
    at.wait_for(QStringLiteral("format %1").arg(format.index), [&format] {
        auto* list = qobject_cast<QComboBox*>(stage::widget(QStringLiteral("export_format")));
        return list->currentIndex() == format.index;
    });
    at.click(QStringLiteral("pushButton"));
    at.give_path(path);
    const QString text = at.wait_for_box(QLatin1String(format.title));
    check(text == QString::fromUtf8(format.exported), text);
    at.take_picture(QStringLiteral("exported-%1").arg(QFileInfo(path).fileName()));
    at.answer_box(QMessageBox::Ok);
}
