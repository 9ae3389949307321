#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/lockpatience.h"
#include "storage/readingtime.h"
#include "storage/shardnaming.h"
#include "storage/statements.h"

#include <QDebug>

using namespace scn;

void CurveDataDB::appendPoints(int curveId, const QVector<QPointF>& points)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (isReadOnly() || !m_curveNameMap.contains(curveId) || points.isEmpty()) {
        return;
    }
    if (m_batchLoadMode || m_clearing) {
        m_pendingPoints[curveId] += points;
        return;
    }
    QMap<QString, QVector<QPointF>> pointsByPath;
    for (const QPointF& point : points) {
        if (hasTime(point)) {
            pointsByPath[dbPathForDate(dateKeyFor(timeOf(point)))].append(point);
        }
    }
    for (auto it = pointsByPath.constBegin(); it != pointsByPath.constEnd(); ++it) {
        appendToFile(it.key(), curveId, it.value());
    }
}

void CurveDataDB::appendToFile(const QString& path, int curveId, const QVector<QPointF>& points)
{
    if (path != m_currentDbPath) {
        ensureCurrentDb();
    }
    const bool isCurrent = path == m_currentDbPath;
    if (isCurrent) {
        m_today.repair();
    }
    const QSharedPointer<QSqlDatabase> db = isCurrent ? m_currentDb : openDb(path);
    if (!db || !db->isOpen()) {
        return;
    }
    if (isCurrent) {
        m_today.noteUse();
    }
    insertPoints(*db, curveId, points);
    if (!isCurrent) {
        m_late.load(path);
    }
    for (const QPointF& point : points) {
        updateMetadataCache(curveId, timeOf(point), point.y());
    }
    saveMetadata();
    if (!isCurrent) {
        ConnectionPool::instance().releaseConnection(path);
    }
}

/// Inserts points of one curve into one file in a transaction. The tables are created first, since
/// their own transaction cannot be nested.
void CurveDataDB::insertPoints(const QSqlDatabase& db, int curveId, const QVector<QPointF>& points)
{
    QMap<QString, QVector<QPointF>> pointsByTable;
    for (const QPointF& point : points) {
        const TimeSlice& slice = m_readingSlice.at(timeOf(point));
        pointsByTable[makeTableName(curveId, slice.batchName)].append(point);
    }
    for (const QVector<QPointF>& tablePoints : qAsConst(pointsByTable)) {
        openForWrite(curveId, timeOf(tablePoints.first()));
    }

    ManagedQuery query(db);
    query.exec(kBegin);
    for (auto it = pointsByTable.constBegin(); it != pointsByTable.constEnd(); ++it) {
        QVariantList ids;
        QVariantList times;
        QVariantList values;
        for (const QPointF& point : it.value()) {
            ids.append(curveId);
            times.append(timeOf(point));
            values.append(point.y());
            m_memory.changes.noteReading(curveId, timeOf(point));
        }
        if (!query.prepare(insertPointSql(it.key())) || !query.execColumns({ids, times, values})) {
            qWarning() << "批量插入失败:" << query.errorText();
            m_today.attachment().noteFailure(query);
        }
    }
    if (!query.exec(kCommit)) {
        query.exec(kRollback);
    }
}

void CurveDataDB::flushPending()
{
    const QMutexLocker locker(&m_mutex);
    if (m_pendingPoints.isEmpty() || m_batchLoadMode || m_clearing) {
        return;
    }
    const QMap<int, QVector<QPointF>> pending = m_pendingPoints;
    for (auto it = pending.constBegin(); it != pending.constEnd(); ++it) {
        appendPoints(it.key(), it.value());
    }
    m_pendingPoints.clear();
}

/// A chart calls this before it reads a window. What was held back is then in the file it reads,
/// and the writer does not hold the connection: a read may evict it, or find its file replaced and
/// reopen it. The next reading attaches again.
void CurveDataDB::flushAndDetach()
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_currentDb) {
        return;
    }
    flushPending();
    saveMetadata();
    m_today.detach();
}
