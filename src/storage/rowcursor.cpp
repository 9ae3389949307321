#include "storage/rowcursor.h"

#include "storage/roworder.h"
#include "storage/shardnaming.h"
#include "storage/sqlitestatement.h"

#include <sqlite3.h>

#include <algorithm>
#include <limits>

namespace scn {

namespace {

/// Rows per hold of the connection's lock: few enough to let others in.
constexpr int kRowsPerBlock = 4096;

/// Up to this many rows ahead, stepping is cheaper than another search.
constexpr qint64 kRowsWorthASearch = 8;

/// Columns of the statement.
enum Column { Row, Curve, Time, Value };

/// Value of the row that a statement is at; empty if it is no number.
std::optional<double> valueOf(sqlite3_stmt* rows)
{
    const int type = sqlite3_column_type(rows, Value);
    if (type != SQLITE_FLOAT && type != SQLITE_INTEGER) {
        return std::nullopt;
    }
    return sqlite3_column_double(rows, Value);
}

} // namespace

RowCursor::RowCursor(const QSqlDatabase& database, const QString& table)
    : ManagedQuery(database)
    , m_table(table)
    , m_hold(database)
{
}

/// Readings in memory need no statement.
void RowCursor::prepareRows()
{
    if (!m_prepared) {
        setForwardOnly(true);
        m_prepared = prepare(QStringLiteral("SELECT rowid, curve_id, timestamp, value FROM %1 "
                                            "WHERE rowid >= ? ORDER BY rowid")
                                 .arg(quotedName(m_table)));
    }
}

/// Null once the connection was closed. The connection's lock is held.
sqlite3_stmt* RowCursor::statement()
{
    return m_prepared && isUsable() ? statementOf(query()) : nullptr;
}

/// Without this each search would lock the file and look for a journal left behind, which takes five times
/// as long as the search.
void RowCursor::holdFile()
{
    if (!m_isHeld) {
        m_isHeld = m_hold.exec(QStringLiteral("SELECT 1 FROM sqlite_master"));
    }
}

/// Goes to the first row with this number or a higher one.
bool RowCursor::seek(sqlite3_stmt* rows, qint64 row)
{
    sqlite3_reset(rows);
    sqlite3_bind_int64(rows, 1, row);
    return step(rows);
}

bool RowCursor::step(sqlite3_stmt* rows)
{
    const int result = sqlite3_step(rows);
    m_onRow = result == SQLITE_ROW && sqlite3_column_type(rows, Row) == SQLITE_INTEGER;
    m_failed = m_failed || (!m_onRow && result != SQLITE_DONE);
    return m_onRow;
}

/// Goes to this very row, from a lower one or from anywhere.
bool RowCursor::moveTo(sqlite3_stmt* rows, qint64 row)
{
    qint64 ahead = m_onRow ? row - sqlite3_column_int64(rows, Row) : -1;
    if (ahead < 0 || ahead > kRowsWorthASearch) {
        return seek(rows, row) && sqlite3_column_int64(rows, Row) == row;
    }
    while (ahead > 0 && step(rows)) {
        ahead = row - sqlite3_column_int64(rows, Row);
    }
    return m_onRow && ahead == 0;
}

ReadStep RowCursor::extend(RowOrder& order, int curveId, ReadSlice& slice)
{
    prepareRows();
    {
        const ConnectionLocker locker(mutex());
        sqlite3_stmt* const rows = statement();
        if (!rows) {
            return ReadStep::Failed;
        }
        if (order.count() == 0) {
            seek(rows, std::numeric_limits<qint64>::min());
        } else if (moveTo(rows, order.lastRow()) &&
                   sqlite3_column_int64(rows, Time) == order.lastTime()) {
            step(rows);
        } else {
            return ReadStep::Failed;
        }
    }
    bool atEnd = false;
    while (!atEnd) {
        if (slice.isOver()) {
            return ReadStep::Unfinished;
        }
        if (!extendBlock(order, curveId, slice, atEnd)) {
            return ReadStep::Failed;
        }
    }
    return ReadStep::Done;
}

bool RowCursor::extendBlock(RowOrder& order, int curveId, ReadSlice& slice, bool& atEnd)
{
    const ConnectionLocker locker(mutex());
    sqlite3_stmt* const rows = statement();
    int looked = 0;
    for (; rows && m_onRow && looked < kRowsPerBlock; ++looked) {
        if (sqlite3_column_type(rows, Time) != SQLITE_INTEGER) {
            return false;
        }
        if (sqlite3_column_int64(rows, Curve) == curveId) {
            order.add(sqlite3_column_int64(rows, Row), sqlite3_column_int64(rows, Time),
                      valueOf(rows));
        }
        step(rows);
    }
    slice.noteRows(looked);
    atEnd = !m_onRow || !order.isKnown();
    return rows && !m_failed;
}

std::optional<qint64> RowCursor::timeAt(const RowOrder& order, qint64 place)
{
    if (order.kept()) {
        return order.kept()->timeAt(place);
    }
    prepareRows();
    holdFile();
    const ConnectionLocker locker(mutex());
    sqlite3_stmt* const rows = statement();
    if (!rows || !moveTo(rows, order.rowAt(place))) {
        return std::nullopt;
    }
    return sqlite3_column_int64(rows, Time);
}

bool RowCursor::take(const RowOrder& order, const qint64* places, int count,
                     QVector<QPointF>& points)
{
    if (!order.kept()) {
        return takeRows(order, places, count, points);
    }
    for (int i = 0; i < count; ++i) {
        points.append(order.kept()->at(places[i]));
    }
    return true;
}

bool RowCursor::takeRows(const RowOrder& order, const qint64* places, int count,
                         QVector<QPointF>& points)
{
    prepareRows();
    holdFile();
    const ConnectionLocker locker(mutex());
    sqlite3_stmt* const rows = statement();
    for (int i = 0; i < count; ++i) {
        if (!rows || !moveTo(rows, order.rowAt(places[i]))) {
            return false;
        }
        const std::optional<double> value = valueOf(rows);
        if (!value) {
            return false;
        }
        points.append(QPointF(static_cast<double>(sqlite3_column_int64(rows, Time)), *value));
    }
    return true;
}

} // namespace scn
