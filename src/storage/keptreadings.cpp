#include "storage/keptreadings.h"

#include <limits>

namespace scn {

bool KeptReadings::append(qint64 time, double value)
{
    if (m_values.empty()) {
        m_firstTime = time;
    }
    const quint64 sinceFirst = static_cast<quint64>(time) - static_cast<quint64>(m_firstTime);
    if (sinceFirst > std::numeric_limits<quint32>::max()) {
        return false;
    }
    m_times.push_back(static_cast<quint32>(sinceFirst));
    m_values.push_back(value);
    return true;
}

} // namespace scn
