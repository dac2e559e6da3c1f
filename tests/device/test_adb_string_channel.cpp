#include "adb_ground.h"
#include "device/adb_string_channel.h"
#include "device/frame.h"
#include "instrument/adb_daemon.h"
#include "instrument/frame_responder.h"
#include "instrument/sample_memory.h"
#include "support/asked_polls.h"
#include "support/log_capture.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <memory>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

/// Forward and socket of one Android instrument. The main road goes through the
/// real adb to a simulated instrument; what adb cannot be brought to is played by
/// a script.
class test_adb_string_channel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void names_of_signals_and_slots();
    void a_new_channel();
    void commands_of_adb();
    void forwards_and_talks();
    void a_taken_port_gives_way_to_the_next();
    void a_real_failure_gives_up_at_once();
    void all_ports_taken();
    void cannot_bind_in_any_case();
    void other_errors_stop_the_search();
    void adb_that_cannot_run();
    void adb_that_hangs();
    void a_removal_that_hangs();
    void nobody_behind_the_forward();
    void a_connection_that_takes_too_long();
    void an_open_channel_stays_as_it_is();
    void closing_once_and_for_all();
    void closing_before_opening();
    void a_broken_connection_closes();
    void a_wait_for_nothing_is_no_error();
    void received_bytes();
    void an_idle_channel_fills_no_memory();

private:
    void attach();
    std::unique_ptr<AdbStringChannel> make(const QString& adb, quint16 port = 12345);
    /// A channel through a script to a server of this test.
    std::unique_ptr<AdbStringChannel> make_connected();

    std::unique_ptr<adb_ground> ground;
    std::unique_ptr<log_capture> log;
    instrument::memory stored = instrument::sample_memory();
    std::unique_ptr<instrument::adb_daemon> daemon;
    std::unique_ptr<QTcpServer> server;
    QString serial;
};

void test_adb_string_channel::init()
{
    ground = std::make_unique<adb_ground>();
    log = std::make_unique<log_capture>();
    serial = "abc";
}

void test_adb_string_channel::cleanup()
{
    daemon.reset();
    server.reset();
    log.reset();
    ground.reset();
}

void test_adb_string_channel::attach()
{
    if (ground->adb().isEmpty())
        QSKIP("no adb on this machine");
    daemon = std::make_unique<instrument::adb_daemon>(
        instrument::adb_settings{.port = 0, .server_port = ground->server_port()},
        [this] { return std::make_unique<instrument::frame_responder>(stored); }, nullptr);
    QSignalSpy online(daemon.get(), &instrument::adb_daemon::online);
    QString error;
    QVERIFY2(daemon->start(error), qPrintable(error));
    ground->run({"start-server"});
    QTRY_COMPARE(online.size(), 1);
    serial = daemon->serial_number();
    QTRY_VERIFY(ground->run({"devices"}).contains(serial.toUtf8() + "\tdevice"));
}

std::unique_ptr<AdbStringChannel> test_adb_string_channel::make(const QString& adb, quint16 port)
{
    auto channel = std::make_unique<AdbStringChannel>("127.0.0.1", port, serial, adb);
    log->clear();
    return channel;
}

std::unique_ptr<AdbStringChannel> test_adb_string_channel::make_connected()
{
    server = std::make_unique<QTcpServer>();
    if (!server->listen(QHostAddress::LocalHost))
        qFatal("no free port");
    auto channel = make(ground->script("exit 0"), server->serverPort());
    if (!channel->open() || !server->waitForNewConnection(3000))
        qFatal("no connection");
    return channel;
}

void test_adb_string_channel::names_of_signals_and_slots()
{
    QStringList declared;
    const QMetaObject& meta = AdbStringChannel::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        declared += QString::fromLatin1(meta.method(at).methodSignature());
    QCOMPARE(declared, (QStringList{"stringReceived(char*)", "channelClosed()", "onReadyRead()",
                                    "onSocketError(QAbstractSocket::SocketError)"}));
}

