#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/datadirectory.h"
#include "storage/filecatalogue.h"
#include "storage/lockpatience.h"
#include "storage/shardnaming.h"

#include <QDebug>
#include <QFileInfo>
#include <QMutexLocker>

using namespace scn;

QVector<QPointF> CurveDataDB::readCurveData(int curveId, qint64 start, qint64 end, int maxPoints)
{
    CurveRead read({curveId, start, end, maxPoints});
    ReadSlice wholly;
    proceed(read, wholly);
    return read.points();
}

bool CurveDataDB::proceed(CurveRead& read, ReadSlice& slice)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_curveNameMap.contains(read.range().curveId)) {
        qWarning() << "曲线ID" << read.range().curveId << "不存在";
        return true;
    }
    const CurveRead::BatchesOf batchesOf =
        [this](const ReadRange& range, const QSharedPointer<QSqlDatabase>& db, bool* failed) {
            return queryBatches(range.curveId, range.start, range.end, db, failed);
        };
    return read.proceed({m_files, m_rowOrders, m_memory.changes, batchesOf}, slice);
}

bool CurveDataDB::lookThrough(int curveId, qint64 start, qint64 end, const HeldFiles& files,
                              ReadSlice& slice)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        if (!(*file)->isOpen()) {
            continue;
        }
        const QVector<DBBatchInfo> batches = queryBatches(curveId, start, end, *file);
        for (const DBBatchInfo& batch : batches) {
            if (!m_rowOrders.lookThrough(file.key(), **file, batch.tableName, curveId, slice)) {
                return false;
            }
        }
    }
    return true;
}

StoredState CurveDataDB::storedState(int curveId)
{
    const QMutexLocker locker(&m_mutex);
    return m_memory.changes.stateOf(curveId, m_today.todayKey());
}

QVector<DBBatchInfo> CurveDataDB::queryBatches(int curveId, qint64 start, qint64 end,
                                               const QSharedPointer<QSqlDatabase>& db, bool* failed)
{
    const QMutexLocker locker(&m_mutex);
    const auto noteFailure = [failed](bool hasFailed) {
        if (failed) {
            *failed = *failed || hasFailed;
        }
    };
    if (!pingConnection(db)) {
        qWarning() << "外部数据库连接无效";
        noteFailure(true);
        return {};
    }
    ManagedQuery query(*db);
    query.setForwardOnly(true);
    const QString sql = QStringLiteral(
        "SELECT curve_id, batch_start, batch_end, table_name FROM batch_metadata WHERE curve_id = "
        "? "
        "AND ( (batch_start BETWEEN ? AND ?) OR (batch_end BETWEEN ? AND ?) OR (batch_start <= ? "
        "AND batch_end >= ?) )");
    if (!query.run(sql, {curveId, start, end, start, end, start, end})) {
        qWarning() << "查询分片元数据失败:" << query.errorText();
        noteFailure(!query.errorText().contains(QLatin1String("no such table")));
        return {};
    }
    // A reused id may find the tables of the curve that had it before.
    const QString prefix = tablePrefix(curveId);
    QVector<DBBatchInfo> batches;
    while (query.next()) {
        const DBBatchInfo batch{query.value(1).toLongLong(), query.value(2).toLongLong(),
                                query.value(3).toString()};
        if (batch.tableName.startsWith(prefix)) {
            batches.append(batch);
        }
    }
    noteFailure(!query.isUsable() || !query.errorText().isEmpty());
    return batches;
}

bool CurveDataDB::pingConnection(const QSharedPointer<QSqlDatabase>& db)
{
    const QMutexLocker locker(&m_mutex);
    if (!db || !db->isOpen()) {
        return false;
    }
    ManagedQuery query(*db);
    return query.exec(QStringLiteral("SELECT 1"));
}

QVector<DBBatchInfo> CurveDataDB::listBatchesInFile(int curveId, qint64 start, qint64 end,
                                                    const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!QFileInfo::exists(path)) {
        return {};
    }
    QSharedPointer<QSqlDatabase> db = openDb(path);
    QVector<DBBatchInfo> batches;
    if (pingConnection(db)) {
        batches = queryBatches(curveId, start, end, db);
    } else {
        qWarning() << "数据库连接无效:" << path;
    }
    db.reset();
    ConnectionPool::instance().releaseConnection(path);
    return batches;
}

/// The oldest file first: a newer one's ids and extremes prevail. A curve that a newer file lacks keeps
/// its id if that is free.
void CurveDataDB::readCatalogues()
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    for (const QString& path : dayFilesIn(m_dataDir)) {
        const QSharedPointer<QSqlDatabase> db = openDb(path);
        if (!db) {
            continue;
        }
        const FileCatalogue catalogue = readCatalogue(*db, [&path](const ManagedQuery& query) {
            qWarning() << "读取目录失败:" << path << query.errorText();
        });
        for (const QString& name : catalogue.names) {
            m_curveNameMap.remove(m_curveNameMap.key(name, -1));
        }
        m_memory.take(path, catalogue);
        ConnectionPool::instance().releaseConnection(path);
    }
}

void CurveDataDB::loadBatchesForCurve(int curveId, qint64 start, qint64 end)
{
    const QMutexLocker locker(&m_mutex);
    const QVector<DBBatchInfo> batches = listBatchesInFile(curveId, start, end, m_currentDbPath);
    for (const DBBatchInfo& batch : batches) {
        m_knownTables[batch.tableName] = true;
    }
    m_batchLoadMode = true;
}
