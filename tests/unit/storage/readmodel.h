#pragma once

#include "plainthinning.h"

#include <QPointF>
#include <QSet>
#include <QString>
#include <QVector>

/// All batches of one day's file, oldest first.
struct ModelDay
{
    QString key; ///< "yyyyMMdd"
    QVector<QVector<QPointF>> batches;
};

/// The result of a read, found by looking at every point. `visited` has the keys of the days whose
/// files are opened.
inline QVector<QPointF> modelRead(const QVector<ModelDay>& days, const QSet<QString>& visited,
                                  qint64 start, qint64 end, int maxPoints)
{
    QVector<QPointF> points;
    for (const ModelDay& day : days) {
        if (!visited.contains(day.key)) {
            continue;
        }
        for (const QVector<QPointF>& batch : day.batches) {
            for (const QPointF& point : batch) {
                const auto time = static_cast<qint64>(point.x());
                if (time >= start && time <= end) {
                    points.append(point);
                }
            }
            if (maxPoints > 0 && points.size() > 2 * maxPoints) {
                points = thinned(points, maxPoints);
            }
        }
    }
    return thinned(points, maxPoints);
}
