#pragma once

#include <QDeadlineTimer>

namespace scn {

/// How much of a read is done in one turn: what fits before a deadline and, whatever the time, what takes
/// next to none, so that a busy machine does not put that off.
class ReadSlice
{
public:
    /// Rows that take next to no time.
    static constexpr qint64 kFewRows = 5000;

    explicit ReadSlice(QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever),
                       qint64 fewRows = kFewRows)
        : m_deadline(deadline)
        , m_fewRows(fewRows)
    {
    }

    /// Rows were looked at or read.
    void noteRows(qint64 count) { m_rows += count; }

    /// A day file was asked what it has.
    void noteFile() { m_rows += kRowsForAFile; }

    /// Whether it has read more than takes next to no time.
    bool hasReadMuch() const { return m_rows > m_fewRows; }

    bool isOver() const { return hasReadMuch() && m_deadline.hasExpired(); }

private:
    static constexpr qint64 kRowsForAFile = 100;

    QDeadlineTimer m_deadline;
    qint64 m_fewRows;
    qint64 m_rows = 0;
};

/// How far a part of a read has come in a slice.
enum class ReadStep {
    Unfinished, ///< The slice is over; to be called again.
    Done,
    Failed,
};

} // namespace scn
