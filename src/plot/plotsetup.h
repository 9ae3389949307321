#pragma once

class CurveSeriesData;
class CurveTracker;
class QColor;
class QPen;
class QString;
class QWidget;
class QwtDateScaleDraw;
class QwtPlot;
class QwtPlotCurve;
class QwtPlotGrid;

// The parts of a plot, set up as they look and paint.
namespace scn {

void setUpCanvas(QwtPlot* plot);

/// Removes the margins and the painting of all four scales.
void hideScales(QwtPlot* plot);

/// The caller owns the grid.
QwtPlotGrid* addGrid(QwtPlot* plot);

/// Shows local time on the x axis. The plot owns the scale.
QwtDateScaleDraw* addTimeScale(QwtPlot* plot);

CurveTracker* makeTracker(QWidget* canvas);

/// A thin line, however large the screen: how charts draw their curves.
QPen curvePen(const QColor& color);

/// A curve that shows what `series` has loaded, not yet attached.
QwtPlotCurve* makeCurve(CurveSeriesData* series, const QColor& color, const QString& title);

} // namespace scn
