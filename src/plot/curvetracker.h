#pragma once

#include <QList>
#include <qwt_plot_picker.h>

class QwtPlotCurve;

/// Read-out of the sample nearest to the pointer: channel, local time, reading and unit.
///
/// Appears within 10 pixels of a sample of a visible curve. Distance is measured to the curve as drawn,
/// display offset included; the value shown is the reading itself. GUI thread.
class CurveTracker : public QwtPlotPicker
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CurveTracker)

public:
    /// A picker on the axes `xAxis` and `yAxis` of the plot that `canvas` belongs to.
    CurveTracker(int xAxis, int yAxis, RubberBand rubberBand, DisplayMode trackerMode,
                 QWidget* canvas);

    /// Replaces the list of curves, which are not owned.
    void setCurves(const QList<QwtPlotCurve*>& curves);

    /// Sample `index` of `curve` as drawn: x in ms since the epoch, y with the display offset. (0, 0) if
    /// there is no such sample.
    QPointF displaySample(const QwtPlotCurve* curve, int index) const;

    /// Sample `index` of `curve` with the reading as y; (0, 0) if there is no such sample.
    QPointF rawSample(const QwtPlotCurve* curve, int index) const;

    /// The visible curve with the sample nearest to `pos` (plot coordinates) on screen, the first one of
    /// equals; null if none is within 1000000 pixels. `*distance` is set to the distance in pixels,
    /// 1000000.0 with null.
    QwtPlotCurve* nearestCurve(const QPointF& pos, double* distance) const;

    /// The read-out for a pointer at `pos` (plot coordinates); empty if no sample is near. A channel
    /// missing from the scan list is added to it with an empty unit.
    QwtText trackerTextF(const QPointF& pos) const override;

private:
    QList<QwtPlotCurve*> m_curves;
};
