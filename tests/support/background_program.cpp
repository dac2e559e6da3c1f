#include "support/background_program.h"

#include <QDeadlineTimer>

namespace {

constexpr int patience = 30000; // ms

} // namespace

background_program::background_program(const QString& program)
{
    m_process.setProgram(program);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

background_program::~background_program()
{
    stop();
}

QString background_program::start(const QStringList& arguments, const QString& ready)
{
    m_process.setArguments(arguments);
    m_process.start();
    return wait_for_line(ready);
}

QString background_program::wait_for_line(const QString& part)
{
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired()) {
        while (m_process.canReadLine()) {
            const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
            if (line.contains(part))
                return line;
        }
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return {};
    }
    return {};
}

int background_program::stop()
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
