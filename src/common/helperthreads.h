#pragma once

#include <chrono>
#include <functional>

/// Threads for work that must not block the window: rebuilding the series, reconnecting, and at the
/// end of the window the wait for a thread that cannot be ended.
namespace scn::helperthreads {

/// Runs `work` on a helper thread at once, however many are busy. Nobody waits for its end.
void start(std::function<void()> work);

/// Waits up to `timeout` for the running helpers; true when none is left.
bool waitForAll(std::chrono::milliseconds timeout);

} // namespace scn::helperthreads
