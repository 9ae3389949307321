#pragma once

class QThread;

namespace scn {

struct ThreadEndTiming;

/// Waits for a thread that was told to stop, and deletes it. If it hangs, interrupts its exchange; if that does
/// not help, as inside a platform library, terminates it. GUI thread; blocks.
void endThread(QThread* thread, const ThreadEndTiming& timing);

/// Waits for a thread that must not be terminated, and deletes it. GUI thread; blocks.
void awaitThread(QThread* thread, const ThreadEndTiming& timing);

} // namespace scn
