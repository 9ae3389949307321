#include "storage/connectionpool.h"

#include "storage/managedquery.h"
#include "storage/querymanager.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QThread>
#include <QUuid>

#include <algorithm>
#include <atomic>
#include <utility>

namespace {

constexpr qint64 kIdleLimitMs = std::chrono::milliseconds(storewaits::kIdleLimit).count();
constexpr int kMaxConnections = 30;
constexpr int kLastEventsMs = 100;
constexpr int kPathHashLength = 8;
constexpr int kUuidLength = 16;

const QString kWalSuffix = QStringLiteral("-wal");
const QString kShmSuffix = QStringLiteral("-shm");
const QString kCheckpointTruncate = QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)");
const QString kJournalDelete = QStringLiteral("PRAGMA journal_mode = DELETE");
const QString kNamePrefix = QStringLiteral("curve_db_");

std::atomic<bool> g_poolExists{false};

QString digitsFromPath(const QString& path, int length)
{
    const QString baseName = QFileInfo(path).completeBaseName();
    const bool digits = std::all_of(baseName.cbegin(), baseName.cend(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
    return baseName.length() == length && digits ? baseName : QString();
}

QString newConnectionName(const QString& path)
{
    const QByteArray hash =
        QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5).toHex();
    QString unique = QUuid::createUuid().toString();
    unique.remove(QLatin1Char('-'));
    return kNamePrefix + QString::fromLatin1(hash.left(kPathHashLength)) + QLatin1Char('_') +
           unique.left(kUuidLength);
}

/// Lets queued work of this thread run, so that queries in use can come to their end. User input
/// stays out: a click must not start a scan inside the closing of the last one's files.
void handleEvents(int passes)
{
    for (int pass = 0; pass < passes; ++pass) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents,
                                        static_cast<int>(storewaits::kClosePass.count()));
        storeSleep(storewaits::kClosePass);
    }
}

/// How long a statement of the connection waits for a file that another process has locked.
void setBusyTimeout(const QSqlDatabase& database, std::chrono::milliseconds patience)
{
    ManagedQuery(database).exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(patience.count()));
}

/// Whether the connection writes a log beside the file.
bool usesWal(const QSqlDatabase& database)
{
    ManagedQuery query(database);
    return query.exec(QStringLiteral("PRAGMA journal_mode")) && query.next() &&
           query.value(0).toString() == QLatin1String("wal");
}

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
    // A timer runs on the thread that starts it, which has to be one with an event loop.
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
    return digitsFromPath(path, 8);
}

QString ConnectionPool::hourKeyFromPath(const QString& path)
{
    return digitsFromPath(path, 10);
}

QSharedPointer<QSqlDatabase> ConnectionPool::acquireConnection(const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    purgeRetiredLocked();

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
        // Closing gives up the mutex: somebody may have opened the path meanwhile.
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
        // Closing leaves the log of a file that is not in its place: it would be replayed into the
        // one that has taken it. Folded in, it is empty, and a file that was moved has it all.
        setBusyTimeout(*info.connection, std::chrono::milliseconds::zero());
        ManagedQuery(*info.connection).exec(kCheckpointTruncate);
        info.connection->close();
    }
    info.connection.reset();
    m_retired.append({name, info.holders});
    purgeRetiredLocked();
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

/// Waits for nobody: no thread holds the connection, and a process that locks the file leaves its
/// log to the next opening. Handling events here would let a chart load anew inside the load that
/// asks for the connection, and again inside that one.
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
    m_retired.append({name, info.holders});
    purgeRetiredLocked();
}

void ConnectionPool::closeForExit(QDeadlineTimer deadline)
{
    const auto lockInTime = [this, &deadline] {
        return m_mutex.tryLock(static_cast<int>(std::max<qint64>(deadline.remainingTime(), 0)));
    };
    QStringList stillOpen;
    // A thread that is in the middle of an open may add a connection meanwhile. One that takes too
    // long leaves its file as a killed program does.
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
    purgeRetiredLocked();
    removeNamesExcept(stillOpen);
    m_mutex.unlock();
}

/// Removes the names that expiries have left behind; those of connections that are open or held
/// stay.
void ConnectionPool::removeNamesExcept(const QStringList& stillOpen)
{
    QStringList kept = stillOpen;
    for (const RetiredConnection& connection : qAsConst(m_retired)) {
        kept.append(connection.name);
    }
    const QStringList names = QSqlDatabase::connectionNames();
    for (const QString& name : names) {
        if (name.startsWith(kNamePrefix) && !kept.contains(name)) {
            QSqlDatabase::removeDatabase(name);
        }
    }
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

/// Neither a checkpoint nor the removal of the connection's name belongs to an expiry.
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
            // The last connection folds its log in and removes it. One that is still there belongs
            // to another process or could not be folded in: the readings in it are not ours to
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

QSqlDatabase ConnectionPool::createConnection(const QString& path)
{
    if (path.isEmpty()) {
        qCritical() << "数据库路径不能为空!";
        return {};
    }
    const QDir directory = QFileInfo(path).absoluteDir();
    if (!directory.exists() && !directory.mkpath(QStringLiteral("."))) {
        qCritical() << "创建数据库目录失败:" << directory.absolutePath();
        return {};
    }
    const QString name = newConnectionName(path);
    if (QSqlDatabase::contains(name)) {
        QSqlDatabase::removeDatabase(name);
        qDebug() << "连接名已存在，提前移除：" << name;
    }
    QString error;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(path);
        database.setConnectOptions(
            QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(storewaits::kLockPatience.count()));
        if (database.open()) {
            if (dateKeyFromPath(path) == todayKey()) {
                setUpWriter(database);
            } else {
                setUpReader(database);
            }
            return database;
        }
        error = database.lastError().text();
    }
    qCritical() << "打开数据库失败:" << path << "错误:" << error;
    QSqlDatabase::removeDatabase(name);
    return {};
}

