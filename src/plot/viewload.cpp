#include "plot/viewload.h"

#include "common/threadassert.h"
#include "plot/viewsurroundings.h"
#include "storage/curveseriesdata.h"

#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace scn {

ViewLoad::ViewLoad(QVector<Part> parts, qint64 start, qint64 end, int maxPoints, Begin begin)
    : m_parts(std::move(parts))
    , m_start(start)
    , m_end(end)
    , m_maxPoints(maxPoints)
    , m_isAhead(begin == Begin::Ahead)
    , m_fetched(m_parts.size())
{
}

bool ViewLoad::fallDue(const QVector<Part>& parts)
{
    const auto isSame = [](const Part& one, const Part& other) {
        return one.curve == other.curve && one.offset == other.offset;
    };
    if (!m_isAhead || m_isInSlice ||
        !std::equal(m_parts.cbegin(), m_parts.cend(), parts.cbegin(), parts.cend(), isSame)) {
        return false;
    }
    m_isAhead = false;
    m_next = 0;
    m_fetch.reset();
    for (int i = 0; i < m_parts.size(); ++i) {
        std::optional<CurveLoad>& fetched = m_fetched[i];
        const CurveSeriesData* const series = m_parts.at(i).curve->series();
        if (fetched && !fetched->state->holdsUpTo(m_end, series->storedState())) {
            fetched.reset();
        }
    }
    return true;
}

CurveView ViewLoad::viewOf(const Part& part) const
{
    return {m_start, m_end, m_maxPoints, part.offset};
}

bool ViewLoad::proceed(QDeadlineTimer deadline)
{
    assertGuiThread();
    const QScopedValueRollback<bool> inSlice(m_isInSlice, true);
    ReadSlice slice(deadline);
    for (; m_next < m_parts.size(); ++m_next) {
        const Part& part = m_parts.at(m_next);
        if (!m_fetch) {
            if (m_fetched.at(m_next) || !part.curve->needsStore(viewOf(part))) {
                continue;
            }
            if (slice.isOver()) {
                return false;
            }
            m_fetch.emplace(*part.curve, viewOf(part), m_files);
        }
        // Reopening a file may have ended it, in the first line or in the second.
        if (m_cancelled || !m_fetch->proceed(slice) || m_cancelled) {
            return false;
        }
        m_fetched[m_next] = m_fetch->result();
        m_fetch.reset();
    }
    // Showing it takes as long again: that is a turn of its own.
    return !slice.hasReadMuch();
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

bool ViewLoad::hasFetched() const
{
    return std::any_of(m_fetched.cbegin(), m_fetched.cend(),
                       [](const std::optional<CurveLoad>& load) { return load.has_value(); });
}

std::unique_ptr<ViewSurroundings> ViewLoad::surroundings() const
{
    QVector<CurveSeriesData*> series;
    for (int i = 0; i < m_parts.size(); ++i) {
        if (m_fetched.at(i)) {
            series.append(m_parts.at(i).curve->series());
        }
    }
    return std::make_unique<ViewSurroundings>(series, m_files, m_start, m_end);
}

} // namespace scn
