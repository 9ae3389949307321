#include "storage/curveseriesdata.h"

#include "common/threadassert.h"
#include "storage/curvedatadb.h"
#include "storage/pointthinning.h"

#include <QDebug>

#include <algorithm>

namespace {

/// Dropped points that accumulate in front of the window before one block move removes them, so the
/// move costs next to nothing per point.
constexpr int kTrimBlock = 1000;

/// How far outside the points in memory a view may start and still be served from them.
constexpr double kMemoryMarginMs = 10000.0;

qint64 toTime(double x)
{
    return static_cast<qint64>(x);
}

} // namespace

CurveSeriesData::CurveSeriesData(const QString& curveName, const QString& directoryName)
    : CurveSeriesData(curveName, CurveDataDB::instance(directoryName))
{
}

CurveSeriesData::CurveSeriesData(const QString& curveName, CurveDataDB* store)
    : m_store(store)
    , m_curveName(curveName)
    , m_curveId(store ? store->registerCurve(curveName) : -1)
{
    if (m_curveId == -1) {
        qWarning() << "曲线注册失败，无法生成有效curve_id";
    }
}

bool CurveSeriesData::registerAgain()
{
    assertGuiThread();
    if (m_store && m_curveId == -1) {
        m_curveId = m_store->registerCurveAtOnce(m_curveName);
    }
    return m_curveId != -1;
}

void CurveSeriesData::addPoint(double x, double y)
{
    assertGuiThread();
    if (!isUsable()) {
        return;
    }
    m_store->appendPoint(m_curveId, toTime(x), y);
    m_recentPoints.append(QPointF(x, y));
    pointsAdded();
}

void CurveSeriesData::addPoints(const QVector<QPointF>& points)
{
    assertGuiThread();
    if (!isUsable() || points.isEmpty()) {
        return;
    }
    m_store->appendPoints(m_curveId, points);
    m_recentPoints.append(points);
    pointsAdded();
}

void CurveSeriesData::pointsAdded()
{
    trimWindow();
    m_recentStart = toTime(recentData()[0].x());
    m_recentEnd = toTime(m_recentPoints.constLast().x());
    updateStatistics();
}

/// Keeps exactly the newest kMaxRecentPoints in the window.
void CurveSeriesData::trimWindow()
{
    m_recentOffset = std::max(m_recentOffset, m_recentPoints.size() - kMaxRecentPoints);
    if (m_recentOffset < kTrimBlock) {
        return;
    }
    m_recentPoints.remove(0, m_recentOffset);
    m_recentOffset = 0;
}

QVector<QPointF> CurveSeriesData::loadWindow(qint64 start, qint64 end, int maxPoints, double offset)
{
    assertGuiThread();
    if (!isUsable()) {
        return {};
    }
    m_store->flushAndDetach();
    m_yOffset = offset;
    QVector<QPointF> stored;
    if (isInMemory(start)) {
        showWindow(start, end, recentData(), recentCount(), maxPoints);
    } else {
        stored = m_store->readCurveData(m_curveId, start, end, maxPoints);
        showWindow(start, end, stored.constData(), stored.size(), maxPoints);
    }
    return stored;
}

scn::CurveRead CurveSeriesData::beginLoad(qint64 start, qint64 end, int maxPoints,
                                          scn::HeldFiles& files)
{
    assertGuiThread();
    scn::CurveRead read({m_curveId, start, end, maxPoints}, &files);
    m_store->flushAndDetach(); // reopening a file handles events, in which this series may go
    return read;
}

bool CurveSeriesData::proceedWithLoad(scn::CurveRead& read, scn::ReadSlice& slice)
{
    return m_store->proceed(read, slice);
}

void CurveSeriesData::finishLoad(const scn::CurveRead& read, double offset)
{
    assertGuiThread();
    m_yOffset = offset;
    const QVector<QPointF>& points = read.points();
    showWindow(read.range().start, read.range().end, points.constData(), points.size(),
               read.range().maxPoints);
}

void CurveSeriesData::showWindow(qint64 start, qint64 end, const QPointF* points, int count,
                                 int maxPoints)
{
    showPoints(points, count, maxPoints);
    const bool empty = m_visiblePoints.isEmpty();
    m_visibleStart = empty ? start : toTime(m_visiblePoints.constFirst().x());
    m_visibleEnd = empty ? end : toTime(m_visiblePoints.constLast().x());
    updateStatistics();
}

