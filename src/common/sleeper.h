#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace scn {

/// The sleep of one thread, which others can end early. A thread terminated in it leaves nothing
/// locked.
class Sleeper
{
public:
    /// Blocks for this long, or until wake(). A wake() since the last sleep ends it at once.
    void sleep(std::chrono::milliseconds time);

    /// Any thread.
    void wake();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isWoken = false;
};

} // namespace scn
