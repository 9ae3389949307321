#pragma once

#include "plot/timewindow.h"

#include <QColor>
#include <QList>
#include <QMap>
#include <QString>
#include <qwt_plot.h>

class CurveSeriesData;
class CurveTracker;
class CustomMagnifier;
class QTimer;
class QwtDateScaleDraw;
class QwtPlotCurve;
class QwtPlotGrid;

/// The strip chart of a chart window: one curve per shown channel over local time.
///
/// The x axis (QwtPlot::xBottom) carries milliseconds since the epoch, the y axis (QwtPlot::yLeft)
/// the values in the channel's unit. After a clear the first reading opens a window that fills from
/// the left; once a reading reaches its right edge the window scrolls with the newest time. A zoom
/// or a pan holds the view until resumeLive() or clearCurves().
///
/// The plot keeps no samples. A batch of readings only sets the axes and arms a 100 ms timer; when
/// that runs out, the shown curves have their series loaded for the visible window and the plot is
/// drawn once. A plot that is not visible loads and draws nothing and catches up when it is shown.
///
/// GUI thread only. Nothing here reports a failure: a curve without a series is passed over.
class CCurvePlot : public QwtPlot
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CCurvePlot)

public:
    explicit CCurvePlot(QWidget* parent = nullptr);
    ~CCurvePlot() override;

    /// Makes a curve that shows what `series` has loaded, attaches it and returns it. The plot owns
    /// the curve; the series stays with its owner and must outlive the curve. The title is the
    /// channel number as text: the read-out finds the unit by it.
    QwtPlotCurve* addCurve(CurveSeriesData* series, const QColor& color, const QString& title);

    /// Deletes all curves and returns to live view: the minute up to now, y from -10 to 10, the
    /// next reading opens a new window.
    void clearCurves();

    /// A batch of readings has arrived, the last of them at `timeMs` (ms since the epoch).
    void onNewSample(qint64 timeMs);

    /// Sets both axes for the newest time `timeMs` (ms since the epoch) as far as they are
    /// automatic, and arms the reload. The bounds count at once; what is on screen follows with that
    /// reload.
    void updateAxes(qint64 timeMs);

    /// Sets the y axis from the loaded samples of all curves, hidden ones included, so that the
    /// data fill four fifths of it. Does nothing while the user holds the view.
    void autoScaleY();

    /// Gives a view that the user holds back to the readings.
    void resumeLive();

    /// Lets the x axis follow the readings, or stops it.
    void setFollowTime(bool on);

    /// Lets the y axis scale itself, or stops it.
    void setAutoScaleY(bool on);

    /// Forgets the time window; the next time opens a new one of one minute.
    void resetTimeWindow();

    /// Shifts the display of `curve` by `offset`, in y units, from the next reload on. A curve that
    /// is not known here is ignored.
    void setCurveOffset(QwtPlotCurve* curve, double offset);

    /// The display offset of `curve` in y units. Asking makes a curve known, with 0.0.
    double curveOffset(QwtPlotCurve* curve);

    /// Axes that the wheel zooms: 1 time only, 2 values only, 3 both. Any other mode changes nothing.
    void setZoomMode(short mode);

public slots:
    /// Loads the visible window of each shown curve and draws once. The reload timer runs it.
    void updateVisibleData();

    /// Arms the reload after an x move that no reading caused, and reports a new y range. The
    /// 100 ms range timer runs it.
    void checkAxisRangeChange();

    /// Takes the view from the readings after a zoom, and holds the x axis to ten hours at most.
    void onMagnifierZoomed(double factor);

signals:
    /// The list of curves has changed.
    void curvesUpdated();

    /// The y bounds differ from those that a plot of this process reported last.
    void yAxisRangeChanged(double minY, double maxY);

    /// Part of the class's face; never emitted.
    void dataRangeChanged(qlonglong start, qlonglong end);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void initInteraction();
    void initTimers();

    void onPanned();
    void holdView();
    void setTimeAxis(const scn::TimeSpan& span);
    void noteTimeAxis();
    void setBounds(int axis, double lower, double upper);
    void stretchTimeWindow();
    void reloadVisibleData();
    bool loadVisibleCurves();
    void redraw();

    QwtPlotGrid* m_grid = nullptr;
    QList<QwtPlotCurve*> m_curves;
    QwtDateScaleDraw* m_timeScaleDraw = nullptr;
    CurveTracker* m_tracker = nullptr;
    CustomMagnifier* m_magnifier = nullptr;
    scn::TimeWindow m_window;
    bool m_userMovedX = false;
    bool m_userMovedY = false;
    bool m_followTime = true;
    bool m_autoScaleY = true;
    bool m_updatingAxes = false;
    QTimer* m_reloadTimer = nullptr;
    QTimer* m_rangeCheckTimer = nullptr;
    double m_lastLowerX = 0.0;
    double m_lastUpperX = 0.0;
    QMap<QwtPlotCurve*, double> m_curveOffsets;

    /// A replot was skipped while the plot was not visible: the picture that the canvas keeps is old.
    bool m_redrawWhenShown = false;
};
