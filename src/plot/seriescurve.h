#pragma once

#include <qwt_plot_curve.h>

/// A curve that draws exactly what its base draws, but converts its samples to pixels in one plain pass
/// over the points that the series has loaded.
///
/// The pass handles the lines that charts draw: unfilled, clipped, on a device with whole pixels. All
/// others are left to the base. GUI thread.
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
