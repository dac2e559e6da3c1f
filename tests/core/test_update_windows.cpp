// Print, software update and firmware upgrade from the main window's buttons: the
// windows that open, and the way from a press through the hub to the worker and
// back.

#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/thread_key.h"
#include "device/serial_thread.h"
#include "exchange/print.h"
#include "instrument/boot_loader.h"
#include "instrument/pseudo_terminal.h"
#include "presentation/graphic_widget.h"
#include "support/box_watcher.h"
#include "support/file_dialog_user.h"
#include "update_server.h"
#include "updates/hardware_upgrade.h"
#include "updates/hardwareupdata.h"
#include "updates/software_upgrade.h"
#include "updates/update_form.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSerialPort>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include <memory>
#include <optional>

namespace {

constexpr int patience_ms = 60'000;

/// The open window of a class, or null.
template <typename Form>
Form* open_form()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* form = qobject_cast<Form*>(window); form != nullptr && form->isVisible())
            return form;
    }
    return nullptr;
}

/// The picture in a page, as a PNG file.
QByteArray picture_in(const QTextEdit& page)
{
    static const QRegularExpression pattern("base64,([^\"]*)\"");
    return QByteArray::fromBase64(pattern.match(page.toHtml()).captured(1).toLatin1());
}

class nothing_else final : public instrument::protocol
{
public:
    QList<instrument::chunk> receive(QByteArrayView) override { return {}; }
};

} // namespace

class test_update_windows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void print_shows_the_drawing_data();
    void print_shows_the_drawing();
    void the_check_is_made_when_the_window_opens_data();
    void the_check_is_made_when_the_window_opens();
    void the_download_shows_its_progress();
    void the_firmware_window_follows_the_language();
    void an_image_is_chosen_from_the_list();
    void a_transfer_goes_on_after_its_window_is_closed();
    void a_window_closed_during_a_question();

private:
    application_objects m_objects{};
    MainWindow* m_window = nullptr;
    std::unique_ptr<update_server> m_server;
    std::unique_ptr<instrument::pseudo_terminal> m_terminal;
    std::optional<instrument::firmware> m_taken;
    QTemporaryDir m_folder;
};

void test_update_windows::initTestCase()
{
    m_server = std::make_unique<update_server>();
    m_server->trust();
    qputenv("PATH", ""); // no adb: nothing outside this process takes part
    install_default_font();
    m_objects = make_application_objects();
    m_window = m_objects.window;
    m_objects.serial->available_ports = [] { return QList<serial_thread::listed_port>(); };
    m_objects.software->feed = m_server->address("/software_update.json");
    m_objects.software->folder = m_folder.path();
    m_objects.firmware->list_url = m_server->address("/hardware_update.json");
    m_objects.firmware->folder = m_folder.path();
    m_window->show();

    m_terminal = std::make_unique<instrument::pseudo_terminal>(
        115200,
        [this] {
            return std::make_unique<instrument::boot_loader>(
                std::make_unique<nothing_else>(), instrument::boot_settings(),
                [this](const instrument::firmware& taken) { m_taken = taken; });
        },
        nullptr);
    QString error;
    QVERIFY2(m_terminal->start(QString(), error), qPrintable(error));
    QSerialPort* port = m_objects.serial->port;
    port->setPortName(m_terminal->path());
    QVERIFY(port->open(QIODevice::ReadWrite));
    QVERIFY(port->setBaudRate(115200));
}

void test_update_windows::cleanup()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != m_window && window->isWindow())
            window->close();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_taken.reset();
    m_window->language = 0;
}

void test_update_windows::print_shows_the_drawing_data()
{
    QTest::addColumn<bool>("by_menu");
    QTest::newRow("the button") << false;
    QTest::newRow("the menu") << true;
}

void test_update_windows::print_shows_the_drawing()
{
    QFETCH(bool, by_menu);
    if (by_menu)
        m_window->ui->action_export_graphics->trigger();
    else
        QTest::mouseClick(m_window->ui->print, Qt::LeftButton);
    QPointer<print> form = open_form<print>();
    QVERIFY(form != nullptr);
    QCOMPARE(form->windowModality(), Qt::ApplicationModal);
    // The drawing, though the map is in front.
    QCOMPARE(m_window->map_shown, 1);
    print drawing;
    drawing.add_print_image(m_window->ui->widget_graphic);
    const QByteArray page = picture_in(*form->textEdit);
    QVERIFY(page.startsWith("\x89PNG"));
    QCOMPARE(page, picture_in(*drawing.textEdit));
    form->close();
    QTRY_VERIFY(form == nullptr); // nothing is left of it
}

void test_update_windows::the_check_is_made_when_the_window_opens_data()
{
    QTest::addColumn<bool>("by_menu");
    QTest::addColumn<int>("language");
    QTest::newRow("the button") << false << 0;
    QTest::newRow("the menu, English") << true << 1;
}

void test_update_windows::the_check_is_made_when_the_window_opens()
{
    QFETCH(bool, by_menu);
    QFETCH(int, language);
    m_window->language = language;
    m_server->answers["/software_update.json"] = {
        .body = R"({"VerisonObj":{"LatestVersion":"V3.2.3"}})"};
    QSignalSpy asked(m_window, &MainWindow::send_btm_sign_to_threadkey_software_upgrade);
    // The window is there already when the host is asked.
    bool shown_by_then = false;
    const QMetaObject::Connection looked =
        connect(m_window, &MainWindow::send_btm_sign_to_threadkey_software_upgrade, this,
                [&] { shown_by_then = open_form<updateForm>() != nullptr; });
    box_watcher watcher;
    if (by_menu)
        m_window->ui->action_software->trigger();
    else
        QTest::mouseClick(m_window->ui->softwareupgrade, Qt::LeftButton);
    QPointer<updateForm> form = open_form<updateForm>();
    QVERIFY(form != nullptr);
    QCOMPARE(form->windowModality(), Qt::ApplicationModal);
    QCOMPARE(form->language, language);
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked[0], (QVariantList{"V3.2.3", language}));
    QVERIFY(shown_by_then);
    disconnect(looked);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QCOMPARE(watcher.boxes[0].text, QStringLiteral("当前已经是最新版本!"));
    QVERIFY(form->isVisible());
    QVERIFY(form->pushButton->isEnabled());
    form->close();
    QTRY_VERIFY(form == nullptr);
}

