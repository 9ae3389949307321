#include "transport/pace.h"

#include <algorithm>
#include <limits>

namespace scnsim {

namespace {

constexpr double kPortBuffer = 64;

} // namespace

std::size_t Pace::allowance(Time now)
{
    if (!isLimited()) {
        return std::numeric_limits<std::size_t>::max();
    }
    const double seconds = std::chrono::duration<double>(now - m_last).count();
    m_last = now;
    m_credit = std::min(kPortBuffer, m_credit + seconds * m_bytesPerSecond);
    return static_cast<std::size_t>(m_credit);
}

} // namespace scnsim
