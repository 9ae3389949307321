#pragma once

#include "storage/keptreadings.h"

#include <QtGlobal>

#include <memory>
#include <optional>
#include <vector>

namespace scn {

/// Rows of a batch table whose numbers and times rise together, without a gap in the numbers.
struct RowRun
{
    qint64 firstRow;
    qint64 lastRow;
    qint64 lastTime;
    qint64 before; ///< Readings in the runs before this one.

    qint64 count() const { return lastRow - firstRow + 1; }
};

/// Which row of a batch table has the reading at a place in the order of time: known while rows were
/// added in that order, whatever gaps their numbers have. Also the readings themselves, as long as they are
/// kept in memory; copies share them.
class RowOrder
{
public:
    /// False once rows were found that are not in order.
    bool isKnown() const { return m_isKnown; }

    /// Number of readings.
    qint64 count() const
    {
        return m_runs.empty() ? 0 : m_runs.back().before + m_runs.back().count();
    }

    /// The newest reading; there must be one.
    qint64 lastRow() const { return m_runs.back().lastRow; }
    qint64 lastTime() const { return m_runs.back().lastTime; }

    /// Row of a reading, 0 to count() - 1.
    qint64 rowAt(qint64 place) const;

    /// The readings in memory, all of count(); null if they are not there.
    const KeptReadings* kept() const { return m_kept.get(); }

    /// A further reading, whose row number is higher. Without a value none are kept.
    void add(qint64 row, qint64 time, std::optional<double> value);

    /// Frees the memory of the readings for good.
    void dropKept() { m_kept.reset(); }

    /// The table is not what this can describe.
    void giveUp();

private:
    bool m_isKnown = true;
    std::vector<RowRun> m_runs;
    std::shared_ptr<KeptReadings> m_kept = std::make_shared<KeptReadings>();
};

} // namespace scn
