#pragma once

#include <QMutex>
#include <QString>

#include <atomic>
#include <memory>

class QSqlDatabase;

/// The lock of a database connection. SQLite is opened without a mutex of its own, and Qt's driver
/// keeps an unguarded list of its queries, so whoever constructs, prepares, executes, fetches from
/// or destroys a query, or closes the connection, holds this lock meanwhile.
///
/// Order of locks: store, pool, connection, query registry. No call into the pool or the store is
/// made, and no other thread waited for, while a connection's lock is held.
///
/// Recursive. Like any mutex of the system it is not fair: a thread that takes it again at once leaves
/// others waiting. Background work therefore calls letOthersIn() first, each time.
class ConnectionMutex
{
public:
    ConnectionMutex() = default;
    Q_DISABLE_COPY_MOVE(ConnectionMutex)

    void lock();
    bool tryLock(int timeoutMs = 0) { return m_mutex.tryLock(timeoutMs); }
    void unlock() { m_mutex.unlock(); }

    /// Waits while other threads wait for the lock or have had to within the last half millisecond:
    /// they are probably not done. No longer than 10 ms in all. The caller does not hold the lock.
    void letOthersIn() const;

private:
    QRecursiveMutex m_mutex;
    std::atomic<int> m_waiting{0};
    std::atomic<qint64> m_lastWaitNs{0}; ///< When somebody last had to wait, monotonic clock.
};

/// The lock that belongs to a connection name; every caller gets the same one as long as anybody
/// keeps it. Any thread.
std::shared_ptr<ConnectionMutex> connectionMutex(const QString& connectionName);

/// Holds a connection's lock for as long as it lives.
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
