// Map and drawing as PNG files, compared with what the widgets show.

#include "exchange/file_export_thread.h"
#include "presentation/graphic_widget.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEngineView>

class test_picture_export : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void the_drawing_as_it_stands();
    void the_drawing_though_the_map_is_in_front();
    void the_map_as_it_stands();
    void a_fine_screen_makes_it_no_larger();
    void the_suffix_does_not_matter();
    void an_old_file_is_replaced();
    void no_path_no_word();
    void files_that_cannot_be_written_data();
    void files_that_cannot_be_written();

private:
    [[nodiscard]] QImage saved(int picture_flag, const QString& name = QStringLiteral("p.png"));

    QTemporaryDir m_folder;
    QWidget m_window;
    QWebEngineView* m_map = nullptr;
    graphic_widget* m_drawing = nullptr;
    file_export_thread m_worker;
};

void test_picture_export::initTestCase()
{
    m_window.resize(900, 700);
    m_map = new QWebEngineView(&m_window);
    m_drawing = new graphic_widget(&m_window);
    m_map->setGeometry(20, 30, 640, 480);
    m_drawing->setGeometry(20, 30, 701, 503);
    // A square field, to be found in the picture.
    m_drawing->draw_data = {"126.650000,45.750000,126.650001,45.750000,126.650001,45.750001,"
                            "126.650000,45.750001,126.650000,45.750000"};
    m_drawing->draw_rows = {{0, 4}};
    m_window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&m_window));
    QSignalSpy loaded(m_map, &QWebEngineView::loadFinished);
    m_map->setHtml("<body style='margin:0;background:#204080'><div style='position:absolute;"
                   "left:100px;top:50px;width:200px;height:150px;background:#e0c020'></div>");
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, 60'000);
    // Until the page has been painted.
    QTRY_COMPARE_WITH_TIMEOUT(QColor(m_map->grab().toImage().pixel(200, 100)), QColor("#e0c020"),
                              60'000);
}

QImage test_picture_export::saved(int picture_flag, const QString& name)
{
    const QString path = m_folder.filePath(name);
    const box_watcher watcher;
    const log_capture log;
    m_worker.picture_export(m_map, m_drawing, picture_flag, path);
    if (watcher.boxes.size() != 1 || watcher.boxes[0].icon != QMessageBox::Information ||
        watcher.boxes[0].text != QStringLiteral("图片文件导出成功") ||
        watcher.boxes[0].title != QStringLiteral("img") ||
        log.texts().value(0) != QStringLiteral("picture_export") ||
        !log.has("Screenshot saved successfully to ") || !log.has(path))
        return {};
    QFile file(path);
    QImage image;
    if (!file.open(QIODevice::ReadOnly) || !image.load(&file, "PNG"))
        return {};
    return image;
}

void test_picture_export::the_drawing_as_it_stands()
{
    const QImage image = saved(0);
    QCOMPARE(image.size(), QSize(701, 503));
    const QImage shown = m_drawing->grab().toImage();
    QCOMPARE(image.convertToFormat(QImage::Format_RGB32),
             shown.convertToFormat(QImage::Format_RGB32));
    int dark = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            dark += qGray(image.pixel(x, y)) < 200 ? 1 : 0;
    }
    QVERIFY2(dark > 300, QByteArray::number(dark).constData()); // four sides of 100 pixels
    QCOMPARE(QColor(image.pixel(3, 3)), QColor(Qt::white));
    QCOMPARE(qAlpha(image.pixel(3, 3)), 255);
}

void test_picture_export::the_drawing_though_the_map_is_in_front()
{
    const QImage alone = saved(0);
    m_drawing->lower();
    m_map->raise();
    QCOMPARE(saved(0), alone);
    m_drawing->hide();
    QCOMPARE(saved(0), alone);
    m_drawing->show();
}

