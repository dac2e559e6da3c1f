#include "device/frame.h"
#include "support/adb_server.h"
#include "support/instrument_process.h"
#include "updates/ymodem.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSerialPort>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int patience = 30000; // ms

/// One frame from the device, empty when none comes.
QByteArray next_frame(QIODevice& device)
{
    QByteArray buffer;
    QByteArray frame;
    while (!frame::extract_frame(buffer, frame)) {
        if (device.bytesAvailable() == 0 && !device.waitForReadyRead(patience))
            return {};
        buffer += device.readAll();
    }
    return frame;
}

QString packed_time(const QByteArray& frame, qsizetype at)
{
    const QByteArray digits = frame.sliced(at, 6).toHex();
    return QStringLiteral("20%1-%2-%3T%4:%5:%6")
        .arg(digits.sliced(0, 2), digits.sliced(2, 2), digits.sliced(4, 2), digits.sliced(6, 2),
             digits.sliced(8, 2), digits.sliced(10, 2));
}

QJsonArray points_of(const QByteArray& frame)
{
    QJsonArray points;
    for (qsizetype at = 10; at + 19 < frame.size(); at += 19) {
        const auto number = [&frame, at](qsizetype offset) {
            return static_cast<int>(frame::read_u32(frame, at + offset));
        };
        points.append(QJsonArray{number(0), number(4), number(8), frame::read_u8(frame, at + 12),
                                 frame::read_u16(frame, at + 13), frame::read_u16(frame, at + 15),
                                 frame::read_u8(frame, at + 17), frame::read_u8(frame, at + 18)});
    }
    return points;
}

/// The whole memory read through the frame protocol, in the form of --json
/// without the names of the kinds; empty when the conversation fails.
QJsonArray read_memory(QIODevice& device)
{
    device.write(frame::build_frame(frame::reply, 0, QByteArray(4, '\xFF')));
    const QByteArray reply = next_frame(device);
    if (reply.size() != 13 || reply.sliced(10, 2) != QByteArray(2, '\0'))
        return {};
    const QByteArray request = frame::build_frame(frame::export_request, 0, reply.sliced(6, 4));

    QJsonArray all;
    QJsonObject current;
    for (;;) {
        device.write(request);
        const QByteArray line = next_frame(device);
        if (line.isEmpty())
            return {};
        if (frame::read_u8(line, 1) == frame::measurement_points) {
            QJsonArray points = current[u"points"].toArray();
            for (const QJsonValue& point : points_of(line))
                points.append(point);
            current[u"points"] = points;
            continue;
        }
        if (!current.isEmpty())
            all.append(current);
        if (frame::read_u8(line, 1) == frame::reply)
            return line.sliced(10, 2) == QByteArray::fromHex("2D00") ? all : QJsonArray();
        current = {
            {"identity", static_cast<qint64>(frame::read_u32(line, 6))},
            {"area", static_cast<qint64>(frame::read_u32(line, 14))},
            {"length", static_cast<qint64>(frame::read_u32(line, 18))},
            {"kind", frame::read_u8(line, 22)},
            {"start", packed_time(line, 23)},
            {"end", packed_time(line, 29)},
            {"time_zone", frame::read_u8(line, 37)},
            {"mode", frame::read_u8(line, 38)},
            {"width", frame::read_u8(line, 39)},
            {"price", frame::read_u8(line, 40)},
            {"currency", frame::read_u8(line, 41)},
            {"points", QJsonArray()},
        };
    }
}

QJsonArray printed_memory(const QStringList& arguments = {})
{
    const auto result = instrument_process::run(QStringList{"--json"} + arguments);
    QJsonArray all;
    for (const QJsonValue& one : QJsonDocument::fromJson(result.output).array()) {
        QJsonObject measured = one.toObject();
        measured.remove("kind_name");
        all.append(measured);
    }
    return all;
}

} // namespace

class test_velmo_instrument : public QObject
{
    Q_OBJECT

private slots:
    void help();
    void wrong_command_lines_data();
    void wrong_command_lines();
    void a_taken_port();
    void list();
    void a_read_over_the_pseudo_terminal();
    void an_upgrade_over_the_pseudo_terminal_data();
    void an_upgrade_over_the_pseudo_terminal();
    void it_ends_on_a_signal_and_takes_its_link_along();
    void a_read_through_adb();
    void a_server_that_starts_later_and_again();
    void detaching();
};

