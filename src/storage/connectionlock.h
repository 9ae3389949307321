#pragma once

#include <QMutex>
#include <QString>

#include <memory>

class QSqlDatabase;

/// The lock of a database connection. SQLite is opened without a mutex of its own, and Qt's driver
/// keeps an unguarded list of its queries, so whoever constructs, prepares, executes, fetches from
/// or destroys a query, or closes the connection, holds this lock meanwhile.
///
/// Order of locks: store, pool, connection, query registry. No call into the pool or the store is
/// made, and no other thread waited for, while a connection's lock is held.
using ConnectionMutex = QRecursiveMutex;

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
