#pragma once

#include <qwt_plot_curve.h>

/// A curve that draws the very lines of its base, but turns its samples into pixels in one plain
/// pass over the points that the series has loaded.
///
/// That pass serves a line of the kind that charts draw: without a fill, clipped, on a device of
/// whole pixels. Any other line is left to the base. GUI thread only.
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
