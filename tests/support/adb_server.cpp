#include "support/adb_server.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTcpServer>

#include <utility>

namespace {

constexpr int patience = 30000; // ms
constexpr const char* port_variable = "ANDROID_ADB_SERVER_PORT";

std::uint16_t free_port()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

adb_server::adb_server() : m_port(free_port())
{
    qputenv(port_variable, QByteArray::number(m_port));
}

adb_server::~adb_server()
{
    kill();
    qunsetenv(port_variable);
}

bool adb_server::start()
{
    m_started = true;
    run({QStringLiteral("start-server")});
    return run({QStringLiteral("devices")}).startsWith(QStringLiteral("List of devices attached"));
}

void adb_server::kill()
{
    // Without a server, kill-server would be an error.
    if (std::exchange(m_started, false))
        run({QStringLiteral("kill-server")});
}

QString adb_server::run(const QStringList& arguments)
{
    QProcess adb;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(port_variable), QString::number(m_port));
    environment.insert(QStringLiteral("HOME"), m_home.path());
    environment.insert(QStringLiteral("TMPDIR"), m_home.path());
    adb.setProcessEnvironment(environment);
    adb.start(QStringLiteral("adb"), arguments);
    if (!adb.waitForFinished(patience))
        return {};
    return QString::fromUtf8(adb.readAllStandardOutput()).trimmed();
}

QString adb_server::state_of(const QString& serial_number)
{
    for (const QString& line : run({QStringLiteral("devices")}).split(QLatin1Char('\n'))) {
        if (line.section(QLatin1Char('\t'), 0, 0) == serial_number)
            return line.section(QLatin1Char('\t'), 1).trimmed();
    }
    return {};
}
