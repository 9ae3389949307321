#include "common/sleeper.h"

namespace scn {

void Sleeper::sleep(std::chrono::milliseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, time, [this] { return m_isWoken; });
    m_isWoken = false;
}

void Sleeper::wake()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isWoken = true;
    m_changed.notify_one();
}

} // namespace scn
