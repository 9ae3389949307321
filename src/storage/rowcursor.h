#pragma once

#include "storage/managedquery.h"

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

    /// Adds the curve's rows that `order` does not have yet. False if that failed, or if the rows it
    /// has are not there any more.
    bool extend(RowOrder& order, int curveId);

    /// Time of a row.
    std::optional<qint64> timeOf(qint64 row);

    /// Appends the points at some places of `order`, in rising order: x the time, y the value.
    bool take(const RowOrder& order, const qint64* places, int count, QVector<QPointF>& points);

private:
    sqlite3_stmt* statement();
    bool seek(sqlite3_stmt* rows, qint64 row);
    bool step(sqlite3_stmt* rows);
    bool moveTo(sqlite3_stmt* rows, qint64 row);
    bool extendBlock(RowOrder& order, int curveId, bool& atEnd);

    bool m_prepared = false;
    bool m_onRow = false; ///< The statement is at a row.
    bool m_failed = false;
};

} // namespace scn
