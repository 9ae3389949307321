#pragma once

#include "plot/curvefetch.h"
#include "plot/loadedcurvedata.h"
#include "storage/heldfiles.h"

#include <QDeadlineTimer>
#include <QVector>

#include <optional>

namespace scn {

/// One load of the view of a chart, in slices. What comes from the store is fetched curve by curve; what
/// memory has is loaded at the end. The curves show their former points until show(). Each day file
/// is opened once. The curves must outlive it. GUI thread.
class ViewLoad
{
public:
    /// A curve and its display offset.
    struct Part
    {
        LoadedCurveData* curve;
        double offset;
    };

    /// From `start` to `end` (ms since the epoch), at most `maxPoints` for each curve.
    ViewLoad(QVector<Part> parts, qint64 start, qint64 end, int maxPoints);

    bool isFor(qint64 start, qint64 end) const { return m_start == start && m_end == end; }

    /// Goes on until the deadline, and through anything small in any case. True once all is fetched;
    /// false after a cancellation.
    bool proceed(QDeadlineTimer deadline);

    /// Ends it for good, even from within the others: reopening a file handles events.
    void cancel() { m_cancelled = true; }

    /// Puts everything on display, but nothing after a cancellation.
    void show();

private:
    CurveView viewOf(const Part& part) const;

    QVector<Part> m_parts;
    qint64 m_start;
    qint64 m_end;
    int m_maxPoints;
    bool m_cancelled = false;
    HeldFiles m_files;                           ///< Kept open for the next curves.
    int m_next = 0;                              ///< The part to go on with.
    std::optional<CurveFetch> m_fetch;           ///< Of that part, under way.
    QVector<std::optional<CurveLoad>> m_fetched; ///< By part.
};

} // namespace scn
