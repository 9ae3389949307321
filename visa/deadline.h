#pragma once

#include "visa/visatypes.h"

#include <chrono>

namespace scn::visa {

/// The moment at which an operation gives up, on the monotonic clock.
class Deadline
{
public:
    /// The moment that many milliseconds from now; VI_TMO_INFINITE is never.
    static Deadline after(ViUInt32 timeoutMs);

    /// The earlier of this moment and the one that many milliseconds from now.
    Deadline within(ViUInt32 ms) const;

    bool passed() const;

    /// Time left in whole milliseconds, rounded up so that a wait of that length never ends early,
    /// and limited to what poll() takes; a caller waits again while passed() is false.
    int remainingMs() const;

private:
    using Clock = std::chrono::steady_clock;

    explicit Deadline(Clock::time_point moment)
        : m_moment(moment)
    {
    }

    Clock::time_point m_moment;
};

} // namespace scn::visa
