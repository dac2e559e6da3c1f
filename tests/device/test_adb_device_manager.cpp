#include "adb_ground.h"
#include "device/adb_device_manager.h"
#include "instrument/adb_daemon.h"
#include "instrument/frame_responder.h"
#include "instrument/sample_memory.h"
#include "support/log_capture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

QStringList arguments_of(const QSignalSpy& spy)
{
    QStringList all;
    for (const QList<QVariant>& call : spy)
        all += call.first().toString();
    return all;
}

} // namespace

/// The Android device watcher, with the real adb where it can be brought to the
/// case, and with a script in its place where not.
class test_adb_device_manager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void names_of_signals_and_slots();
    void locates_adb();
    void nothing_runs_at_first();
    void no_adb();
    void adb_that_cannot_run();
    void server_that_fails();
    void server_that_hangs();
    void server_that_starts();
    void device_lists_data();
    void device_lists();
    void changes_are_told_in_order();
    void a_poll_while_a_change_is_told();
    void a_query_that_crashes_counts();
    void unauthorized_turns_to_device();
    void a_slow_query_is_not_overlapped();
    void a_query_that_cannot_start();
    void destroyed_during_a_query();
    void a_real_instrument_comes_and_goes();

private:
    /// One query with a script that prints `list` as adb's answer.
    void query(AdbDeviceManager& manager, const QByteArray& list);

    std::unique_ptr<adb_ground> ground;
    std::unique_ptr<log_capture> log;
};

void test_adb_device_manager::init()
{
    ground = std::make_unique<adb_ground>();
    log = std::make_unique<log_capture>();
}

void test_adb_device_manager::cleanup()
{
    log.reset();
    ground.reset();
}

void test_adb_device_manager::query(AdbDeviceManager& manager, const QByteArray& list)
{
    ground->write("list", list);
    manager.adb_path = ground->script("cat '" + ground->path("list").toLocal8Bit() + "'; exit 3");
    QSignalSpy finished(&manager.process, &QProcess::finished);
    manager.checkDevices();
    QTRY_COMPARE(finished.size(), 1);
}

void test_adb_device_manager::names_of_signals_and_slots()
{
    QStringList declared;
    const QMetaObject& meta = AdbDeviceManager::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        declared += QString::fromLatin1(meta.method(at).methodSignature());
    QCOMPARE(declared,
             (QStringList{"deviceAttached(QString)", "deviceDetached(QString)",
                          "onAdbDevicesFinished(int,QProcess::ExitStatus)", "checkDevices()"}));
}

void test_adb_device_manager::locates_adb()
{
    const AdbDeviceManager manager;
    QCOMPARE(log->texts(), QStringList{"[AdbDeviceManager] locating adb ..."});
    QCOMPARE(log->lines().first().type, QtInfoMsg);
    QCOMPARE(manager.adb_path, ground->adb());

    const QByteArray search_path = qgetenv("PATH");
    qputenv("PATH", "");
    QCOMPARE(manager.locate_adb(), "adb");

    // What lies beside the program comes first.
    const QString beside = QCoreApplication::applicationDirPath() + "/adb.exe";
    QFile file(beside);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(manager.locate_adb(), beside);
    qputenv("PATH", search_path);
    QCOMPARE(manager.locate_adb(), beside);
    QVERIFY(file.remove());
    QCOMPARE(manager.locate_adb(), ground->adb());
}

void test_adb_device_manager::nothing_runs_at_first()
{
    const AdbDeviceManager manager;
    QCOMPARE(manager.poll_timer.parent(), &manager);
    QCOMPARE(manager.poll_timer.interval(), 1500);
    QVERIFY(!manager.poll_timer.isSingleShot());
    QVERIFY(!manager.poll_timer.isActive());
    QCOMPARE(manager.process.state(), QProcess::NotRunning);
    QVERIFY(manager.known_devices.isEmpty());
}

void test_adb_device_manager::no_adb()
{
    AdbDeviceManager manager;
    manager.adb_path = "adb"; // no such file in the working directory
    log->clear();
    QVERIFY(!manager.start());
    QCOMPARE(log->texts(), QStringList{"[AdbDeviceManager] adb not found: \"adb\""});
    QCOMPARE(log->lines().first().type, QtCriticalMsg);
    QVERIFY(!manager.poll_timer.isActive());
}

void test_adb_device_manager::adb_that_cannot_run()
{
    AdbDeviceManager manager;
    ground->write("no_program", "text");
    manager.adb_path = ground->path("no_program");
    log->clear();
    QVERIFY(!manager.start());
    const QRegularExpression line(R"(^\[AdbDeviceManager\] failed to start adb process: ".+"$)");
    QVERIFY(line.match(log->texts().first()).hasMatch());
    QCOMPARE(log->lines().first().type, QtCriticalMsg);
    QVERIFY(!manager.poll_timer.isActive());
}

