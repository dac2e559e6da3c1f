#include "output_steps.h"

#include "export_dialog.h"
#include "stage.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMessageBox>
#include <QPixmap>
#include <QProgressBar>
#include <QRandomGenerator>
#include <QTextEdit>
#include <QThread>

namespace {

constexpr exchange_format picture_format{7, "img", "图片文件导出成功", "png", ""};

QByteArray content_of(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// How many pixels of two pictures of one size are not the same.
qint64 pixels_that_differ(const QImage& one, const QImage& other)
{
    qint64 differ = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            differ += one.pixel(x, y) == other.pixel(x, y) ? 0 : 1;
    }
    return differ;
}

/// Saves what is in front of the window through the export dialog; it must look like
/// the widget.
void save_picture(const stage& at, const QString& path, const QString& widget)
{
    // On a busy machine the map may still be filling between the two looks at it.
    constexpr int attempts = 5;
    constexpr unsigned long pause = 3000; // ms
    for (int attempt = 1;; ++attempt) {
        QFile::remove(path);
        at.click(QStringLiteral("data_output_file"));
        at.wait_for_dialog(QStringLiteral("outputWindow"));
        export_as(at, picture_format, path);
        at.close_dialog();
        const QImage picture(path);
        const QImage shown = at.see([&] { return stage::widget(widget)->grab().toImage(); });
        check(picture.size() == shown.size(), QStringLiteral("the picture of %1 is %2 by %3")
                                                  .arg(widget)
                                                  .arg(picture.width())
                                                  .arg(picture.height()));
        const qint64 differ = pixels_that_differ(picture, shown);
        const qint64 all = static_cast<qint64>(shown.width()) * shown.height();
        if (differ <= all / 200) {
            say(QStringLiteral("  the picture of %1: %2 by %3, %4 pixels differ from the window")
                    .arg(widget)
                    .arg(shown.width())
                    .arg(shown.height())
                    .arg(differ));
            return;
        }
        check(attempt < attempts,
              QStringLiteral("%1 of %2 pixels of %3 differ").arg(differ).arg(all).arg(widget));
        QThread::msleep(pause);
    }
}

/// Two boxes tell that no update host is there.
void expect_no_update_host(const stage& at, const QString& picture)
{
    for (int i = 0; i < 2; ++i) {
        at.wait_for_box(QStringLiteral("检查失败"), 120'000);
        QThread::msleep(200);
        if (i == 0)
            at.take_picture(picture);
        at.answer_box(QMessageBox::Ok);
    }
}

} // namespace

void save_pictures(const stage& at, const QString& folder, const QString& language)
{
    const QDir pictures(folder);
    save_picture(at, pictures.filePath("saved-map-" + language + ".png"), QStringLiteral("map"));
    at.click(QStringLiteral("pushButton_graph"));
    QThread::msleep(700);
    save_picture(at, pictures.filePath("saved-drawing-" + language + ".png"),
                 QStringLiteral("widget_graphic"));
    at.click(QStringLiteral("pushButton_map"));
}

void print_the_drawing(const stage& at, const QString& folder, const QString& language)
{
    at.click(QStringLiteral("print"));
    at.wait_for_dialog(QStringLiteral("print"));
    at.wait_for(QStringLiteral("a page without its cursor, which blinks as high as the drawing"),
                [] {
                    auto* const page = stage::in_front()->findChild<QTextEdit*>();
                    page->setCursorWidth(0);
                    page->viewport()->update();
                    return true;
                });
    QThread::msleep(200);
    at.take_picture("print-" + language);

    at.click_in_front(QStringLiteral("pushButton_view"));
    at.wait_for_dialog(QStringLiteral("QPrintPreviewDialog"));
    QThread::msleep(500);
    at.take_picture("print-preview-" + language);
    at.close_dialog();

    const QString path = QDir(folder).filePath("printed-" + language + ".pdf");
    at.click_in_front(QStringLiteral("pushButton_print"));
    at.wait_for_dialog(QStringLiteral("QPrintDialog"));
    // Without a printer the file is the only choice.
    at.click_in_front(QStringLiteral("filename"));
    at.press(QStringLiteral("ctrl+a"));
    at.type(path);
    at.take_picture("print-dialog-" + language);
    at.press(QStringLiteral("Return"));
    at.wait_for_dialog(QStringLiteral("print"));
    const QByteArray page = content_of(path);
    check(page.startsWith("%PDF-") && page.size() > 2000,
          QStringLiteral("%1 is no page").arg(path));
    at.close_dialog();
    say(QStringLiteral("  printed into %1, %2 bytes").arg(path).arg(page.size()));
}

void look_for_a_new_version(const stage& at, const QString& language)
{
    at.click(QStringLiteral("softwareupgrade"));
    expect_no_update_host(at, "software-no-host-" + language);
    at.wait_for_dialog(QStringLiteral("updateForm"));
    at.take_picture("software-" + language);
    at.close_dialog();
    say(QStringLiteral("  no update host is configured, and two boxes say so"));
}

void upgrade_firmware(const stage& at, const QString& folder, const QString& language)
{
    at.click(QStringLiteral("hardwareupgrade"));
    at.wait_for_dialog(QStringLiteral("hardwareupdata"));
    at.take_picture("firmware-" + language);
    at.click_in_front(QStringLiteral("pushButton"));
    expect_no_update_host(at, "firmware-no-host-" + language);

    QByteArray image(2'000'000, '\0');
    for (char& byte : image)
        byte = static_cast<char>(QRandomGenerator::global()->generate());
    const QString path = QDir(folder).filePath(QStringLiteral("firmware.bin"));
    QFile file(path);
    check(file.open(QIODevice::WriteOnly) && file.write(image) == image.size(),
          QStringLiteral("no firmware file"));
    file.close();

    at.wait_for_dialog(QStringLiteral("hardwareupdata"));
    at.click_in_front(QStringLiteral("pushButton_2"));
    at.give_path(path);
    at.wait_for(QStringLiteral("progress"), [] {
        const QWidget* form = stage::in_front();
        const auto* bar = form == nullptr
                              ? nullptr
                              : form->findChild<QProgressBar*>(QStringLiteral("progressBar"));
        return stage::box() != nullptr || (bar != nullptr && bar->value() > 10);
    });
    at.take_picture("firmware-transfer-" + language);
    const QString text = at.wait_for_box(QStringLiteral("升级"), 120'000);
    QThread::msleep(200); // until the box is painted
    at.take_picture("firmware-done-" + language);
    check(text == QStringLiteral("设备升级成功"), text);
    at.answer_box(QMessageBox::Ok);
    at.close_dialog();
    check(content_of(folder + "/../firmware") == image,
          QStringLiteral("the instrument has another image than was sent"));
    say(QStringLiteral("  %1; the instrument has all %2 bytes, SHA-256 %3")
            .arg(text)
            .arg(image.size())
            .arg(QString::fromLatin1(
                QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex().left(16))));
}
