// The axes.
#include "plot/ccurveplot.h"

#include "common/threadassert.h"
#include "plot/valuescale.h"

#include <QScopedValueRollback>
#include <QTimer>
#include <qwt_interval.h>
#include <qwt_scale_engine.h>

#include <cmath>

namespace {

constexpr double kRangeThresholdX = 1.0; // ms
constexpr double kRangeThresholdY = 1e-6;
constexpr int kPixelsPerMajorTick = 90;

} // namespace

void CCurvePlot::updateAxes(qint64 timeMs)
{
    assertGuiThread();
    {
        const QScopedValueRollback<bool> updating(m_updatingAxes, true);
        if (m_followTime && !m_userMovedX) {
            setTimeAxis(m_window.follow(timeMs));
        }
        if (m_autoScaleY && !m_userMovedY) {
            autoScaleY();
        }
    }
    // The reload armed here covers this move, so the range check must not postpone it. A plot without
    // curves is left to that check, which has the first curve loaded.
    if (!m_curves.isEmpty()) {
        noteTimeAxis();
    }
    m_reloadTimer->start();
}

void CCurvePlot::setTimeAxis(const scn::TimeSpan& span)
{
    setBounds(QwtPlot::xBottom, static_cast<double>(span.start), static_cast<double>(span.end));
}

/// Sets the bounds of an axis. They apply at once, but nothing is laid out or painted: the scale on
/// screen follows with the next replot, together with the curves.
void CCurvePlot::setBounds(int axis, double lower, double upper)
{
    const QwtInterval former = axisInterval(axis);
    // The base stores the bounds for the next change of the ticks, but divides the scale by them only on
    // a replot.
    setAxisScale(axis, lower, upper, 0);
    setAxisScaleDiv(axis, axisScaleEngine(axis)->divideScale(lower, upper, axisMaxMajor(axis),
                                                             axisMaxMinor(axis)));
    if (axis != QwtPlot::yLeft) {
        return;
    }
    m_ownValues = axisInterval(axis);
    if (m_ownValues != former) {
        emit valueAxisSet();
    }
}

void CCurvePlot::autoScaleY()
{
    assertGuiThread();
    if (m_userMovedY || !m_autoScaleY || m_curves.isEmpty()) {
        return;
    }
    scaleToValues();
}

void CCurvePlot::scaleToValues()
{
    const auto scale = scn::scaleForValues(m_curves);
    if (scale) {
        setBounds(QwtPlot::yLeft, scale->minValue(), scale->maxValue());
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

    // Shared by all plots of the process: each compares with what any of them last reported.
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

/// Marks the bounds of the time axis as seen by the range check.
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

/// Scales the span of a window that is still filling with the plot's width, relative to the first plot of
/// the process.
void CCurvePlot::stretchTimeWindow()
{
    // Set once, by the first plot that gets here.
    static const int referenceWidth = width();
    if (referenceWidth <= 0) {
        return;
    }
    setTimeAxis(m_window.stretch(scn::TimeWindow::kSpan * width() / referenceWidth));
    updateVisibleData();
}
