#include "plot/curvetracker.h"

#include "common/threadassert.h"
#include "plot/curvesamples.h"
#include "state/globals.h"

#include <QDateTime>
#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>
#include <qwt_text.h>

#include <cmath>
#include <limits>

namespace {

/// Samples this far away, in pixels or in data units, are never picked.
constexpr double kNoDistance = 1000000.0;

/// The pointer must be closer to a sample than this.
constexpr double kPickDistancePixels = 10.0;

/// Pixels are clamped to this range to fit an int; anything outside is too far to be picked.
constexpr int kPixelLimit = 1 << 30;

/// A scale position as a whole pixel, truncated.
int toPixel(const QwtScaleMap& map, double value)
{
    const double pixel = map.transform(value);
    if (!(pixel > -kPixelLimit)) {
        return -kPixelLimit;
    }
    if (!(pixel < kPixelLimit)) {
        return kPixelLimit;
    }
    return static_cast<int>(pixel);
}

bool hasSample(const QwtPlotCurve* curve, int index)
{
    return curve && curve->data() && index >= 0 && static_cast<size_t>(index) < curve->dataSize();
}

/// Searches for the sample nearest to a position on screen. Compares squares of whole-pixel distances,
/// which order like the distances themselves.
class PixelSearch
{
public:
    PixelSearch(const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QPointF& pos)
        : m_xMap(xMap)
        , m_yMap(yMap)
        , m_pos(pos)
        , m_x(toPixel(xMap, pos.x()))
        , m_y(toPixel(yMap, pos.y()))
    {
    }

    bool isOnScreen() const { return std::abs(m_x) < kPixelLimit && std::abs(m_y) < kPixelLimit; }

    /// True if one of `samples` is nearer than all offered before.
    bool offer(const scn::CurveSamples& samples)
    {
        qint64 best = m_best;
        double reach = reachOf(best);
        const double time = m_pos.x();
        const auto consider = [&](const QPointF& sample) {
            if (!(std::abs(sample.x() - time) <= reach)) {
                return;
            }
            const qint64 dx = toPixel(m_xMap, sample.x()) - qint64(m_x);
            const qint64 dy = toPixel(m_yMap, sample.y()) - qint64(m_y);
            const qint64 square = dx * dx + dy * dy;
            if (square < best) {
                best = square;
                reach = reachOf(best);
            }
        };
        const QPointF* const points = samples.points();
        const int pointCount = qMin(samples.pointCount(), samples.count());
        for (int index = 0; index < pointCount; ++index) {
            consider(points[index]);
        }
        for (int index = pointCount; index < samples.count(); ++index) {
            consider(samples.display(index));
        }
        const bool nearer = best < m_best;
        m_best = best;
        return nearer;
    }

    double distance() const { return std::sqrt(static_cast<double>(m_best)); }

private:
    /// How far in time a sample may be and still be nearer than `square`; no such limit on a scale that
    /// is not linear. Each of the two pixels is up to one off.
    double reachOf(qint64 square) const
    {
        const double pixels = std::abs(m_xMap.pDist());
        if (m_xMap.transformation() || !(pixels > 0.0)) {
            return std::numeric_limits<double>::infinity();
        }
        return (std::sqrt(static_cast<double>(square)) + 2.0) * std::abs(m_xMap.sDist()) / pixels;
    }

    const QwtScaleMap m_xMap;
    const QwtScaleMap m_yMap;
    const QPointF m_pos;
    const int m_x;
    const int m_y;
    qint64 m_best = qint64(kNoDistance) * qint64(kNoDistance);
};

/// Index of the first sample nearest to `pos` in data units, -1 if all are too far. The x unit is the
/// millisecond, so in effect time decides.
int nearestInDataUnits(const scn::CurveSamples& samples, const QPointF& pos)
{
    int nearest = -1;
    double distance = kNoDistance;
    double square = kNoDistance * kNoDistance;
    for (int index = 0; index < samples.count(); ++index) {
        const QPointF away = samples.raw(index) - pos;
        const double candidate = away.x() * away.x() + away.y() * away.y();
        if (!(candidate < square)) {
            continue;
        }
        // Different squares can have the same root, and the roots decide.
        const double root = std::sqrt(candidate);
        if (root < distance) {
            nearest = index;
            distance = root;
            square = candidate;
        }
    }
    return nearest;
}

QString readoutText(const QString& title, qint64 timeMs, double value)
{
    const QString time =
        QDateTime::fromMSecsSinceEpoch(timeMs).toString(QStringLiteral(" yyyy:MM:dd HH:mm:ss "));
    // A channel missing from the scan list is entered with an empty unit.
    const QString unit = g_scanChannels[title.toInt()];
    return QStringLiteral("\n%1\n%2\n%3 %4\n")
        .arg(title, time, QString::number(value, 'f', 5), unit);
}

QwtText styledReadout(const QString& content, const QColor& color)
{
    QwtText text(content);
    QFont font = text.font();
    font.setPointSize(10);
    text.setFont(font);
    text.setColor(color);
    text.setBackgroundBrush(QBrush(Qt::black));
    text.setBorderPen(QPen(QBrush(Qt::gray), 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    text.setBorderRadius(3.0);
    return text;
}

} // namespace

CurveTracker::CurveTracker(int xAxis, int yAxis, RubberBand rubberBand, DisplayMode trackerMode,
                           QWidget* canvas)
    : QwtPlotPicker(xAxis, yAxis, rubberBand, trackerMode, canvas)
{
    assertGuiThread();
}

void CurveTracker::setCurves(const QList<QwtPlotCurve*>& curves)
{
    assertGuiThread();
    m_curves = curves;
}

QPointF CurveTracker::displaySample(const QwtPlotCurve* curve, int index) const
{
    return hasSample(curve, index) ? scn::CurveSamples(curve).display(index) : QPointF();
}

QPointF CurveTracker::rawSample(const QwtPlotCurve* curve, int index) const
{
    return hasSample(curve, index) ? scn::CurveSamples(curve).raw(index) : QPointF();
}

QwtPlotCurve* CurveTracker::nearestCurve(const QPointF& pos, double* distance) const
{
    assertGuiThread();
    *distance = kNoDistance;
    if (!plot()) {
        return nullptr;
    }
    PixelSearch search(plot()->canvasMap(xAxis()), plot()->canvasMap(yAxis()), pos);
    if (!search.isOnScreen()) {
        return nullptr;
    }
    QwtPlotCurve* nearest = nullptr;
    for (QwtPlotCurve* curve : m_curves) {
        if (curve && curve->isVisible() && curve->plot() == plot() &&
            search.offer(scn::CurveSamples(curve))) {
            nearest = curve;
        }
    }
    *distance = search.distance();
    return nearest;
}

QwtText CurveTracker::trackerTextF(const QPointF& pos) const
{
    assertGuiThread();
    double distance = 0.0;
    const QwtPlotCurve* curve = nearestCurve(pos, &distance);
    if (!curve || !(distance < kPickDistancePixels)) {
        return QwtText();
    }
    const scn::CurveSamples samples(curve);
    const int index = nearestInDataUnits(samples, pos);
    const QPointF sample = index >= 0 ? samples.raw(index) : QPointF();
    const QString text =
        readoutText(curve->title().text(), static_cast<qint64>(sample.x()), sample.y());
    return styledReadout(text, curve->pen().color());
}
