#include "storage/windowread.h"

#include "storage/batchrows.h"
#include "storage/pointthinning.h"
#include "storage/rowcursor.h"

#include <algorithm>
#include <array>

namespace scn {

namespace {

/// Picks fetched per hold of the connection's lock: few enough to let others in.
constexpr int kPicksPerBlock = 512;

/// Tables that may wait to be fetched from. They keep their files open.
constexpr int kMostSources = 64;

/// Place of the first reading at or after a time; the number of readings if there is none.
std::optional<qint64> placeOf(RowCursor& rows, const RowOrder& order, qint64 time)
{
    qint64 first = 0;
    qint64 count = order.count();
    while (count > 0) {
        const qint64 half = count / 2;
        const std::optional<qint64> found = rows.timeAt(order, first + half);
        if (!found) {
            return std::nullopt;
        }
        if (*found < time) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

} // namespace

WindowRead::WindowRead(const ReadRange& range, RowOrders* orders)
    : m_range(range)
    , m_orders(range.maxPoints > 0 ? orders : nullptr)
{
}

ReadStep WindowRead::addTable(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                              const QString& table, ReadSlice& slice)
{
    if (m_orders && !m_isLeaving) {
        const ReadStep step = addOrderedRows(path, db, table, slice);
        if (step != ReadStep::Failed) {
            return step;
        }
    }
    return leaveOrder(slice) ? addEveryRow(*db, table, slice) : ReadStep::Unfinished;
}

/// Collects the places of a table's readings in the range. It fails if their order is not known or does
/// not continue that of the tables before.
ReadStep WindowRead::addOrderedRows(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                                    const QString& table, ReadSlice& slice)
{
    const RowOrder* const order = m_orders->update(path, *db, table, m_range.curveId, slice);
    if (!order) {
        return ReadStep::Unfinished;
    }
    if (!order->isKnown()) {
        return ReadStep::Failed;
    }
    if (order->count() == 0 || order->lastTime() < m_range.start) {
        return ReadStep::Done;
    }
    RowCursor rows(*db, table);
    const std::optional<qint64> first = placeOf(rows, *order, m_range.start);
    std::optional<qint64> end = order->count();
    if (m_range.end < order->lastTime()) {
        end = placeOf(rows, *order, m_range.end + 1);
    }
    if (!first || !end) {
        return ReadStep::Failed;
    }
    if (*first >= *end) {
        return ReadStep::Done;
    }
    const std::optional<qint64> firstTime = rows.timeAt(*order, *first);
    const std::optional<qint64> lastTime = rows.timeAt(*order, *end - 1);
    if (!firstTime || !lastTime || (m_hasTime && *firstTime <= m_lastTime)) {
        return ReadStep::Failed;
    }
    m_hasTime = true;
    m_lastTime = *lastTime;
    m_sources.append({db, table, *order, {}});
    collect(*first, *end - *first);
    if (m_sources.size() >= kMostSources && !collapse()) {
        m_lostRows = true;
    }
    return ReadStep::Done;
}

ReadStep WindowRead::addEveryRow(const QSqlDatabase& database, const QString& table,
                                 ReadSlice& slice)
{
    const ReadStep step = readBatchRows(database, table, m_range, m_rowsFrom, m_points, slice);
    if (step == ReadStep::Unfinished) {
        return step;
    }
    if (m_range.maxPoints > 0 && m_points.size() > 2 * static_cast<qint64>(m_range.maxPoints)) {
        thinPoints(m_points, m_range.maxPoints);
    }
    return step;
}

/// Collects readings of the last source, thinned if they become too many.
void WindowRead::collect(qint64 firstPlace, qint64 count)
{
    const int source = m_sources.size() - 1;
    if (m_picks.size() + count > 2 * static_cast<qint64>(m_range.maxPoints)) {
        thinPicks(source, firstPlace, count);
        return;
    }
    for (qint64 place = firstPlace; place < firstPlace + count; ++place) {
        m_picks.append({source, place});
    }
}

/// Thins the picks followed by `count` readings of a source, as thinPoints() does with their points.
/// All of them have different times.
void WindowRead::thinPicks(int source, qint64 firstPlace, qint64 count)
{
    const QVector<Pick> former = m_picks;
    const auto at = [&](qint64 index) {
        return index < former.size() ? former.at(static_cast<int>(index))
                                     : Pick{source, firstPlace + (index - former.size())};
    };
    const auto size = static_cast<int>(former.size() + count);
    const double step = static_cast<double>(size) / m_range.maxPoints;
    m_picks.resize(m_range.maxPoints);
    for (int i = 0; i < m_range.maxPoints; ++i) {
        m_picks[i] = at(std::min(static_cast<int>(i * step), size - 1));
    }
    m_picks.last() = at(size - 1);
}

/// Appends the points of the picks. It fails if rows were not where they should be.
ReadStep WindowRead::fetch(QVector<QPointF>& points, ReadSlice& slice)
{
    while (m_fetched < m_picks.size()) {
        const Source& source = m_sources.at(m_picks.at(m_fetched).source);
        if (!source.db) {
            points.append(source.points.at(static_cast<int>(m_picks.at(m_fetched).place)));
            ++m_fetched;
            continue;
        }
        const ReadStep step = fetchFromTable(source, points, slice);
        if (step != ReadStep::Done) {
            return step;
        }
    }
    return ReadStep::Done;
}

/// Appends the points of the next picks, which are from one table.
ReadStep WindowRead::fetchFromTable(const Source& source, QVector<QPointF>& points,
                                    ReadSlice& slice)
{
    const int sourceIndex = m_picks.at(m_fetched).source;
    RowCursor rows(*source.db, source.table);
    std::array<qint64, kPicksPerBlock> places;
    while (true) {
        int count = 0;
        while (count < kPicksPerBlock && m_fetched + count < m_picks.size() &&
               m_picks.at(m_fetched + count).source == sourceIndex) {
            places[static_cast<size_t>(count)] = m_picks.at(m_fetched + count).place;
            ++count;
        }
        if (count == 0) {
            return ReadStep::Done;
        }
        if (slice.isOver()) {
            return ReadStep::Unfinished;
        }
        if (!rows.take(source.order, places.data(), count, points)) {
            return ReadStep::Failed;
        }
        m_fetched += count;
        slice.noteRows(count);
    }
}

/// Fetches the picks and keeps their points as one source, which lets go of the files.
bool WindowRead::collapse()
{
    Source source;
    ReadSlice wholly;
    const bool isFound = fetch(source.points, wholly) == ReadStep::Done;
    m_fetched = 0;
    if (!isFound) {
        return false;
    }
    for (int i = 0; i < m_picks.size(); ++i) {
        m_picks[i] = {0, i};
    }
    m_sources = {source};
    return true;
}

/// Turns the picks into points; from then on every row is read. False if that takes another slice.
bool WindowRead::leaveOrder(ReadSlice& slice)
{
    if (!m_orders) {
        return true;
    }
    m_isLeaving = true;
    const ReadStep step = fetch(m_points, slice);
    if (step == ReadStep::Unfinished) {
        return false;
    }
    m_lostRows = m_lostRows || step == ReadStep::Failed;
    m_orders = nullptr;
    m_picks.clear();
    m_sources.clear();
    return true;
}

ReadStep WindowRead::finish(ReadSlice& slice)
{
    if (m_orders && !m_isLeaving && m_picks.size() > m_range.maxPoints) {
        thinPicks(0, 0, 0);
    }
    if (!leaveOrder(slice)) {
        return ReadStep::Unfinished;
    }
    if (m_lostRows) {
        return ReadStep::Failed;
    }
    const auto byTime = [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); };
    if (!std::is_sorted(m_points.cbegin(), m_points.cend(), byTime)) {
        std::sort(m_points.begin(), m_points.end(), byTime);
    }
    thinPoints(m_points, m_range.maxPoints);
    return ReadStep::Done;
}

} // namespace scn
