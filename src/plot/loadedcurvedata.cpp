#include "plot/loadedcurvedata.h"

#include "common/threadassert.h"
#include "storage/curveseriesdata.h"

#include <algorithm>
#include <utility>

namespace scn {

void LoadedCurveData::load(qint64 start, qint64 end, int maxPoints, double offset)
{
    assertGuiThread();
    std::optional<StoredLoad> load;
    if (series()->isUsable() && !series()->isInMemory(start)) {
        load = StoredLoad{start, end, maxPoints, offset, series()->storedState()};
        if (wouldRepeat(*load)) {
            return;
        }
    }
    // Lets the series reuse the memory unless another chart shows the same points.
    m_points = {};
    series()->loadWindow(start, end, maxPoints, offset);
    m_points = series()->visiblePoints();
    m_offset = series()->yOffset();
    m_loaded = true;
    m_storedLoad = std::move(load);
}

bool LoadedCurveData::wouldRepeat(const StoredLoad& load) const
{
    return m_storedLoad && m_storedLoad->start == load.start && m_storedLoad->end == load.end &&
           m_storedLoad->maxPoints == load.maxPoints && m_storedLoad->offset == load.offset &&
           m_storedLoad->state.holdsUpTo(load.end, load.state);
}

const QVector<QPointF>& LoadedCurveData::points() const
{
    return m_loaded || !series() ? m_points : series()->visiblePoints();
}

double LoadedCurveData::offset() const
{
    return m_loaded || !series() ? m_offset : series()->yOffset();
}

size_t LoadedCurveData::size() const
{
    return static_cast<size_t>(points().size());
}

QPointF LoadedCurveData::sample(size_t i) const
{
    return i < size() ? points().at(static_cast<int>(i)) : QPointF();
}

QRectF LoadedCurveData::boundingRect() const
{
    if (points().isEmpty()) {
        return {};
    }
    const auto byY = [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); };
    const auto [lowest, highest] = std::minmax_element(points().cbegin(), points().cend(), byY);
    return {QPointF(points().constFirst().x(), lowest->y()),
            QPointF(points().constLast().x(), highest->y())};
}

} // namespace scn
