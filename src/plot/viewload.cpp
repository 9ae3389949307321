#include "plot/viewload.h"

#include "common/threadassert.h"
#include "storage/curveseriesdata.h"

#include <utility>

namespace scn {

ViewLoad::ViewLoad(QVector<Part> parts, qint64 start, qint64 end, int maxPoints)
    : m_parts(std::move(parts))
    , m_start(start)
    , m_end(end)
    , m_maxPoints(maxPoints)
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
    ReadSlice slice(deadline);
    for (; m_next < m_parts.size(); ++m_next) {
        const Part& part = m_parts.at(m_next);
        if (!m_fetch) {
            if (!part.curve->needsStore(viewOf(part))) {
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
