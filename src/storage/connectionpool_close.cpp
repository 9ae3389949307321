#include "storage/connectionpool.h"

#include "storage/connectionsetup.h"
#include "storage/querymanager.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QThread>

#include <algorithm>

using namespace scn;

namespace {

constexpr qint64 kIdleLimitMs = std::chrono::milliseconds(storewaits::kIdleLimit).count();
constexpr int kLastEventsMs = 100;

const QString kWalSuffix = QStringLiteral("-wal");
const QString kShmSuffix = QStringLiteral("-shm");

/// Processes this thread's queued work, so that queries in use can finish. User input is excluded:
/// a click must not start a scan while the last one's files are closing.
void handleEvents(int passes)
{
    for (int pass = 0; pass < passes; ++pass) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents,
                                        static_cast<int>(storewaits::kClosePass.count()));
        storeSleep(storewaits::kClosePass);
    }
}

} // namespace

void ConnectionPool::closeConnection(const QString& path, bool alreadyLocked)
{
    if (!alreadyLocked) {
        m_mutex.lock();
    }
    ConnectionInfo info;
    const bool taken = takeEntry(path, &info);
    m_mutex.unlock();

    if (taken) {
        const QString name = info.connection->connectionName();
        QueryManager::instance().finishQueries(name);
        handleEvents(storewaits::kDrainPasses);
        foldAndClose(*info.connection);
        info.connection.reset();
        handleEvents(storewaits::kSettlePasses);
        if (QSqlDatabase::contains(name)) {
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, kLastEventsMs);
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
    discardLocked(path);
}

void ConnectionPool::discardLocked(const QString& path)
{
    ConnectionInfo info;
    if (!takeEntry(path, &info)) {
        return;
    }
    const QString name = info.connection->connectionName();
    QueryManager::instance().finishQueries(name);
    {
        const ConnectionLocker locker(info.mutex);
        // Closing leaves the WAL of a file that is not in its place, and it would be replayed into
        // the file that replaced it. Checkpointed, it is empty, and a moved file has everything.
        setBusyTimeout(*info.connection, std::chrono::milliseconds::zero());
        truncateLog(*info.connection);
        info.connection->close();
    }
    info.connection.reset();
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

/// Does not wait: no thread holds the connection, and a process that locks the file leaves its WAL
/// to the next opening. Handling events here would nest a chart's reloads.
void ConnectionPool::evictOldestLocked()
{
    auto oldest = m_connections.constEnd();
    for (auto it = m_connections.constBegin(); it != m_connections.constEnd(); ++it) {
        if (*it->holders > 0) {
            continue; // in use: the pool rather grows
        }
        if (oldest == m_connections.constEnd() || it->lastUse < oldest->lastUse) {
            oldest = it;
        }
    }
    ConnectionInfo info;
    if (oldest == m_connections.constEnd() || !takeEntry(QString(oldest.key()), &info)) {
        return;
    }
    const QString name = info.connection->connectionName();
    setBusyTimeout(*info.connection, std::chrono::milliseconds::zero());
    foldAndClose(*info.connection);
    info.connection.reset();
    m_retired.add(name, info.holders);
    m_retired.purge();
}

void ConnectionPool::cleanExpiredConnections()
{
    const QMutexLocker locker(&m_mutex);
    const qint64 now = storeNow();
    QStringList expired;
    for (auto it = m_connections.constBegin(); it != m_connections.constEnd(); ++it) {
        if (now - it->lastUse > kIdleLimitMs && *it->holders == 0) {
            expired.append(it.key());
        }
    }
    for (const QString& path : qAsConst(expired)) {
        closeExpired(path, m_connections[path]);
        m_connections.remove(path);
        qDebug() << "已从连接池移除连接：" << path;
    }
    qDebug() << "连接池清理超时连接数：" << expired.size();
}

/// An expiry neither checkpoints nor removes the connection's name.
void ConnectionPool::closeExpired(const QString& path, ConnectionInfo& info)
{
    const QString name = info.connection->connectionName();
    qDebug() << "准备移除超时连接：" << path << "连接名：" << name;
    QueryManager::instance().finishQueries(name);
    bool logInUse = false;
    {
        const ConnectionLocker locker(info.mutex);
        if (info.connection->isOpen()) {
            const bool wal = usesWal(*info.connection);
            info.connection->close();
            // The last connection checkpoints the WAL and removes it. One that is still there
            // belongs to another process or could not be checkpointed: its readings are not ours to
            // delete.
            logInUse = wal && QFile::exists(path + kWalSuffix);
        }
    }
    if (!logInUse && info.file == fileIdentity(path)) {
        QFile::remove(path + kWalSuffix);
        QFile::remove(path + kShmSuffix);
    }
    qDebug() << "已关闭连接并清理 WAL：" << name;
    info.connection.reset();
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
            const QString name = info.connection->connectionName();
            if (!closeByDeadline(info, deadline)) {
                stillOpen.append(name);
            }
        }
    }
    if (m_expiryTimer.thread() == QThread::currentThread()) {
        m_expiryTimer.stop();
    }
    m_retired.purge();
    removeNamesExcept(stillOpen);
    m_mutex.unlock();
}

/// Closes one connection at the end of the program. A process that locks the file, or a thread busy
/// on the connection, gets only the remaining time.
bool ConnectionPool::closeByDeadline(ConnectionInfo& info, const QDeadlineTimer& deadline)
{
    const auto remaining = [&deadline] {
        return std::chrono::milliseconds(std::max<qint64>(deadline.remainingTime(), 0));
    };
    const QString name = info.connection->connectionName();
    if (!info.mutex->tryLock(remaining())) {
        return false;
    }
    QueryManager::instance().finishQueries(name);
    // Two statements follow that each may wait for a lock.
    setBusyTimeout(*info.connection, remaining() / 2);
    foldAndClose(*info.connection);
    info.mutex->unlock();
    info.connection.reset();
    forgetName(name, info.holders);
    return true;
}

/// Removes names left behind by expiries; those of open or held connections stay.
void ConnectionPool::removeNamesExcept(const QStringList& stillOpen)
{
    const QStringList kept = stillOpen + m_retired.names();
    const QStringList names = QSqlDatabase::connectionNames();
    for (const QString& name : names) {
        if (name.startsWith(kConnectionNamePrefix) && !kept.contains(name)) {
            QSqlDatabase::removeDatabase(name);
        }
    }
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
