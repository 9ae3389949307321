#include "storage/connectionpool.h"

#include "storage/connectionsetup.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>

#include <algorithm>
#include <atomic>

using namespace scn;

namespace {

constexpr int kMaxConnections = 30;
constexpr qint64 kIdleLimitMs = std::chrono::milliseconds(storewaits::kIdleLimit).count();

std::atomic<bool> g_poolExists{false};

} // namespace

ConnectionPool::ConnectionPool()
    : m_expiryTimer(this)
    , m_spareTimer(this)
{
    m_expiryTimer.setInterval(storewaits::kSweepInterval);
    connect(&m_expiryTimer, &QTimer::timeout, this, &ConnectionPool::cleanExpiredConnections);
    if (auto* application = QCoreApplication::instance()) {
        moveToThread(application->thread());
    }
    // A timer runs on the thread that starts it, which must have an event loop.
    if (thread() == QThread::currentThread()) {
        m_expiryTimer.start();
    } else {
        QMetaObject::invokeMethod(&m_expiryTimer, qOverload<>(&QTimer::start),
                                  Qt::QueuedConnection);
    }
}

ConnectionPool& ConnectionPool::instance()
{
    static auto* const pool = new ConnectionPool;
    g_poolExists = true;
    return *pool;
}

bool ConnectionPool::exists()
{
    return g_poolExists;
}

QString ConnectionPool::dateKeyFromPath(const QString& path)
{
    return digitsOfBaseName(path, 8);
}

QString ConnectionPool::hourKeyFromPath(const QString& path)
{
    return digitsOfBaseName(path, 10);
}

QSharedPointer<QSqlDatabase> ConnectionPool::acquireConnection(const QString& path,
                                                               FileAccess access)
{
    const QMutexLocker locker(&m_mutex);
    m_retired.purge();

    const auto pooled = [this, &path]() -> QSharedPointer<QSqlDatabase> {
        const auto entry = m_connections.find(path);
        if (entry == m_connections.end() || !entry->connection ||
            entry->file != fileIdentity(path) || !validateConnection(*entry->connection)) {
            return {};
        }
        entry->lastUse = storeNow();
        return entry->lend();
    };
    if (auto connection = pooled()) {
        return connection;
    }
    if (m_connections.contains(path)) {
        qDebug() << "连接无效，重新创建：" << path;
        if (m_connections.value(path).file == fileIdentity(path)) {
            closeConnection(path, true);
        } else {
            retire(path, &ConnectionInfo::closeAtOnce);
        }
        // Closing releases the mutex: someone may have opened the path meanwhile.
        if (auto connection = pooled()) {
            return connection;
        }
    }
    // More than one if a load of a chart had held more than the limit.
    while (m_connections.size() >= kMaxConnections && evictOldestLocked()) {
    }

    const QSqlDatabase created =
        access == FileAccess::Read ? createReadOnlyConnection(path) : createConnection(path);
    if (!created.isOpen()) {
        return {};
    }
    return m_connections.insert(path, ConnectionInfo::of(created, path))->lend();
}

void ConnectionPool::releaseConnection(const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    const auto entry = m_connections.find(path);
    if (entry != m_connections.end()) {
        entry->lastUse = storeNow();
    }
}

void ConnectionPool::removeConnection(const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    closeConnection(path, true);
}

int ConnectionPool::connectionCount() const
{
    const QMutexLocker locker(&m_mutex);
    return m_connections.size();
}

bool ConnectionPool::isHeld(const QString& path) const
{
    const QMutexLocker locker(&m_mutex);
    const auto entry = m_connections.constFind(path);
    return entry != m_connections.constEnd() && entry->isHeld();
}

qint64 ConnectionPool::lastUse(const QString& path) const
{
    const QMutexLocker locker(&m_mutex);
    return m_connections.value(path).lastUse;
}

/// Removes an entry from the map; false if there is none with a connection.
bool ConnectionPool::takeEntry(const QString& path, ConnectionInfo* info)
{
    if (!m_connections.contains(path)) {
        return false;
    }
    *info = m_connections.take(path);
    return !info->connection.isNull();
}