void test_picture_export::the_map_as_it_stands()
{
    // Any number but zero is the map.
    for (const int flag : {1, -3}) {
        QImage image;
        QTRY_VERIFY_WITH_TIMEOUT(
            (image = saved(flag), QColor(image.pixel(200, 100)) == QColor("#e0c020")), 60'000);
        QCOMPARE(image.size(), QSize(640, 480));
        QCOMPARE(QColor(image.pixel(50, 100)), QColor("#204080"));
        QCOMPARE(image.convertToFormat(QImage::Format_RGB32),
                 m_map->grab().toImage().convertToFormat(QImage::Format_RGB32));
    }
}

/// In the widget's own pixels, though the screen has four for each of them. The scale
/// of a screen is read at the start of a program: this one is started again.
void test_picture_export::a_fine_screen_makes_it_no_larger()
{
    if (m_drawing->devicePixelRatioF() < 2.0) {
        QProcess fine;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_SCALE_FACTOR", "2");
        fine.setProcessEnvironment(environment);
        fine.setProcessChannelMode(QProcess::ForwardedChannels);
        fine.start(QCoreApplication::applicationFilePath(), {QTest::currentTestFunction()});
        QVERIFY(fine.waitForFinished(280'000));
        QCOMPARE(fine.exitCode(), 0);
        return;
    }
    QCOMPARE(m_drawing->grab().size(), QSize(1402, 1006));
    for (const auto& [flag, size] : {std::pair(0, QSize(701, 503)), {1, QSize(640, 480)}}) {
        const QImage image = saved(flag);
        QCOMPARE(image.size(), size);
        QCOMPARE(image.devicePixelRatio(), 1.0);
    }
    // All of the drawing, not a quarter of it.
    const QImage whole =
        m_drawing->grab().toImage().scaled(701, 503, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    const auto dark = [](const QImage& image) {
        QRect found;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (qGray(image.pixel(x, y)) < 200)
                    found |= QRect(x, y, 1, 1);
            }
        }
        return found;
    };
    const QRect is = dark(saved(0));
    const QRect should = dark(whole);
    QVERIFY(!should.isEmpty());
    QVERIFY(is.contains(should.adjusted(3, 3, -3, -3)) &&
            should.contains(is.adjusted(3, 3, -3, -3)));
}

void test_picture_export::the_suffix_does_not_matter()
{
    QVERIFY(!saved(0, "picture.jpg").isNull()); // read back as PNG
    QVERIFY(!saved(0, "图").isNull());
}

void test_picture_export::an_old_file_is_replaced()
{
    QFile old(m_folder.filePath("old.png"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write(QByteArray(2'000'000, 'x'));
    old.close();
    QVERIFY(!saved(0, "old.png").isNull());
    QVERIFY(QFileInfo(m_folder.filePath("old.png")).size() < 100'000);
}

void test_picture_export::no_path_no_word()
{
    const box_watcher watcher;
    const log_capture log;
    m_worker.picture_export(m_map, m_drawing, 0, QString());
    QCOMPARE(log.texts(), QStringList("picture_export"));
    QTest::qWait(50);
    QVERIFY(watcher.boxes.isEmpty());
}

void test_picture_export::files_that_cannot_be_written_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("log");
    QTest::newRow("no such folder") << m_folder.filePath("missing/p.png") << "Failed to open file"
                                    << "Failed to open file: ";
    QTest::newRow("a folder") << m_folder.path() << "Failed to open file"
                              << "Failed to open file: ";
#ifdef Q_OS_LINUX
    QTest::newRow("a full disk") << "/dev/full"
                                 << "Failed to save screenshot"
                                 << "Failed to save screenshot to ";
#endif
}

void test_picture_export::files_that_cannot_be_written()
{
    QFETCH(QString, path);
    QFETCH(QString, box);
    QFETCH(QString, log);
    for (const int flag : {0, 1}) {
        const box_watcher watcher;
        const log_capture lines;
        m_worker.picture_export(m_map, m_drawing, flag, path);
        QCOMPARE(watcher.boxes.size(), 1);
        QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
        QCOMPARE(watcher.boxes[0].title, QStringLiteral("Warning"));
        QCOMPARE(watcher.boxes[0].text, box);
        const QString line = lines.texts().filter(log).value(0);
        QVERIFY2(line.startsWith(log + " \"" + path + '"'), qPrintable(line));
        // A device that took the bytes has said why it did not keep them.
        if (log.startsWith("Failed to save")) {
            const QString reason = line.section(" :  ", 1);
            QVERIFY2(reason.size() > 2 && reason.startsWith('"'), qPrintable(line));
        }
    }
}

QTEST_MAIN(test_picture_export)
#include "test_picture_export.moc"
