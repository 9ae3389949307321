#pragma once

#include <QPointF>
#include <QVector>

/// The thinning of too many points, written out the plain way: what the store and the series give is
/// compared with it.
inline QVector<QPointF> thinned(const QVector<QPointF>& source, int maxPoints)
{
    if (maxPoints <= 0 || source.size() <= maxPoints) {
        return source;
    }
    QVector<QPointF> taken;
    const double step = double(source.size()) / double(maxPoints);
    for (int i = 0; i < maxPoints; ++i) {
        taken.append(source.at(qMin(int(i * step), source.size() - 1)));
    }
    if (taken.last().x() != source.last().x()) {
        taken.last() = source.last();
    }
    return taken;
}
