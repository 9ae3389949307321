#include "visa/deadline.h"

#include <algorithm>

namespace scn::visa {
namespace {

constexpr std::chrono::milliseconds kLongestWait{60000};

} // namespace

Deadline Deadline::after(ViUInt32 timeoutMs)
{
    if (timeoutMs == VI_TMO_INFINITE) {
        return Deadline(Clock::time_point::max());
    }
    return Deadline(Clock::now() + std::chrono::milliseconds(timeoutMs));
}

Deadline Deadline::within(ViUInt32 ms) const
{
    return Deadline(std::min(m_moment, after(ms).m_moment));
}

bool Deadline::passed() const
{
    return Clock::now() >= m_moment;
}

int Deadline::remainingMs() const
{
    const Clock::time_point now = Clock::now();
    if (now >= m_moment) {
        return 0;
    }
    if (m_moment == Clock::time_point::max() || m_moment - now > kLongestWait) {
        return static_cast<int>(kLongestWait.count());
    }
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(m_moment - now).count());
}

} // namespace scn::visa
