// The map or the drawing as a PNG file.

#include "exchange/file_export_thread.h"
#include "exchange/message_boxes.h"
#include "presentation/graphic_widget.h"

#include <QDebug>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QWebEngineView>

void file_export_thread::picture_export(QWebEngineView* m_parentWebEngineView,
                                        graphic_widget* m_parentwidgetView, int picture_flag,
                                        QString file_path)
{
    qDebug() << "picture_export";
    QWidget* const shown = picture_flag != 0 ? static_cast<QWidget*>(m_parentWebEngineView)
                                             : static_cast<QWidget*>(m_parentwidgetView);
    // In the widget's own pixels, whatever the screen makes of them; the widget
    // covers all of it.
    QImage image(shown->size(), QImage::Format_ARGB32);
    QPainter painter(&image);
    shown->render(&painter, QPoint(0, 0), QRegion(),
                  QWidget::DrawWindowBackground | QWidget::DrawChildren);
    painter.end();
    if (file_path.isEmpty())
        return;

    QFile file(file_path);
    if (!file.open(QIODevice::WriteOnly)) {
        qDebug() << "Failed to open file: " << file_path;
        show_warning(QStringLiteral("Warning"), QStringLiteral("Failed to open file"));
        return;
    }
    if (!image.save(&file, "PNG") || !file.flush()) {
        qDebug() << "Failed to save screenshot to " << file_path << ": " << file.errorString();
        show_warning(QStringLiteral("Warning"), QStringLiteral("Failed to save screenshot"));
        return;
    }
    file.close();
    qDebug() << "Screenshot saved successfully to " << file_path;
    show_information(QStringLiteral("img"), QStringLiteral("图片文件导出成功"));
}
