#pragma once

#include "common/sleeper.h"

#include <chrono>
#include <functional>

namespace scn {

/// The clock of a thread's waits: a monotonic time and a sleep. The defaults are the system's; a
/// test supplies its own, so that hours pass at once.
struct WaitClock
{
    std::function<std::chrono::steady_clock::time_point()> now = &std::chrono::steady_clock::now;

    /// Blocks the calling thread for at least this long, or until its sleeper is woken.
    std::function<void(Sleeper&, std::chrono::milliseconds)> sleep = &Sleeper::sleep;
};

} // namespace scn
