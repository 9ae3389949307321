#pragma once

#include "overlay/locktiming.h"

#include <chrono>

namespace scn {

/// How long the launcher's lines may delay the end of the window. The defaults are the program's own; a
/// test may shorten them.
struct LauncherTiming
{
    /// After the end of the input the reader checks this often whether it is to end.
    std::chrono::milliseconds inputPoll{100};

    /// The writer checks this often while the launcher reads nothing.
    std::chrono::milliseconds outputPoll{100};

    /// For the pending lines.
    std::chrono::milliseconds farewell{500};

    /// After that, for the line being written.
    std::chrono::milliseconds lastLine{500};
};

/// How long the window waits for each of its threads when it closes. The defaults are the program's
/// own; a test may shorten them.
struct ThreadEndTiming
{
    std::chrono::milliseconds stop{5000};        ///< To end after it was told to.
    std::chrono::milliseconds interrupt{1000};   ///< To leave its interrupted exchange.
    std::chrono::milliseconds termination{1000}; ///< To end after terminate().
};

/// How long running helpers may delay the end of the process.
constexpr std::chrono::milliseconds kHelperWait{500};

/// How long the window waits. The defaults are the program's own; a test may shorten them.
struct WindowTiming
{
    /// The busy overlay of the start-up stays this long after the read-back.
    std::chrono::milliseconds startupView{2000};

    /// The running label checks this often whether readings are stored.
    std::chrono::milliseconds storeWatch{500};

    /// Longer than the pause of the acquisition thread between two passes.
    std::chrono::milliseconds lastPass{2000};

    /// A message stays this long.
    std::chrono::milliseconds message{3000};

    ThreadEndTiming threadEnd;
    LauncherTiming launcher;
    LockTiming lock;
};

} // namespace scn
