#pragma once

#include <chrono>
#include <functional>

/// Takes SQLite's waits for locked files away while it lives, and adds them up: those of the
/// connections that are opened meanwhile. A connection waits as often as it otherwise would, and in
/// no time. One at a time; it outlives the connections.
class LockWaits
{
public:
    LockWaits();
    ~LockWaits();
    LockWaits(const LockWaits&) = delete;
    LockWaits& operator=(const LockWaits&) = delete;

    /// The waits so far.
    std::chrono::milliseconds total() const;

    /// Counts from zero again.
    void forget();

    /// Calls `action`, once, on the waiting thread, when the waits come to more than `wait`.
    void after(std::chrono::milliseconds wait, std::function<void()> action);
};
