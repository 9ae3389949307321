#include "storage/latefile.h"

#include "storage/connectionpool.h"
#include "storage/filecatalogue.h"
#include "storage/statements.h"

#include <QDebug>

namespace scn {

LateFile::LateFile(StoreMemory& memory, const DayFiles& files, CurrentFile& today)
    : m_memory(memory)
    , m_files(files)
    , m_today(today)
{
}

void LateFile::forget()
{
    m_connection.clear();
    m_inserts.clear();
    m_isFit = false;
    m_extremes.clear();
    m_changed.clear();
}

bool LateFile::store(const QString& path, const QSqlDatabase& db, const Reading& reading,
                     const TimeSlice& slice, const KeptInserts::OpenTable& openTable)
{
    if (isLoaded(path, db)) {
        restoreExtremes();
    } else {
        m_memory.loadedPath.clear();
    }
    // The caller's id names the table even if the file knows the curve under another one; the
    // insert then finds no table.
    attach(db);
    const bool isStored = m_inserts.store(db, reading, slice, openTable).isStored;
    if (m_memory.loadedPath != path) { // as a rule it was loaded for the look at its batches
        setUpAndLoad(path, db);
    }
    return isStored;
}

/// Whether a file is the one last loaded, through this connection, and accepts readings.
bool LateFile::isLoaded(const QString& path, const QSqlDatabase& db) const
{
    return m_memory.loadedPath == path && m_connection == db.connectionName() && m_isFit;
}

/// Drops what was kept for another connection.
void LateFile::attach(const QSqlDatabase& db)
{
    if (m_connection == db.connectionName()) {
        return;
    }
    forget();
    m_connection = db.connectionName();
}

/// Loads a file, after giving it what it needs for readings.
void LateFile::setUpAndLoad(const QString& path, const QSqlDatabase& db)
{
    const bool isFit = setUp(db);
    load(path);
    qDebug() << "openForWrite"
             << "-0000-" << m_memory.batchList.size();
    for (const DBBatchInfo& batch : qAsConst(m_memory.batchList)) {
        qDebug() << "openForWrite"
                 << "-0001-" << batch.tableName;
    }
    m_isFit = isFit;
}

void LateFile::load(const QString& path)
{
    m_memory.dropRecords();
    m_today.extremes().noteForeign();
    const QSharedPointer<QSqlDatabase> db = m_files.open(path);
    if (!db || !db->isOpen()) {
        return;
    }
    m_memory.take(path, readCatalogue(*db, [](const ManagedQuery&) {}));
    attach(*db);
    m_isFit = false;
    m_extremes = m_memory.metadataMap;
    m_changed.clear();
    ConnectionPool::instance().releaseConnection(path);
}

/// Gives a file without curves the base tables and today's curves under today's ids, or leaves it
/// unchanged. False if it cannot accept readings.
bool LateFile::setUp(const QSqlDatabase& db)
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
    if (!m_memory.isCurrentOpen()) {
        return false;
    }
    ManagedQuery names(*m_memory.currentDb);
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
void LateFile::restoreExtremes()
{
    for (const int curveId : qAsConst(m_changed)) {
        const auto extremes = m_extremes.constFind(curveId);
        if (extremes == m_extremes.constEnd()) {
            m_memory.metadataMap.remove(curveId);
            m_today.extremes().forgetChange(curveId);
        } else {
            m_memory.metadataMap.insert(curveId, *extremes);
            m_today.extremes().noteChange(curveId);
        }
    }
    m_changed.clear();
}

int LateFile::curveIdIn(const QString& path, const QSqlDatabase& db, int curveId)
{
    if (!isLoaded(path, db)) {
        setUpAndLoad(path, db);
    }
    if (!m_memory.curveNameMap.contains(curveId)) {
        qWarning() << "曲线ID" << curveId << "在内存映射中不存在";
        return -1;
    }
    const QString name = m_memory.curveNameMap.value(curveId);
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
    m_memory.curveNameMap.insert(ownId, name);
    qDebug() << "openForWrite"
             << "-0002-" << ownId << name;
    return ownId;
}

} // namespace scn
