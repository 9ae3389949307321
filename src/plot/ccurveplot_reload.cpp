// When the visible window is loaded and drawn.
#include "plot/ccurveplot.h"

#include "common/threadassert.h"
#include "plot/curvesamples.h"

#include <QTimer>
#include <qwt_interval.h>
#include <qwt_plot_curve.h>

#include <cmath>

namespace {

constexpr double kRangeThresholdX = 1.0; // ms
constexpr double kRangeThresholdY = 1e-6;
constexpr qint64 kLoadMarginMs = 5000;
constexpr int kMaxPointsPerCurve = 10000;
constexpr int kPixelsPerMajorTick = 90;

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

/// Has the series of each shown curve load the visible window; false if there is no such curve.
bool CCurvePlot::loadVisibleCurves()
{
    QList<QwtPlotCurve*> shown;
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        if (curve->isVisible() && scn::seriesOf(curve)) {
            shown.append(curve);
        }
    }
    if (shown.isEmpty()) {
        return false;
    }

    // Bounds that others set since the last replot count from here on; the replot follows.
    QwtPlot::updateAxes();
    // What is loaded now needs no second reload by the range check.
    noteTimeAxis();
    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    const qint64 start = static_cast<qint64>(time.minValue()) - kLoadMarginMs;
    const qint64 end = static_cast<qint64>(time.maxValue()) + kLoadMarginMs;
    for (QwtPlotCurve* curve : qAsConst(shown)) {
        scn::seriesOf(curve)->loadWindow(start, end, kMaxPointsPerCurve, m_curveOffsets[curve]);
    }
    return true;
}

/// Draws the plot; a plot that is not visible only has its scales brought up to date and is drawn
/// when it is shown.
void CCurvePlot::redraw()
{
    m_redrawWhenShown = !isVisible();
    if (m_redrawWhenShown) {
        QwtPlot::updateAxes();
    } else {
        replot();
    }
}

void CCurvePlot::checkAxisRangeChange()
{
    assertGuiThread();
    if (m_curves.isEmpty()) {
        return;
    }

    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    if (std::abs(time.minValue() - m_lastLowerX) > kRangeThresholdX ||
        std::abs(time.maxValue() - m_lastUpperX) > kRangeThresholdX) {
        noteTimeAxis();
        m_reloadTimer->start();
    }

    // Common to all plots of the process: each compares with what any of them reported last.
    static double lastLowerY = 0.0;
    static double lastUpperY = 0.0;
    const QwtInterval values = axisInterval(QwtPlot::yLeft);
    if (std::abs(values.minValue() - lastLowerY) > kRangeThresholdY ||
        std::abs(values.maxValue() - lastUpperY) > kRangeThresholdY) {
        lastLowerY = values.minValue();
        lastUpperY = values.maxValue();
        emit yAxisRangeChanged(lastLowerY, lastUpperY);
    }
}

/// Takes the bounds of the time axis for seen by the range check.
void CCurvePlot::noteTimeAxis()
{
    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    m_lastLowerX = time.minValue();
    m_lastUpperX = time.maxValue();
}

void CCurvePlot::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    QwtPlot::resizeEvent(event);
    if (m_window.isFilling() && !m_userMovedX && m_followTime) {
        stretchTimeWindow();
    }
    setAxisMaxMajor(QwtPlot::xBottom, width() / kPixelsPerMajorTick);
    redraw();
}

/// Gives a window that still fills as much more time as the plot is wider than the first plot of
/// the process was.
void CCurvePlot::stretchTimeWindow()
{
    // Set once, by whichever plot comes here first.
    static const int referenceWidth = width();
    if (referenceWidth <= 0) {
        return;
    }
    setTimeAxis(m_window.stretch(width() * scn::TimeWindow::kSpanMs / referenceWidth));
    updateVisibleData();
}

void CCurvePlot::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QwtPlot::showEvent(event);
    if (m_updatingAxes) {
        return;
    }
    const bool loaded = loadVisibleCurves();
    if (loaded) {
        autoScaleY();
    }
    if (loaded || m_redrawWhenShown) {
        redraw();
    }
}
