#pragma once

#include "common/waitclock.h"

#include <chrono>

namespace scn {

/// How long the acquisition thread waits, and by which clock. The defaults are the program's own; a
/// test may shorten them.
struct ReadDataTiming
{
    std::chrono::milliseconds startDelay{1000};     ///< Before the first pass.
    std::chrono::milliseconds passDelay{1000};      ///< Between two passes.
    std::chrono::milliseconds settleDelay{50};      ///< Behind a fetch, and before the event query.
    std::chrono::milliseconds fetchRetryDelay{100}; ///< Before a fetch is repeated.
    std::chrono::milliseconds silenceDelay{3000};   ///< Before a silent instrument is asked again.

    /// A sleep looks at the running flag this often. Slices need no lock, so that a thread terminated
    /// in one leaves nothing locked behind.
    std::chrono::milliseconds sleepSlice{20};

    WaitClock clock;
};

} // namespace scn
