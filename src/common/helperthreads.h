#pragma once

#include <functional>

/// The detached threads of work that must not block the window: rebuilding the series, reconnecting,
/// and at the end of the window the wait for a thread that cannot be ended.
namespace HelperThreads {

/// Runs `work` on a thread of its own, which nobody joins.
void start(std::function<void()> work);

/// Waits up to `timeoutMs` for the running helpers; true when none is left.
bool waitForAll(int timeoutMs);

} // namespace HelperThreads
