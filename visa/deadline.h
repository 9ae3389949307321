#pragma once

#include "visa/visatypes.h"

#include <chrono>

namespace scn::visa {

/// The moment at which an operation gives up, on the monotonic clock.
class Deadline
{
public:
    /// The end of a time-out that starts now, given as the VISA standard does: VI_TMO_INFINITE
    /// never ends.
    static Deadline fromTimeout(ViUInt32 timeoutMs);

    /// The earlier of this moment and the one `time` from now.
    Deadline within(std::chrono::milliseconds time) const;

    bool passed() const;

    /// The time left, rounded up so that a wait of that length never ends early, and limited to
    /// what poll() accepts; a caller waits again while passed() is false.
    std::chrono::milliseconds remaining() const;

private:
    using Clock = std::chrono::steady_clock;

    explicit Deadline(Clock::time_point moment)
        : m_moment(moment)
    {
    }

    Clock::time_point m_moment;
};

} // namespace scn::visa
