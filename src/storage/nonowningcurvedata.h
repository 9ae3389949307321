#pragma once

#include <QPointF>
#include <QRectF>
#include <qwt_series_data.h>

class CurveSeriesData;

/// A plot curve's view of a CurveSeriesData that several plots can share. It does not own the
/// series and must be destroyed first.
class NonOwningCurveData : public QwtSeriesData<QPointF>
{
public:
    /// `series` may be null; the view is then empty.
    explicit NonOwningCurveData(CurveSeriesData* series);

    /// Number of points loaded for display; 0 without a series.
    size_t size() const override;

    /// Point `i` as displayed: x in ms since the epoch, y with the offset. A zero point without a
    /// series.
    QPointF sample(size_t i) const override;

    /// Bounds of the loaded points; a zero rectangle without a series.
    QRectF boundingRect() const override;

    /// The series; null if there is none.
    CurveSeriesData* series() const { return m_series; }

private:
    CurveSeriesData* m_series;
};
