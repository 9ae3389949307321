#pragma once

#include "storage/connectionlock.h"
#include "storage/fileidentity.h"
#include "storage/retiredconnections.h"

#include <QDeadlineTimer>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <atomic>
#include <memory>

/// One open SQLite connection for each shard file, shared by the writer, the plots and the export.
///
/// A connection's role follows from the file's name: today's file is opened for writing (WAL),
/// any other for reading (DELETE journal). Connections idle for twelve hours are closed by a timer.
/// A connection that anybody still holds is neither evicted nor closed for being idle. One whose
/// file was deleted or replaced is not handed out again.
///
/// Any thread may call. The pool lives on the GUI thread, whoever asks for it first, and is never
/// destroyed: no SQL may run once the application object has gone, so entry calls closeForExit()
/// before that.
class ConnectionPool : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ConnectionPool)

public:
    static ConnectionPool& instance();

    /// Whether anybody has asked for the pool yet.
    static bool exists();

    /// "yyyyMMdd" from a path whose base name is eight digits, else an empty text.
    static QString dateKeyFromPath(const QString& path);

    /// "yyyyMMddHH" from a path whose base name is ten digits, else an empty text.
    static QString hourKeyFromPath(const QString& path);

    /// The connection to a file, opened if need be; null if that fails. The holder keeps the
    /// pointer while it works, drops it after and calls releaseConnection().
    QSharedPointer<QSqlDatabase> acquireConnection(const QString& path);

    /// Notes that the path was used now. Closes nothing.
    void releaseConnection(const QString& path);

    /// Closes the connection to a path, as closeConnection() does.
    void removeConnection(const QString& path);

    /// Ends the queries of a path's connection, waits for those who use it (750 ms in all, in
    /// which events other than user input are handled), folds its log into the file and closes it.
    /// `alreadyLocked` says that the caller holds the pool's mutex; it is given up while waiting.
    void closeConnection(const QString& path, bool alreadyLocked = false);

    /// Closes the connection to a path without a wait: for a file that is no longer there, or has
    /// to be opened anew at once.
    void discardConnection(const QString& path);

    /// Closes every connection, one after the other. One that somebody opens meanwhile stays.
    void closeAllConnections();

    /// Closes the connection that was not used for the longest time, of those nobody holds. Folds
    /// its log into the file, without a wait.
    void evictOldestConnection();

    /// Closes everything in order without the waits that a running program owes, as far as that is
    /// done by the deadline, and stops the timer. Connections may be opened again afterwards.
    void closeForExit(QDeadlineTimer deadline);

    /// Number of pooled connections.
    int connectionCount() const;

    /// Whether anybody holds the connection to a path.
    bool isHeld(const QString& path) const;

    /// When a path was used last, in milliseconds since the epoch; 0 if it is not pooled.
    qint64 lastUse(const QString& path) const;

private slots:
    void cleanExpiredConnections();

private:
    using HolderCount = storage::HolderCount;

    struct ConnectionInfo
    {
        QSharedPointer<QSqlDatabase> connection;
        qint64 lastUse = 0; ///< Milliseconds since the epoch.
        FileIdentity file;
        HolderCount holders = std::make_shared<std::atomic<int>>(0);
        std::shared_ptr<ConnectionMutex> mutex;
    };

    ConnectionPool();

    bool takeEntry(const QString& path, ConnectionInfo* info);
    static QSharedPointer<QSqlDatabase> lend(ConnectionInfo& info);

    // Closing: connectionpool_close.cpp
    void discardLocked(const QString& path);
    void evictOldestLocked();
    void closeExpired(const QString& path, ConnectionInfo& info);
    bool closeByDeadline(ConnectionInfo& info, const QDeadlineTimer& deadline);
    void removeNamesExcept(const QStringList& stillOpen);
    void forgetName(const QString& name, const HolderCount& holders);

    QMap<QString, ConnectionInfo> m_connections;
    mutable QMutex m_mutex;
    QTimer m_expiryTimer;
    QTimer m_spareTimer; ///< Constructed and never started.
    storage::RetiredConnections m_retired;
};
