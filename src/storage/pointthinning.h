#pragma once

#include <QPointF>
#include <QVector>

/// Copies `maxPoints` of the `size` points at `source` to `target`, evenly by index: point i is
/// taken from index i * (size / maxPoints), truncated. If the last point taken has a different x
/// from the source's last point, the latter replaces it, so that a thinned curve reaches as far as
/// the full one. It ignores y: peaks can be lost.
///
/// Needs 0 < maxPoints <= size. `target` has room for `maxPoints` and may be `source` itself.
void thinPoints(const QPointF* source, int size, int maxPoints, QPointF* target);

/// Thins `points` to `maxPoints` as above, unless there are no more than that or `maxPoints` is 0
/// or less, which means no limit.
void thinPoints(QVector<QPointF>& points, int maxPoints);
