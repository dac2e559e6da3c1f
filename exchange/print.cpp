#include "exchange/print.h"

#include <QBuffer>
#include <QPainter>
#include <QPixmap>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTextDocument>
#include <QTextEdit>

print::print(QWidget* parent)
    : QWidget(parent), textEdit(new QTextEdit(this)),
      pushButton_print(new QPushButton(QStringLiteral("打印"), this)),
      pushButton_view(new QPushButton(QStringLiteral("打印预览"), this))
{
    setWindowTitle(QStringLiteral("打印"));
    setWindowFlags((windowFlags() | Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                    Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) &
                   ~(Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
    setFixedSize(759, 621);

    textEdit->setObjectName(QStringLiteral("textEdit"));
    // A picture as wide as this has room for all of it, here and on A4 paper.
    textEdit->setGeometry(10, 10, 619, 601);
    textEdit->setFrameShape(QFrame::NoFrame);
    textEdit->document()->setDocumentMargin(0);
    pushButton_print->setObjectName(QStringLiteral("pushButton_print"));
    pushButton_print->setGeometry(639, 10, 110, 36);
    pushButton_view->setObjectName(QStringLiteral("pushButton_view"));
    pushButton_view->setGeometry(639, 56, 110, 36);
    for (QPushButton* button : {pushButton_print, pushButton_view}) {
        button->setStyleSheet(QStringLiteral(
            "QPushButton{border: 1px solid #bfbfbf;border-radius:8px;background-color:#d4d4d4}"
            "QPushButton:pressed {  background-color: #bfbfbf;}"));
    }
    QMetaObject::connectSlotsByName(this);
}

void print::add_print_image(QWidget* widget)
{
    QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    widget->render(&painter, QPoint(0, 0), QRegion(),
                   QWidget::DrawWindowBackground | QWidget::DrawChildren);
    painter.end();

    QSize target = image.size();
    if (const int width = textEdit->width(); image.width() > width) {
        const double ratio = static_cast<double>(image.width()) / image.height();
        target = QSize(width, static_cast<int>(width / ratio));
    }
    const QPixmap scaled =
        QPixmap::fromImage(image.scaled(target, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    scaled.save(&buffer, "PNG");
    textEdit->append(QStringLiteral("<img src=\"data:image/png;base64,%1\">")
                         .arg(QString::fromLatin1(bytes.toBase64())));
}

void print::on_pushButton_print_clicked()
{
    QPrinter printer(QPrinter::ScreenResolution);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != 0)
        textEdit->print(&printer);
}

void print::on_pushButton_view_clicked()
{
    QPrinter printer(QPrinter::ScreenResolution);
    QPrintPreviewDialog dialog(&printer, this);
    connect(&dialog, &QPrintPreviewDialog::paintRequested, this,
            [this](QPrinter* page) { textEdit->print(page); });
    dialog.exec();
}
