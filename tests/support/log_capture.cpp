#include "support/log_capture.h"

#include <QMutex>

#include <algorithm>

namespace {

QMutex mutex; // worker threads log as well
QList<log_capture::line> gathered;
QtMessageHandler previous = nullptr;

void gather(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    {
        const QMutexLocker lock(&mutex);
        gathered.append({type, text});
    }
    if (type == QtFatalMsg && previous != nullptr)
        previous(type, context, text);
}

} // namespace

log_capture::log_capture()
{
    clear();
    previous = qInstallMessageHandler(gather);
}

log_capture::~log_capture()
{
    qInstallMessageHandler(previous);
}

QList<log_capture::line> log_capture::lines() const
{
    const QMutexLocker lock(&mutex);
    return gathered;
}

QStringList log_capture::texts() const
{
    QStringList all;
    for (const line& one : lines())
        all += one.text;
    return all;
}

bool log_capture::has(const QString& part) const
{
    return std::ranges::any_of(lines(),
                               [&part](const line& one) { return one.text.contains(part); });
}

void log_capture::clear()
{
    const QMutexLocker lock(&mutex);
    gathered.clear();
}
