#include "adb_ground.h"
#include "device/adb_string_channel.h"
#include "device/serial_thread.h"
#include "instrument/adb_daemon.h"
#include "instrument/frame_responder.h"
#include "instrument/sample_memory.h"
#include "support/asked_waits.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

const QString attached_box = "box 串口 安卓设备已连接";

} // namespace

/// The life of the Android channel in serial_thread: from adb's list of devices
/// to a whole read, and every way of losing it.
class test_android_link : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void a_real_instrument_from_cable_to_cable();
    void attaching();
    void a_second_attempt_that_succeeds_does_nothing();
    void a_second_attempt_that_fails_gives_up();
    void detached_before_the_first_attempt();
    void detached_before_the_second_attempt();
    void another_device_takes_the_place();
    void a_lost_channel_is_not_tried_again();
    void lost_during_a_read();
    void lost_while_the_box_is_shown();
    void detached_while_up();

private:
    void make_reader();
    /// A script in place of adb whose `body` runs for "forward" with two ports.
    void use_script(const QByteArray& body);
    /// Listens where the forward would.
    void listen();
    [[nodiscard]] qsizetype attempts() const;

    std::unique_ptr<adb_ground> ground;
    std::unique_ptr<log_capture> log;
    std::unique_ptr<serial_thread> reader;
    std::unique_ptr<box_watcher> watcher;
    std::unique_ptr<QTcpServer> server;
    instrument::memory stored = instrument::sample_memory();
    std::function<void()> when_boxed;
    QStringList events;
};

void test_android_link::init()
{
    ground = std::make_unique<adb_ground>();
    log = std::make_unique<log_capture>();
    watcher = std::make_unique<box_watcher>();
    watcher->look = [this](QMessageBox* box) {
        events += "box " + box->windowTitle() + " " + box->text();
        if (when_boxed)
            when_boxed();
    };
    when_boxed = nullptr;
    events.clear();
}

void test_android_link::cleanup()
{
    reader.reset();
    server.reset();
    watcher.reset();
    log.reset();
    ground.reset();
}

void test_android_link::make_reader()
{
    reader = std::make_unique<serial_thread>();
    reader->available_ports = [] { return QList<serial_thread::listed_port>(); };
    connect(reader.get(), &serial_thread::LED_2_control, this, [this](bool on) {
        events += QStringLiteral("LED2 %1, connected %2").arg(on).arg(reader->android_connected);
    });
    connect(reader.get(), &serial_thread::adbchannel_in, this, [this](AdbStringChannel* channel) {
        const bool ready = channel == reader->channel && reader->android_connected == 1;
        events += channel != nullptr && ready ? "in" : "in, but another";
    });
    connect(reader.get(), &serial_thread::adbchannel_out, this, [this](AdbStringChannel* channel) {
        events += QStringLiteral("out %1, connected %2")
                      .arg(channel == nullptr ? "null" : "channel")
                      .arg(reader->android_connected);
    });
    connect(reader.get(), &serial_thread::button_control, this,
            [this](bool on) { events += QStringLiteral("button %1").arg(on); });
}

void test_android_link::use_script(const QByteArray& body)
{
    const QByteArray search_path = qgetenv("PATH");
    qputenv("PATH", ""); // the watcher finds no adb; the slots are called by hand
    make_reader();
    qputenv("PATH", search_path);
    reader->adb_manager.adb_path = ground->script("[ \"$4\" = --remove ] && exit 0\n" + body);
    log->clear();
}

void test_android_link::listen()
{
    server = std::make_unique<QTcpServer>();
    QVERIFY(server->listen(QHostAddress::LocalHost, 12345));
}

qsizetype test_android_link::attempts() const
{
    return ground->calls().filter("forward tcp:").size();
}

