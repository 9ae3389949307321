#include "storage/connectioninfo.h"

#include "storage/connectionsetup.h"
#include "storage/querymanager.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>

#include <algorithm>

namespace scn {

namespace {

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

ConnectionInfo ConnectionInfo::of(const QSqlDatabase& opened, const QString& path)
{
    ConnectionInfo info;
    info.connection = QSharedPointer<QSqlDatabase>::create(opened);
    info.lastUse = storeNow();
    info.file = fileIdentity(path);
    info.mutex = connectionMutex(opened.connectionName());
    return info;
}

QSharedPointer<QSqlDatabase> ConnectionInfo::lend()
{
    holders->fetch_add(1);
    return QSharedPointer<QSqlDatabase>(connection.data(),
                                        [own = connection, count = holders](QSqlDatabase*) mutable {
                                            own.reset();
                                            count->fetch_sub(1);
                                        });
}

void ConnectionInfo::drainAndClose()
{
    QueryManager::instance().finishQueries(name());
    handleEvents(storewaits::kDrainPasses);
    foldAndClose(*connection);
    connection.reset();
    handleEvents(storewaits::kSettlePasses);
}

void ConnectionInfo::closeAtOnce()
{
    QueryManager::instance().finishQueries(name());
    {
        const ConnectionLocker locker(mutex);
        // Closing leaves the WAL of a file that is not in its place, and it would be replayed into
        // the file that replaced it. Checkpointed, it is empty, and a moved file has everything.
        setBusyTimeout(*connection, std::chrono::milliseconds::zero());
        truncateWal(*connection);
        connection->close();
    }
    connection.reset();
}

void ConnectionInfo::closeUnheld()
{
    setBusyTimeout(*connection, std::chrono::milliseconds::zero());
    foldAndClose(*connection);
    connection.reset();
}

/// Leaves the checkpoint to SQLite's close, and the connection's name in place.
void ConnectionInfo::closeExpired(const QString& path)
{
    const QString closedName = name();
    qDebug() << "准备移除超时连接：" << path << "连接名：" << closedName;
    QueryManager::instance().finishQueries(closedName);
    bool walInUse = isReadOnly(*connection);
    {
        const ConnectionLocker locker(mutex);
        if (connection->isOpen()) {
            const bool wal = usesWal(*connection);
            connection->close();
            // The last connection checkpoints the WAL and removes it. One that is still there
            // belongs to another process or could not be checkpointed: its readings are not ours to
            // delete.
            walInUse = walInUse || (wal && QFile::exists(path + kWalSuffix));
        }
    }
    if (!walInUse && file == fileIdentity(path)) {
        QFile::remove(path + kWalSuffix);
        QFile::remove(path + kShmSuffix);
    }
    qDebug() << "已关闭连接并清理 WAL：" << closedName;
    connection.reset();
}

bool ConnectionInfo::closeByDeadline(const QDeadlineTimer& deadline)
{
    const auto remaining = [&deadline] {
        return std::chrono::milliseconds(std::max<qint64>(deadline.remainingTime(), 0));
    };
    if (!mutex->tryLock(remaining())) {
        return false;
    }
    QueryManager::instance().finishQueries(name());
    // Two statements follow that each may wait for a lock.
    setBusyTimeout(*connection, remaining() / 2);
    foldAndClose(*connection);
    mutex->unlock();
    connection.reset();
    return true;
}

} // namespace scn
