#include "plot/seriescurve.h"

#include "common/threadassert.h"
#include "plot/curvesamples.h"

#include <QPainter>
#include <qwt_clipper.h>
#include <qwt_painter.h>
#include <qwt_scale_map.h>

#include <cmath>
#include <limits>

namespace scn {
namespace {

/// Pixel coordinates below this fit an int.
constexpr double kIntPixels = 1e9;

/// Where an overflow is drawn: far outside, but a number that clipping can handle.
constexpr double kFarPixels = 1e200;

/// Rounds like the base. The detour through an int saves a call per coordinate.
double rounded(double pixel)
{
    if (std::abs(pixel) < kIntPixels) {
        return static_cast<int>(pixel < 0.0 ? pixel - 0.5 : pixel + 0.5);
    }
    const double held = qBound(-kFarPixels, pixel, kFarPixels);
    return held < 0.0 ? std::ceil(held - 0.5) : std::floor(held + 0.5);
}

/// A linear scale as plain numbers that the compiler can keep in registers.
class LinearScale
{
public:
    explicit LinearScale(const QwtScaleMap& map)
        : m_pixel(map.p1())
        , m_start(map.s1())
        , m_factor(map.s1() != map.s2() ? (map.p2() - map.p1()) / (map.s2() - map.s1()) : 1.0)
    {
    }

    double pixel(double value) const { return rounded(m_pixel + (value - m_start) * m_factor); }

private:
    double m_pixel;
    double m_start;
    double m_factor;
};

/// The samples from `from` to `to` in whole pixels, without repetitions. Sets `*inside` to whether all
/// of them lie within `bounds`.
QPolygonF pixelLine(const CurveSamples& samples, const LinearScale& xScale,
                    const LinearScale& yScale, int from, int to, const QRectF& bounds, bool* inside)
{
    QPolygonF line(to - from + 1);
    QPointF* const first = line.data();
    QPointF* next = first;
    double lastX = std::numeric_limits<double>::quiet_NaN();
    double lastY = lastX;
    bool allInside = true;
    // No branches on the data: whether a sample repeats its predecessor is unpredictable.
    for (int index = from; index <= to; ++index) {
        const QPointF sample = samples.display(index);
        const double x = xScale.pixel(sample.x());
        const double y = yScale.pixel(sample.y());
        *next = QPointF(x, y);
        next += int(x != lastX) | int(y != lastY);
        lastX = x;
        lastY = y;
        allInside &= (x >= bounds.left()) & (x <= bounds.right()) & (y >= bounds.top()) &
                     (y <= bounds.bottom());
    }
    line.resize(static_cast<int>(next - first));
    *inside = allInside;
    return line;
}

} // namespace

bool SeriesCurve::isPlainLine(QPainter* painter, const QwtScaleMap& xMap,
                              const QwtScaleMap& yMap) const
{
    return brush().style() == Qt::NoBrush && !testCurveAttribute(Fitted) &&
           testPaintAttribute(ClipPolygons) && testPaintAttribute(FilterPoints) &&
           !xMap.transformation() && !yMap.transformation() &&
           QwtPainter::roundingAlignment(painter);
}

void SeriesCurve::drawLines(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                            const QRectF& canvasRect, int from, int to) const
{
    assertGuiThread();
    if (from > to) {
        return;
    }
    if (!isPlainLine(painter, xMap, yMap)) {
        QwtPlotCurve::drawLines(painter, xMap, yMap, canvasRect, from, to);
        return;
    }
    const double margin = qMax(1.0, painter->pen().widthF());
    const QRectF clipRect = canvasRect.adjusted(-margin, -margin, margin, margin);
    bool inside = false;
    QPolygonF line = pixelLine(CurveSamples(this), LinearScale(xMap), LinearScale(yMap), from, to,
                               clipRect, &inside);
    if (!inside) {
        line = QwtClipper::clipPolygonF(clipRect, line, false);
    }
    QwtPainter::drawPolyline(painter, line);
}

} // namespace scn
