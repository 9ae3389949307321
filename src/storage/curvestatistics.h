#pragma once

#include <QPointF>
#include <QString>

#include <limits>

namespace scn {

/// What is known of a curve's points as a whole.
struct CurveStatistics
{
    int count = 0;
    double lastValue = 0.0;
    QString lastTimeText;
    // The smallest positive normal number, not the lowest one: a curve of only negative values
    // has this as its maximum.
    double maximum = std::numeric_limits<double>::min();
    double minimum = std::numeric_limits<double>::max();
    double mean = 0.0;
    double sum = 0.0;
};

/// The statistics of some points, oldest first.
CurveStatistics statisticsOf(const QPointF* points, int count);

} // namespace scn