/// Only the start of the view counts: memory serves it even if it ends beyond its points.
bool CurveSeriesData::isInMemory(qint64 start) const
{
    if (recentCount() == 0) {
        return false;
    }
    return toTime(m_recentPoints.constLast().x() + kMemoryMarginMs) >= start &&
           toTime(recentData()[0].x() - kMemoryMarginMs) <= start;
}

void CurveSeriesData::showPoints(const QPointF* points, int count, int maxPoints)
{
    const bool thin = maxPoints > 0 && count > maxPoints;
    if (!m_visiblePoints.isDetached()) {
        m_visiblePoints = {}; // a chart keeps the former points: nothing of them is copied
    }
    m_visiblePoints.resize(thin ? maxPoints : count);
    QPointF* const shown = m_visiblePoints.data();
    if (thin) {
        thinPoints(points, count, maxPoints, shown);
    } else {
        std::copy_n(points, count, shown);
    }
    for (QPointF& point : m_visiblePoints) {
        point.ry() += m_yOffset;
    }
    m_boundsStale = true;
}

scn::StoredState CurveSeriesData::storedState() const
{
    return m_store->storedState(m_curveId);
}

bool CurveSeriesData::lookThrough(qint64 start, qint64 end, const scn::HeldFiles& files,
                                  scn::ReadSlice& slice)
{
    return m_store->lookThrough(m_curveId, start, end, files, slice);
}

QVector<QPointF> CurveSeriesData::allData() const
{
    if (!isUsable()) {
        return {};
    }
    const DBCurveMetadata bounds = m_store->curveMetadata(m_curveId);
    if (bounds.minTime == DBCurveMetadata().minTime) {
        return {};
    }
    return m_store->readCurveData(m_curveId, bounds.minTime, bounds.maxTime, 0);
}

void CurveSeriesData::clear()
{
    assertGuiThread();
    m_recentPoints.clear();
    m_recentOffset = 0;
    m_visiblePoints.clear();
    m_recentStart = 0;
    m_recentEnd = 0;
    m_visibleStart = 0;
    m_visibleEnd = 0;
    m_boundsStale = true;
    updateStatistics();
}

size_t CurveSeriesData::size() const
{
    return static_cast<size_t>(m_visiblePoints.size());
}

QPointF CurveSeriesData::sample(size_t i) const
{
    return i < size() ? m_visiblePoints.at(static_cast<int>(i)) : QPointF();
}

QRectF CurveSeriesData::boundingRect() const
{
    if (m_visiblePoints.isEmpty()) {
        return {};
    }
    if (m_boundsStale) {
        const auto byY = [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); };
        const auto [lowest, highest] =
            std::minmax_element(m_visiblePoints.cbegin(), m_visiblePoints.cend(), byY);
        d_boundingRect = QRectF(QPointF(m_visiblePoints.constFirst().x(), lowest->y()),
                                QPointF(m_visiblePoints.constLast().x(), highest->y()));
        m_boundsStale = false;
    }
    return d_boundingRect;
}

void CurveSeriesData::setRectOfInterest(const QRectF&) {}

double CurveSeriesData::rawValue(int i) const
{
    if (i < 0 || i >= m_visiblePoints.size()) {
        return 0.0;
    }
    return m_visiblePoints.at(i).y() - m_yOffset;
}

void CurveSeriesData::updateStatistics()
{
    m_statisticsStale = true;
}

const scn::CurveStatistics& CurveSeriesData::statistics() const
{
    if (m_statisticsStale) {
        m_statistics = scn::statisticsOf(recentData(), recentCount());
        m_statisticsStale = false;
    }
    return m_statistics;
}

int CurveSeriesData::count() const
{
    return statistics().count;
}

double CurveSeriesData::lastValue() const
{
    return statistics().lastValue;
}

QString CurveSeriesData::lastTimeText() const
{
    return statistics().lastTimeText;
}

double CurveSeriesData::minimum() const
{
    return statistics().minimum;
}

double CurveSeriesData::maximum() const
{
    return statistics().maximum;
}

double CurveSeriesData::sum() const
{
    return statistics().sum;
}

double CurveSeriesData::average() const
{
    return statistics().mean;
}

QVector<QPointF> CurveSeriesData::recentPoints() const
{
    return m_recentPoints.mid(m_recentOffset);
}
