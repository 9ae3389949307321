#pragma once

#include <QPointF>
#include <QVector>

/// A plain version of the thinning, as the reference for the store's and the series'.
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
