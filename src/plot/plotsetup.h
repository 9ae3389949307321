#pragma once

class CurveSeriesData;
class CurveTracker;
class QColor;
class QString;
class QWidget;
class QwtDateScaleDraw;
class QwtPlot;
class QwtPlotCurve;
class QwtPlotGrid;

// The parts that a plot is made of, as they look and paint.
namespace scn {

void setUpCanvas(QwtPlot* plot);

/// Takes the margins and everything painted from the four scales.
void hideScales(QwtPlot* plot);

/// The grid is the caller's to delete.
QwtPlotGrid* addGrid(QwtPlot* plot);

/// Shows local time on the x axis. The plot owns the scale.
QwtDateScaleDraw* addTimeScale(QwtPlot* plot);

CurveTracker* makeTracker(QWidget* canvas);

/// A curve that shows what `series` has loaded; not yet attached.
QwtPlotCurve* makeCurve(CurveSeriesData* series, const QColor& color, const QString& title);

} // namespace scn
