#pragma once

#include <QPointF>
#include <QVector>

/// Copies `maxPoints` of the `size` points at `source` to `target`, evenly by index: point i is
/// taken from index i * (size / maxPoints), truncated. If the last point taken then has another x
/// than the last point of the source, the source's last point takes its place, so that a thinned
/// curve reaches as far as the whole one. It takes no notice of y: peaks can be lost.
///
/// Needs 0 < maxPoints <= size. `target` has room for `maxPoints` and may be `source` itself.
void thinPoints(const QPointF* source, int size, int maxPoints, QPointF* target);

/// Thins `points` to `maxPoints`, as above, if there are more; leaves them as they are if not, or if
/// `maxPoints` is 0 or less, which means no limit.
void thinPoints(QVector<QPointF>& points, int maxPoints);
