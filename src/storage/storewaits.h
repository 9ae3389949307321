#pragma once

#include <chrono>

/// All the store's waits and intervals.
namespace scn::storewaits {

using std::chrono::hours;
using std::chrono::milliseconds;

/// registerCurve() pauses this often, for this long, before it registers a new name.
constexpr milliseconds kRegisterPause{100};
constexpr int kRegisterPauses = 2;

/// Between closing and deleting the files, so that the operating system can release them.
constexpr milliseconds kReleaseDelay{1000};

/// After a clear has closed the files it handles events this often, with a pause after each pass.
constexpr milliseconds kClearPass{100};
constexpr int kClearPasses = 3;

/// A file that cannot be deleted is tried this often, with a pause after each attempt.
constexpr milliseconds kDeleteRetry{500};
constexpr int kDeleteAttempts = 3;

/// Closing a connection handles events, with a pause after each pass: first until its readers have
/// finished, then until its name is released.
constexpr milliseconds kClosePass{50};
constexpr int kDrainPasses = 10;
constexpr int kSettlePasses = 5;

/// A name that is still in use then has this long to handle events.
constexpr milliseconds kLastEvents{100};

/// Pause after each connection when all are closed.
constexpr milliseconds kCloseGap{50};

/// How long to wait for a file locked by another process.
constexpr milliseconds kLockPatience{5000};

/// Idle time after which a sweep closes a connection, and the interval of the sweep.
constexpr hours kIdleLimit{12};
constexpr hours kSweepInterval{4};

/// Shortest interval between notes to the pool that today's file is in use.
constexpr milliseconds kUseNoteInterval{1000};

/// Shortest interval between attempts to reattach today's file after a failure.
constexpr milliseconds kRepairInterval{5000};

/// The end of the program waits at most this long for the store,
constexpr milliseconds kShutdownBudget{2000};

/// and the end of a store at most this long for a running clear.
constexpr milliseconds kClearThreadWait{3000};

} // namespace scn::storewaits
