#include "plot/viewsurroundings.h"

#include "common/threadassert.h"
#include "storage/curveseriesdata.h"
#include "storage/readslice.h"

#include <QEvent>

#include <chrono>
#include <utility>

namespace scn {

namespace {

/// Ten hours, the widest view after a zoom: a drag over the whole width goes no further.
constexpr qint64 kReachMs = 36000000;

/// A fifth of the thread's time at most, for all views together.
constexpr std::chrono::milliseconds kInterval{20};
constexpr std::chrono::milliseconds kSlice{4};

/// Those that are not through, the newest last.
QVector<const ViewSurroundings*>& underWay()
{
    static QVector<const ViewSurroundings*> all;
    return all;
}

} // namespace

ViewSurroundings::ViewSurroundings(QVector<CurveSeriesData*> series, HeldFiles files, qint64 start,
                                   qint64 end)
    : m_series(std::move(series))
    , m_files(std::move(files))
    , m_start(start - kReachMs)
    , m_end(end + kReachMs)
{
    assertGuiThread();
    connect(&m_timer, &QTimer::timeout, this, &ViewSurroundings::lookOn);
    m_timer.start(kInterval);
    underWay().append(this);
}

ViewSurroundings::~ViewSurroundings()
{
    assertGuiThread();
    underWay().removeOne(this);
}

bool ViewSurroundings::eventFilter(QObject* chart, QEvent* event)
{
    if (event->type() == QEvent::Hide) {
        stop();
    }
    return QObject::eventFilter(chart, event);
}

void ViewSurroundings::lookOn()
{
    if (underWay().constLast() != this) {
        return;
    }
    const QDeadlineTimer deadline(kSlice);
    ReadSlice slice(deadline);
    // A known table has no rows to look through, but it is asked whether that is so.
    for (const int first = m_next; m_next < m_series.size(); ++m_next) {
        const bool isOver = m_next > first && deadline.hasExpired();
        if (isOver || !m_series.at(m_next)->lookThrough(m_start, m_end, m_files, slice)) {
            return;
        }
    }
    stop();
}

void ViewSurroundings::stop()
{
    m_timer.stop();
    m_files.clear();
    underWay().removeOne(this);
}

} // namespace scn
