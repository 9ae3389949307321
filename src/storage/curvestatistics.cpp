#include "storage/curvestatistics.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace scn {

namespace {

/// Mean of the finite values among the points, even if their sum overflows; NaN if there are none.
double finiteMean(const QPointF* points, int count)
{
    double mean = 0.0;
    int finite = 0;
    for (const QPointF* point = points; point != points + count; ++point) {
        if (std::isfinite(point->y())) {
            ++finite;
            mean += point->y() / finite - mean / finite;
        }
    }
    return finite > 0 ? mean : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

CurveStatistics statisticsOf(const QPointF* points, int count)
{
    CurveStatistics statistics;
    if (count == 0) {
        return statistics;
    }
    const QPointF& last = points[count - 1];
    statistics.count = count;
    statistics.lastValue = last.y();
    statistics.lastTimeText = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(last.x()))
                                  .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    std::for_each(points, points + count, [&statistics](const QPointF& point) {
        statistics.sum += point.y();
        statistics.maximum = std::max(statistics.maximum, point.y());
        statistics.minimum = std::min(statistics.minimum, point.y());
    });
    statistics.mean =
        std::isfinite(statistics.sum) ? statistics.sum / count : finiteMean(points, count);
    return statistics;
}

} // namespace scn
