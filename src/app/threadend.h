#pragma once

#include <chrono>

class QThread;

namespace scn {

/// How long the window waits for each of its threads when it closes.
constexpr std::chrono::milliseconds kThreadWait{5000};

/// Waits for a thread that was told to stop, and deletes it. If it hangs, interrupts its exchange; if that does
/// not help, as inside a platform library, terminates it. GUI thread; blocks.
void endThread(QThread* thread);

/// Waits for a thread that must not be terminated, and deletes it. GUI thread; blocks.
void awaitThread(QThread* thread);

} // namespace scn
