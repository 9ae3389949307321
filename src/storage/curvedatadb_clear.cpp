#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/dbclearworker.h"
#include "storage/lockpatience.h"
#include "storage/statements.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>
#include <QTimer>

using namespace scn;

void CurveDataDB::clearAll()
{
    {
        const QMutexLocker locker(&m_mutex);
        if (isReadOnly() || m_clearing || m_clearThread || m_closedForExit) {
            return;
        }
        m_clearing = true;
        m_refusing = false;
        closeAllForClear();
        m_currentDbPath.clear();
        m_currentDate.clear();
        m_knownTables.clear();
        m_curveNameMap.clear();
        m_metadataMap.clear();
        m_batchList.clear();
        m_pendingPoints.clear();
    }
    // The operating system may need a moment to release the files.
    QTimer::singleShot(storeWait(storewaits::kReleaseDelay), this, &CurveDataDB::startClearThread);
}

void CurveDataDB::closeAllForClear()
{
    const QMutexLocker locker(&m_mutex);
    m_pendingPoints.clear();
    m_knownTables.clear();
    m_batchList.clear();
    m_today.forget();
    m_late.forget();
    m_memory.loadedPath.clear();
    m_memory.changes.noteDoubt();
    m_rowOrders.clear();
    if (m_currentDb) {
        m_currentDb.reset();
        ConnectionPool::instance().removeConnection(m_currentDbPath);
        m_currentDbPath.clear();
        m_currentDate.clear();
    }
    ConnectionPool::instance().closeAllConnections();
    for (int pass = 0; pass < storewaits::kClearPasses; ++pass) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents,
                                        static_cast<int>(storewaits::kClearPass.count()));
        storeSleep(storewaits::kClearPass);
    }
}

void CurveDataDB::startClearThread()
{
    const QMutexLocker locker(&m_mutex);
    if (!m_clearing || m_closedForExit) {
        return;
    }
    auto* worker = new DBClearWorker(this, -1, m_dataDir);
    m_clearThread = new QThread(this);
    worker->moveToThread(m_clearThread);
    connect(m_clearThread, &QThread::started, worker, &DBClearWorker::doClear);
    connect(worker, &DBClearWorker::clearFinished, this, &CurveDataDB::onClearFinished);
    connect(worker, &DBClearWorker::clearFinished, m_clearThread, &QThread::quit);
    connect(m_clearThread, &QThread::finished, worker, &QObject::deleteLater);
    connect(m_clearThread, &QThread::finished, m_clearThread, &QObject::deleteLater);
    m_clearThread->start();
}

void CurveDataDB::onClearFinished()
{
    {
        const QMutexLocker locker(&m_mutex);
        m_clearing = false;
        m_clearThread = nullptr;
        m_pendingPoints.clear();
        m_curveNameMap.clear();
        m_metadataMap.clear();
        m_batchList.clear();
        m_today.forget();
        m_memory.changes.noteDoubt();
        ensureCurrentDb();
    }
    emit sigClearFinished();
}

/// Ends the threads of clears. One that does not end in time is left behind: deleting a running
/// thread would end the program.
void CurveDataDB::stopClearThreads(std::chrono::milliseconds wait)
{
    const QDeadlineTimer deadline(wait);
    const auto threads = findChildren<QThread*>(QString(), Qt::FindDirectChildrenOnly);
    for (QThread* thread : threads) {
        thread->quit();
        if (!thread->wait(deadline)) {
            thread->setParent(nullptr);
        }
    }
    m_clearThread = nullptr;
}

bool CurveDataDB::deleteCurveData(int curveId)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_memory.isCurrentOpen()) {
        qCritical() << "数据库未打开，无法删除曲线数据";
        return false;
    }
    m_today.forgetCurve(curveId);
    m_rowOrders.clear();
    m_memory.changes.noteDoubt();
    ManagedQuery(*m_currentDb).exec(kBegin);
    if (!dropCurve(curveId)) {
        ManagedQuery(*m_currentDb).exec(kRollback);
        return false;
    }
    ManagedQuery commit(*m_currentDb);
    if (!commit.exec(kCommit)) {
        qWarning() << "提交事务失败:" << commit.errorText();
        // Left open, the transaction would include every later write.
        commit.exec(kRollback);
        return false;
    }
    const auto extremes = m_metadataMap.find(curveId);
    if (extremes != m_metadataMap.end()) {
        *extremes = DBCurveMetadata();
        m_today.extremes().noteChange(curveId);
        m_late.noteChange(curveId);
    }
    return true;
}

/// The statements of deleteCurveData(), within its transaction.
bool CurveDataDB::dropCurve(int curveId)
{
    ManagedQuery query(*m_currentDb);
    if (!query.run(QStringLiteral("SELECT table_name FROM batch_metadata WHERE curve_id = ?"),
                   {curveId})) {
        qWarning() << "查询曲线分片失败:" << query.errorText();
        return false;
    }
    QStringList tables;
    while (query.next()) {
        tables.append(query.value(0).toString());
    }
    query.finish();
    for (const QString& table : qAsConst(tables)) {
        if (!query.exec(QStringLiteral("DROP TABLE IF EXISTS %1").arg(table))) {
            qWarning() << "删除分片表" << table << "失败:" << query.errorText();
            return false;
        }
    }
    if (!query.run(QStringLiteral("DELETE FROM batch_metadata WHERE curve_id = ?"), {curveId})) {
        qWarning() << "删除分片元数据失败:" << query.errorText();
        return false;
    }
    if (query.run(QStringLiteral("UPDATE curve_metadata SET min_time = NULL, max_time = NULL, "
                                 "min_value = NULL, max_value = NULL WHERE curve_id = ?"),
                  {curveId})) {
        return true;
    }
    if (query.run(QStringLiteral("INSERT OR IGNORE INTO curve_metadata "
                                 "(curve_id, min_time, max_time, min_value, max_value) "
                                 "VALUES (?, NULL, NULL, NULL, NULL)"),
                  {curveId})) {
        return true;
    }
    qWarning() << "重置曲线元数据失败:" << query.errorText();
    return false;
}
