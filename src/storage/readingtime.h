#pragma once

#include <QPointF>

#include <cmath>

/// Valid times of readings, in milliseconds since the epoch.
namespace scn {

/// The calendar's own limit, some 270,000 years from the epoch on either side.
constexpr qint64 kFarthestTime = 8640000000000000;

/// Whether a number of milliseconds can be a time at all: computing with others would overflow.
inline bool isTime(qint64 timestamp)
{
    return timestamp >= -kFarthestTime && timestamp <= kFarthestTime;
}

/// The same for a point's x.
inline bool hasTime(const QPointF& point)
{
    return std::abs(point.x()) <= static_cast<double>(kFarthestTime);
}

inline qint64 timeOf(const QPointF& point)
{
    return static_cast<qint64>(point.x());
}

} // namespace scn
