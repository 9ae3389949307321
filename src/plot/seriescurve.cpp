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

/// The library draws a polyline in pieces of this many segments. Where two segments of a piece meet, and
/// at its end, a pixel more or less may be set than by each segment alone.
constexpr int kSegmentsPerPiece = 6;

/// The segments that are drawn as they are at the begin and at the end of a run in one pixel column: the
/// lines to the columns beside them join as ever. Fewer move pixels, as random lines show.
constexpr int kSegmentsIntoRun = 2;
constexpr int kSegmentsOutOfRun = 1;
constexpr int kSegmentsOfShortRun = kSegmentsIntoRun + kSegmentsOutOfRun + 1;

/// Whether lines are drawn pixel by pixel in an opaque colour, so that drawing one twice changes nothing.
bool drawsPlainPixels(QPainter* painter)
{
    const QPen& pen = painter->pen();
    const bool thin = pen.isCosmetic()
                          ? pen.widthF() <= 1.0
                          : pen.widthF() <= 1.0 && painter->device()->devicePixelRatio() == 1;
    return thin && pen.style() == Qt::SolidLine && pen.capStyle() != Qt::FlatCap &&
           pen.brush().isOpaque() && painter->opacity() == 1.0 &&
           painter->compositionMode() == QPainter::CompositionMode_SourceOver &&
           !painter->testRenderHint(QPainter::Antialiasing) && QwtPainter::polylineSplitting() &&
           painter->paintEngine()->type() == QPaintEngine::Raster;
}

/// Draws the points `from` to `to` of a line in the pieces that the library would draw.
void drawPieces(QPainter* painter, const QPolygonF& line, int from, int to)
{
    while (from < to) {
        const int end = qMin(to, (from / kSegmentsPerPiece + 1) * kSegmentsPerPiece);
        painter->drawPolyline(line.constData() + from, end - from + 1);
        from = end;
    }
}

/// Last point of the run in one pixel column that begins at `first`.
int endOfRun(const QPolygonF& line, int first, int limit)
{
    const QPointF* const points = line.constData();
    const double x = points[first].x();
    int last = first;
    while (last < limit && points[last + 1].x() == x) {
        ++last;
    }
    return last;
}

/// From the highest to the lowest of a run's inner points; empty if the run touches the edge of `area`,
/// where lines are cut off and may join differently.
QLineF innerSpan(const QPolygonF& line, int first, int last, const QRectF& area)
{
    const QPointF* const points = line.constData();
    double top = points[first + 1].y();
    double bottom = top;
    for (int index = first + 2; index < last; ++index) {
        // By value: references would be chosen by a branch.
        const double y = points[index].y();
        top = y < top ? y : top;
        bottom = y > bottom ? y : bottom;
    }
    const double x = points[first].x();
    const double highest = qMin(top, qMin(points[first].y(), points[last].y()));
    const double lowest = qMax(bottom, qMax(points[first].y(), points[last].y()));
    const bool apart =
        x > area.left() && x < area.right() && highest > area.top() && lowest < area.bottom();
    return apart ? QLineF(x, top, x, bottom) : QLineF();
}

/// Draws a line as the library does, but the inner points of each run in one pixel column as one span.
void drawInColumns(QPainter* painter, const QPolygonF& line, const QRectF& area)
{
    const int lastPoint = line.size() - 1;
    // The last piece is drawn whole: no other covers its end.
    const int lastPiece = (lastPoint - 1) / kSegmentsPerPiece * kSegmentsPerPiece;
    QVector<QLineF> spans;
    spans.reserve(qMax(0, qMin(line.size() / kSegmentsOfShortRun, int(area.width()))));
    int drawnTo = 0;
    for (int first = 0; first < lastPiece;) {
        const int last = endOfRun(line, first, lastPiece);
        const QLineF span =
            last - first > kSegmentsOfShortRun ? innerSpan(line, first, last, area) : QLineF();
        if (!span.isNull()) {
            spans.append(span);
            drawPieces(painter, line, drawnTo, first + kSegmentsIntoRun);
            drawnTo = last - kSegmentsOutOfRun;
        }
        first = last + 1;
    }
    drawPieces(painter, line, drawnTo, lastPoint);
    painter->drawLines(spans);
}

/// Puts the samples from `from` to `to` into `line`, in whole pixels and without repetitions. Returns
/// whether all of them lie within `bounds`.
bool toPixelLine(const CurveSamples& samples, LinearScale xScale, LinearScale yScale, int from,
                 int to, const QRectF& bounds, QPolygonF& line)
{
    line.resize(to - from + 1);
    QPointF* const first = line.data();
    QPointF* next = first;
    // Copies, which the compiler knows not to be among the points.
    const double left = bounds.left();
    const double right = bounds.right();
    const double top = bounds.top();
    const double bottom = bounds.bottom();
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
        allInside &= (x >= left) & (x <= right) & (y >= top) & (y <= bottom);
    }
    line.resize(static_cast<int>(next - first));
    return allInside;
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
    // Kept from curve to curve: memory of this size takes long to get.
    static QPolygonF pixels;
    const bool inside = toPixelLine(CurveSamples(this), LinearScale(xMap), LinearScale(yMap), from,
                                    to, clipRect, pixels);
    const QPolygonF line = inside ? pixels : QwtClipper::clipPolygonF(clipRect, pixels, false);
    if (drawsPlainPixels(painter)) {
        drawInColumns(painter, line, clipRect);
    } else {
        QwtPainter::drawPolyline(painter, line);
    }
}

} // namespace scn
