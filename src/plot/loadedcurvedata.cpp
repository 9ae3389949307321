#include "plot/loadedcurvedata.h"

#include "common/threadassert.h"
#include "storage/curveseriesdata.h"

#include <algorithm>

namespace scn {

void LoadedCurveData::load(const CurveView& view)
{
    if (const std::optional<CurveLoad> anew = fetchAnew(view)) {
        show(*anew);
    }
}

std::optional<CurveLoad> LoadedCurveData::fetchAnew(const CurveView& view)
{
    assertGuiThread();
    const std::optional<StoredState> state = storedFor(view);
    if (state && wouldRepeat(view, *state)) {
        shift(view.offset);
        return std::nullopt;
    }
    if (m_shown) { // lets the series reuse the memory unless another chart shows the same points
        m_shown->points = {};
    }
    return fetch(view);
}

bool LoadedCurveData::needsStore(const CurveView& view) const
{
    const std::optional<StoredState> state = storedFor(view);
    return state && !wouldRepeat(view, *state);
}

CurveLoad LoadedCurveData::fetch(const CurveView& view) const
{
    assertGuiThread();
    const std::optional<StoredState> state = storedFor(view);
    // The curve may go while the series loads.
    CurveSeriesData* const source = series();
    const QVector<QPointF> stored =
        source->loadWindow(view.start, view.end, view.maxPoints, view.offset);
    return {view, state, stored, source->visiblePoints(), source->yOffset()};
}

/// What is stored, if a view is loaded from there.
std::optional<StoredState> LoadedCurveData::storedFor(const CurveView& view) const
{
    if (!series()->isUsable() || series()->isInMemory(view.start)) {
        return std::nullopt;
    }
    return series()->storedState();
}

/// Whether a load would read the points that are kept. Their offset may differ.
bool LoadedCurveData::wouldRepeat(const CurveView& view, const StoredState& state) const
{
    return m_shown && m_shown->state && m_shown->view.start == view.start &&
           m_shown->view.end == view.end && m_shown->view.maxPoints == view.maxPoints &&
           m_shown->state->holdsUpTo(view.end, state);
}

/// Puts another offset on what was read. Taken from the measured values: the sums are those of a load.
void LoadedCurveData::shift(double offset)
{
    if (m_shown->offset == offset) {
        return;
    }
    m_shown->view.offset = offset;
    m_shown->offset = offset;
    m_shown->points = m_shown->measured;
    for (QPointF& point : m_shown->points) {
        point.ry() += offset;
    }
}

const QVector<QPointF>& LoadedCurveData::points() const
{
    static const QVector<QPointF> none;
    if (m_shown) {
        return m_shown->points;
    }
    return borrowed() ? borrowed()->visiblePoints() : none;
}

double LoadedCurveData::offset() const
{
    if (m_shown) {
        return m_shown->offset;
    }
    return borrowed() ? borrowed()->yOffset() : 0.0;
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
