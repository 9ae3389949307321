#include "storage/roworder.h"

#include <algorithm>

namespace scn {

namespace {

/// More gaps than this are a table of another kind, which is read row by row.
constexpr size_t kMostRuns = 1000;

} // namespace

qint64 RowOrder::rowAt(qint64 place) const
{
    const auto later =
        std::upper_bound(m_runs.cbegin(), m_runs.cend(), place,
                         [](qint64 wanted, const RowRun& run) { return wanted < run.before; });
    const RowRun& run = *std::prev(later);
    return run.firstRow + (place - run.before);
}

void RowOrder::add(qint64 row, qint64 time, std::optional<double> value)
{
    if (!m_isKnown) {
        return;
    }
    if (!m_runs.empty() && time <= lastTime()) {
        giveUp();
        return;
    }
    if (m_kept && (!value || !m_kept->append(time, *value))) {
        dropKept();
    }
    if (!m_runs.empty() && row == lastRow() + 1) {
        m_runs.back().lastRow = row;
        m_runs.back().lastTime = time;
    } else if (m_runs.size() < kMostRuns) {
        m_runs.push_back({row, row, time, count()});
    } else {
        giveUp();
    }
}

void RowOrder::giveUp()
{
    m_isKnown = false;
    m_runs.clear();
    dropKept();
}

} // namespace scn
