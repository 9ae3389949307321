#pragma once

#include "common/waitclock.h"

#include <chrono>

namespace scn {

/// The waits of the acquisition thread and their clock. The defaults are the program's; a test may
/// shorten them.
struct ReadDataTiming
{
    std::chrono::milliseconds startDelay{1000};     ///< Before the first pass.
    std::chrono::milliseconds passDelay{1000};      ///< Between two passes.
    std::chrono::milliseconds settleDelay{50};      ///< After a fetch, and before the event query.
    std::chrono::milliseconds fetchRetryDelay{100}; ///< Before a fetch is repeated.
    std::chrono::milliseconds silenceDelay{3000};   ///< Before a silent instrument is asked again.

    WaitClock clock;
};

} // namespace scn
