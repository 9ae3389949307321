#include "plot/viewload.h"

#include "common/threadassert.h"
#include "storage/curveseriesdata.h"

#include <utility>

namespace scn {

namespace {

/// Points that are fetched in one turn whatever the time: a busy machine must not put off what takes
/// next to no time.
constexpr int kFewPoints = 2000;

} // namespace

ViewLoad::ViewLoad(QVector<Part> parts, qint64 start, qint64 end, int maxPoints)
    : m_parts(std::move(parts))
    , m_start(start)
    , m_end(end)
    , m_maxPoints(maxPoints)
    , m_lookFrom(start)
    , m_fetched(m_parts.size())
{
}

CurveView ViewLoad::viewOf(const Part& part) const
{
    return {m_start, m_end, m_maxPoints, part.offset};
}

bool ViewLoad::proceed(QDeadlineTimer deadline)
{
    assertGuiThread();
    int points = 0;
    for (; m_next < m_parts.size(); ++m_next, m_lookFrom = m_start) {
        const Part& part = m_parts.at(m_next);
        if (!part.curve->needsStore(viewOf(part))) {
            continue;
        }
        if (points > kFewPoints && deadline.hasExpired()) {
            return false;
        }
        CurveSeriesData* const series = part.curve->series();
        if (!series->lookThrough(m_start, m_end, m_lookFrom, deadline, m_files) || m_cancelled) {
            return false;
        }
        m_fetched[m_next] = part.curve->fetch(viewOf(part));
        points += m_fetched[m_next]->points.size();
        if (m_cancelled) {
            return false;
        }
    }
    return true;
}

void ViewLoad::show()
{
    for (int i = 0; i < m_parts.size(); ++i) {
        const Part& part = m_parts.at(i);
        const std::optional<CurveLoad> load =
            m_fetched.at(i) ? m_fetched.at(i) : part.curve->fetchAnew(viewOf(part));
        if (m_cancelled) {
            return;
        }
        if (load) {
            part.curve->show(*load);
        }
    }
}

} // namespace scn
