#include "golden_memory.h"

#include "instrument/adb_daemon.h"
#include "instrument/adb_message.h"
#include "instrument/frame_responder.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QtEndian>

using namespace instrument;

namespace {

constexpr int patience = 20000; // ms

/// Answers each piece with the piece itself, `times` over.
class echo final : public protocol
{
public:
    explicit echo(int times) : m_times(times) {}
    QList<chunk> receive(QByteArrayView bytes) override
    {
        return {{bytes.toByteArray().repeated(m_times)}};
    }

private:
    int m_times;
};

/// The adb server's end of a connection, as far as a test needs one.
class host
{
public:
    explicit host(std::uint16_t port) { m_socket.connectToHost(QHostAddress::LocalHost, port); }

    void send(adb_command command, std::uint32_t argument0, std::uint32_t argument1,
              const QByteArray& payload = {})
    {
        m_socket.write(to_bytes({command, argument0, argument1, payload}));
    }
    void send_bytes(const QByteArray& bytes) { m_socket.write(bytes); }

    /// The next message, or one of no command when none comes.
    adb_message next()
    {
        adb_message message;
        const bool came = QTest::qWaitFor(
            [&] {
                m_buffer += m_socket.readAll();
                return take_adb_message(m_buffer, true, message) == adb_parse::whole;
            },
            patience);
        return came ? message : adb_message{};
    }

    adb_message introduce(std::uint32_t version = 0x01000001, std::uint32_t largest = 256 * 1024)
    {
        send(adb_command::connect, version, largest, "host::features=shell_v2");
        return next();
    }

    /// Opens the instrument's port. Returns the daemon's id of the stream, 0 if refused.
    std::uint32_t open(std::uint32_t id, const QByteArray& service = "tcp:12345")
    {
        send(adb_command::open, id, 0, service + '\0');
        const adb_message answer = next();
        return answer.command == adb_command::okay && answer.argument1 == id ? answer.argument0 : 0;
    }

    bool wait_for_the_end()
    {
        return QTest::qWaitFor(
            [this] { return m_socket.state() == QAbstractSocket::UnconnectedState; }, patience);
    }

    QTcpSocket& socket() { return m_socket; }

private:
    QTcpSocket m_socket;
    QByteArray m_buffer;
};

} // namespace

#define QCOMPARE_MESSAGE(message, wanted, first, second)                                           \
    do {                                                                                           \
        const adb_message compared = (message);                                                    \
        QCOMPARE(compared.command, (wanted));                                                      \
        QCOMPARE(compared.argument0, static_cast<std::uint32_t>(first));                           \
        QCOMPARE(compared.argument1, static_cast<std::uint32_t>(second));                          \
    } while (false)

class test_adb_daemon : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_daemon.reset(); }

    void messages_byte_for_byte();
    void broken_messages_data();
    void broken_messages();
    void a_message_in_pieces();
    void introduction_data();
    void introduction();
    void nothing_before_the_introduction();
    void a_conversation();
    void several_streams();
    void other_services_are_refused();
    void a_write_waits_for_the_last_ones_acknowledgement();
    void payloads_stay_below_the_hosts_limit();
    void a_closed_stream_is_gone();
    void a_broken_message_ends_the_connection();
    void it_announces_itself_until_somebody_connects();
    void it_announces_itself_again();
    void detaching();
    void a_taken_port();

private:
    void start(const protocol_factory& make_protocol, std::uint16_t server_port = 0);

    memory m_stored;
    std::unique_ptr<adb_daemon> m_daemon;
};

void test_adb_daemon::init()
{
    m_stored = golden::stored();
    start([this] {
        return std::make_unique<frame_responder>(m_stored, frame_identity{golden::token, 1});
    });
}

void test_adb_daemon::start(const protocol_factory& make_protocol, std::uint16_t server_port)
{
    m_daemon = std::make_unique<adb_daemon>(
        adb_settings{.port = 0, .device_port = 12345, .server_port = server_port}, make_protocol,
        nullptr);
    QString error;
    QVERIFY2(m_daemon->start(error), qPrintable(error));
}

