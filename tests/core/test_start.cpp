// The program from its first line to its exit code, in this process: what is set
// before its application object exists, what it says and shows, what it leaves.

#include "core/application.h"
#include "core/main_window.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QApplication>
#include <QFont>
#include <QSslSocket>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

using rounding = Qt::HighDpiScaleFactorRoundingPolicy;

/// What was there when the application object was made.
rounding policy_at_the_making = rounding::Unset;

/// The window, once it is shown, and the font then.
MainWindow* shown_window = nullptr;
QFont font_when_shown;

std::unique_ptr<QTimer> looker;
std::unique_ptr<box_watcher> watcher;

/// Waits for the window and closes it, which is confirmed.
void close_what_is_shown()
{
    for (QWidget* one : QApplication::topLevelWidgets()) {
        auto* window = qobject_cast<MainWindow*>(one);
        if (window == nullptr || !window->isVisible())
            continue;
        looker->stop();
        shown_window = window;
        font_when_shown = QApplication::font();
        window->close();
        return;
    }
}

/// Runs within the making of the application object.
void application_is_made()
{
    policy_at_the_making = QGuiApplication::highDpiScaleFactorRoundingPolicy();
    watcher = std::make_unique<box_watcher>();
    watcher->answer = QMessageBox::Yes;
    looker = std::make_unique<QTimer>();
    QObject::connect(looker.get(), &QTimer::timeout, close_what_is_shown);
    looker->start(50);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(application_is_made)

class test_start : public QObject
{
    Q_OBJECT

private slots:
    void from_the_first_line_to_the_exit_code();
};

void test_start::from_the_first_line_to_the_exit_code()
{
    qputenv("PATH", ""); // no adb: nothing outside this process takes part
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(rounding::Floor);
    const log_capture log;
    int argc = 1;
    char name[] = "velmo";
    char* argv[] = {name, nullptr};
    QCOMPARE(run_application(argc, argv), 0);

    QCOMPARE(policy_at_the_making, rounding::PassThrough);
    QVERIFY(shown_window != nullptr);
    QVERIFY(shown_window->key != nullptr);
    QCOMPARE(font_when_shown.pixelSize(), 13);
    QCOMPARE(font_when_shown.family(), QStringLiteral("Microsoft YaHei"));
    QCOMPARE(watcher->boxes.size(), 1);

    // The two lines stand one behind the other; the workers' threads log when
    // they come to it.
    QStringList lines = log.texts();
    lines.removeIf(
        [](const QString& line) { return !line.contains("SSL") && !line.contains("Ssl"); });
    QCOMPARE(
        lines,
        (QStringList{
            QStringLiteral("QSslSocket= \"%1\"").arg(QSslSocket::sslLibraryBuildVersionString()),
            QStringLiteral("OpenSSL Support: %1")
                .arg(QSslSocket::supportsSsl() ? "true" : "false")}));
    // Nothing long-lived is deleted.
    QVERIFY(!log.has("thread_key is destroyed."));
    looker.reset();
    watcher.reset();
}

QTEST_APPLESS_MAIN(test_start)
#include "test_start.moc"
