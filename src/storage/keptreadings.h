#pragma once

#include <QPointF>
#include <QtGlobal>

#include <deque>

namespace scn {

/// The readings of a batch table in the order of time, in 12 bytes each.
class KeptReadings
{
public:
    /// Adds the next reading, which is not earlier than the first. False, and nothing is added, if it is
    /// 49 days later or more.
    bool append(qint64 time, double value);

    qint64 count() const { return static_cast<qint64>(m_values.size()); }

    qint64 timeAt(qint64 place) const { return m_firstTime + m_times[static_cast<size_t>(place)]; }

    /// x is the time, y the value.
    QPointF at(qint64 place) const
    {
        return {static_cast<double>(timeAt(place)), m_values[static_cast<size_t>(place)]};
    }

private:
    qint64 m_firstTime = 0;
    std::deque<quint32> m_times; ///< Milliseconds since the first.
    std::deque<double> m_values;
};

} // namespace scn
