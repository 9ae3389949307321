#include "plot/viewsurroundings.h"

#include "storage/curveseriesdata.h"
#include "storage/readslice.h"

#include <chrono>
#include <utility>

namespace scn {

namespace {

/// Ten hours, the widest view after a zoom: a drag over the whole width goes no further.
constexpr qint64 kReachMs = 36000000;

/// A fifth of the thread's time at most.
constexpr std::chrono::milliseconds kInterval{20};
constexpr std::chrono::milliseconds kSlice{4};

} // namespace

ViewSurroundings::ViewSurroundings(QVector<CurveSeriesData*> series, HeldFiles files, qint64 start,
                                   qint64 end)
    : m_series(std::move(series))
    , m_files(std::move(files))
    , m_start(start - kReachMs)
    , m_end(end + kReachMs)
{
    connect(&m_timer, &QTimer::timeout, this, &ViewSurroundings::lookOn);
    m_timer.start(kInterval);
}

void ViewSurroundings::lookOn()
{
    ReadSlice slice{QDeadlineTimer(kSlice)};
    for (; m_next < m_series.size(); ++m_next) {
        if (slice.isOver() || !m_series.at(m_next)->lookThrough(m_start, m_end, m_files, slice)) {
            return;
        }
    }
    m_timer.stop();
    m_files.clear();
}

} // namespace scn
