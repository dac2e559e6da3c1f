#include "calculation_server/datagrams.h"
#ifdef Q_OS_UNIX
#include "console/quit_signals.h"
#endif

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QNetworkDatagram>
#include <QUdpSocket>

#include <cstdio>

namespace {

[[noreturn]] void fail(const QString& message)
{
    std::fprintf(stderr, "velmo_calculation_server: %s\n", qPrintable(message));
    std::exit(1);
}

void say(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

QString endpoint(const QHostAddress& address, int port)
{
    return QStringLiteral("%1 port %2").arg(address.toString()).arg(port);
}

void answer_all(QUdpSocket& socket)
{
    while (socket.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket.receiveDatagram();
        if (!datagram.isValid())
            break;
        QString summary;
        const QByteArray reply = calculation::answer(datagram.data(), summary);
        if (!reply.isEmpty() && socket.writeDatagram(datagram.makeReply(reply)) < 0)
            summary += QStringLiteral("; not sent: ") + socket.errorString();
        say(QStringLiteral("%1: %2").arg(endpoint(datagram.senderAddress(), datagram.senderPort()),
                                         summary));
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velmo_calculation_server"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELMO_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Calculates the seven parameters between two frames from pairs of points, by least\n"
        "squares. Answers one datagram for each datagram, until SIGINT or SIGTERM."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption address_option(
        QStringLiteral("address"),
        QStringLiteral("Address to listen on (127.0.0.1: this machine only); 0.0.0.0 for all of "
                       "this machine's IPv4 addresses, :: for those of IPv6."),
        QStringLiteral("address"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption port_option(QStringLiteral("port"),
                                         QStringLiteral("UDP port (6020); 0 for any free one."),
                                         QStringLiteral("port"), QStringLiteral("6020"));
    parser.addOptions({address_option, port_option});
    parser.process(application);

    const QHostAddress address(parser.value(address_option));
    if (address.isNull())
        fail(QStringLiteral("\"%1\" is no address").arg(parser.value(address_option)));
    bool good = false;
    const quint16 port = parser.value(port_option).toUShort(&good);
    if (!good)
        fail(QStringLiteral("--port takes a number from 0 to 65535"));
    if (!parser.positionalArguments().isEmpty())
        fail(QStringLiteral("unexpected \"%1\"").arg(parser.positionalArguments().constFirst()));

    QUdpSocket socket;
    // Alone on its port: another server there would get some of the requests.
    if (!socket.bind(address, port, QAbstractSocket::DontShareAddress))
        fail(QStringLiteral("cannot listen on %1: %2")
                 .arg(endpoint(address, port), socket.errorString()));
    QObject::connect(&socket, &QUdpSocket::readyRead, &socket, [&socket] { answer_all(socket); });
#ifdef Q_OS_UNIX
    quit_on_signals();
#endif
    say(QStringLiteral("listening: %1").arg(endpoint(socket.localAddress(), socket.localPort())));
    return QCoreApplication::exec();
}
