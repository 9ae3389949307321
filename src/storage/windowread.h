#pragma once

#include "storage/readrange.h"
#include "storage/roworders.h"

#include <QPointF>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

#include <optional>

namespace scn {

/// Collects the points of a read, table by table, and thins them on the way, which bounds its memory:
/// whenever there are more than twice the limit. Early points are thinned repeatedly.
///
/// While the readings' order is known, only their places are collected, and no row is read that the
/// thinning leaves out. From the first table whose order is not known, or whose readings are not all
/// later than those before it, every row is read.
class WindowRead
{
public:
    /// Without `orders` every row is read.
    WindowRead(const ReadRange& range, RowOrders* orders);

    const ReadRange& range() const { return m_range; }

    /// Adds a batch table of an open file. It fails if the table could not be read to its end.
    ReadStep addTable(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                      const QString& table, ReadSlice& slice);

    /// Fetches what addTable() only collected. It fails if rows could not be found where they were.
    ReadStep finish(ReadSlice& slice);

    /// The points in order of time, at most the limit, after finish().
    const QVector<QPointF>& points() const { return m_points; }

private:
    /// Readings that were added together: rows of a table or, without a connection, points.
    struct Source
    {
        QSharedPointer<QSqlDatabase> db;
        QString table;
        RowOrder order;
        QVector<QPointF> points;
    };

    /// A collected reading.
    struct Pick
    {
        int source;
        qint64 place;
    };

    ReadStep addOrderedRows(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                            const QString& table, ReadSlice& slice);
    ReadStep addEveryRow(const QSqlDatabase& database, const QString& table, ReadSlice& slice);
    void collect(qint64 firstPlace, qint64 count);
    void thinPicks(int source, qint64 firstPlace, qint64 count);
    ReadStep fetch(QVector<QPointF>& points, ReadSlice& slice);
    ReadStep fetchFromTable(const Source& source, QVector<QPointF>& points, ReadSlice& slice);
    bool collapse();
    bool leaveOrder(ReadSlice& slice);

    ReadRange m_range;
    RowOrders* m_orders; ///< Null once every row is read.
    QVector<Source> m_sources;
    QVector<Pick> m_picks;
    int m_fetched = 0;        ///< Picks whose points were fetched.
    bool m_isLeaving = false; ///< The picks are being fetched, after which every row is read.
    std::optional<qint64> m_rowsFrom; ///< Where to go on with a table half read.
    bool m_hasTime = false;
    qint64 m_lastTime = 0;     ///< Time of the last reading collected.
    QVector<QPointF> m_points; ///< What was collected, once every row is read.
    bool m_lostRows = false;
};

} // namespace scn
