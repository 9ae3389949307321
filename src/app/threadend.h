#pragma once

#include <chrono>

class QThread;

namespace scn {

/// How long the window's end waits for each of its threads.
constexpr std::chrono::milliseconds kThreadWait{5000};

/// Ends and deletes a thread that was told to stop. One that hangs in an exchange is woken; where that does
/// not help, as with a platform's library, it is ended by force. GUI thread; blocks.
void endThread(QThread* thread);

/// Waits for a thread that must not be ended by force, and deletes it. GUI thread; blocks.
void awaitThread(QThread* thread);

} // namespace scn