void test_adb_string_channel::a_new_channel()
{
    const AdbStringChannel channel("127.0.0.1", 12345, "abc", "adb");
    QCOMPARE(channel.host, "127.0.0.1");
    QCOMPARE(channel.local_port, quint16{12345});
    QCOMPARE(AdbStringChannel::device_port, quint16{12345});
    QVERIFY(!channel.closing);
    QVERIFY(channel.socket == nullptr);
    QCOMPARE(log->texts(),
             (QStringList{"[AdbStringChannel \"abc\" ] created, target: \"127.0.0.1\" : 12345",
                          "[AdbStringChannel] adb path: \"adb\""}));
    for (const log_capture::line& line : log->lines())
        QCOMPARE(line.type, QtInfoMsg);
}

void test_adb_string_channel::commands_of_adb()
{
    const auto channel = make_connected();
    const QString port = QString::number(server->serverPort());
    QCOMPARE(ground->calls(), (QStringList{"-s abc forward --remove tcp:" + port,
                                           "-s abc forward tcp:" + port + " tcp:12345"}));
    QVERIFY(log->has("[AdbStringChannel] run: \"" + channel->adb_path +
                     "\" QList(\"-s\", \"abc\", \"forward\", \"tcp:" + port +
                     "\", \"tcp:12345\")"));
    ground->forget_calls();
    QStringList calls; // by the time when the end is told
    connect(channel.get(), &AdbStringChannel::channelClosed, this,
            [&] { calls = ground->calls(); });
    channel->close();
    QCOMPARE(calls, QStringList{"-s abc forward --remove tcp:" + port});
    QCOMPARE(ground->calls(), calls);
    // What a person who looks for a fault has to see, and what only a developer.
    for (const log_capture::line& line : log->lines()) {
        const bool told = line.text.contains("run:") || line.text.contains("TCP ready:") ||
                          line.text.endsWith("close");
        QCOMPARE(line.type, told ? QtInfoMsg : QtDebugMsg);
    }
}

void test_adb_string_channel::forwards_and_talks()
{
    attach();
    const auto channel = make(ground->adb());
    QVERIFY(channel->open());
    QCOMPARE(channel->local_port, quint16{12345});
    QVERIFY(ground->run({"forward", "--list"}).contains(serial.toUtf8() + " tcp:12345 tcp:12345"));
    const QStringList lines = log->texts();
    QVERIFY(lines.contains("[AdbStringChannel] adb forward ready, localPort: 12345 devicePort: "
                           "12345"));
    QVERIFY(lines.contains("[AdbStringChannel] TCP connected"));
    QVERIFY(lines.contains("[AdbStringChannel] TCP ready: \"127.0.0.1\" : 12345"));

    channel->socket->write(frame::build_frame(frame::reply, 0, QByteArray::fromHex("FFFFFFFF")));
    QTRY_COMPARE(channel->socket->bytesAvailable(), 13);
    QByteArray answer = channel->socket->readAll();
    QByteArray reply;
    QVERIFY(frame::extract_frame(answer, reply));

    QSignalSpy closed(channel.get(), &AdbStringChannel::channelClosed);
    channel->close();
    channel->close();
    QCOMPARE(closed.size(), 1);
    QVERIFY(!ground->run({"forward", "--list"}).contains("12345"));
}

