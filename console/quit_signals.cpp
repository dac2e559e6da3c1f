#include "console/quit_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A handler may do next to nothing: it writes into a pipe that the event loop reads.
std::array<int, 2> signal_pipe{-1, -1};

void handle_signal(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(signal_pipe[1], &byte, 1);
}

} // namespace

void quit_on_signals()
{
    if (::pipe(signal_pipe.data()) != 0)
        return;
    for (const int end : signal_pipe)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    auto* notifier = new QSocketNotifier(signal_pipe[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    struct sigaction action
    {
    };
    action.sa_handler = handle_signal;
    for (const int number : {SIGINT, SIGTERM})
        ::sigaction(number, &action, nullptr);
}
