#include "launcher/quitsignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace scnlauncher {

// Other systems notify a console program differently (Windows: SetConsoleCtrlHandler).

namespace {

int g_pipe[2] = {-1, -1};

/// Only async-signal-safe calls here; the pipe wakes the event loop.
void onSignal(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
}

} // namespace

void onQuitSignal(const std::function<void()>& action)
{
    if (::pipe2(g_pipe, O_CLOEXEC) != 0) {
        return;
    }
    auto* notifier =
        new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, QCoreApplication::instance(), [action] {
        char byte = 0;
        [[maybe_unused]] const ssize_t got = ::read(g_pipe[0], &byte, 1);
        action();
    });
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
    std::signal(SIGHUP, SIG_IGN);
}

} // namespace scnlauncher