void test_adb_string_channel::a_taken_port_gives_way_to_the_next()
{
    attach();
    QTcpServer other_program;
    QVERIFY(other_program.listen(QHostAddress::LocalHost, 12345));
    const auto channel = make(ground->adb());
    QVERIFY(channel->open());
    QCOMPARE(channel->local_port, quint16{22345});
    QCOMPARE(channel->socket->peerPort(), quint16{22345});
    QVERIFY(ground->run({"forward", "--list"}).contains(serial.toUtf8() + " tcp:22345 tcp:12345"));
    QVERIFY(log->has("[AdbStringChannel] adb forward failed, localPort: 12345 devicePort: 12345 "
                     "exitCode: 1 stderr: "));
    QVERIFY(log->has("cannot bind"));
    QVERIFY(log->has("[AdbStringChannel] adb forward ready, localPort: 22345 devicePort: 12345"));
    channel->socket->write(frame::build_frame(frame::reply, 0, QByteArray::fromHex("FFFFFFFF")));
    QTRY_COMPARE(channel->socket->bytesAvailable(), 13);
    channel->close();
}

void test_adb_string_channel::a_real_failure_gives_up_at_once()
{
    attach();
    serial = "no_such_device";
    const auto channel = make(ground->adb());
    QVERIFY(!channel->open());
    QCOMPARE(log->texts().filter("[AdbStringChannel] run:").size(), 1);
    QCOMPARE(log->texts().filter("adb forward failed").size(), 1);
    QVERIFY(channel->socket == nullptr);
    QVERIFY(!channel->closing);
}

void test_adb_string_channel::all_ports_taken()
{
    const auto channel = make(ground->script("[ \"$4\" = --remove ] && exit 1\n"
                                             "echo \"error: cannot bind $4\" >&2; exit 1"));
    QVERIFY(!channel->open());
    QStringList expected;
    for (const char* const port : {"12345", "22345", "32345", "42345", "52345", "54321"}) {
        expected += QStringLiteral("-s abc forward --remove tcp:%1").arg(port);
        expected += QStringLiteral("-s abc forward tcp:%1 tcp:12345").arg(port);
    }
    QCOMPARE(ground->calls(), expected);
    QCOMPARE(log->texts().last(), "[AdbStringChannel] no local adb forward port available, last "
                                  "stderr: \"error: cannot bind tcp:54321\\n\"");
    QCOMPARE(log->lines().last().type, QtWarningMsg);
    QCOMPARE(channel->local_port, quint16{12345});
    // It may be tried again.
    QVERIFY(!channel->open());
    QCOMPARE(ground->calls().size(), 24);
}

void test_adb_string_channel::cannot_bind_in_any_case()
{
    const auto channel = make(ground->script("echo CANNOT Bind >&2; exit 1"));
    QVERIFY(!channel->open());
    QCOMPARE(ground->calls().size(), 12);
}

void test_adb_string_channel::other_errors_stop_the_search()
{
    const auto channel = make(ground->script("echo device offline 离线 >&2; exit 7"));
    QVERIFY(!channel->open());
    QCOMPARE(ground->calls().size(), 2);
    QCOMPARE(log->texts().last(),
             "[AdbStringChannel] adb forward failed, localPort: 12345 devicePort: 12345 "
             "exitCode: 7 stderr: \"device offline 离线\\n\"");
    QCOMPARE(log->lines().last().type, QtWarningMsg);
}

void test_adb_string_channel::adb_that_cannot_run()
{
    const auto channel = make("adb"); // no such file here
    const QByteArray search_path = qgetenv("PATH");
    qputenv("PATH", "");
    QVERIFY(!channel->open());
    qputenv("PATH", search_path);
    const QRegularExpression line(R"(^\[AdbStringChannel\] failed to start adb forward: ".+"$)");
    QVERIFY(line.match(log->texts().last()).hasMatch());
    QCOMPARE(log->lines().last().type, QtWarningMsg);
    QCOMPARE(log->texts().filter("run:").size(), 1);
}

void test_adb_string_channel::adb_that_hangs()
{
    const auto channel = make(ground->script("[ \"$4\" = --remove ] && exit 0\nexec sleep 60"));
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(!channel->open());
    QVERIFY(elapsed.elapsed() >= 9500);
    QVERIFY(elapsed.elapsed() < 20000);
    // The last line: nothing is said about a program that still runs.
    QCOMPARE(log->texts().last(),
             "[AdbStringChannel] adb forward timeout: \"" + channel->adb_path +
                 "\" QList(\"-s\", \"abc\", \"forward\", \"tcp:12345\", \"tcp:12345\")");
    QCOMPARE(log->lines().last().type, QtWarningMsg);
    QCOMPARE(ground->calls().size(), 2);
}

