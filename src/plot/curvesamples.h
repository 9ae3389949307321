#pragma once

#include "plot/loadedcurvedata.h"
#include "storage/curveseriesdata.h"

#include <qwt_plot_curve.h>

namespace scn {

/// The part of a curve that loads from a shared series; null if the curve has no series.
inline LoadedCurveData* loadedData(QwtPlotCurve* curve)
{
    auto* loaded = dynamic_cast<LoadedCurveData*>(curve->data());
    return loaded && loaded->series() ? loaded : nullptr;
}

/// Fast access to all samples of a curve, straight from its points. Valid until the curve loads again.
/// GUI thread.
class CurveSamples
{
public:
    /// `curve` must have series data.
    explicit CurveSamples(const QwtPlotCurve* curve)
        : m_data(curve->data())
        , m_count(static_cast<int>(curve->dataSize()))
    {
        if (const auto* loaded = dynamic_cast<const LoadedCurveData*>(m_data)) {
            take(loaded->points(), loaded->offset());
        } else if (const auto* shared = dynamic_cast<const NonOwningCurveData*>(m_data)) {
            take(shared->series());
        } else {
            take(dynamic_cast<const CurveSeriesData*>(m_data));
        }
    }

    int count() const { return m_count; }

    /// The samples, as drawn, that lie in memory: the first `pointCount()` of all.
    const QPointF* points() const { return m_points; }
    int pointCount() const { return m_pointCount; }

    /// Sample `index`, 0 to count() - 1, as drawn: x in ms, y with the display offset.
    QPointF display(int index) const
    {
        return index < m_pointCount ? m_points[index] : m_data->sample(static_cast<size_t>(index));
    }

    /// The same, with the reading itself as y.
    QPointF raw(int index) const
    {
        const QPointF shown = display(index);
        return {shown.x(), shown.y() - m_offset};
    }

private:
    void take(const CurveSeriesData* series)
    {
        if (series) {
            take(series->visiblePoints(), series->yOffset());
        }
    }

    void take(const QVector<QPointF>& points, double offset)
    {
        m_points = points.constData();
        m_pointCount = points.size();
        m_offset = offset;
    }

    const QwtSeriesData<QPointF>* m_data;
    const QPointF* m_points = nullptr;
    int m_pointCount = 0;
    int m_count;
    double m_offset = 0.0;
};

} // namespace scn
