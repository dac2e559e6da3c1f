// The print window: the picture on its page, the page on paper (as PDF through
// the real printer class), dialog and preview.

#include "exchange/print.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

namespace {

/// A picture with a corner mark in each corner, to see that nothing is cut off.
class marked_widget : public QWidget
{
public:
    explicit marked_widget(QSize size) { resize(size); }

    static constexpr int mark = 40; // pixels
    static QList<QColor> colours() { return {Qt::red, Qt::green, Qt::blue, Qt::magenta}; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        painter.drawEllipse(rect().adjusted(50, 50, -50, -50));
        painter.fillRect(0, 0, mark, mark, colours()[0]);
        painter.fillRect(width() - mark, 0, mark, mark, colours()[1]);
        painter.fillRect(0, height() - mark, mark, mark, colours()[2]);
        painter.fillRect(width() - mark, height() - mark, mark, mark, colours()[3]);
    }
};

/// The image that lies in the page.
QImage image_in(const QTextEdit& page)
{
    static const QRegularExpression pattern("src=\"data:image/png;base64,([^\"]*)\"");
    const auto match = pattern.match(page.toHtml());
    return QImage::fromData(QByteArray::fromBase64(match.captured(1).toLatin1()), "PNG");
}

/// Acts on the dialog of that class once it is in front.
template <typename Dialog>
void when_open(std::function<void(Dialog&)> act)
{
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible())
            return;
        timer->deleteLater();
        timer->stop();
        act(*dialog);
    });
    timer->start(10);
}

/// How many pixels have about this colour.
int count_of(const QImage& image, const QColor& colour)
{
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor here = image.pixelColor(x, y);
            found += qAbs(here.red() - colour.red()) + qAbs(here.green() - colour.green()) +
                                 qAbs(here.blue() - colour.blue()) <
                             90
                         ? 1
                         : 0;
        }
    }
    return found;
}

/// The first page of a PDF as poppler draws it, 96 dots to the inch.
QImage page_of(const QString& pdf)
{
    QProcess poppler;
    poppler.start("pdftoppm", {"-r", "96", "-png", "-singlefile", pdf, pdf});
    if (!poppler.waitForFinished(60'000) || poppler.exitCode() != 0)
        return {};
    return QImage(pdf + ".png");
}

} // namespace

class test_print : public QObject
{
    Q_OBJECT

private slots:
    void the_window();
    void a_wide_drawing_is_scaled_down_data();
    void a_wide_drawing_is_scaled_down();
    void the_page_can_be_typed_on();
    void edges_are_smooth();
    void a_page_as_pdf();
    void the_print_button_prints();
    void a_dialog_that_is_closed_prints_nothing();
    void the_preview_opens();
};

void test_print::the_window()
{
    print form;
    form.show();
    QCOMPARE(form.size(), QSize(759, 621));
    QCOMPARE(form.windowTitle(), QStringLiteral("打印"));
    QVERIFY((form.windowFlags() & Qt::WindowMinimizeButtonHint) == 0);
    QVERIFY((form.windowFlags() & Qt::WindowMaximizeButtonHint) == 0);
    for (const char* slot : {"on_pushButton_print_clicked()", "on_pushButton_view_clicked()"})
        QVERIFY2(print::staticMetaObject.indexOfSlot(slot) >= 0, slot);
    QVERIFY(form.findChild<QTextEdit*>("textEdit") != nullptr);
    const QString style = QStringLiteral(
        "QPushButton{border: 1px solid #bfbfbf;border-radius:8px;background-color:#d4d4d4}"
        "QPushButton:pressed {  background-color: #bfbfbf;}");
    auto* button = form.findChild<QPushButton*>("pushButton_print");
    QCOMPARE(button->text(), QStringLiteral("打印"));
    QCOMPARE(button->styleSheet(), style);
    button = form.findChild<QPushButton*>("pushButton_view");
    QCOMPARE(button->text(), QStringLiteral("打印预览"));
    QCOMPARE(button->styleSheet(), style);
}

void test_print::a_wide_drawing_is_scaled_down_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("the usual drawing") << QSize(841, 601);
    QTest::newRow("a large one") << QSize(1466, 877);
    QTest::newRow("very wide") << QSize(3000, 100);
    QTest::newRow("narrow") << QSize(300, 900);
    QTest::newRow("just as wide") << QSize();
    QTest::newRow("tiny") << QSize(1, 1);
}

