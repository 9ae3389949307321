#pragma once

#include "storage/curveseriesdata.h"
#include "storage/nonowningcurvedata.h"

#include <qwt_plot_curve.h>

namespace scn {

/// The shared series that a curve shows; null if it has none.
inline CurveSeriesData* seriesOf(const QwtPlotCurve* curve)
{
    const auto* shared = dynamic_cast<const NonOwningCurveData*>(curve->data());
    return shared ? shared->series() : nullptr;
}

/// Fast access to all samples of a curve, straight from its series if it has one. Valid until the
/// series is reloaded. GUI thread.
class CurveSamples
{
public:
    /// `curve` must have series data.
    explicit CurveSamples(const QwtPlotCurve* curve)
        : m_data(curve->data())
        , m_count(static_cast<int>(curve->dataSize()))
    {
        const auto* shared = dynamic_cast<const NonOwningCurveData*>(m_data);
        m_series = shared ? shared->series() : dynamic_cast<const CurveSeriesData*>(m_data);
        if (m_series) {
            m_points = m_series->visiblePoints().constData();
            m_pointCount = m_series->visiblePoints().size();
        }
    }

    int count() const { return m_count; }

    /// Sample `index`, 0 to count() - 1, as drawn: x in ms, y with the display offset.
    QPointF display(int index) const
    {
        return index < m_pointCount ? m_points[index] : m_data->sample(static_cast<size_t>(index));
    }

    /// The same, with the reading itself as y.
    QPointF raw(int index) const
    {
        if (index < m_pointCount) {
            return {m_points[index].x(), m_series->rawValue(index)};
        }
        return m_data->sample(static_cast<size_t>(index));
    }

private:
    const QwtSeriesData<QPointF>* m_data;
    const CurveSeriesData* m_series = nullptr;
    const QPointF* m_points = nullptr;
    int m_pointCount = 0;
    int m_count;
};

} // namespace scn