void test_velmo_instrument::help()
{
    const auto result = instrument_process::run({"--help"});
    QCOMPARE(result.exit_code, 0);
    for (const char* word : {"--adb-port <port>", "--pty", "--link <path>", "--fault <fault>",
                             "ANDROID_ADB_SERVER_PORT", "flip-bit=BIT", "points-first"}) {
        QVERIFY2(result.output.contains(word), word);
    }
}

void test_velmo_instrument::wrong_command_lines_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    using strings = QStringList;
    QTest::newRow("nothing") << strings{}
                             << QByteArray("say --adb, --pty or both; --help explains");
    QTest::newRow("unknown") << strings{"--smoke"} << QByteArray("Unknown option 'smoke'.");
    QTest::newRow("a word") << strings{"tty"} << QByteArray("unexpected \"tty\"");
    QTest::newRow("fault") << strings{"--pty", "--fault", "smoke"}
                           << QByteArray("there is no fault \"smoke\"");
    QTest::newRow("port") << strings{"--adb", "--adb-port", "70000"}
                          << QByteArray("--adb-port takes a number from 0 to 65535, not \"70000\"");
    QTest::newRow("speed") << strings{"--pty", "--baud", "12345"}
                           << QByteArray("a serial port has no speed of 12345 baud");
    QTest::newRow("token") << strings{"--pty", "--token", "1234"}
                           << QByteArray("--token takes eight hexadecimal digits");
    QTest::newRow("block") << strings{"--pty", "--refuse-block", "0"}
                           << QByteArray(
                                  "--refuse-block takes a number from 1 to 65535, not \"0\"");
    QTest::newRow("log") << strings{"--pty", "--log", "/nowhere/log"}
                         << QByteArray("cannot write /nowhere/log: No such file or directory");
}

void test_velmo_instrument::wrong_command_lines()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    const auto result = instrument_process::run(arguments);
    QCOMPARE(result.exit_code, 1);
    QCOMPARE(result.error, "velmo_instrument: " + message + "\n");
    QCOMPARE(result.output, QByteArray());
}

void test_velmo_instrument::a_taken_port()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QString port = QString::number(server.serverPort());
    QTemporaryDir folder;
    const QString link = folder.filePath("tty");
    const auto result = instrument_process::run(
        {"--pty", "--link", link, "--adb", "--adb-port", port, "--adb-server-port", "0"});
    QCOMPARE(result.exit_code, 1);
    QVERIFY(result.error.startsWith(
        "velmo_instrument: cannot listen on 127.0.0.1:" + port.toLatin1() + ": "));
    QVERIFY(!QFileInfo(link).isSymLink());
}

void test_velmo_instrument::list()
{
    const auto usual = instrument_process::run({"--list"});
    QCOMPARE(usual.exit_code, 0);
    QCOMPARE(usual.output.count('\n'), 18);
    QCOMPARE(printed_memory().size(), 17);
    QVERIFY(printed_memory({"--seed", "1"}) != printed_memory({"--seed", "2"}));
    const QJsonArray made_up = printed_memory({"--measurements", "5", "--points", "9"});
    QCOMPARE(made_up.size(), 5);
    QCOMPARE(made_up.first()[u"points"].toArray().size(), 9);
}

void test_velmo_instrument::a_read_over_the_pseudo_terminal()
{
    instrument_process device;
    QVERIFY(device.start({"--pty"}));
    QCOMPARE(device.output(),
             QStringLiteral("serial: %1 at 115200 baud\n").arg(device.serial_path()));
    QSerialPort port(device.serial_path());
    port.setBaudRate(115200);
    QVERIFY(port.open(QIODevice::ReadWrite));
    QCOMPARE(read_memory(port), printed_memory());
    port.close();
    QCOMPARE(device.stop(), 0);
}

void test_velmo_instrument::an_upgrade_over_the_pseudo_terminal_data()
{
    QTest::addColumn<QStringList>("spoken");
    QTest::newRow("frames") << QStringList();
    QTest::newRow("text") << QStringList{"--text", "short"};
}