void test_print::a_wide_drawing_is_scaled_down()
{
    QFETCH(QSize, size);
    print form;
    const int width = form.textEdit->width();
    if (size.isEmpty())
        size = QSize(width, 500);
    marked_widget drawing(size);
    form.add_print_image(&drawing);
    const QImage image = image_in(*form.textEdit);
    QSize wanted = size;
    if (size.width() > width) {
        const double ratio = static_cast<double>(size.width()) / size.height();
        wanted = size.scaled(width, static_cast<int>(width / ratio), Qt::KeepAspectRatio);
        QVERIFY(wanted.width() <= width && wanted.width() >= width - 60);
    }
    QCOMPARE(image.size(), wanted);
    // Nothing of it is beyond the edge.
    form.show();
    QVERIFY(form.textEdit->verticalScrollBar()->isVisible() ||
            !form.textEdit->horizontalScrollBar()->isVisible());
    if (size.height() < 3 * marked_widget::mark)
        return;
    QCOMPARE(image.pixelColor(1, 1), marked_widget::colours()[0]);
    QCOMPARE(image.pixelColor(image.width() - 2, image.height() - 2), marked_widget::colours()[3]);
}

void test_print::the_page_can_be_typed_on()
{
    print form;
    marked_widget drawing({200, 100});
    form.add_print_image(&drawing);
    form.show();
    form.textEdit->setFocus();
    QVERIFY(!form.textEdit->isReadOnly());
    QTest::keyClicks(form.textEdit, "Field 7");
    QVERIFY(form.textEdit->toPlainText().contains("Field 7"));
    QCOMPARE(image_in(*form.textEdit).size(), QSize(200, 100));
}

/// Though the widget itself asks for nothing of the kind, and nothing is scaled.
void test_print::edges_are_smooth()
{
    print form;
    marked_widget drawing({400, 300});
    form.add_print_image(&drawing);
    const QImage image = image_in(*form.textEdit);
    QCOMPARE(image.size(), QSize(400, 300));
    QVERIFY(count_of(image, Qt::gray) > 50);
    QCOMPARE(count_of(drawing.grab().toImage(), Qt::gray), 0);
}

void test_print::a_page_as_pdf()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("page.pdf");
    print form;
    marked_widget drawing({841, 601}); // as wide as the window's drawing opens
    form.add_print_image(&drawing);
    QPrinter printer(QPrinter::ScreenResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    form.textEdit->print(&printer);

    const QImage page = page_of(path);
    QVERIFY(!page.isNull());
    // All four corners are on the paper, each mark whole.
    const double scale = form.textEdit->width() / 841.0;
    const double whole = marked_widget::mark * scale * marked_widget::mark * scale;
    for (const QColor& colour : marked_widget::colours()) {
        const int found = count_of(page, colour);
        QVERIFY2(
            found > 0.85 * whole,
            qPrintable(QStringLiteral("%1: %2 of %3").arg(colour.name()).arg(found).arg(whole)));
    }
}

void test_print::the_print_button_prints()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("printed.pdf");
    print form;
    marked_widget drawing({841, 601});
    form.add_print_image(&drawing);
    form.show();
    when_open<QPrintDialog>([&](QPrintDialog& dialog) {
        QCOMPARE(dialog.parentWidget(), &form);
        QCOMPARE(dialog.printer()->resolution(), QPrinter(QPrinter::ScreenResolution).resolution());
        // No printer in this place, or any other: into a file.
        dialog.printer()->setOutputFormat(QPrinter::PdfFormat);
        dialog.printer()->setOutputFileName(path);
        dialog.done(QDialog::Accepted);
    });
    QTest::mouseClick(form.pushButton_print, Qt::LeftButton);
    QTRY_VERIFY(QFile::exists(path));
    QVERIFY(count_of(page_of(path), marked_widget::colours()[3]) > 100);
}

void test_print::a_dialog_that_is_closed_prints_nothing()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("printed.pdf");
    print form;
    form.show();
    when_open<QPrintDialog>([&](QPrintDialog& dialog) {
        dialog.printer()->setOutputFormat(QPrinter::PdfFormat);
        dialog.printer()->setOutputFileName(path);
        dialog.reject();
    });
    QTest::mouseClick(form.pushButton_print, Qt::LeftButton);
    QVERIFY(!QFile::exists(path));
}

void test_print::the_preview_opens()
{
    print form;
    marked_widget drawing({841, 601});
    form.add_print_image(&drawing);
    form.show();
    int pages = 0;
    int found = 0;
    when_open<QPrintPreviewDialog>([&](QPrintPreviewDialog& dialog) {
        QCOMPARE(dialog.parentWidget(), &form);
        QCOMPARE(dialog.printer()->resolution(), QPrinter(QPrinter::ScreenResolution).resolution());
        auto* preview = dialog.findChild<QPrintPreviewWidget*>();
        pages = preview->pageCount();
        dialog.resize(1000, 1200);
        QCoreApplication::processEvents();
        found = count_of(preview->grab().toImage(), marked_widget::colours()[0]);
        dialog.reject();
    });
    QTest::mouseClick(form.pushButton_view, Qt::LeftButton);
    QCOMPARE(pages, 1);
    QVERIFY(found > 100);
}

QTEST_MAIN(test_print)
#include "test_print.moc"
