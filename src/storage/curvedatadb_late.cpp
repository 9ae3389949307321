#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/statements.h"

#include <QDebug>

using namespace scn;

/// Stores a reading of another day. Loads that file's own catalogue, and gives today's file the
/// extremes that follow. While readings keep coming for the same file and nothing else is loaded,
/// the loaded catalogue is reused. False if the reading could not be stored.
bool CurveDataDB::appendToOtherFile(int curveId, qint64 timestamp, double value)
{
    const QString path = dbPathForDate(dateKeyFor(timestamp));
    const QSharedPointer<QSqlDatabase> db = openDb(path);
    if (!db || !db->isOpen()) {
        return false;
    }
    if (isLoaded(path, *db)) {
        restoreLateExtremes();
    } else {
        m_loadedPath.clear();
    }
    // The caller's id names the table even if the file knows the curve under another one; the
    // insert then finds no table.
    attachLateFile(*db);
    bool metReadOnly = false; // which makes no difference here
    const bool isStored =
        insertReading(m_late.inserts, *db, {curveId, timestamp, value}, metReadOnly);
    if (m_loadedPath != path) { // as a rule it was loaded for the look at its batches
        loadOtherFile(path, *db);
    }
    updateMetadataCache(curveId, timestamp, value);
    saveMetadata();
    ConnectionPool::instance().releaseConnection(path);
    return isStored;
}

/// Whether a file of an earlier day is the one last loaded, through this connection, and accepts
/// readings.
bool CurveDataDB::isLoaded(const QString& path, const QSqlDatabase& db) const
{
    return m_loadedPath == path && m_late.connection == db.connectionName() && m_late.isFit;
}

/// Drops what was kept for late readings on another connection.
void CurveDataDB::attachLateFile(const QSqlDatabase& db)
{
    if (m_late.connection == db.connectionName()) {
        return;
    }
    m_late = LateFile();
    m_late.connection = db.connectionName();
}

/// Loads the file of another day, after giving it what it needs for readings.
void CurveDataDB::loadOtherFile(const QString& path, const QSqlDatabase& db)
{
    const bool isFit = setUpOtherFile(db);
    loadMetadata(path);
    qDebug() << "openForWrite"
             << "-0000-" << m_batchList.size();
    for (const DBBatchInfo& batch : qAsConst(m_batchList)) {
        qDebug() << "openForWrite"
                 << "-0001-" << batch.tableName;
    }
    m_late.isFit = isFit;
}

/// Gives a file without curves the base tables and today's curves under today's ids, or leaves it
/// unchanged. False if it cannot accept readings.
bool CurveDataDB::setUpOtherFile(const QSqlDatabase& db)
{
    {
        ManagedQuery query(db);
        if (!query.exec(QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = 'curve_info'"))) {
            return false;
        }
        if (query.next()) {
            return true;
        }
    }
    if (!isCurrentOpen()) {
        return false;
    }
    ManagedQuery names(*m_currentDb);
    names.setForwardOnly(true);
    if (!names.exec(QStringLiteral("SELECT curve_id, name FROM curve_info ORDER BY curve_id"))) {
        return false;
    }
    ManagedQuery query(db);
    bool isDone = query.exec(kBegin) && createBaseTables(db);
    while (isDone && names.next()) {
        isDone = query.run(QStringLiteral("INSERT INTO curve_info (curve_id, name) VALUES (?, ?)"),
                           {names.value(0), names.value(1)});
    }
    isDone = isDone && query.exec(kCommit);
    if (!isDone) {
        query.exec(kRollback);
    }
    return isDone;
}

/// Restores the loaded file's extremes: each late reading starts from those.
void CurveDataDB::restoreLateExtremes()
{
    for (const int curveId : qAsConst(m_late.changed)) {
        const auto extremes = m_late.extremes.constFind(curveId);
        if (extremes == m_late.extremes.constEnd()) {
            m_metadataMap.remove(curveId);
            m_today.forgetChange(curveId);
        } else {
            m_metadataMap.insert(curveId, *extremes);
            m_today.noteChange(curveId);
        }
    }
    m_late.changed.clear();
}

/// A curve's id in a file other than the current one, registered there if necessary; -1 on failure.
int CurveDataDB::curveIdInOtherFile(const QSqlDatabase& db, int curveId)
{
    if (!m_curveNameMap.contains(curveId)) {
        qWarning() << "曲线ID" << curveId << "在内存映射中不存在";
        return -1;
    }
    const QString name = m_curveNameMap.value(curveId);
    ManagedQuery query(db);
    if (query.run(QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name}) &&
        query.next()) {
        return query.value(0).toInt();
    }
    if (!query.run(QStringLiteral("INSERT INTO curve_info (name) VALUES (?)"), {name})) {
        qWarning() << "在新数据库中注册曲线失败:" << query.errorText();
        return -1;
    }
    const int ownId = query.lastInsertId().toInt();
    m_curveNameMap.insert(ownId, name);
    qDebug() << "openForWrite"
             << "-0002-" << ownId << name;
    return ownId;
}
