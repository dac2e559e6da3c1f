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
#include <QThread>

namespace {

constexpr exchange_format picture_format{7, "img", "图片文件导出成功", "png", ""};

QByteArray content_of(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Saves what is in front of the window through the export dialog.
QImage saved_picture(const stage& at, const QString& path)
{
    at.click(QStringLiteral("data_output_file"));
    at.wait_for_dialog(QStringLiteral("outputWindow"));
    export_as(at, picture_format, path);
    at.close_dialog();
    return QImage(path);
}

void check_picture(const stage& at, const QImage& picture, const QString& widget)
{
    const QImage shown = at.see([&] { return stage::widget(widget)->grab().toImage(); });
    check(picture.size() == shown.size(), QStringLiteral("the picture of %1 is %2 by %3")
                                              .arg(widget)
                                              .arg(picture.width())
                                              .arg(picture.height()));
    qint64 other = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x)
            other += picture.pixel(x, y) == shown.pixel(x, y) ? 0 : 1;
    }
    const qint64 all = static_cast<qint64>(shown.width()) * shown.height();
    check(other <= all / 200,
          QStringLiteral("%1 of %2 pixels of %3 differ").arg(other).arg(all).arg(widget));
    say(QStringLiteral("  the picture of %1: %2 by %3, %4 pixels differ from the window")
            .arg(widget)
            .arg(shown.width())
            .arg(shown.height())
            .arg(other));
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
    const QImage map = saved_picture(at, QDir(folder).filePath("saved-map-" + language + ".png"));
    check_picture(at, map, QStringLiteral("map"));
    at.click(QStringLiteral("pushButton_graph"));
    QThread::msleep(700);
    const QImage drawing =
        saved_picture(at, QDir(folder).filePath("saved-drawing-" + language + ".png"));
    check_picture(at, drawing, QStringLiteral("widget_graphic"));
    at.click(QStringLiteral("pushButton_map"));
}

void print_the_drawing(const stage& at, const QString& folder, const QString& language)
{
    at.click(QStringLiteral("print"));
    at.wait_for_dialog(QStringLiteral("print"));
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
