#pragma once

#include "storage/connectioninfo.h"
#include "storage/fileaccess.h"
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

/// One open SQLite connection per day file, shared by the writer, the plots and the export.
///
/// A connection's role follows from the file name: today's file is opened for writing (WAL), any
/// other for reading (DELETE journal). A timer closes connections idle for twelve hours. A held
/// connection is neither evicted nor closed for being idle. If its file was deleted or replaced, a
/// connection is not handed out again.
///
/// Any thread may call. The pool belongs to the GUI thread, whoever requests it first, and is never
/// destroyed: no SQL may run after the application object is gone, so entry calls closeForExit()
/// before that.
class ConnectionPool : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ConnectionPool)

public:
    static ConnectionPool& instance();

    /// Whether the pool has been requested yet.
    static bool exists();

    /// "yyyyMMdd" from a path whose base name is eight digits, else an empty text.
    static QString dateKeyFromPath(const QString& path);

    /// "yyyyMMddHH" from a path whose base name is ten digits, else an empty text.
    static QString hourKeyFromPath(const QString& path);

    /// The connection to a file, opened if necessary; null on failure. Hold the pointer while
    /// working, drop it afterwards and call releaseConnection(). A process has one access to a path.
    QSharedPointer<QSqlDatabase> acquireConnection(const QString& path,
                                                   scn::FileAccess access = scn::FileAccess::Write);

    /// Records that the path was used now. Closes nothing.
    void releaseConnection(const QString& path);

    /// Closes the connection to a path, as closeConnection() does.
    void removeConnection(const QString& path);

    /// Ends the queries of a path's connection, waits for its users (750 ms in total, handling
    /// events other than user input), checkpoints its WAL and closes it. `alreadyLocked` means that
    /// the caller holds the pool's mutex, which is released while waiting.
    void closeConnection(const QString& path, bool alreadyLocked = false);

    /// Closes the connection to a path without waiting: for a file that is gone or must be reopened
    /// at once.
    void discardConnection(const QString& path);

    /// Closes every connection in turn. One opened meanwhile stays.
    void closeAllConnections();

    /// Closes the least recently used connection that nobody holds. Checkpoints its WAL, without
    /// waiting.
    void evictOldestConnection();

    /// Closes everything properly without a running program's waits, as far as the deadline allows,
    /// and stops the timer. Connections may be opened again afterwards.
    void closeForExit(QDeadlineTimer deadline);

    /// Number of pooled connections.
    int connectionCount() const;

    /// Whether anybody holds the connection to a path.
    bool isHeld(const QString& path) const;

    /// When a path was last used, in ms since the epoch; 0 if it is not pooled.
    qint64 lastUse(const QString& path) const;

private slots:
    void cleanExpiredConnections();

private:
    ConnectionPool();

    bool takeEntry(const QString& path, scn::ConnectionInfo* info);
    void retire(const QString& path, void (scn::ConnectionInfo::*close)());
    bool evictOldestLocked();
    void forgetName(const QString& name, const scn::HolderCount& holders);

    QMap<QString, scn::ConnectionInfo> m_connections;
    mutable QMutex m_mutex;
    QTimer m_expiryTimer;
    QTimer m_spareTimer; ///< Constructed, never started.
    scn::RetiredConnections m_retired;
};
