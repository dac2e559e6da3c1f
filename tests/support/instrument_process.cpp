#include "support/instrument_process.h"

#include <QDeadlineTimer>

#include <utility>

namespace {

constexpr int patience = 30000; // ms

const QString program = QStringLiteral(VELMO_INSTRUMENT);

} // namespace

instrument_process::~instrument_process()
{
    stop();
}

bool instrument_process::start(const QStringList& arguments)
{
    m_output.clear();
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, arguments);
    const bool adb = arguments.contains(QStringLiteral("--adb"));
    const bool pty = arguments.contains(QStringLiteral("--pty"));
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired()) {
        if ((!adb || !adb_serial().isEmpty()) && (!pty || !serial_path().isEmpty()))
            return true;
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return false;
        m_output += QString::fromUtf8(m_process.readAllStandardOutput());
    }
    return false;
}

int instrument_process::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return m_process.exitCode();
    m_process.terminate();
    if (m_process.waitForFinished(patience) && m_process.exitStatus() == QProcess::NormalExit)
        return m_process.exitCode();
    m_process.kill();
    m_process.waitForFinished(patience);
    return -1;
}

QString instrument_process::serial_path() const
{
    return word_after(QStringLiteral("serial: "));
}

QString instrument_process::adb_serial() const
{
    return word_after(QStringLiteral("adb: "));
}

QString instrument_process::output()
{
    m_output += QString::fromUtf8(m_process.readAllStandardOutput());
    return m_output;
}

QString instrument_process::state()
{
    m_process.waitForFinished(0); // takes notice of its end
    if (m_process.state() != QProcess::NotRunning)
        return QStringLiteral("runs");
    return m_process.exitStatus() == QProcess::CrashExit
               ? QStringLiteral("was ended by signal %1").arg(m_process.exitCode())
               : QStringLiteral("has ended with %1").arg(m_process.exitCode());
}

instrument_process::result instrument_process::run(const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QString instrument_process::word_after(const QString& prefix) const
{
    QStringList lines = m_output.split(QLatin1Char('\n'));
    lines.removeLast(); // not ended yet
    for (const QString& line : std::as_const(lines)) {
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).section(QLatin1Char(' '), 0, 0);
    }
    return {};
}
