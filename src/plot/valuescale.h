#pragma once

#include <QList>
#include <qwt_interval.h>
#include <qwt_scale_engine.h>

#include <optional>

class QwtPlotCurve;

namespace scn {

/// Bounds of the value axis so that the loaded samples of `curves` fill four fifths of it. Nothing if
/// the values span more than an axis can.
std::optional<QwtInterval> scaleForValues(const QList<QwtPlotCurve*>& curves);

/// Whether a visible curve shows a value within `time` that counts for the scale.
bool showsValues(const QList<QwtPlotCurve*>& curves, const QwtInterval& time);

/// Divides the value axis. Until a reading sets the axis the base class scales it by the curves' bounds,
/// which may be infinite or too far apart.
class ValueScaleEngine : public QwtLinearScaleEngine
{
public:
    void autoScale(int maxSteps, double& lower, double& upper, double& stepSize) const override;
};

} // namespace scn