void test_adb_daemon::messages_byte_for_byte()
{
    QCOMPARE(to_bytes({adb_command::connect, 0x01000000, 4096, QByteArray("host::\0", 7)}).toHex(),
             "434e584e00000001001000000700000032020000bcb1a7b1686f73743a3a00");
    QCOMPARE(to_bytes({adb_command::open, 7, 0, QByteArray("tcp:12345\0", 10)}).toHex(),
             "4f50454e07000000000000000a00000080020000b0afbab17463703a313233343500");
    QCOMPARE(to_bytes({adb_command::okay, 1, 7, {}}).toHex(),
             "4f4b415901000000070000000000000000000000b0b4bea6");
    QCOMPARE(to_bytes({adb_command::close, 0, 8, {}}).toHex(),
             "434c534500000000080000000000000000000000bcb3acba");
}

void test_adb_daemon::broken_messages_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("check");
    QTest::addColumn<int>("result");

    const QByteArray good = to_bytes({adb_command::write, 1, 2, "abc"});
    QByteArray complement = good;
    complement[20] = static_cast<char>(complement[20] ^ 1);
    QByteArray sum = good;
    sum[16] = static_cast<char>(sum[16] ^ 1);
    QByteArray large = good;
    qToLittleEndian(adb_largest_payload + 1, large.data() + 12);
    QByteArray old_connect = to_bytes({adb_command::connect, 0x01000000, 4096, "host::"});
    old_connect[16] = static_cast<char>(old_connect[16] ^ 1);

    const auto result = [](adb_parse value) { return static_cast<int>(value); };
    QTest::newRow("good") << good << true << result(adb_parse::whole);
    QTest::newRow("complement") << complement << false << result(adb_parse::broken);
    QTest::newRow("checksum") << sum << true << result(adb_parse::broken);
    QTest::newRow("checksum not looked at") << sum << false << result(adb_parse::whole);
    QTest::newRow("too large") << large << false << result(adb_parse::broken);
    QTest::newRow("checksum of an old host's introduction")
        << old_connect << false << result(adb_parse::broken);
    QTest::newRow("header cut") << good.first(23) << true << result(adb_parse::incomplete);
    QTest::newRow("payload cut") << good.chopped(1) << true << result(adb_parse::incomplete);
}

void test_adb_daemon::broken_messages()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, check);
    QFETCH(int, result);
    adb_message message;
    QByteArray buffer = bytes;
    QCOMPARE(static_cast<int>(take_adb_message(buffer, check, message)), result);
    QCOMPARE(buffer.isEmpty(), result == static_cast<int>(adb_parse::whole));
}

void test_adb_daemon::a_message_in_pieces()
{
    host peer(m_daemon->port());
    QVERIFY(QTest::qWaitFor(
        [&peer] { return peer.socket().state() == QAbstractSocket::ConnectedState; }, patience));
    for (const char byte : to_bytes({adb_command::connect, 0x01000001, 4096, "host::"})) {
        peer.send_bytes(QByteArray(1, byte));
        peer.socket().flush();
    }
    QCOMPARE(peer.next().command, adb_command::connect);
}

void test_adb_daemon::introduction_data()
{
    QTest::addColumn<quint32>("version");
    QTest::addColumn<quint32>("answered");
    QTest::newRow("oldest") << 0x01000000U << 0x01000000U;
    QTest::newRow("without checksum") << 0x01000001U << 0x01000001U;
    QTest::newRow("newer than known") << 0x01000002U << 0x01000001U;
}

void test_adb_daemon::introduction()
{
    QFETCH(quint32, version);
    QFETCH(quint32, answered);
    const QSignalSpy online(m_daemon.get(), &adb_daemon::online);
    host peer(m_daemon->port());
    const adb_message answer = peer.introduce(version);
    QCOMPARE_MESSAGE(answer, adb_command::connect, answered, 256 * 1024);
    QVERIFY(answer.payload.startsWith("device::"));
    QCOMPARE(online.size(), 1);
    QVERIFY(m_daemon->is_online());
}

