#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <thread>

/// Whether a thread of this process is blocked in poll(), as the transports are while they wait.
bool isInPoll(pid_t thread);

/// Work on a thread of its own, mostly one operation of a session.
class BackgroundWork
{
public:
    explicit BackgroundWork(std::function<void()> work);
    ~BackgroundWork() { join(); }
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;

    bool isOver() const { return m_isOver; }

    /// Returns once the work is blocked in poll(); false if it ends instead, or is not within 5 s.
    bool waitUntilInPoll() const;

    /// Sends the thread a signal.
    void signal(int number);

    void join();

private:
    std::atomic<pid_t> m_id{0};
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};