void test_android_link::a_real_instrument_from_cable_to_cable()
{
    if (ground->adb().isEmpty())
        QSKIP("no adb on this machine");
    const auto protocol = [this] { return std::make_unique<instrument::frame_responder>(stored); };
    const auto plug_in = [&] {
        auto daemon = std::make_unique<instrument::adb_daemon>(
            instrument::adb_settings{.port = 0, .server_port = ground->server_port()}, protocol,
            nullptr);
        QString error;
        if (!daemon->start(error))
            qFatal("%s", qPrintable(error));
        return daemon;
    };
    make_reader();
    auto daemon = plug_in();
    QTRY_COMPARE_WITH_TIMEOUT(events, (QStringList{"LED2 1, connected 0", attached_box, "in"}),
                              15000);
    QCOMPARE(reader->android_connected, 1);
    QCOMPARE(reader->channel->device_serial, daemon->serial_number());

    // The whole memory, point by point.
    reader->recv_cmd_from_key(1, {}, {}, {}, {});
    QTRY_COMPARE_WITH_TIMEOUT(events.last(), "box 数据读取 数据读取成功", 60000);
    QCOMPARE(reader->table_list.size(), stored.size());
    QCOMPARE(reader->data_msg_altitude.size(), stored.size());
    for (qsizetype index = 0; index < stored.size(); ++index) {
        const instrument::stored_measurement& sent = stored[index];
        const measuringData& record = reader->table_list[index];
        QCOMPARE(record.id, QString::number(sent.identity));
        QCOMPARE(record.time, sent.start.toString("yyyy-M-d h:m:s"));
        QCOMPARE(record.numrecord, QString::number(stored.size()));
        const QStringList lines = reader->data_msg_altitude[index].split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), sent.points.size());
        QCOMPARE(reader->point_msg_all[index].size(), sent.points.size());
        for (qsizetype at = 0; at < lines.size(); ++at) {
            const QStringList numbers = lines[at].split(',');
            QCOMPARE(qRound(numbers[0].toDouble() * 1e7), sent.points[at].longitude);
            QCOMPARE(qRound(numbers[1].toDouble() * 1e7), sent.points[at].latitude);
            QCOMPARE(qRound(numbers[2].toDouble() * 100), sent.points[at].altitude);
        }
    }

    // The cable is pulled. The connection breaks before adb's list tells of it.
    events.clear();
    daemon->detach();
    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_VERIFY(events.contains("out null, connected 1"));
    QVERIFY(events.contains("LED2 0, connected 1"));
    QVERIFY(elapsed.elapsed() < 3000);
    QTRY_VERIFY(log->has(" 已断开 "));
    QVERIFY(reader->channel == nullptr);
    QCOMPARE(reader->android_connected, 0);

    events.clear();
    daemon = plug_in();
    QTRY_COMPARE_WITH_TIMEOUT(events, (QStringList{"LED2 1, connected 0", attached_box, "in"}),
                              15000);
}

void test_android_link::attaching()
{
    use_script("exit 0");
    listen();
    reader->onDeviceAttached("abc");
    QCOMPARE(
        log->texts(),
        (QStringList{"已连接  \"abc\"",
                     "[AdbStringChannel \"abc\" ] created, target: \"127.0.0.1\" : 12345",
                     "[AdbStringChannel] adb path: \"" + reader->adb_manager.adb_path + "\""}));
    QVERIFY(reader->channel != nullptr);
    QCOMPARE(reader->channel->parent(), reader.get());
    QVERIFY(reader->channel->socket == nullptr);
    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_COMPARE(events, (QStringList{"LED2 1, connected 0", attached_box, "in"}));
    QVERIFY(elapsed.elapsed() >= 900);
    QCOMPARE(reader->android_connected, 1);
}

void test_android_link::a_second_attempt_that_succeeds_does_nothing()
{
    use_script("[ -e '" + ground->path("failed").toLocal8Bit() + "' ] && exit 0\ntouch '" +
               ground->path("failed").toLocal8Bit() + "'; exit 1");
    listen();
    asked_single_shots().clear();
    reader->onDeviceAttached("abc");
    QTRY_VERIFY(log->texts().contains("首次连接失败，2秒后重试"));
    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_VERIFY(log->has("[AdbStringChannel] TCP ready:"));
    QVERIFY(elapsed.elapsed() >= 1500);
    QCOMPARE(asked_single_shots(), (QList<int>{1000, 2000}));
    QCOMPARE(attempts(), 2);
    // The socket is open, and nobody is told.
    QVERIFY(reader->channel->socket != nullptr);
    QVERIFY(events.isEmpty());
    QCOMPARE(reader->android_connected, 0);
    reader->recv_cmd_from_key(1, {}, {}, {}, {});
    QCOMPARE(events, QStringList{"box 警告 串口未连接"});
    // Nor that it is lost.
    events.clear();
    QSignalSpy closed(reader->channel, &AdbStringChannel::channelClosed);
    QVERIFY(server->hasPendingConnections() || server->waitForNewConnection(3000));
    server->nextPendingConnection()->abort();
    QTRY_COMPARE(closed.size(), 1);
    QVERIFY(events.isEmpty());
    QVERIFY(reader->channel != nullptr);
}

void test_android_link::a_second_attempt_that_fails_gives_up()
{
    use_script("exit 1");
    reader->onDeviceAttached("abc");
    QTRY_VERIFY(log->texts().contains("重试连接失败，放弃"));
    QCOMPARE(events, (QStringList{"LED2 0, connected 0", "out channel, connected 0"}));
    QVERIFY(reader->channel != nullptr); // it stays, unused
    QCOMPARE(reader->android_connected, 0);
    QCOMPARE(attempts(), 2);
}

