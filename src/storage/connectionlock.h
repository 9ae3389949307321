#pragma once

#include <QMutex>
#include <QString>

#include <atomic>
#include <chrono>
#include <memory>

class QSqlDatabase;

namespace scn {

/// The lock of a database connection. SQLite is opened without its own mutex, and Qt's driver keeps
/// an unguarded list of queries, so whoever constructs, prepares, executes, fetches from or
/// destroys a query, or closes the connection, must hold this lock.
///
/// Lock order: store, pool, connection, query registry. Never call into the pool or the store, or
/// wait for another thread, while holding a connection's lock.
///
/// Recursive. Like any system mutex it is not fair: a thread that takes it again at once starves
/// the others. Background work therefore calls letOthersIn() first, each time.
class ConnectionMutex
{
public:
    ConnectionMutex() = default;
    Q_DISABLE_COPY_MOVE(ConnectionMutex)

    void lock();
    bool tryLock(std::chrono::milliseconds timeout) { return m_mutex.try_lock_for(timeout); }
    void unlock() { m_mutex.unlock(); }

    /// Waits while other threads are waiting for the lock, or had to within the last half
    /// millisecond: they are probably not done. At most 10 ms in total. Call without the lock.
    void letOthersIn() const;

private:
    QRecursiveMutex m_mutex;
    std::atomic<int> m_waiting{0};
    std::atomic<qint64> m_lastWaitNs{0}; ///< When somebody last had to wait, monotonic clock.
};

/// The lock for a connection name; every caller gets the same one as long as anyone keeps it. Any
/// thread.
std::shared_ptr<ConnectionMutex> connectionMutex(const QString& connectionName);

/// Holds a connection's lock during its lifetime.
class ConnectionLocker
{
public:
    explicit ConnectionLocker(const QSqlDatabase& database);
    explicit ConnectionLocker(std::shared_ptr<ConnectionMutex> mutex);
    ~ConnectionLocker();
    Q_DISABLE_COPY_MOVE(ConnectionLocker)

private:
    std::shared_ptr<ConnectionMutex> m_mutex;
};

} // namespace scn
