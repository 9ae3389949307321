#pragma once

#include <QtGlobal>

#include <chrono>

namespace scn {

/// Bounds of a time axis, in ms since the epoch.
struct TimeSpan
{
    qint64 start;
    qint64 end;
};

/// The time span of a live plot. The first reading opens a window that fills from the left; once a
/// reading reaches its right edge, the window scrolls with the newest one.
class TimeWindow
{
public:
    /// Initial width.
    static constexpr std::chrono::milliseconds kSpan{60000};

    /// The span to show when the newest reading is from `timeMs`.
    TimeSpan follow(qint64 timeMs);

    /// True from the first reading until the window scrolls.
    bool isFilling() const { return m_isOpen && !m_scrolls; }

    /// Changes the width; the start stays.
    TimeSpan stretch(std::chrono::milliseconds span);

private:
    bool m_isOpen = false;
    bool m_scrolls = false;
    qint64 m_start = 0;
    std::chrono::milliseconds m_span = kSpan;
};

} // namespace scn