void ConnectionPool::setUpWriter(const QSqlDatabase& database)
{
    if (execPragmaChecked(database, QStringLiteral("PRAGMA journal_mode = WAL"),
                          QStringLiteral("WAL"))) {
        execPragmaChecked(database, QStringLiteral("PRAGMA synchronous = NORMAL"),
                          QStringLiteral("NORMAL"));
    } else {
        execPragmaChecked(database, kJournalDelete, QStringLiteral("DELETE"));
        execPragmaChecked(database, QStringLiteral("PRAGMA synchronous = FULL"),
                          QStringLiteral("FULL"));
    }
    execPragmaChecked(database, QStringLiteral("PRAGMA foreign_keys = ON"), QStringLiteral("1"));
}

void ConnectionPool::setUpReader(const QSqlDatabase& database)
{
    if (execPragmaChecked(database, kJournalDelete, QStringLiteral("DELETE"))) {
        execPragmaChecked(database, QStringLiteral("PRAGMA wal_checkpoint(FULL)"),
                          QStringLiteral("0"));
    }
    execPragmaChecked(database, QStringLiteral("PRAGMA synchronous = OFF"), QStringLiteral("OFF"));
    execPragmaChecked(database, QStringLiteral("PRAGMA foreign_keys = ON"), QStringLiteral("1"));
}

bool ConnectionPool::execPragmaChecked(const QSqlDatabase& database, const QString& sql,
                                       const QString& expected)
{
    ManagedQuery query(database);
    if (!query.exec(sql)) {
        qWarning() << "执行PRAGMA失败：" << sql << " 错误：" << query.errorText();
        return false;
    }
    if (expected.isEmpty() || !query.next()) {
        return true;
    }
    const QString actual = query.value(0).toString();
    if (actual.toLower() != expected.toLower()) {
        qWarning() << "PRAGMA结果不匹配：" << sql << " 预期：" << expected << " 实际：" << actual;
        return false;
    }
    return true;
}

bool ConnectionPool::validateConnection(const QSqlDatabase& database)
{
    if (!database.isOpen()) {
        return false;
    }
    ManagedQuery query(database);
    if (!query.exec(QStringLiteral("SELECT 1"))) {
        qDebug() << "连接验证失败：" << database.connectionName() << "错误：" << query.errorText();
        return false;
    }
    return query.next() && query.value(0).toInt() == 1;
}

/// Takes an entry out of the map; false if there is none that holds a connection.
bool ConnectionPool::takeEntry(const QString& path, ConnectionInfo* info)
{
    if (!m_connections.contains(path)) {
        return false;
    }
    *info = m_connections.take(path);
    return !info->connection.isNull();
}

void ConnectionPool::foldAndClose(QSqlDatabase& database)
{
    const ConnectionLocker locker(database);
    if (!database.isOpen()) {
        return;
    }
    // A query begun during the wait would keep the journal from being switched.
    QueryManager::instance().finishQueries(database.connectionName());
    ManagedQuery(database).exec(kCheckpointTruncate);
    ManagedQuery(database).exec(kJournalDelete);
    database.close();
}

/// Closes one connection of a program that ends. Another process that locks the file, or a thread
/// that is busy on the connection, gets no more than the time that is left.
bool ConnectionPool::closeByDeadline(ConnectionInfo& info, const QDeadlineTimer& deadline)
{
    const auto remaining = [&deadline] {
        return static_cast<int>(std::max<qint64>(deadline.remainingTime(), 0));
    };
    const QString name = info.connection->connectionName();
    if (!info.mutex->tryLock(remaining())) {
        return false;
    }
    QueryManager::instance().finishQueries(name);
    // Two statements follow that each may wait for a lock.
    setBusyTimeout(*info.connection, std::chrono::milliseconds(remaining() / 2));
    foldAndClose(*info.connection);
    info.mutex->unlock();
    info.connection.reset();
    forgetName(name, info.holders);
    return true;
}

/// Removes the name of a closed connection. While somebody still holds the connection its name
/// stays, since the removal would pull the driver from under the holder.
void ConnectionPool::forgetName(const QString& name, const HolderCount& holders)
{
    if (*holders == 0) {
        const ConnectionLocker locker(connectionMutex(name));
        QSqlDatabase::removeDatabase(name);
        return;
    }
    const QMutexLocker locker(&m_mutex);
    m_retired.append({name, holders});
}

void ConnectionPool::purgeRetiredLocked()
{
    const auto gone = std::stable_partition(
        m_retired.begin(), m_retired.end(),
        [](const RetiredConnection& connection) { return *connection.holders > 0; });
    for (auto it = gone; it != m_retired.end(); ++it) {
        const ConnectionLocker locker(connectionMutex(it->name));
        QSqlDatabase::removeDatabase(it->name);
    }
    m_retired.erase(gone, m_retired.end());
}

/// Holders get a pointer of their own kind, whose end is counted: so the pool can tell whether
/// anybody still holds the connection.
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
