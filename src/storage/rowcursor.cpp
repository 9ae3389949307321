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

bool isNumber(sqlite3_stmt* statement, int column)
{
    const int type = sqlite3_column_type(statement, column);
    return type == SQLITE_FLOAT || type == SQLITE_INTEGER;
}

} // namespace

RowCursor::RowCursor(const QSqlDatabase& database, const QString& table)
    : ManagedQuery(database)
    , m_hold(database)
{
    setForwardOnly(true);
    m_prepared = prepare(QStringLiteral("SELECT rowid, curve_id, timestamp, value FROM %1 WHERE "
                                        "rowid >= ? ORDER BY rowid")
                             .arg(quotedName(table)));
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
            order.add(sqlite3_column_int64(rows, Row), sqlite3_column_int64(rows, Time));
        }
        step(rows);
    }
    slice.noteRows(looked);
    atEnd = !m_onRow || !order.isKnown();
    return rows && !m_failed;
}

std::optional<qint64> RowCursor::timeOf(qint64 row)
{
    holdFile();
    const ConnectionLocker locker(mutex());
    sqlite3_stmt* const rows = statement();
    if (!rows || !moveTo(rows, row)) {
        return std::nullopt;
    }
    return sqlite3_column_int64(rows, Time);
}

bool RowCursor::take(const RowOrder& order, const qint64* places, int count,
                     QVector<QPointF>& points)
{
    holdFile();
    const ConnectionLocker locker(mutex());
    sqlite3_stmt* const rows = statement();
    for (int i = 0; i < count; ++i) {
        if (!rows || !moveTo(rows, order.rowAt(places[i])) || !isNumber(rows, Value)) {
            return false;
        }
        points.append(QPointF(static_cast<double>(sqlite3_column_int64(rows, Time)),
                              sqlite3_column_double(rows, Value)));
    }
    return true;
}

} // namespace scn
