#pragma once

#include "plot/timewindow.h"
#include "plot/viewload.h"

#include <QColor>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <qwt_interval.h>
#include <qwt_plot.h>

#include <chrono>
#include <memory>

class CurveSeriesData;
class CurveTracker;
class CustomMagnifier;
class QTimer;
class QwtDateScaleDraw;
class QwtPlotCurve;
class QwtPlotGrid;

namespace scn {
class ViewSurroundings;
}

/// The strip chart of a chart window: one curve per channel over local time.
///
/// The x axis (QwtPlot::xBottom) carries milliseconds since the epoch, the y axis (QwtPlot::yLeft)
/// values in the channel's unit. After a clear the first reading opens a window that fills from the
/// left; once a reading reaches its right edge, the window scrolls with the newest time. A zoom or a
/// pan freezes the view until resumeLive() or clearCurves(); the first samples that the plot shows set
/// the y axis even then, unless something other than the plot has set it.
///
/// The plot holds no samples. A batch of readings only sets the axes and arms a 100 ms timer. When it
/// expires, the series of the visible curves load the visible window and the plot is drawn once. What
/// takes long to fetch from the store goes on in the next turns of the event loop, with the former
/// points on display until all curves have theirs, and is given up when the user moves the view. What a
/// zoom or a pan needs is fetched while the timer runs. A plot that is not visible loads and draws
/// nothing, and catches up when it is shown.
///
/// GUI thread. Nothing here reports a failure: a curve without a series is skipped.
class CCurvePlot : public QwtPlot
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CCurvePlot)

public:
    explicit CCurvePlot(QWidget* parent = nullptr);
    ~CCurvePlot() override;

    /// Creates and attaches a curve that shows what `series` has loaded. The plot owns the curve; the
    /// caller keeps the series, which must outlive the curve. The title is the channel number as text:
    /// the read-out looks the unit up by it.
    QwtPlotCurve* addCurve(CurveSeriesData* series, const QColor& color, const QString& title);

    /// Deletes all curves and returns to the live view: the last minute, y from -10 to 10. The next
    /// reading opens a new window.
    void clearCurves();

    /// A batch of readings has arrived, the last one at `timeMs` (ms since the epoch).
    void onNewSample(qint64 timeMs);

    /// Sets the automatic axes for the newest time `timeMs` (ms since the epoch) and arms the reload.
    /// The bounds apply at once; the screen follows with the reload.
    void updateAxes(qint64 timeMs);

    /// Scales the y axis so that the loaded samples of all curves, hidden ones included, fill four fifths
    /// of it. Does nothing while the user holds the view.
    void autoScaleY();

    /// Loads what the visible curves show now, scales to it and draws once, for changes that no reading
    /// brings about: a finished run has no next one.
    void showCurrentView();

    /// Whether what the view shows next is still being fetched.
    bool isLoading() const { return m_load != nullptr; }

    /// Resumes following the readings after a zoom or a pan.
    void resumeLive();

    /// Whether the x axis follows the readings.
    void setFollowTime(bool on);

    /// Whether the y axis scales itself.
    void setAutoScaleY(bool on);

    /// Forgets the time window; the next reading opens a new one of one minute.
    void resetTimeWindow();

    /// Shifts the display of `curve` by `offset`, in y units, from the next reload on. An unknown curve
    /// is ignored.
    void setCurveOffset(QwtPlotCurve* curve, double offset);

    /// The display offset of `curve` in y units. An unknown curve is entered with 0.0.
    double curveOffset(QwtPlotCurve* curve);

    /// Axes that the wheel zooms: 1 time, 2 values, 3 both. Any other mode is ignored.
    void setZoomMode(short mode);

public slots:
    /// Loads the visible window of each visible curve and draws once. The reload timer calls it.
    void updateVisibleData();

    /// Arms the reload after the x axis has moved without a reading, and reports a new y range. The
    /// 100 ms range timer calls it.
    void checkAxisRangeChange();

    /// Freezes the view after a zoom and limits the x axis to ten hours.
    void onMagnifierZoomed(double factor);

signals:
    /// The list of curves has changed.
    void curvesUpdated();

    /// The y bounds differ from those that any plot of the process last reported.
    void yAxisRangeChanged(double minY, double maxY);

    /// The plot has set other y bounds, or its user has zoomed them. No other plot keeps this report back.
    void valueAxisSet();

    /// Part of the interface; never emitted.
    void dataRangeChanged(qlonglong start, qlonglong end);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void initInteraction();
    void initTimers();

    void onPanned();
    void holdView();
    void releaseValues();
    void setTimeAxis(const scn::TimeSpan& span);
    void noteTimeAxis();
    void setBounds(int axis, double lower, double upper);
    void stretchTimeWindow();
    void reloadVisibleData();
    void armReloadOfMove();
    QVector<scn::ViewLoad::Part> partsToLoad();
    bool loadVisibleCurves();
    void scaleToValues();
    void scaleToLoad();
    bool proceedWithLoad(std::chrono::milliseconds budget);
    void takeTurn();
    void loadAhead();
    void giveUpLoad();
    QPair<qint64, qint64> windowToLoad() const;
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
    bool m_keepsValues = false;    ///< The y axis was zoomed, or its scaling was switched off.
    QwtInterval m_ownValues;       ///< The y bounds as the plot left them.
    bool m_hasShownValues = false; ///< Since the last clear.
    QTimer* m_reloadTimer = nullptr;
    QTimer* m_rangeCheckTimer = nullptr;
    double m_lastLowerX = 0.0;
    double m_lastUpperX = 0.0;
    QMap<QwtPlotCurve*, double> m_curveOffsets;

    std::shared_ptr<scn::ViewLoad> m_load; ///< Under way, in slices.
    bool m_loadAgain = false;              ///< A reload was due while one was under way.
    std::unique_ptr<scn::ViewSurroundings> m_surroundings; ///< Of the view that the user holds.
    quint64 m_shownAs = 0;                                 ///< Counts the shows of all plots.

    /// A replot was skipped while the plot was invisible: the canvas holds an old picture.
    bool m_redrawWhenShown = false;
};