void test_adb_daemon::nothing_before_the_introduction()
{
    host peer(m_daemon->port());
    peer.send(adb_command::open, 1, 0, QByteArray("tcp:12345\0", 10));
    // The first answer is that to the introduction.
    QCOMPARE(peer.introduce().command, adb_command::connect);
}

void test_adb_daemon::a_conversation()
{
    host peer(m_daemon->port());
    peer.introduce();
    const std::uint32_t id = peer.open(7);
    QVERIFY(id != 0);
    const QList<std::pair<QByteArray, QByteArray>> talk{
        {golden::probe, golden::probe_reply},    {golden::request, golden::first_head},
        {golden::request, golden::first_points}, {golden::request, golden::second_head},
        {golden::request, golden::end},
    };
    for (const auto& [question, answer] : talk) {
        peer.send(adb_command::write, 7, id, question);
        QCOMPARE_MESSAGE(peer.next(), adb_command::okay, id, 7);
        const adb_message message = peer.next();
        QCOMPARE_MESSAGE(message, adb_command::write, id, 7);
        QCOMPARE(message.payload, answer);
        peer.send(adb_command::okay, 7, id);
    }
    peer.send(adb_command::close, 7, id);
    QCOMPARE_MESSAGE(peer.next(), adb_command::close, id, 7);
}

void test_adb_daemon::several_streams()
{
    host peer(m_daemon->port());
    peer.introduce();
    const std::uint32_t first = peer.open(100);
    const std::uint32_t second = peer.open(200);
    QVERIFY(first != 0 && second != 0 && first != second);
    // Each stream reads from the beginning, whatever the other does.
    const auto ask = [&peer](std::uint32_t ours, std::uint32_t theirs) {
        peer.send(adb_command::write, ours, theirs, golden::request);
        peer.next();
        const QByteArray payload = peer.next().payload;
        peer.send(adb_command::okay, ours, theirs);
        return payload;
    };
    QCOMPARE(ask(100, first), golden::first_head);
    QCOMPARE(ask(200, second), golden::first_head);
    QCOMPARE(ask(200, second), golden::first_points);
    QCOMPARE(ask(100, first), golden::first_points);
}

void test_adb_daemon::other_services_are_refused()
{
    host peer(m_daemon->port());
    peer.introduce();
    for (const char* service : {"shell:", "tcp:12346", "tcp:123456", "sync:", ""}) {
        peer.send(adb_command::open, 9, 0, QByteArray(service) + '\0');
        QCOMPARE_MESSAGE(peer.next(), adb_command::close, 0, 9);
    }
    QVERIFY(peer.open(9) != 0);
}

void test_adb_daemon::a_write_waits_for_the_last_ones_acknowledgement()
{
    host peer(m_daemon->port());
    peer.introduce();
    const std::uint32_t id = peer.open(7);
    peer.send(adb_command::write, 7, id, golden::request + golden::request);
    QCOMPARE_MESSAGE(peer.next(), adb_command::okay, id, 7);
    QCOMPARE(peer.next().payload, golden::first_head);
    // The second answer is not there yet: what comes next is the answer to this.
    peer.send(adb_command::open, 8, 0, QByteArray("no\0", 3));
    QCOMPARE_MESSAGE(peer.next(), adb_command::close, 0, 8);
    peer.send(adb_command::okay, 7, id);
    QCOMPARE(peer.next().payload, golden::first_points);
}

void test_adb_daemon::payloads_stay_below_the_hosts_limit()
{
    start([] { return std::make_unique<echo>(3000); });
    host peer(m_daemon->port());
    peer.introduce(0x01000000, 4096);
    const std::uint32_t id = peer.open(7);
    peer.send(adb_command::write, 7, id, "abc");
    QCOMPARE(peer.next().command, adb_command::okay);
    QByteArray all;
    for (const int size : {4096, 4096, 9000 - 2 * 4096}) {
        const adb_message message = peer.next();
        QCOMPARE(message.payload.size(), size);
        all += message.payload;
        peer.send(adb_command::okay, 7, id);
    }
    QCOMPARE(all, QByteArray("abc").repeated(3000));
}