void ConnectionPool::closeConnection(const QString& path, bool alreadyLocked)
{
    if (!alreadyLocked) {
        m_mutex.lock();
    }
    ConnectionInfo info;
    const bool taken = takeEntry(path, &info);
    m_mutex.unlock();

    if (taken) {
        const QString name = info.name();
        info.drainAndClose();
        if (QSqlDatabase::contains(name)) {
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents,
                                            static_cast<int>(storewaits::kLastEvents.count()));
            forgetName(name, info.holders);
        } else {
            qDebug() << "连接名已不存在:" << name;
        }
    }
    if (alreadyLocked) {
        m_mutex.lock();
    }
}

void ConnectionPool::discardConnection(const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    retire(path, &ConnectionInfo::closeAtOnce);
}

/// Closes a connection in the given way, and removes its name as soon as nobody holds it.
void ConnectionPool::retire(const QString& path, void (ConnectionInfo::*close)())
{
    ConnectionInfo info;
    if (!takeEntry(path, &info)) {
        return;
    }
    const QString name = info.name();
    (info.*close)();
    m_retired.add(name, info.holders);
    m_retired.purge();
}

void ConnectionPool::closeAllConnections()
{
    QStringList paths;
    {
        const QMutexLocker locker(&m_mutex);
        paths = m_connections.keys();
    }
    for (const QString& path : qAsConst(paths)) {
        removeConnection(path);
        storeSleep(storewaits::kCloseGap);
    }
}

void ConnectionPool::evictOldestConnection()
{
    const QMutexLocker locker(&m_mutex);
    evictOldestLocked();
}

/// False if all are held. Does not wait: no thread holds the connection, and a process that locks the
/// file leaves its WAL to the next opening. Handling events here would nest a chart's reloads.
bool ConnectionPool::evictOldestLocked()
{
    auto oldest = m_connections.constEnd();
    for (auto it = m_connections.constBegin(); it != m_connections.constEnd(); ++it) {
        if (it->isHeld()) {
            continue; // in use: the pool rather grows
        }
        if (oldest == m_connections.constEnd() || it->lastUse < oldest->lastUse) {
            oldest = it;
        }
    }
    if (oldest == m_connections.constEnd()) {
        return false;
    }
    retire(QString(oldest.key()), &ConnectionInfo::closeUnheld);
    return true;
}

void ConnectionPool::cleanExpiredConnections()
{
    const QMutexLocker locker(&m_mutex);
    const qint64 now = storeNow();
    QStringList expired;
    for (auto it = m_connections.constBegin(); it != m_connections.constEnd(); ++it) {
        if (now - it->lastUse > kIdleLimitMs && !it->isHeld()) {
            expired.append(it.key());
        }
    }
    for (const QString& path : qAsConst(expired)) {
        m_connections[path].closeExpired(path);
        m_connections.remove(path);
        qDebug() << "已从连接池移除连接：" << path;
    }
    qDebug() << "连接池清理超时连接数：" << expired.size();
}

void ConnectionPool::closeForExit(QDeadlineTimer deadline)
{
    const auto lockInTime = [this, &deadline] {
        return m_mutex.tryLock(static_cast<int>(std::max<qint64>(deadline.remainingTime(), 0)));
    };
    QStringList stillOpen;
    // A thread in the middle of an open may add a connection meanwhile. One that takes too long
    // leaves its file as a killed program does.
    for (;;) {
        QMap<QString, ConnectionInfo> connections;
        if (!lockInTime()) {
            return;
        }
        connections.swap(m_connections);
        if (connections.isEmpty()) {
            break;
        }
        m_mutex.unlock();
        for (ConnectionInfo& info : connections) {
            const QString name = info.name();
            if (info.closeByDeadline(deadline)) {
                forgetName(name, info.holders);
            } else {
                stillOpen.append(name);
            }
        }
    }
    if (m_expiryTimer.thread() == QThread::currentThread()) {
        m_expiryTimer.stop();
    }
    m_retired.purge();
    m_retired.removeNamesExcept(stillOpen);
    m_mutex.unlock();
}

/// Removes the name of a closed connection, at once or when its last holder releases it.
void ConnectionPool::forgetName(const QString& name, const HolderCount& holders)
{
    if (*holders == 0) {
        RetiredConnections::removeName(name);
        return;
    }
    const QMutexLocker locker(&m_mutex);
    m_retired.add(name, holders);
}
