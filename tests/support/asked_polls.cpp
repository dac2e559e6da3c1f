#include "asked_polls.h"

#include <QMutex>

#include <cmath>

#include <dlfcn.h>
#include <poll.h>

namespace {

QMutex mutex;
QList<int> polls;

} // namespace

/// Stands before the function of QtCore that QSerialPort and QTcpSocket wait with.
int qt_safe_poll(pollfd* lines, nfds_t count, const timespec* time)
{
    {
        const QMutexLocker lock(&mutex);
        polls += time == nullptr
                     ? -1
                     : static_cast<int>(std::lround(static_cast<double>(time->tv_sec) * 1e3 +
                                                    static_cast<double>(time->tv_nsec) / 1e6));
    }
    static const auto real = reinterpret_cast<decltype(&qt_safe_poll)>(
        dlsym(RTLD_NEXT, "_Z12qt_safe_pollP6pollfdmPK8timespec"));
    return real(lines, count, time);
}

QList<int> asked_polls()
{
    const QMutexLocker lock(&mutex);
    return polls;
}

void forget_asked_polls()
{
    const QMutexLocker lock(&mutex);
    polls.clear();
}