void test_android_link::detached_before_the_first_attempt()
{
    use_script("exit 0");
    reader->onDeviceAttached("abc");
    const QPointer<AdbStringChannel> channel = reader->channel;
    reader->onDeviceDetached("abc");
    QCOMPARE(events, (QStringList{"LED2 0, connected 0", "out null, connected 0"}));
    QVERIFY(reader->channel == nullptr);
    QTRY_VERIFY(channel.isNull());
    // Its attempt has gone with it: the next device gets one of its own.
    listen();
    reader->onDeviceAttached("def");
    QTRY_VERIFY(events.contains("in"));
    QCOMPARE(attempts(), 1);
    QVERIFY(ground->calls().last().startsWith("-s def"));
}

void test_android_link::detached_before_the_second_attempt()
{
    use_script("exit 1");
    reader->onDeviceAttached("abc");
    QTRY_VERIFY(log->texts().contains("首次连接失败，2秒后重试"));
    reader->onDeviceDetached("abc");
    events.clear();
    bool later = false;
    QTimer::singleShot(2500, this, [&later] { later = true; });
    QTRY_VERIFY(later);
    QCOMPARE(attempts(), 1);
    QVERIFY(events.isEmpty());
}

void test_android_link::another_device_takes_the_place()
{
    use_script("exit 0");
    listen();
    reader->onDeviceAttached("abc");
    const QPointer<AdbStringChannel> first = reader->channel;
    reader->onDeviceAttached("def");
    QVERIFY(reader->channel != first);
    QTRY_VERIFY(events.contains("in"));
    QVERIFY(first.isNull());
    QCOMPARE(reader->channel->device_serial, "def");
    QCOMPARE(attempts(), 1);
}

void test_android_link::a_lost_channel_is_not_tried_again()
{
    use_script("exit 0");
    listen();
    reader->onDeviceAttached("abc");
    QTRY_VERIFY(events.contains("in"));
    const QPointer<AdbStringChannel> channel = reader->channel;
    events.clear();
    QVERIFY(server->hasPendingConnections() || server->waitForNewConnection(3000));
    server->nextPendingConnection()->abort();
    QTRY_COMPARE(events, (QStringList{"LED2 0, connected 1", "out null, connected 1"}));
    QVERIFY(log->texts().contains("通道已关闭，尝试重新连接"));
    QVERIFY(reader->channel == nullptr);
    QCOMPARE(reader->android_connected, 0);
    QTRY_VERIFY(channel.isNull());
    bool later = false;
    QTimer::singleShot(3500, this, [&later] { later = true; });
    QTRY_VERIFY(later);
    QCOMPARE(attempts(), 1);
}

void test_android_link::lost_during_a_read()
{
    use_script("exit 0");
    listen();
    connect(server.get(), &QTcpServer::newConnection, this, [this] {
        QTcpSocket* const instrument = server->nextPendingConnection();
        connect(instrument, &QTcpSocket::readyRead, instrument, [instrument] {
            // The probe is answered; the request for the export breaks the line.
            if (instrument->readAll().at(1) == 0)
                instrument->write(QByteArray::fromHex("5A00070000060102030400000000"));
            else
                instrument->abort();
        });
    });
    reader->onDeviceAttached("abc");
    QTRY_VERIFY(events.contains("in"));
    events.clear();
    QTimer::singleShot(0, this, [this] { reader->recv_cmd_from_key(1, {}, {}, {}, {}); });
    QTRY_COMPARE(events, (QStringList{"button 0", "LED2 0, connected 1", "out null, connected 1",
                                      "button 1", "box 数据读取 数据读取失败，请重新读取"}));
    QVERIFY(reader->channel == nullptr);
}

void test_android_link::lost_while_the_box_is_shown()
{
    use_script("exit 0");
    listen();
    when_boxed = [this] {
        when_boxed = nullptr;
        reader->onDeviceDetached("abc");
    };
    reader->onDeviceAttached("abc");
    QTRY_COMPARE(events, (QStringList{"LED2 1, connected 0", attached_box, "LED2 0, connected 0",
                                      "out null, connected 0", "LED2 0, connected 0",
                                      "out null, connected 0"}));
    QVERIFY(reader->channel == nullptr);
    // A channel that is no more is not announced once the box is answered.
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(reader->android_connected, 0);
    QVERIFY(!events.contains("in"));
}

void test_android_link::detached_while_up()
{
    use_script("exit 0");
    listen();
    reader->onDeviceAttached("abc");
    QTRY_VERIFY(events.contains("in"));
    events.clear();
    reader->onDeviceDetached("abc");
    // Closing tells of the loss, and the slot tells again.
    QCOMPARE(events, (QStringList{"LED2 0, connected 1", "out null, connected 1",
                                  "LED2 0, connected 0", "out null, connected 0"}));
    QCOMPARE(ground->calls().last(), "-s abc forward --remove tcp:12345");
}

QTEST_MAIN(test_android_link)
#include "test_android_link.moc"