void test_adb_string_channel::a_removal_that_hangs()
{
    server = std::make_unique<QTcpServer>();
    QVERIFY(server->listen(QHostAddress::LocalHost));
    const auto channel = make(ground->script("[ \"$4\" = --remove ] && exec sleep 60\nexit 0"),
                              server->serverPort());
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(channel->open()); // killed and forgotten
    QVERIFY(elapsed.elapsed() >= 2800);
    QVERIFY(elapsed.elapsed() < 20000);
    QVERIFY(!log->has("Destroyed while process"));
}

void test_adb_string_channel::nobody_behind_the_forward()
{
    quint16 port = 0;
    {
        QTcpServer gone;
        QVERIFY(gone.listen(QHostAddress::LocalHost));
        port = gone.serverPort();
    }
    const auto channel = make(ground->script("exit 0"), port);
    QVERIFY(!channel->open());
    QVERIFY(log->texts().last().startsWith("[AdbStringChannel] TCP connect failed:"));
    QVERIFY(channel->socket == nullptr);
    QCOMPARE(ground->calls().last(), "-s abc forward --remove tcp:" + QString::number(port));
    // The refusal is an error of the socket, and an error closes for good: a second
    // attempt on this channel cannot succeed.
    QVERIFY(log->has("[AdbStringChannel] socket error: QAbstractSocket::ConnectionRefusedError "
                     "message: "));
    QVERIFY(channel->closing);
    const qsizetype calls = ground->calls().size();
    QVERIFY(!channel->open());
    QCOMPARE(ground->calls().size(), calls);
}