void test_velmo_instrument::an_upgrade_over_the_pseudo_terminal()
{
    QFETCH(QStringList, spoken);
    const QTemporaryDir folder;
    const QString kept = folder.filePath("firmware");
    instrument_process device;
    QVERIFY(device.start(QStringList{"--pty", "--keep-firmware", kept, "--refuse-block", "2",
                                     "--firmware-version", "G7", "--version-without-zero"} +
                         spoken));
    QSerialPort port(device.serial_path());
    port.setBaudRate(115200);
    QVERIFY(port.open(QIODevice::ReadWrite));
    port.write("version");
    QByteArray version;
    while (version.size() < 2 && port.waitForReadyRead(patience))
        version += port.readAll();
    QCOMPARE(version, QByteArray("G7"));

    const QByteArray image(3000, 'f');
    ymodem::sender from(QStringLiteral("new.bin"), image);
    ymodem::sender::step step;
    int sent = 0;
    port.write("iapstart");
    while (step.goes_on) {
        char byte = 0;
        QVERIFY(port.bytesAvailable() > 0 || port.waitForReadyRead(patience));
        QCOMPARE(port.read(&byte, 1), 1);
        step = from.take(byte);
        sent += step.send.isEmpty() ? 0 : 1;
        port.write(step.send);
    }
    QCOMPARE(step.what, ymodem::sender::event::finished);
    QCOMPARE(sent, 1 + 3 + 1 + 2 + 1); // one block was refused
    QTRY_VERIFY(device.output().contains(
        "firmware: \"new.bin\", 3000 bytes, SHA-256 " +
        QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex()));
    QFile file(kept);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), image);
    // And the memory can still be read.
    if (spoken.isEmpty()) {
        QCOMPARE(read_memory(port), printed_memory());
        return;
    }
    port.write("~\r\n");
    QByteArray text;
    while (text.count('!') < 17 && port.waitForReadyRead(patience))
        text += port.readAll();
    QCOMPARE(text.count('!'), 17);
}

void test_velmo_instrument::it_ends_on_a_signal_and_takes_its_link_along()
{
    QTemporaryDir folder;
    const QString link = folder.filePath("tty");
    instrument_process device;
    QVERIFY(device.start({"--pty", "--baud", "9600", "--link", link}));
    QVERIFY(device.output().endsWith(QStringLiteral(" at 9600 baud\n")));
    QSerialPort port(link);
    port.setBaudRate(9600);
    QVERIFY(port.open(QIODevice::ReadWrite));
    QVERIFY(!read_memory(port).isEmpty());
    QCOMPARE(device.stop(), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
}

void test_velmo_instrument::a_read_through_adb()
{
    adb_server server;
    QVERIFY(server.start());
    instrument_process device;
    QVERIFY(device.start({"--adb", "--adb-port", "0", "--device-port", "23456"}));
    const QString serial = device.adb_serial();
    QVERIFY(serial.startsWith(QStringLiteral("emulator-")));
    QTRY_COMPARE_WITH_TIMEOUT(server.state_of(serial), QStringLiteral("device"), patience);
    QVERIFY(device.output().contains(
        QStringLiteral("announced to server port %1\n").arg(server.port())));

    const QString local = server.run({"-s", serial, "forward", "tcp:0", "tcp:23456"});
    // Two clients one after the other: each has a stream of its own.
    for (int client = 0; client < 2; ++client) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, local.toUShort());
        QVERIFY(socket.waitForConnected(patience));
        QCOMPARE(read_memory(socket), printed_memory());
    }

    // Another port of the device is closed.
    const QString closed = server.run({"-s", serial, "forward", "tcp:0", "tcp:23457"});
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, closed.toUShort());
    QVERIFY(socket.waitForConnected(patience));
    QVERIFY(socket.state() == QAbstractSocket::UnconnectedState ||
            socket.waitForDisconnected(patience));
}

void test_velmo_instrument::a_server_that_starts_later_and_again()
{
    adb_server server;
    instrument_process device;
    QVERIFY(device.start({"--adb", "--adb-port", "0"}));
    QVERIFY(device.output().contains(
        QStringLiteral(", waiting for a server at port %1\n").arg(server.port())));
    for (int life = 0; life < 2; ++life) {
        QVERIFY(server.start());
        QTRY_COMPARE_WITH_TIMEOUT(server.state_of(device.adb_serial()), QStringLiteral("device"),
                                  patience);
        server.kill();
    }
    QCOMPARE(device.stop(), 0);
}

void test_velmo_instrument::detaching()
{
    adb_server server;
    QVERIFY(server.start());
    instrument_process device;
    QVERIFY(device.start({"--adb", "--adb-port", "0", "--detach-after", "0"}));
    const QString serial = device.adb_serial();
    const auto printed = [&device] {
        return device.output().endsWith(QStringLiteral("adb: connected\nadb: disconnected\n"));
    };
    QTRY_VERIFY_WITH_TIMEOUT(printed(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(server.state_of(serial), QString(), patience);
    QCOMPARE(device.stop(), 0);
}

QTEST_GUILESS_MAIN(test_velmo_instrument)
#include "test_velmo_instrument.moc"
