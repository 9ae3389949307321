#pragma once

#include <QList>
#include <qwt_interval.h>
#include <qwt_scale_engine.h>

#include <optional>

class QwtPlotCurve;

namespace scn {

/// Bounds of the value axis for the loaded samples of `curves`: the data fill four fifths of it.
/// Nothing for values at both ends of the number range, which no axis can span.
std::optional<QwtInterval> scaleForValues(const QList<QwtPlotCurve*>& curves);

/// Divides the value axis. As long as no reading has set the axis the base class does, by the curves'
/// bounds, which may be infinite or too far apart.
class ValueScaleEngine : public QwtLinearScaleEngine
{
public:
    void autoScale(int maxSteps, double& lower, double& upper, double& stepSize) const override;
};

} // namespace scn
