#include "plot/custompanner.h"

#include "common/threadassert.h"

#include <QEvent>
#include <QMouseEvent>
#include <qwt_plot.h>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>

#include <cmath>
#include <cstdlib>

namespace {

/// A drag of this many pixels or fewer waits for the release.
constexpr int kDragThresholdPixels = 2;

/// Steps between two major ticks if there are no minor ones.
constexpr double kStepsPerMajorGap = 5.0;

/// Steps across the axis if there are no ticks at all.
constexpr double kStepsPerRange = 50.0;

double meanGap(const QList<double>& ticks)
{
    return (ticks.last() - ticks.first()) / (ticks.size() - 1);
}

} // namespace

CustomPanner::CustomPanner(QWidget* canvas)
    : QwtPlotPanner(canvas)
{
    assertGuiThread();
}

void CustomPanner::setSnapToTicks(bool on)
{
    m_snapToTicks = on;
}

bool CustomPanner::eventFilter(QObject* object, QEvent* event)
{
    if (object == parentWidget() && event->type() == QEvent::Hide) {
        m_dragging = false;
        m_accumX = 0;
    }
    return QwtPlotPanner::eventFilter(object, event);
}

void CustomPanner::widgetMousePressEvent(QMouseEvent* event)
{
    assertGuiThread();
    m_dragging = true;
    m_lastX = qRound(event->localPos().x());
    m_lastY = qRound(event->localPos().y());
    m_accumX = 0;
    m_accumY = 0;
    if (plot()) {
        readTimeAxis();
    }
    QwtPlotPanner::widgetMousePressEvent(event);
    // The base covers the canvas with a snapshot, which would hide the live moves, and moves the axes
    // again on release if the snapshot is still there.
    hide();
}

/// Notes the bounds and the step of the time axis at the start of a drag.
void CustomPanner::readTimeAxis()
{
    const QwtScaleDiv& scale = plot()->axisScaleDiv(QwtPlot::xBottom);
    m_startLower = scale.lowerBound();
    m_startUpper = scale.upperBound();

    const QList<double> minorTicks = scale.ticks(QwtScaleDiv::MinorTick);
    if (minorTicks.size() >= 2) {
        m_stepSize = meanGap(minorTicks);
    }

    const QList<double> majorTicks = scale.ticks(QwtScaleDiv::MajorTick);
    if (!(m_stepSize > 0.0) && majorTicks.size() >= 2) {
        const double gap = majorTicks.at(1) - majorTicks.at(0);
        m_stepSize = gap > 0.0 ? gap / kStepsPerMajorGap : gap;
    }

    if (!(m_stepSize > 0.0)) {
        m_stepSize = (m_startUpper - m_startLower) / kStepsPerRange;
    }
}

void CustomPanner::widgetMouseMoveEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (!m_dragging) {
        QwtPlotPanner::widgetMouseMoveEvent(event);
        return;
    }
    const int x = qRound(event->localPos().x());
    const int y = qRound(event->localPos().y());
    m_accumX += x - m_lastX;
    m_accumY += y - m_lastY;
    m_lastX = x;
    m_lastY = y;
    if (std::abs(m_accumX) > kDragThresholdPixels) {
        moveCanvas(m_accumX, 0);
        m_accumX = 0;
    }
}

void CustomPanner::widgetMouseReleaseEvent(QMouseEvent* event)
{
    assertGuiThread();
    m_dragging = false;
    QwtPlotPanner::widgetMouseReleaseEvent(event);
    // Applies the rest of the drag; the next press resets it.
    if (m_accumX != 0) {
        moveCanvas(m_accumX, 0);
    }
}

void CustomPanner::moveCanvas(int dx, int dy)
{
    assertGuiThread();
    if (!plot() || !m_snapToTicks || !(m_stepSize > 0.0)) {
        QwtPlotPanner::moveCanvas(dx, dy);
        return;
    }
    const QwtScaleMap timeMap = plot()->canvasMap(QwtPlot::xBottom);
    const double delta = timeMap.invTransform(0) - timeMap.invTransform(dx);
    if (delta == 0.0) {
        return;
    }
    const double steps = std::ceil(std::abs(delta) / m_stepSize);
    const double shift = std::copysign(steps * m_stepSize, delta);
    const double lower = m_startLower + shift;
    const double upper = m_startUpper + shift;
    plot()->setAxisScale(QwtPlot::xBottom, lower, upper, 0);
    plot()->replot();
    m_startLower = lower;
    m_startUpper = upper;
    emit panned();
}
