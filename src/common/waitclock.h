#pragma once

#include <QThread>

#include <chrono>
#include <functional>

namespace scn {

/// What a thread waits by: a time that only grows, and a sleep. The defaults are the machine's; a test
/// gives its own, so that hours pass at once.
struct WaitClock
{
    std::function<std::chrono::steady_clock::time_point()> now = &std::chrono::steady_clock::now;

    /// Sleeps on the calling thread for at least so long.
    std::function<void(std::chrono::milliseconds)> sleep = [](std::chrono::milliseconds time) {
        QThread::msleep(static_cast<unsigned long>(time.count()));
    };
};

} // namespace scn