void test_adb_daemon::a_closed_stream_is_gone()
{
    host peer(m_daemon->port());
    peer.introduce();
    const std::uint32_t id = peer.open(7);
    peer.send(adb_command::close, 7, id);
    QCOMPARE_MESSAGE(peer.next(), adb_command::close, id, 7);
    // Late messages for it meet silence; the next answer is to the next stream.
    peer.send(adb_command::write, 7, id, golden::probe);
    peer.send(adb_command::okay, 7, id);
    peer.send(adb_command::close, 7, id);
    peer.send(adb_command::write, 7, 9999, golden::probe);
    const std::uint32_t next = peer.open(8);
    QVERIFY(next != 0 && next != id);
}

void test_adb_daemon::a_broken_message_ends_the_connection()
{
    const QSignalSpy offline(m_daemon.get(), &adb_daemon::offline);
    host peer(m_daemon->port());
    peer.introduce();
    peer.send_bytes(QByteArray(24, 'x'));
    QVERIFY(peer.wait_for_the_end());
    QTRY_COMPARE(offline.size(), 1);
    QVERIFY(!m_daemon->is_online());
    // and the next one finds everything in order
    host other(m_daemon->port());
    QCOMPARE(other.introduce().command, adb_command::connect);
}

void test_adb_daemon::it_announces_itself_until_somebody_connects()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    start([] { return std::make_unique<echo>(1); }, server.serverPort());
    QCOMPARE(m_daemon->serial_number(), QStringLiteral("emulator-%1").arg(m_daemon->port() - 1));

    const QByteArray text = "host:emulator:" + QByteArray::number(m_daemon->port());
    const QByteArray expected = QByteArray::number(text.size(), 16).rightJustified(4, '0') + text;
    for (int round = 0; round < 2; ++round) {
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), patience);
        const std::unique_ptr<QTcpSocket> client(server.nextPendingConnection());
        QTRY_COMPARE_WITH_TIMEOUT(client->state(), QAbstractSocket::UnconnectedState, patience);
        QCOMPARE(client->readAll(), expected);
    }
}

void test_adb_daemon::it_announces_itself_again()
{
    // The server is not there at first.
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const std::uint16_t port = server.serverPort();
    server.close();
    m_daemon = std::make_unique<adb_daemon>(
        adb_settings{.port = 0, .device_port = 12345, .server_port = port},
        [] { return std::make_unique<echo>(1); }, nullptr);
    QSignalSpy announced(m_daemon.get(), &adb_daemon::announced);
    QString error;
    QVERIFY(m_daemon->start(error));
    QTRY_COMPARE_WITH_TIMEOUT(announced.size(), 1, patience);
    QCOMPARE(announced.first().first().toBool(), false);

    for (int life = 0; life < 2; ++life) {
        QVERIFY(server.listen(QHostAddress::LocalHost, port));
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), patience);
        auto peer = std::make_unique<host>(m_daemon->port());
        QCOMPARE(peer->introduce().command, adb_command::connect);
        QVERIFY(m_daemon->is_online());
        server.close();
        peer.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!m_daemon->is_online(), patience);
    }
    QCOMPARE(announced.size(), 1);
}

void test_adb_daemon::detaching()
{
    const QSignalSpy offline(m_daemon.get(), &adb_daemon::offline);
    host peer(m_daemon->port());
    peer.introduce();
    const std::uint16_t port = m_daemon->port();
    m_daemon->detach();
    QVERIFY(peer.wait_for_the_end());
    QCOMPARE(offline.size(), 1);
    QTcpServer successor;
    QVERIFY(successor.listen(QHostAddress::LocalHost, port));
}

void test_adb_daemon::a_taken_port()
{
    adb_daemon other(
        {.port = m_daemon->port(), .device_port = 12345, .server_port = 0},
        [] { return std::make_unique<echo>(1); }, nullptr);
    QString error;
    QVERIFY(!other.start(error));
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(test_adb_daemon)
#include "test_adb_daemon.moc"
