#include "adb_ground.h"
#include "device/adb_device_manager.h"
#include "device/adb_string_channel.h"
#include "support/log_capture.h"

#include <QProcess>
#include <QTest>

#include <memory>
#include <optional>

// What is asked of QProcess. The functions here stand between the program and Qt's,
// so that an exact time can be seen, and a wait can fail that in truth never does.

namespace {

QStringList asked;         ///< "start", with its mode, and waits, with their ms
QString in_vain;           ///< the wait that fails at once
constexpr int serial = 42; ///< of the device in all commands

bool is_in_vain(const QString& wait)
{
    asked += wait;
    return wait == in_vain;
}

} // namespace

void real_start(QProcess* process, const QString& program, const QStringList& arguments,
                QIODevice::OpenMode mode) asm("__real__ZN8QProcess5startERK7QStringRK5QListIS0_"
                                              "E6QFlagsIN13QIODeviceBase12OpenModeFlagEE");
bool real_wait_for_started(QProcess* process, int ms) asm("__real__ZN8QProcess14waitForStartedEi");
bool real_wait_for_finished(QProcess* process,
                            int ms) asm("__real__ZN8QProcess15waitForFinishedEi");
void start(QProcess* process, const QString& program, const QStringList& arguments,
           QIODevice::OpenMode mode) asm("__wrap__ZN8QProcess5startERK7QStringRK5QListIS0_"
                                         "E6QFlagsIN13QIODeviceBase12OpenModeFlagEE");
bool wait_for_started(QProcess* process, int ms) asm("__wrap__ZN8QProcess14waitForStartedEi");
bool wait_for_finished(QProcess* process, int ms) asm("__wrap__ZN8QProcess15waitForFinishedEi");

void start(QProcess* process, const QString& program, const QStringList& arguments,
           QIODevice::OpenMode mode)
{
    asked += QStringLiteral("start %1").arg(mode.toInt());
    real_start(process, program, arguments, mode);
}

bool wait_for_started(QProcess* process, int ms)
{
    return !is_in_vain(QStringLiteral("started %1").arg(ms)) && real_wait_for_started(process, ms);
}

bool wait_for_finished(QProcess* process, int ms)
{
    return !is_in_vain(QStringLiteral("finished %1").arg(ms)) &&
           real_wait_for_finished(process, ms);
}

/// How adb processes are started, and how long they may take to start, to end, and
/// to end once killed.
class test_adb_processes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void a_server_and_its_first_query();
    void a_server_that_does_not_start();
    void a_server_that_is_killed();
    void a_query_that_does_not_start();
    void a_query_that_is_killed();
    void a_removal();
    void a_removal_that_does_not_start();
    void a_removal_that_is_killed();
    void a_forward();
    void a_forward_that_does_not_start();
    void a_forward_that_is_killed();
    void a_host_of_any_family();

private:
    /// Opens a channel through a script that does what `body` says.
    bool open(const QByteArray& body, const QString& host = QStringLiteral("127.0.0.1"));

    const QString read_write = QStringLiteral("start 3");
    const QStringList removal{read_write, QStringLiteral("started 3000"),
                              QStringLiteral("finished 3000")};
    std::unique_ptr<adb_ground> ground;
    std::unique_ptr<log_capture> log;
};

void test_adb_processes::initTestCase()
{
    QCOMPARE(QIODevice::OpenMode(QIODevice::ReadWrite).toInt(), 3);
}

void test_adb_processes::init()
{
    ground = std::make_unique<adb_ground>();
    log = std::make_unique<log_capture>();
    asked.clear();
    in_vain.clear();
}

void test_adb_processes::cleanup()
{
    log.reset();
    ground.reset();
}

bool test_adb_processes::open(const QByteArray& body, const QString& host)
{
    AdbStringChannel channel(host, 1, QString::number(serial), ground->script(body));
    asked.clear();
    log->clear();
    return channel.open();
}

