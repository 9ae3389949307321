#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/datadirectory.h"
#include "storage/lockpatience.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QThread>

#include <algorithm>

using namespace scn;

namespace {

QMutex g_instanceMutex;
std::atomic<CurveDataDB*> g_instance{nullptr};

} // namespace

CurveDataDB* CurveDataDB::instance(const QString& directoryName)
{
    if (CurveDataDB* store = g_instance.load(std::memory_order_acquire)) {
        return store;
    }
    const QMutexLocker locker(&g_instanceMutex);
    if (CurveDataDB* store = g_instance.load(std::memory_order_acquire)) {
        return store;
    }
    const QDir applicationDir(QCoreApplication::applicationDirPath());
    auto* store = new CurveDataDB(applicationDir.filePath(
        directoryName.isEmpty() ? QStringLiteral("curve_data") : directoryName));
    // Its slots and timers belong to the GUI thread, whoever requests it first.
    store->moveToThread(QCoreApplication::instance()->thread());
    g_instance.store(store, std::memory_order_release);
    return store;
}

void CurveDataDB::shutdown()
{
    if (CurveDataDB* store = g_instance.load(std::memory_order_acquire)) {
        store->closeForExit(QDeadlineTimer(storewaits::kShutdownBudget));
    }
}

CurveDataDB::CurveDataDB(const QString& dataDirectory, QObject* parent, FileAccess access)
    : QObject(parent)
    , m_dataDir(dataDirectory)
    , m_access(access)
{
    qRegisterMetaType<DBBatchInfo>("DBBatchInfo");
    qRegisterMetaType<DBCurveMetadata>("DBCurveMetadata");
    qRegisterMetaType<QSharedPointer<QSqlDatabase>>("QSharedPointer<QSqlDatabase>");
    if (isReadOnly()) {
        readCatalogues();
        return;
    }
    if (!isLinkedDirectory(m_dataDir) && !QDir().mkpath(m_dataDir)) {
        qCritical() << "创建数据目录失败:" << m_dataDir;
    }
    const QMutexLocker locker(&m_mutex);
    ensureCurrentDb();
}

CurveDataDB::~CurveDataDB()
{
    stopClearThreads(storewaits::kClearThreadWait);
    if (m_closedForExit) {
        return;
    }
    flushAndDetach();
    closeAllForClear();
    ConnectionPool::instance().closeAllConnections();
}

void CurveDataDB::closeForExit(QDeadlineTimer deadline)
{
    if (m_closedForExit.exchange(true)) {
        return;
    }
    const auto remaining = [&deadline] { return std::max<qint64>(deadline.remainingTime(), 0); };
    const auto threads = findChildren<QThread*>(QString(), Qt::FindDirectChildrenOnly);
    for (QThread* thread : threads) {
        thread->requestInterruption();
    }
    stopClearThreads(std::chrono::milliseconds(remaining() / 2));

    if (m_mutex.tryLock(static_cast<int>(remaining() / 2))) {
        if (m_memory.isCurrentOpen()) {
            const LockPatience patience;
            ManagedQuery(*m_currentDb)
                .exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(remaining() / 4));
            flushPending();
            m_today.saveExtremes();
        }
        m_today.forget();
        m_late.forget();
        m_currentDb.reset();
        m_currentDbPath.clear();
        m_currentDate.clear();
        m_mutex.unlock();
    }
    ConnectionPool::instance().closeForExit(deadline);
}
