#pragma once

#include "storage/connectionlock.h"
#include "storage/fileidentity.h"
#include "storage/retiredconnections.h"

#include <QDeadlineTimer>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>

#include <atomic>
#include <memory>

namespace scn {

/// One pooled connection, and the ways of closing it. After each of them the entry is empty; Qt
/// still knows the connection's name.
struct ConnectionInfo
{
    QSharedPointer<QSqlDatabase> connection;
    qint64 lastUse = 0; ///< Milliseconds since the epoch.
    FileIdentity file;
    HolderCount holders = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<ConnectionMutex> mutex;

    /// The entry of a connection that was opened on a file just now.
    static ConnectionInfo of(const QSqlDatabase& opened, const QString& path);

    QString name() const { return connection->connectionName(); }
    bool isHeld() const { return *holders > 0; }

    /// A pointer for a holder, counted until its end.
    QSharedPointer<QSqlDatabase> lend();

    /// Ends the queries and waits for the users, handling events other than user input; then
    /// checkpoints the WAL and closes.
    void drainAndClose();

    /// Closes at once what leads to a file that is gone or must be reopened.
    void closeAtOnce();

    /// Checkpoints the WAL and closes, without waiting for other processes.
    void closeUnheld();

    /// Closes after a long time without use, and removes the side files that nobody needs.
    void closeExpired(const QString& path);

    /// Closes at the end of the program, as far as the deadline allows. A process that locks the
    /// file, or a thread busy on the connection, gets only the remaining time; false if that was
    /// not enough.
    bool closeByDeadline(const QDeadlineTimer& deadline);
};

} // namespace scn