void test_update_windows::the_download_shows_its_progress()
{
    m_server->answers["/software_update.json"] = {
        .body = R"({"VerisonObj":{"LatestVersion":"V4","Url_64":")" +
                m_server->address("/velmo.exe").toEncoded() + "\"}}"};
    m_server->answers["/velmo.exe"] = {.body = QByteArray(5'000'000, 'v'), .cut_after = 4'000'000};
    box_watcher watcher;
    QTest::mouseClick(m_window->ui->softwareupgrade, Qt::LeftButton);
    auto* form = open_form<updateForm>();
    QVERIFY(form != nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QVERIFY(watcher.boxes[0].text.startsWith("检测到新版本!"));
    QTRY_VERIFY(QApplication::activeModalWidget() == form);
    QTest::mouseClick(form->pushButton, Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 2, patience_ms);
    QCOMPARE(watcher.boxes[1].title, QStringLiteral("下载错误"));
    QCOMPARE(form->bytesTotal->text(), QStringLiteral("4MB"));
    QCOMPARE(form->bytesReceived->text(), QStringLiteral("3MB"));
    QCOMPARE(form->progressBar->value(), 80);
    QVERIFY(!form->pushButton->isEnabled()); // a new window is the way out
    QVERIFY(!QFile::exists(m_folder.filePath("velmo.exe")));
}

void test_update_windows::the_firmware_window_follows_the_language()
{
    for (const bool english : {false, true}) {
        (english ? m_window->ui->action_english : m_window->ui->action_chinese)->setChecked(true);
        m_window->language = english ? 1 : 0;
        QTest::mouseClick(m_window->ui->hardwareupgrade, Qt::LeftButton);
        auto* form = open_form<hardwareupdata>();
        QVERIFY(form != nullptr);
        QCOMPARE(form->windowModality(), Qt::ApplicationModal);
        QCOMPARE(form->pushButton->styleSheet().contains("cloudupdata_en.png"), english);
        form->close();
        QTRY_VERIFY(open_form<hardwareupdata>() == nullptr);
    }
}

void test_update_windows::an_image_is_chosen_from_the_list()
{
    const QByteArray image(30'000, 'f');
    m_server->answers["/fw/one.bin"] = {.body = "another"};
    m_server->answers["/fw/two.bin"] = {.body = image};
    const QByteArray folder = m_server->address("/fw/").toEncoded();
    m_server->answers["/hardware_update.json"] = {.body = R"({"VELMO-SIM-1.0":{"Url1":")" + folder +
                                                          R"(one.bin","Url2":")" + folder +
                                                          R"(two.bin"}})"};
    box_watcher watcher;
    QTest::mouseClick(m_window->ui->hardwareupgrade, Qt::LeftButton);
    auto* form = open_form<hardwareupdata>();
    QTest::mouseClick(form->pushButton, Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(form->comboBox->count(), 2, patience_ms);
    form->comboBox->setCurrentText("two.bin");
    QTest::mouseClick(form->pushButton_3, Qt::LeftButton);
    QCOMPARE(watcher.texts(), QStringList("bin文件打开失败"));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_folder.filePath("two.bin")), patience_ms);
    QTest::mouseClick(form->pushButton_3, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(watcher.texts().contains("设备升级成功"), patience_ms);
    QVERIFY(m_taken.has_value());
    QCOMPARE(m_taken->image, image);
    QCOMPARE(form->progressBar->value(), 100);
}

void test_update_windows::a_transfer_goes_on_after_its_window_is_closed()
{
    QByteArray image(2'000'000, 'f');
    QFile file(m_folder.filePath("local.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(image);
    file.close();
    box_watcher watcher;
    file_dialog_user chooser;
    chooser.path = file.fileName();
    QTest::mouseClick(m_window->ui->hardwareupgrade, Qt::LeftButton);
    QPointer<hardwareupdata> form = open_form<hardwareupdata>();
    QTest::mouseClick(form->pushButton_2, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(form->progressBar->value() > 0, patience_ms);
    QVERIFY(m_objects.firmware->pending == 1);
    form->close();
    QTRY_VERIFY(form == nullptr);
    QVERIFY(!m_taken.has_value()); // it was in the middle
    QTRY_VERIFY_WITH_TIMEOUT(watcher.texts().contains("设备升级成功"), patience_ms);
    QVERIFY(m_taken.has_value() && m_taken->image == image);
}

void test_update_windows::a_window_closed_during_a_question()
{
    m_server->answers["/hardware_update.json"] = {.body = "{}"};
    box_watcher watcher;
    QTest::mouseClick(m_window->ui->hardwareupgrade, Qt::LeftButton);
    QPointer<hardwareupdata> form = open_form<hardwareupdata>();
    QTimer::singleShot(100, form, &QWidget::close);
    QTest::mouseClick(form->pushButton, Qt::LeftButton); // asks the instrument for a while
    QTRY_COMPARE_WITH_TIMEOUT(watcher.texts(), QStringList("本设备不支持升级"), patience_ms);
    QTRY_VERIFY(form == nullptr);
}

QTEST_MAIN(test_update_windows)
#include "test_update_windows.moc"