void test_adb_device_manager::server_that_fails()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("echo no port 端口 >&2; exit 3");
    log->clear();
    QVERIFY(!manager.start());
    QCOMPARE(log->texts(), QStringList{"[AdbDeviceManager] start-server failed, exitCode: 3 "
                                       "stderr: \"no port 端口\\n\""});
    QCOMPARE(log->lines().first().type, QtCriticalMsg);
    QCOMPARE(ground->calls(), QStringList{"start-server"});
    QVERIFY(!manager.poll_timer.isActive());
}

void test_adb_device_manager::server_that_hangs()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("exec sleep 60");
    log->clear();
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(!manager.start());
    QVERIFY(elapsed.elapsed() >= 9500);
    QVERIFY(elapsed.elapsed() < 20000); // killed, not waited for
    // And nothing about a program that still runs.
    QCOMPARE(log->texts(),
             QStringList{"[AdbDeviceManager] start-server timeout: \"" + manager.adb_path + "\""});
    QCOMPARE(log->lines().first().type, QtCriticalMsg);
    QVERIFY(!manager.poll_timer.isActive());
}

void test_adb_device_manager::server_that_starts()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("exit 0");
    QVERIFY(manager.start());
    QVERIFY(manager.poll_timer.isActive());
    QCOMPARE(manager.process.state(), QProcess::Running); // at once
    QTRY_COMPARE(ground->calls(), (QStringList{"start-server", "devices"}));
    QTRY_COMPARE(ground->calls().size(), 3); // the first poll
}

void test_adb_device_manager::device_lists_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<QStringList>("devices");
    QTest::newRow("none") << QByteArray("List of devices attached\n\n") << QStringList();
    QTest::newRow("one") << QByteArray("List of devices attached\nabc\tdevice\n\n")
                         << QStringList{"abc"};
    QTest::newRow("line ends of Windows")
        << QByteArray("List of devices attached\r\nabc\tdevice\r\n\r\n") << QStringList{"abc"};
    QTest::newRow("a carriage return anywhere")
        << QByteArray("a\rb\r\tde\rvice\n") << QStringList{"ab"};
    QTest::newRow("not only ASCII") << QByteArray("手机\tdevice\n") << QStringList{"手机"};
    QTest::newRow("key order") << QByteArray("b\tdevice\na\tdevice\n") << QStringList{"a", "b"};
    QTest::newRow("other states")
        << QByteArray("a\tunauthorized\nb\toffline\nc\tdevice\nd\tDevice\ne\tdevice \n")
        << QStringList{"c"};
    QTest::newRow("further parts")
        << QByteArray("a\tdevice\tmodel\nb\n\t\tdevice\nc\t\tdevice\n") << QStringList{"c"};
    QTest::newRow("no tab") << QByteArray("a device\n") << QStringList();
    QTest::newRow("heading in lower case")
        << QByteArray("list of devices\tdevice\nList of devices x\tdevice\n")
        << QStringList{"list of devices"};
}

void test_adb_device_manager::device_lists()
{
    QFETCH(QByteArray, list);
    QFETCH(QStringList, devices);
    AdbDeviceManager manager;
    QSignalSpy attached(&manager, &AdbDeviceManager::deviceAttached);
    query(manager, list); // its exit code 3 is not looked at
    QCOMPARE(arguments_of(attached), devices);
    QCOMPARE(QStringList(manager.known_devices.keys()), devices);
}

void test_adb_device_manager::changes_are_told_in_order()
{
    AdbDeviceManager manager;
    query(manager, "b\tdevice\nc\tdevice\nd\tdevice\n");
    QStringList told;
    connect(&manager, &AdbDeviceManager::deviceAttached, this,
            [&told](const QString& serial) { told += "+" + serial; });
    connect(&manager, &AdbDeviceManager::deviceDetached, this,
            [&told](const QString& serial) { told += "-" + serial; });
    query(manager, "e\tdevice\nc\tdevice\na\tdevice\n");
    QCOMPARE(told, (QStringList{"+a", "+e", "-b", "-d"}));
    query(manager, "e\tdevice\nc\tdevice\na\tdevice\n");
    QCOMPARE(told.size(), 4);
}

