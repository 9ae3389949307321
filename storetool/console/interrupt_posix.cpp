#include "storetool/console/interrupt.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <initializer_list>

namespace scnstore {
namespace {

std::atomic<bool> g_isInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void noteInterrupt(int /*signal*/)
{
    g_isInterrupted = true;
}

} // namespace

void catchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = noteInterrupt;
    // The second one meets the system's own way.
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        ::sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) { // started with nohup, the program outlives its terminal
            ::sigaction(signal, &action, nullptr);
        }
    }
}

bool isInterrupted()
{
    return g_isInterrupted;
}

void outliveClosedPipes()
{
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &action, nullptr);
}

bool isOutputUnwanted()
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
}

} // namespace scnstore