/// Whoever listens there takes nobody in: its queue is full.
void test_adb_string_channel::a_connection_that_takes_too_long()
{
    const int listening = socket(AF_INET, SOCK_STREAM, 0);
    const auto close_listening = qScopeGuard([listening] { ::close(listening); });
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    QCOMPARE(bind(listening, reinterpret_cast<sockaddr*>(&address), size), 0);
    QCOMPARE(listen(listening, 0), 0);
    QCOMPARE(getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const quint16 port = ntohs(address.sin_port);
    QList<QTcpSocket*> queue;
    const auto leave_queue = qScopeGuard([&queue] { qDeleteAll(queue); });
    do {
        queue += new QTcpSocket;
        queue.last()->connectToHost("127.0.0.1", port);
    } while (queue.last()->waitForConnected(500) && queue.size() < 50);
    if (queue.size() == 50)
        QSKIP("the queue never fills on this system");

    const auto channel = make(ground->script("exit 0"), port);
    QElapsedTimer elapsed;
    elapsed.start();
    forget_asked_polls();
    QVERIFY(!channel->open());
    QVERIFY(elapsed.elapsed() >= 2800);
    QVERIFY(std::ranges::max(asked_polls()) <= 3000);
    QVERIFY(log->texts().last().startsWith("[AdbStringChannel] TCP connect failed: \""));
    QCOMPARE(log->lines().last().type, QtWarningMsg);
    QVERIFY(channel->socket == nullptr);
    QCOMPARE(ground->calls().last(), "-s abc forward --remove tcp:" + QString::number(port));
    // Unlike a refusal this closes nothing: it may be tried again.
    QVERIFY(!channel->closing);
}

void test_adb_string_channel::an_open_channel_stays_as_it_is()
{
    const auto channel = make_connected();
    const QTcpSocket* const socket = channel->socket;
    QCOMPARE(socket->parent(), channel.get());
    ground->forget_calls();
    QVERIFY(channel->open());
    QVERIFY(ground->calls().isEmpty());
    QCOMPARE(channel->socket, socket);
    // While it closes the connection still counts.
    channel->closing = true;
    QVERIFY(channel->open());
    channel->closing = false;
}

void test_adb_string_channel::closing_once_and_for_all()
{
    const auto channel = make_connected();
    QSignalSpy closed(channel.get(), &AdbStringChannel::channelClosed);
    channel->close();
    channel->close();
    QCOMPARE(closed.size(), 1);
    QCOMPARE(log->texts().filter("[AdbStringChannel] close").size(), 1);
    QVERIFY(channel->closing);
    QVERIFY(channel->socket == nullptr);
    ground->forget_calls();
    QVERIFY(!channel->open());
    QVERIFY(ground->calls().isEmpty());
}

void test_adb_string_channel::closing_before_opening()
{
    const auto channel = make(ground->script("exit 0"));
    QSignalSpy closed(channel.get(), &AdbStringChannel::channelClosed);
    channel->close();
    QVERIFY(closed.isEmpty());
    QVERIFY(channel->closing);
    QVERIFY(!channel->open());
    QVERIFY(ground->calls().isEmpty());
    QVERIFY(log->texts().isEmpty());
}

void test_adb_string_channel::a_broken_connection_closes()
{
    const auto channel = make_connected();
    QSignalSpy closed(channel.get(), &AdbStringChannel::channelClosed);
    server->nextPendingConnection()->disconnectFromHost();
    QTRY_COMPARE(closed.size(), 1);
    const qsizetype told = log->texts().indexOf(
        "[AdbStringChannel] socket error: QAbstractSocket::RemoteHostClosedError message: "
        "\"The remote host closed the connection\"");
    QVERIFY(told >= 0);
    QCOMPARE(log->lines()[told].type, QtWarningMsg);
    QVERIFY(channel->socket == nullptr);
    channel->onSocketError(QAbstractSocket::NetworkError); // acts no more
    QCOMPARE(log->texts().filter("socket error").size(), 1);
}

void test_adb_string_channel::a_wait_for_nothing_is_no_error()
{
    const auto channel = make_connected();
    QSignalSpy closed(channel.get(), &AdbStringChannel::channelClosed);
    QVERIFY(!channel->socket->waitForReadyRead(50));
    QCOMPARE(channel->socket->error(), QAbstractSocket::SocketTimeoutError);
    QVERIFY(closed.isEmpty());
    QVERIFY(channel->socket != nullptr);
    QVERIFY(!log->has("socket error"));
}

void test_adb_string_channel::received_bytes()
{
    const auto channel = make_connected();
    QByteArray received;
    connect(channel.get(), &AdbStringChannel::stringReceived, this,
            [&received](const char* text) { received += text; });
    server->nextPendingConnection()->write("hello");
    QTRY_COMPARE(channel->socket->bytesAvailable(), 5);
    // Nothing is connected to the slot.
    QVERIFY(received.isEmpty());
    channel->onReadyRead();
    QCOMPARE(received, "hello");
    channel->close();
    channel->onReadyRead();
    QCOMPARE(received, "hello");
}

void test_adb_string_channel::an_idle_channel_fills_no_memory()
{
    const auto channel = make_connected();
    QTcpSocket* const instrument = server->nextPendingConnection();
    instrument->write(QByteArray(16 << 20, 'Z'));
    QTRY_COMPARE(channel->socket->bytesAvailable(), 1 << 20);
    QSignalSpy written(instrument, &QTcpSocket::bytesWritten);
    // What the system between them does not hold stays with its sender.
    while (written.wait(200)) {
    }
    QVERIFY(instrument->bytesToWrite() > 0);
    QCOMPARE(channel->socket->bytesAvailable(), 1 << 20);
}

QTEST_GUILESS_MAIN(test_adb_string_channel)
#include "test_adb_string_channel.moc"
