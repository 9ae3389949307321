#pragma once

#include "storage/roworders.h"

#include <QPointF>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

#include <optional>

namespace scn {

/// The parameters of a read.
struct ReadRange
{
    int curveId;
    qint64 start;
    qint64 end;
    int maxPoints; ///< 0 or less: no limit.
};

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

    /// Adds a batch table of an open file. False if it could not be read to its end.
    bool addTable(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                  const QString& table);

    /// The points in order of time, at most the limit; nothing if rows could not be found where they
    /// were.
    std::optional<QVector<QPointF>> points();

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

    bool addOrderedRows(const QString& path, const QSharedPointer<QSqlDatabase>& db,
                        const QString& table);
    bool addEveryRow(const QSqlDatabase& database, const QString& table);
    void collect(qint64 firstPlace, qint64 count);
    void thinPicks(int source, qint64 firstPlace, qint64 count);
    bool fetch(QVector<QPointF>& points) const;
    bool collapse();
    bool leaveOrder();

    ReadRange m_range;
    RowOrders* m_orders; ///< Null once every row is read.
    QVector<Source> m_sources;
    QVector<Pick> m_picks;
    bool m_hasTime = false;
    qint64 m_lastTime = 0;     ///< Time of the last reading collected.
    QVector<QPointF> m_points; ///< What was collected, once every row is read.
    bool m_lostRows = false;
};

} // namespace scn