void test_adb_device_manager::a_poll_while_a_change_is_told()
{
    AdbDeviceManager manager;
    QStringList told;
    const auto poll = [&manager] {
        QSignalSpy finished(&manager.process, &QProcess::finished);
        manager.checkDevices();
        QTRY_VERIFY(!finished.isEmpty());
    };
    // Each change is answered with another poll, as it happens while a box is open.
    connect(&manager, &AdbDeviceManager::deviceAttached, this, [&](const QString& serial) {
        told += "+" + serial;
        if (told.size() < 10)
            poll();
    });
    connect(&manager, &AdbDeviceManager::deviceDetached, this, [&](const QString& serial) {
        told += "-" + serial;
        if (told.size() < 10)
            poll();
    });
    manager.adb_path = ground->script("cat '" + ground->path("list").toLocal8Bit() + "'");
    ground->write("list", "b\tdevice\na\tdevice\n");
    poll();
    QCOMPARE(told, (QStringList{"+a", "+b"}));
    told.clear();
    ground->write("list", "c\tdevice\n");
    poll();
    QCOMPARE(told, (QStringList{"+c", "-a", "-b"}));
    QCOMPARE(manager.known_devices.keys(), QStringList{"c"});
}

void test_adb_device_manager::a_query_that_crashes_counts()
{
    AdbDeviceManager manager;
    ground->write("list", "abc\tdevice\n");
    manager.adb_path =
        ground->script("cat '" + ground->path("list").toLocal8Bit() + "'; kill -9 $$");
    QSignalSpy finished(&manager.process, &QProcess::finished);
    QSignalSpy attached(&manager, &AdbDeviceManager::deviceAttached);
    manager.checkDevices();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(manager.process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(arguments_of(attached), QStringList{"abc"});
}

void test_adb_device_manager::unauthorized_turns_to_device()
{
    AdbDeviceManager manager;
    QSignalSpy attached(&manager, &AdbDeviceManager::deviceAttached);
    query(manager, "List of devices attached\nabc\tunauthorized\n");
    QVERIFY(attached.isEmpty());
    query(manager, "List of devices attached\nabc\tdevice\n");
    QCOMPARE(arguments_of(attached), QStringList{"abc"});
    QSignalSpy detached(&manager, &AdbDeviceManager::deviceDetached);
    query(manager, "List of devices attached\nabc\toffline\n");
    QCOMPARE(arguments_of(detached), QStringList{"abc"});
}

void test_adb_device_manager::a_slow_query_is_not_overlapped()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("sleep 1");
    QSignalSpy finished(&manager.process, &QProcess::finished);
    log->clear();
    manager.checkDevices();
    manager.checkDevices();
    manager.checkDevices();
    QVERIFY(log->texts().isEmpty()); // nothing is tried, hence nothing fails
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(ground->calls(), QStringList{"devices"});
    manager.checkDevices();
    QTRY_COMPARE(finished.size(), 2);
    QCOMPARE(ground->calls().size(), 2);
}

void test_adb_device_manager::a_query_that_cannot_start()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->path("no_such_file");
    log->clear();
    manager.checkDevices();
    QCOMPARE(log->texts(), QStringList{"[AdbDeviceManager] failed to start devices query: \"" +
                                       manager.process.errorString() + "\""});
    QVERIFY(!manager.process.errorString().isEmpty());
    QCOMPARE(log->lines().first().type, QtWarningMsg);
}

void test_adb_device_manager::destroyed_during_a_query()
{
    QElapsedTimer elapsed;
    elapsed.start();
    {
        AdbDeviceManager manager;
        manager.known_devices.insert("abc", true);
        connect(&manager, &AdbDeviceManager::deviceDetached, this,
                [] { qFatal("told something while it was destroyed"); });
        manager.adb_path = ground->script("exec sleep 60");
        manager.checkDevices();
        QCOMPARE(manager.process.state(), QProcess::Running);
    }
    QVERIFY(elapsed.elapsed() < 5000);
    QVERIFY(!log->has("Destroyed while process")); // killed before
}

void test_adb_device_manager::a_real_instrument_comes_and_goes()
{
    if (ground->adb().isEmpty())
        QSKIP("no adb on this machine");
    const instrument::memory stored = instrument::sample_memory();
    const auto protocol = [&stored] {
        return std::make_unique<instrument::frame_responder>(stored);
    };
    instrument::adb_daemon daemon({.port = 0, .server_port = ground->server_port()}, protocol,
                                  nullptr);
    QString error;
    QVERIFY2(daemon.start(error), qPrintable(error));

    AdbDeviceManager manager;
    QSignalSpy attached(&manager, &AdbDeviceManager::deviceAttached);
    QSignalSpy detached(&manager, &AdbDeviceManager::deviceDetached);
    QVERIFY(manager.start());
    QTRY_COMPARE_WITH_TIMEOUT(attached.size(), 1, 15000);
    QCOMPARE(attached[0][0].toString(), daemon.serial_number());

    const QString serial = daemon.serial_number();
    daemon.detach();
    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_COMPARE(detached.size(), 1);
    QVERIFY(elapsed.elapsed() < 3000);
    QCOMPARE(detached[0][0].toString(), serial);
    QCOMPARE(attached.size(), 1);
}

QTEST_GUILESS_MAIN(test_adb_device_manager)
#include "test_adb_device_manager.moc"
