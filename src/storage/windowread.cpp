#include "storage/windowread.h"

#include "storage/managedquery.h"
#include "storage/pointthinning.h"
#include "storage/rowcursor.h"
#include "storage/shardnaming.h"

#include <QDebug>

#include <algorithm>

namespace scn {

namespace {

/// Rows fetched per hold of the connection's lock: enough to make the lock cheap, few enough to let
/// others in.
constexpr int kRowsPerBlock = 4096;

/// Tables that may wait to be fetched from. They keep their files open.
constexpr int kMostSources = 64;

/// Reports why the query of a batch could not be prepared. Only then is the catalogue of tables
/// searched: it has no index, and a file of many curves has thousands of entries.
void warnOfUnreadableTable(const QSqlDatabase& database, const QString& table,
                           const QString& prepareError)
{
    ManagedQuery query(database);
    const QString sql =
        QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name=") +
        sqlLiteral(table);
    if (!query.exec(sql)) {
        qWarning() << "检查表存在性失败:" << table << "错误:" << query.errorText();
    } else if (!query.next()) {
        qWarning() << "分片表不存在:" << table;
    } else {
        qWarning() << "SQL准备失败:" << prepareError;
    }
}

/// Appends the points of one batch table to `points`. False if that did not come to its end.
bool readBatch(const QSqlDatabase& database, const QString& table, const ReadRange& range,
               QVector<QPointF>& points)
{
    ManagedQuery query(database);
    query.setForwardOnly(true);
    const QString sql =
        QStringLiteral("SELECT timestamp, value FROM %1 WHERE curve_id = ? AND timestamp "
                       "BETWEEN ? AND ? ORDER BY timestamp ASC")
            .arg(quotedName(table));
    if (!query.prepare(sql)) {
        warnOfUnreadableTable(database, table, query.errorText());
        return false;
    }
    if (!query.execWith({range.curveId, range.start, range.end})) {
        qWarning() << "读取分片" << table << "失败:" << query.errorText();
        return false;
    }
    SampleColumn block;
    bool atEnd = false;
    while (!atEnd) {
        block.clear();
        atEnd = query.fetchSamplesAtOnce(kRowsPerBlock, block) < kRowsPerBlock;
        for (const Sample& sample : block) {
            points.append(QPointF(static_cast<double>(sample.timestamp), sample.value));
        }
    }
    // A table that cannot be read to its end returns what was read.
    if (!query.isUsable() || !query.errorText().isEmpty()) {
        qWarning() << "读取分片" << table << "失败:" << query.errorText();
        return false;
    }
    return true;
}

/// Place of the first reading at or after a time; the number of readings if there is none.
std::optional<qint64> placeOf(RowCursor& rows, const RowOrder& order, qint64 time)
{
    qint64 first = 0;
    qint64 count = order.count();
    while (count > 0) {
        const qint64 half = count / 2;
        const std::optional<qint64> found = rows.timeOf(order.rowAt(first + half));
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

bool WindowRead::addTable(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                          const QString& table)
{
    if (m_orders && addOrderedRows(path, db, table)) {
        return true;
    }
    if (m_orders && !leaveOrder()) {
        m_lostRows = true;
    }
    return addEveryRow(*db, table);
}

/// Collects the places of a table's readings in the range. False if its order is not known or does
/// not continue that of the tables before.
bool WindowRead::addOrderedRows(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                                const QString& table)
{
    const RowOrder& order = m_orders->update(path, *db, table, m_range.curveId);
    if (!order.isKnown()) {
        return false;
    }
    if (order.count() == 0 || order.lastTime() < m_range.start) {
        return true;
    }
    RowCursor rows(*db, table);
    const std::optional<qint64> first = placeOf(rows, order, m_range.start);
    std::optional<qint64> end = order.count();
    if (m_range.end < order.lastTime()) {
        end = placeOf(rows, order, m_range.end + 1);
    }
    if (!first || !end) {
        return false;
    }
    if (*first >= *end) {
        return true;
    }
    const std::optional<qint64> firstTime = rows.timeOf(order.rowAt(*first));
    const std::optional<qint64> lastTime = rows.timeOf(order.rowAt(*end - 1));
    if (!firstTime || !lastTime || (m_hasTime && *firstTime <= m_lastTime)) {
        return false;
    }
    m_hasTime = true;
    m_lastTime = *lastTime;
    m_sources.append({db, table, order, {}});
    collect(*first, *end - *first);
    if (m_sources.size() >= kMostSources && !collapse()) {
        m_lostRows = true;
    }
    return true;
}

bool WindowRead::addEveryRow(const QSqlDatabase& database, const QString& table)
{
    const bool isWhole = readBatch(database, table, m_range, m_points);
    if (m_range.maxPoints > 0 && m_points.size() > 2 * static_cast<qint64>(m_range.maxPoints)) {
        thinPoints(m_points, m_range.maxPoints);
    }
    return isWhole;
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

/// Appends the points of the picks. False if rows were not where they should be.
bool WindowRead::fetch(QVector<QPointF>& points) const
{
    QVector<qint64> places;
    for (int first = 0; first < m_picks.size(); first += places.size()) {
        const int sourceIndex = m_picks.at(first).source;
        const Source& source = m_sources.at(sourceIndex);
        places.clear();
        for (int i = first; i < m_picks.size() && m_picks.at(i).source == sourceIndex; ++i) {
            places.append(m_picks.at(i).place);
        }
        if (!source.db) {
            for (const qint64 place : qAsConst(places)) {
                points.append(source.points.at(static_cast<int>(place)));
            }
        } else if (!RowCursor(*source.db, source.table)
                        .take(source.order, places.constData(), places.size(), points)) {
            return false;
        }
    }
    return true;
}

/// Fetches the picks and keeps their points as one source, which lets go of the files.
bool WindowRead::collapse()
{
    Source source;
    if (!fetch(source.points)) {
        return false;
    }
    for (int i = 0; i < m_picks.size(); ++i) {
        m_picks[i] = {0, i};
    }
    m_sources = {source};
    return true;
}

/// From here on every row is read.
bool WindowRead::leaveOrder()
{
    m_orders = nullptr;
    const bool found = fetch(m_points);
    m_picks.clear();
    m_sources.clear();
    return found;
}

std::optional<QVector<QPointF>> WindowRead::points()
{
    if (m_orders) {
        if (m_picks.size() > m_range.maxPoints) {
            thinPicks(0, 0, 0);
        }
        m_lostRows = !leaveOrder() || m_lostRows;
    }
    if (m_lostRows) {
        return std::nullopt;
    }
    const auto byTime = [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); };
    if (!std::is_sorted(m_points.cbegin(), m_points.cend(), byTime)) {
        std::sort(m_points.begin(), m_points.end(), byTime);
    }
    thinPoints(m_points, m_range.maxPoints);
    return m_points;
}

} // namespace scn
