#pragma once

#include <chrono>

/// Every length of time that the store keeps to, in one place.
namespace storewaits {

using std::chrono::hours;
using std::chrono::milliseconds;

/// Before a new name is registered by registerCurve(), so many times so long.
constexpr milliseconds kRegisterPause{100};
constexpr int kRegisterPauses = 2;

/// Between closing the files and deleting them, so that the operating system may let go of them.
constexpr milliseconds kReleaseDelay{1000};

/// After a clear has closed the files: events are handled so many times, with a pause after each.
constexpr milliseconds kClearPass{100};
constexpr int kClearPasses = 3;

/// A file that cannot be deleted is tried so many times, with a pause after each.
constexpr milliseconds kDeleteRetry{500};
constexpr int kDeleteAttempts = 3;

/// Closing a connection handles events, with a pause after each pass: first so that those who read
/// from it come to their end, then so that its name is let go of.
constexpr milliseconds kClosePass{50};
constexpr int kDrainPasses = 10;
constexpr int kSettlePasses = 5;

/// Closing all connections pauses after each.
constexpr milliseconds kCloseGap{50};

/// For a file that another process has locked.
constexpr milliseconds kLockPatience{5000};

/// A connection that nobody has used for so long is closed by a sweep, which comes at intervals.
constexpr hours kIdleLimit{12};
constexpr hours kSweepInterval{4};

/// At most once in this time the pool is told that today's file is in use.
constexpr milliseconds kUseNoteInterval{1000};

/// At most once in this time today's file is asked for again after a failure.
constexpr milliseconds kRepairInterval{5000};

/// The end of the program waits no longer than this for the store,
constexpr milliseconds kShutdownBudget{2000};

/// and the end of a store no longer than this for a clear that is under way.
constexpr milliseconds kClearThreadWait{3000};

} // namespace storewaits
