#include "plot/timewindow.h"

namespace scn {

TimeSpan TimeWindow::follow(qint64 timeMs)
{
    if (!m_isOpen) {
        m_isOpen = true;
        m_start = timeMs;
    } else if (timeMs >= m_start + m_span.count()) {
        m_scrolls = true;
    }
    if (m_scrolls) {
        return {timeMs - m_span.count(), timeMs};
    }
    return {m_start, m_start + m_span.count()};
}

TimeSpan TimeWindow::stretch(std::chrono::milliseconds span)
{
    m_span = span;
    return {m_start, m_start + m_span.count()};
}

} // namespace scn
