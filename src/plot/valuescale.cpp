#include "plot/valuescale.h"

#include "plot/axisrange.h"
#include "plot/curvesamples.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace scn {

namespace {

constexpr double kDataShareOfY = 0.8;
constexpr double kFlatMargin = 0.9999999999999998; // bits 0x3FEFFFFFFFFFFFFE
constexpr double kOverload = 9.9e37;
constexpr double kEmptyLowerY = 0.0;
constexpr double kEmptyUpperY = 1.0;

/// Margin of a flat curve as a share of its value, for when rounding swallows kFlatMargin.
constexpr double kFlatShare = 1e-6;

/// Whether a value takes part in the scale.
bool counts(double y)
{
    return y != kOverload && std::isfinite(y);
}

/// Range of y over the loaded samples of `curves`; invalid if no sample counts.
QwtInterval valueBounds(const QList<QwtPlotCurve*>& curves)
{
    double min = std::numeric_limits<double>::max();
    double max = std::numeric_limits<double>::lowest();
    for (const QwtPlotCurve* curve : curves) {
        if (!curve->data()) {
            continue;
        }
        const CurveSamples samples(curve);
        for (int index = 0; index < samples.count(); ++index) {
            const double y = samples.display(index).y();
            if (!counts(y)) {
                continue;
            }
            min = qMin(min, y);
            max = qMax(max, y);
        }
    }
    return min <= max ? QwtInterval(min, max) : QwtInterval();
}

/// Space above and below the data that makes them fill kDataShareOfY of the axis.
double valueMargin(double min, double max)
{
    const double range = max - min;
    // Near the limits of double there is less room than that.
    const double room = std::max((kLargestAxisValue - range) * 0.49, 0.0);
    if (!qFuzzyCompare(range + 1.0, 1.0)) {
        return std::min((range / kDataShareOfY - range) * 0.5, room);
    }
    const bool lost = !(max + kFlatMargin > min - kFlatMargin);
    return lost ? std::abs(max) * kFlatShare : kFlatMargin;
}

} // namespace

std::optional<QwtInterval> scaleForValues(const QList<QwtPlotCurve*>& curves)
{
    const QwtInterval values = valueBounds(curves);
    if (!values.isValid()) {
        return QwtInterval(kEmptyLowerY, kEmptyUpperY);
    }
    const double margin = valueMargin(values.minValue(), values.maxValue());
    const double lower = std::max(values.minValue() - margin, -kLargestAxisValue);
    const double upper = std::min(values.maxValue() + margin, kLargestAxisValue);
    if (!isUsableRange(lower, upper)) {
        return std::nullopt;
    }
    return QwtInterval(lower, upper);
}

bool showsValues(const QList<QwtPlotCurve*>& curves, const QwtInterval& time)
{
    for (const QwtPlotCurve* curve : curves) {
        if (!curve->isVisible() || !curve->data()) {
            continue;
        }
        const CurveSamples samples(curve);
        for (int index = 0; index < samples.count(); ++index) {
            const QPointF shown = samples.display(index);
            if (counts(shown.y()) && time.contains(shown.x())) {
                return true;
            }
        }
    }
    return false;
}

void ValueScaleEngine::autoScale(int maxSteps, double& lower, double& upper, double& stepSize) const
{
    constexpr double kLimit = kLargestAxisValue / 4; // the base rounds up, to even steps
    lower = qBound(-kLimit, lower, kLimit);
    upper = qBound(-kLimit, upper, kLimit);
    QwtLinearScaleEngine::autoScale(maxSteps, lower, upper, stepSize);
}

} // namespace scn