void test_adb_processes::a_server_and_its_first_query()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("exit 0");
    QVERIFY(manager.start());
    QCOMPARE(asked, (QStringList{read_write, "started 3000", "finished 10000", // start-server
                                 read_write, "started 3000"}));                // devices
}

void test_adb_processes::a_server_that_does_not_start()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("exit 0");
    in_vain = "started 3000";
    QVERIFY(!manager.start());
    QCOMPARE(asked, (QStringList{read_write, "started 3000"}));
    QVERIFY(log->has("[AdbDeviceManager] failed to start adb process:"));
    QVERIFY(!manager.poll_timer.isActive());
}

void test_adb_processes::a_server_that_is_killed()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("exec sleep 600");
    in_vain = "finished 10000";
    QVERIFY(!manager.start());
    QCOMPARE(asked, (QStringList{read_write, "started 3000", "finished 10000", "finished 3000"}));
    QVERIFY(log->has("[AdbDeviceManager] start-server timeout:"));
}

void test_adb_processes::a_query_that_does_not_start()
{
    AdbDeviceManager manager;
    manager.adb_path = ground->script("exit 0");
    in_vain = "started 3000";
    manager.checkDevices();
    QCOMPARE(asked, (QStringList{read_write, "started 3000"}));
    QVERIFY(log->has("[AdbDeviceManager] failed to start devices query:"));
}

void test_adb_processes::a_query_that_is_killed()
{
    std::optional<AdbDeviceManager> manager(std::in_place);
    manager->adb_path = ground->script("exec sleep 600");
    manager->checkDevices();
    asked.clear();
    manager.reset();
    QCOMPARE(asked, QStringList{"finished 3000"});
}

void test_adb_processes::a_removal()
{
    AdbStringChannel::remove_forward(ground->script("exit 0"), QString::number(serial), 12345);
    QCOMPARE(asked, removal);
}

void test_adb_processes::a_removal_that_does_not_start()
{
    in_vain = "started 3000";
    AdbStringChannel::remove_forward(ground->script("exit 0"), QString::number(serial), 12345);
    QCOMPARE(asked, removal.first(2));
}

void test_adb_processes::a_removal_that_is_killed()
{
    in_vain = "finished 3000";
    AdbStringChannel::remove_forward(ground->script("exec sleep 600"), QString::number(serial),
                                     12345);
    QCOMPARE(asked, removal + QStringList{"finished 1000"});
}

void test_adb_processes::a_forward()
{
    // Nobody is behind the port: the error closes the channel, then the attempt ends.
    QVERIFY(!open("exit 0"));
    QCOMPARE(asked, (removal + QStringList{read_write, "started 3000", "finished 10000"} + removal +
                     removal));
}

void test_adb_processes::a_forward_that_does_not_start()
{
    in_vain = "started 3000";
    QVERIFY(!open("exit 0"));
    QCOMPARE(asked, (removal.first(2) + QStringList{read_write, "started 3000"}));
    QVERIFY(log->has("[AdbStringChannel] failed to start adb forward:"));
}

void test_adb_processes::a_forward_that_is_killed()
{
    in_vain = "finished 10000";
    QVERIFY(!open("[ \"$4\" = --remove ] || exec sleep 600"));
    QCOMPARE(asked, (removal +
                     QStringList{read_write, "started 3000", "finished 10000", "finished 3000"}));
    QVERIFY(log->has("[AdbStringChannel] adb forward timeout:"));
}

/// An address of either family is tried, also where the machine has none of it.
void test_adb_processes::a_host_of_any_family()
{
    for (const char* const host : {"127.0.0.1", "::1"}) {
        QVERIFY(!open("exit 0", QLatin1String(host)));
        QVERIFY(log->has("[AdbStringChannel] TCP connect failed:"));
        // What Qt says of an address that it leaves out.
        QVERIFY(!log->has("Host not found"));
    }
}

QTEST_GUILESS_MAIN(test_adb_processes)
#include "test_adb_processes.moc"
