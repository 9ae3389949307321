#pragma once

#include "plot/curvefetch.h"
#include "plot/loadedcurvedata.h"
#include "storage/heldfiles.h"

#include <QDeadlineTimer>
#include <QVector>

#include <memory>
#include <optional>

namespace scn {

class ViewSurroundings;

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

    /// A load begins when it is due or ahead of that.
    enum class Begin { Due, Ahead };

    /// From `start` to `end` (ms since the epoch), at most `maxPoints` for each curve.
    ViewLoad(QVector<Part> parts, qint64 start, qint64 end, int maxPoints, Begin begin);

    bool isFor(qint64 start, qint64 end) const { return m_start == start && m_end == end; }

    /// Whether it began ahead and is not due yet.
    bool isAhead() const { return m_isAhead; }

    /// A load that began ahead is due now: what has changed since is to be fetched anew. False if it is
    /// due already, not a load of these parts, or in the midst of a slice.
    bool fallDue(const QVector<Part>& parts);

    /// Goes on until the deadline, and through anything small in any case. True once all is fetched, or in
    /// the turn after that if this one has read much; false after a cancellation.
    bool proceed(QDeadlineTimer deadline);

    /// Ends it for good, even from within the others: reopening a file handles events.
    void cancel() { m_cancelled = true; }

    /// Puts everything on display, but nothing after a cancellation.
    void show();

    bool hasFetched() const;

    /// The surroundings of what was fetched.
    std::unique_ptr<ViewSurroundings> surroundings() const;

private:
    CurveView viewOf(const Part& part) const;

    QVector<Part> m_parts;
    qint64 m_start;
    qint64 m_end;
    int m_maxPoints;
    bool m_isAhead;
    bool m_isInSlice = false;
    bool m_cancelled = false;
    HeldFiles m_files;                           ///< Kept open for the next curves.
    int m_next = 0;                              ///< The part to go on with.
    std::optional<CurveFetch> m_fetch;           ///< Of that part, under way.
    QVector<std::optional<CurveLoad>> m_fetched; ///< By part.
};

} // namespace scn
