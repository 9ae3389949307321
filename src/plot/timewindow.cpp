#include "plot/timewindow.h"

namespace scn {

TimeSpan TimeWindow::follow(qint64 timeMs)
{
    if (!m_isOpen) {
        m_isOpen = true;
        m_start = timeMs;
    } else if (timeMs >= m_start + m_span) {
        m_scrolls = true;
    }
    if (m_scrolls) {
        return {timeMs - m_span, timeMs};
    }
    return {m_start, m_start + m_span};
}

TimeSpan TimeWindow::stretch(qint64 spanMs)
{
    m_span = spanMs;
    return {m_start, m_start + m_span};
}

} // namespace scn
