#include "visa/deadline.h"

#include <algorithm>

namespace scn::visa {
namespace {

constexpr std::chrono::milliseconds kLongestWait{60000};

} // namespace

Deadline Deadline::fromTimeout(ViUInt32 timeoutMs)
{
    if (timeoutMs == VI_TMO_INFINITE) {
        return Deadline(Clock::time_point::max());
    }
    return Deadline(Clock::now() + std::chrono::milliseconds(timeoutMs));
}

Deadline Deadline::within(std::chrono::milliseconds time) const
{
    return Deadline(std::min(m_moment, Clock::now() + time));
}

bool Deadline::passed() const
{
    return Clock::now() >= m_moment;
}

std::chrono::milliseconds Deadline::remaining() const
{
    const Clock::time_point now = Clock::now();
    if (now >= m_moment) {
        return std::chrono::milliseconds::zero();
    }
    if (m_moment == Clock::time_point::max() || m_moment - now > kLongestWait) {
        return kLongestWait;
    }
    return std::chrono::ceil<std::chrono::milliseconds>(m_moment - now);
}

} // namespace scn::visa
