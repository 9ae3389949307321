#pragma once

#include "storage/managedquery.h"
#include "storage/readslice.h"

#include <QPointF>
#include <QString>
#include <QVector>

#include <optional>

struct sqlite3_stmt;

namespace scn {

class RowOrder;

/// Reads rows of a batch table by their numbers, on SQLite's own statement: what is left out costs
/// nothing. Every failure, a table of another kind among them, is a false or empty result.
class RowCursor : public ManagedQuery
{
public:
    RowCursor(const QSqlDatabase& database, const QString& table);

    /// Adds the curve's rows that `order` does not have yet. It fails if the rows that it has are not
    /// there any more.
    ReadStep extend(RowOrder& order, int curveId, ReadSlice& slice);

    /// Time of the reading at a place of `order`.
    std::optional<qint64> timeAt(const RowOrder& order, qint64 place);

    /// Appends the points at some places of `order`, in rising order: x the time, y the value. Others
    /// wait for the connection meanwhile, unless the readings are in memory.
    bool take(const RowOrder& order, const qint64* places, int count, QVector<QPointF>& points);

private:
    sqlite3_stmt* statement();
    void prepareRows();
    void holdFile();
    bool seek(sqlite3_stmt* rows, qint64 row);
    bool step(sqlite3_stmt* rows);
    bool moveTo(sqlite3_stmt* rows, qint64 row);
    bool takeRows(const RowOrder& order, const qint64* places, int count, QVector<QPointF>& points);
    bool extendBlock(RowOrder& order, int curveId, ReadSlice& slice, bool& atEnd);

    QString m_table;
    ManagedQuery m_hold; ///< Keeps the file locked for reading from one search to the next.
    bool m_prepared = false;
    bool m_isHeld = false;
    bool m_onRow = false; ///< The statement is at a row.
    bool m_failed = false;
};

} // namespace scn
