#pragma once

#include <functional>

class QThread;

namespace scn {

struct ThreadEndTiming;

/// Tells a thread to stop by `stop`, waits for it, and deletes it. If it goes on, tells it once more, since a
/// thread that has just begun may not have heard it, and interrupts its exchange; if that does not help, as inside
/// a platform library, terminates it. GUI thread; blocks.
void endThread(QThread* thread, const std::function<void()>& stop, const ThreadEndTiming& timing);

/// Waits for a thread that must not be terminated, and deletes it. GUI thread; blocks.
void awaitThread(QThread* thread, const ThreadEndTiming& timing);

} // namespace scn
