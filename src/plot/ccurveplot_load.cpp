// Loading and drawing of the visible window.
#include "plot/ccurveplot.h"

#include "common/threadassert.h"
#include "plot/curvesamples.h"
#include "plot/loadturns.h"
#include "plot/valuescale.h"
#include "plot/viewsurroundings.h"

#include <QDeadlineTimer>
#include <QTimer>
#include <qwt_interval.h>
#include <qwt_plot_curve.h>

#include <utility>

namespace {

constexpr qint64 kLoadMarginMs = 5000;
constexpr int kMaxPointsPerCurve = 10000;

/// What a reload may take of the turn that it begins in, and of each one after.
constexpr std::chrono::milliseconds kFirstSlice{15};
constexpr std::chrono::milliseconds kSlice{10};
constexpr std::chrono::milliseconds kSliceAhead{4}; // the user may still be moving the view

} // namespace

void CCurvePlot::updateVisibleData()
{
    assertGuiThread();
    if (!m_updatingAxes) {
        reloadVisibleData();
    }
}

void CCurvePlot::reloadVisibleData()
{
    if (isVisible() && loadVisibleCurves()) {
        redraw();
    }
}

void CCurvePlot::showCurrentView()
{
    assertGuiThread();
    if (isVisible()) {
        loadVisibleCurves();
    }
    redraw();
}

QVector<scn::ViewLoad::Part> CCurvePlot::partsToLoad()
{
    QVector<scn::ViewLoad::Part> shown;
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        scn::LoadedCurveData* const loaded = scn::loadedData(curve);
        if (curve->isVisible() && loaded) {
            loaded->expectLoad();
            shown.append({loaded, m_curveOffsets[curve]});
        }
    }
    return shown;
}

/// Loads the visible window of each visible curve and sets an automatic y axis for what is shown from
/// now on. False if there is no such curve, and if the load takes longer than this turn.
bool CCurvePlot::loadVisibleCurves()
{
    if (!m_userMovedX) {
        m_surroundings.reset();
    }
    const QVector<scn::ViewLoad::Part> shown = partsToLoad();
    if (shown.isEmpty()) {
        giveUpLoad();
        return false;
    }

    // Bounds set by others since the last replot apply from here on; the replot follows.
    QwtPlot::updateAxes();
    // The range check need not reload what is loaded now.
    noteTimeAxis();
    const auto [start, end] = windowToLoad();
    if (m_load && m_load->isFor(start, end) && m_load->fallDue(shown)) {
        return proceedWithLoad(kFirstSlice);
    }
    // A view that moves with the readings would never be through with a load given up for each move.
    if (m_load && !m_load->isAhead() && (m_load->isFor(start, end) || !m_userMovedX)) {
        m_loadAgain = true;
        return false;
    }
    giveUpLoad();
    m_load = std::make_shared<scn::ViewLoad>(shown, start, end, kMaxPointsPerCurve,
                                             scn::ViewLoad::Begin::Due);
    return proceedWithLoad(kFirstSlice);
}

/// Bounds of what a reload takes, in ms since the epoch.
QPair<qint64, qint64> CCurvePlot::windowToLoad() const
{
    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    return {static_cast<qint64>(time.minValue()) - kLoadMarginMs,
            static_cast<qint64>(time.maxValue()) + kLoadMarginMs};
}

/// Goes on with the load. True once the curves show what it loaded; one that is ahead is not shown.
bool CCurvePlot::proceedWithLoad(std::chrono::milliseconds budget)
{
    const std::shared_ptr<scn::ViewLoad> load = m_load;
    const bool isThrough = load->proceed(QDeadlineTimer(budget));
    if (load != m_load) {
        return false;
    }
    if (!isThrough) {
        scn::LoadTurns::ask(this, m_shownAs, [this] { takeTurn(); });
        return false;
    }
    if (load->isAhead()) {
        return false;
    }
    scn::LoadTurns::withdraw(this);
    load->show();
    if (load != m_load) {
        return false;
    }
    // Reopening a file handles events, which may have hidden the plot.
    if (m_userMovedX && isVisible() && load->hasFetched()) {
        m_surroundings = load->surroundings();
        installEventFilter(m_surroundings.get());
    }
    m_load.reset();
    scaleToLoad();
    if (std::exchange(m_loadAgain, false)) {
        m_reloadTimer->start();
    }
    return true;
}

/// Scales the y axis to what was just loaded. A user who holds an empty view with the y bounds that the plot
/// gave it has not chosen any: the first values come with theirs, or he would have to search for them.
void CCurvePlot::scaleToLoad()
{
    const bool isFirst =
        !m_hasShownValues && scn::showsValues(m_curves, axisInterval(QwtPlot::xBottom));
    // As long as nothing has set the axis, the base scales it.
    const bool isUnset = axisAutoScale(QwtPlot::yLeft);
    const bool isOwn = !m_keepsValues && (isUnset || axisInterval(QwtPlot::yLeft) == m_ownValues);
    if (isFirst && m_userMovedY && isOwn) {
        scaleToValues();
    } else {
        autoScaleY();
    }
    m_hasShownValues = m_hasShownValues || isFirst;
}

/// A further slice of the load under way. A hidden plot loads when it is shown.
void CCurvePlot::takeTurn()
{
    const auto [start, end] = windowToLoad();
    if (!isVisible() || (m_userMovedX && !m_load->isFor(start, end))) {
        giveUpLoad();
    } else if (proceedWithLoad(m_load->isAhead() ? kSliceAhead : kSlice)) {
        redraw();
    }
}

/// Begins to fetch what the reload armed will show.
void CCurvePlot::loadAhead()
{
    const auto [start, end] = windowToLoad();
    if (m_load && m_load->isFor(start, end)) {
        return;
    }
    giveUpLoad();
    m_load = std::make_shared<scn::ViewLoad>(partsToLoad(), start, end, kMaxPointsPerCurve,
                                             scn::ViewLoad::Begin::Ahead);
    scn::LoadTurns::ask(this, m_shownAs, [this] { takeTurn(); });
}

void CCurvePlot::giveUpLoad()
{
    scn::LoadTurns::withdraw(this);
    if (m_load) {
        m_load->cancel();
    }
    m_load.reset();
    m_loadAgain = false;
}

/// Draws the plot. If it is not visible, only the scales are updated, and it is drawn when it is
/// shown.
void CCurvePlot::redraw()
{
    m_redrawWhenShown = !isVisible();
    if (m_redrawWhenShown) {
        QwtPlot::updateAxes();
    } else {
        replot();
    }
}

void CCurvePlot::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QwtPlot::showEvent(event);
    static quint64 shows = 0;
    m_shownAs = ++shows;
    if (m_updatingAxes) {
        return;
    }
    if (loadVisibleCurves() || m_redrawWhenShown) {
        redraw();
    }
}
