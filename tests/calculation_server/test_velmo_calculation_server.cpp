// The server as a program: its command line, its socket, its end.

#include "support/background_program.h"

#include <QNetworkDatagram>
#include <QProcess>
#include <QTest>
#include <QUdpSocket>

namespace {

const QString program = QStringLiteral(VELMO_CALCULATION_PROGRAM);
constexpr int patience = 30000; // ms

const QByteArray good("$50000,4,0,0,0,100,0,0,0,100,0,0,0,100,"
                      "1,2,3,101,2,3,1,102,3,1,2,103,*");

struct ended
{
    int exit_code = -1;
    QByteArray output;
    QByteArray error;
};

ended run(const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

/// The answer to a datagram, or nothing.
QByteArray ask(const QByteArray& datagram, quint16 port,
               const QHostAddress& address = QHostAddress::LocalHost)
{
    QUdpSocket socket;
    socket.writeDatagram(datagram, address, port);
    if (!socket.waitForReadyRead(patience))
        return {};
    return socket.receiveDatagram().data();
}

} // namespace

class test_velmo_calculation_server : public QObject
{
    Q_OBJECT

private slots:
    void help_and_version();
    void a_wrong_command_line_is_refused_data();
    void a_wrong_command_line_is_refused();
    void answers_and_goes_on();
    void listens_on_loopback_unless_told_otherwise();
    void a_taken_port_is_said();
};

void test_velmo_calculation_server::help_and_version()
{
    const ended help = run({"--help"});
    QCOMPARE(help.exit_code, 0);
    for (const char* word : {"--address", "--port", "127.0.0.1", "6020", "least"})
        QVERIFY2(help.output.contains(word), word);
    const ended version = run({"--version"});
    QCOMPARE(version.exit_code, 0);
    QVERIFY(version.output.startsWith("velmo_calculation_server "));
}

void test_velmo_calculation_server::a_wrong_command_line_is_refused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("port") << QStringList{"--port", "65536"}
                          << QByteArray("--port takes a number from 0 to 65535");
    QTest::newRow("address") << QStringList{"--address", "somewhere"}
                             << QByteArray("\"somewhere\" is no address");
    QTest::newRow("option") << QStringList{"--frob"} << QByteArray("Unknown option 'frob'");
    QTest::newRow("word") << QStringList{"6020"} << QByteArray("unexpected \"6020\"");
}

void test_velmo_calculation_server::a_wrong_command_line_is_refused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, words);
    const ended result = run(arguments);
    QCOMPARE(result.exit_code, 1);
    QVERIFY2(result.error.contains(words), result.error.constData());
}

void test_velmo_calculation_server::answers_and_goes_on()
{
    background_program server(program);
    const QString ready = server.start({"--port", "0"}, "listening: 127.0.0.1 port ");
    const quint16 port = ready.section(' ', -1).toUShort();
    QVERIFY2(port != 0, qPrintable(ready));

    QVERIFY(ask(good, port).startsWith("$1.000000,2.000000,3.000000,"));
    QVERIFY(server.wait_for_line("4 pairs").startsWith("127.0.0.1 port "));
    for (const QByteArray& bad : {QByteArray("hello"), QByteArray(60000, ','), QByteArray()})
        QVERIFY(ask(bad, port).startsWith("!not a request"));
    QVERIFY(!server.wait_for_line("refused: not a request").isEmpty());

    // A refusal is not answered: the next answer is that to the next request.
    QUdpSocket socket;
    socket.writeDatagram("!no*", QHostAddress::LocalHost, port);
    QVERIFY(!server.wait_for_line("not answered").isEmpty());
    socket.writeDatagram(good, QHostAddress::LocalHost, port);
    QVERIFY(socket.waitForReadyRead(patience));
    QVERIFY(socket.receiveDatagram().data().startsWith("$1.000000"));

    QCOMPARE(server.stop(), 0);
}

void test_velmo_calculation_server::listens_on_loopback_unless_told_otherwise()
{
    background_program told(program);
    const QString ready =
        told.start({"--port", "0", "--address", "0.0.0.0"}, "listening: 0.0.0.0 port ");
    const quint16 port = ready.section(' ', -1).toUShort();
    QVERIFY2(port != 0, qPrintable(ready));
    QVERIFY(ask(good, port, QHostAddress("127.0.0.2")).startsWith('$'));

    // By default another address of this machine is not taken.
    background_program usual(program);
    const quint16 own =
        usual.start({"--port", "0"}, "listening: 127.0.0.1 port ").section(' ', -1).toUShort();
    QVERIFY(own != 0);
    QUdpSocket beside;
    QVERIFY(beside.bind(QHostAddress("127.0.0.2"), own, QAbstractSocket::DontShareAddress));
}

void test_velmo_calculation_server::a_taken_port_is_said()
{
    QUdpSocket first;
    QVERIFY(first.bind(QHostAddress::LocalHost, 0, QAbstractSocket::DontShareAddress));
    const ended result = run({"--port", QString::number(first.localPort())});
    QCOMPARE(result.exit_code, 1);
    QVERIFY2(result.error.contains("cannot listen on 127.0.0.1 port "), result.error.constData());
}

QTEST_GUILESS_MAIN(test_velmo_calculation_server)
#include "test_velmo_calculation_server.moc"
