#include "storage/connectionpool.h"

#include "storage/connectionsetup.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>

#include <atomic>

using namespace scn;

namespace {

constexpr int kMaxConnections = 30;

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

QSharedPointer<QSqlDatabase> ConnectionPool::acquireConnection(const QString& path)
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
        return lend(*entry);
    };
    if (auto connection = pooled()) {
        return connection;
    }
    if (m_connections.contains(path)) {
        qDebug() << "连接无效，重新创建：" << path;
        if (m_connections.value(path).file == fileIdentity(path)) {
            closeConnection(path, true);
        } else {
            discardLocked(path);
        }
        // Closing releases the mutex: someone may have opened the path meanwhile.
        if (auto connection = pooled()) {
            return connection;
        }
    }
    if (m_connections.size() >= kMaxConnections) {
        evictOldestLocked();
    }

    QSqlDatabase created = createConnection(path);
    if (!created.isOpen()) {
        return {};
    }
    ConnectionInfo info;
    info.connection = QSharedPointer<QSqlDatabase>::create(created);
    info.lastUse = storeNow();
    info.file = fileIdentity(path);
    info.mutex = connectionMutex(created.connectionName());
    const auto entry = m_connections.insert(path, info);
    return lend(*entry);
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
    return entry != m_connections.constEnd() && *entry->holders > 0;
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

/// Holders get a separate pointer whose end is counted, so the pool knows whether anyone still
/// holds the connection.
QSharedPointer<QSqlDatabase> ConnectionPool::lend(ConnectionInfo& info)
{
    info.holders->fetch_add(1);
    return QSharedPointer<QSqlDatabase>(
        info.connection.data(),
        [own = info.connection, holders = info.holders](QSqlDatabase*) mutable {
            own.reset();
            holders->fetch_sub(1);
        });
}
