#include "plot/custommagnifier.h"

#include "common/threadassert.h"
#include "plot/axisrange.h"

#include <qwt_interval.h>
#include <qwt_plot.h>

#include <cmath>

CustomMagnifier::CustomMagnifier(QWidget* canvas)
    : QwtPlotMagnifier(canvas)
{
    assertGuiThread();
}

void CustomMagnifier::rescale(double factor)
{
    assertGuiThread();
    if (!canRescale(std::abs(factor))) {
        return;
    }
    QwtPlotMagnifier::rescale(factor);
    emit zoomed(factor);
}

/// Whether every enabled axis can still be divided after the base's zoom step.
bool CustomMagnifier::canRescale(double factor) const
{
    for (int axis = 0; plot() && axis < QwtPlot::axisCnt; ++axis) {
        const QwtInterval range = plot()->axisInterval(axis);
        if (!isAxisEnabled(axis) || !scn::isUsableRange(range.minValue(), range.maxValue())) {
            continue;
        }
        const double centre = 0.5 * (range.minValue() + range.maxValue());
        const double half = 0.5 * range.width() * factor;
        const bool isDistinct = factor >= 1.0 || scn::isDistinctRange(centre - half, centre + half);
        if (!isDistinct || !scn::isUsableRange(centre - half, centre + half)) {
            return false;
        }
    }
    return true;
}
