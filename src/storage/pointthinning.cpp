#include "storage/pointthinning.h"

#include <algorithm>

void thinPoints(const QPointF* source, int size, int maxPoints, QPointF* target)
{
    const QPointF lastOfSource = source[size - 1];
    const double step = static_cast<double>(size) / maxPoints;
    // The index taken is never below i, so thinning in place reads no point already replaced.
    for (int i = 0; i < maxPoints; ++i) {
        target[i] = source[std::min(static_cast<int>(i * step), size - 1)];
    }
    QPointF& lastTaken = target[maxPoints - 1];
    if (lastTaken.x() < lastOfSource.x() || lastTaken.x() > lastOfSource.x()) {
        lastTaken = lastOfSource;
    }
}

void thinPoints(QVector<QPointF>& points, int maxPoints)
{
    if (maxPoints <= 0 || points.size() <= maxPoints) {
        return;
    }
    thinPoints(points.constData(), points.size(), maxPoints, points.data());
    points.resize(maxPoints);
}
