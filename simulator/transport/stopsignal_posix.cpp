#include "transport/stopsignal.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace scnsim {

namespace {

/// Read end and write end of the pipe that carries the signal into the loop. Plain numbers, which the
/// handler may still use while static objects are destroyed.
int g_pipe[2] = {-1, -1};

extern "C" void onStopSignal(int)
{
    const char byte = 0;
    // If the pipe is full, the signal is already in it.
    [[maybe_unused]] const ssize_t written = write(g_pipe[1], &byte, 1);
}

} // namespace

bool stopsignal::install()
{
    if (pipe(g_pipe) != 0) {
        return false;
    }
    for (const int end : g_pipe) {
        fcntl(end, F_SETFL, O_NONBLOCK);
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    return sigaction(SIGTERM, &action, nullptr) == 0 && sigaction(SIGINT, &action, nullptr) == 0 &&
           sigaction(SIGPIPE, &ignore, nullptr) == 0;
}

int stopsignal::descriptor()
{
    return g_pipe[0];
}

} // namespace scnsim
