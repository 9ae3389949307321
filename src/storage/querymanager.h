#pragma once

#include <QMap>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QString>

class QSqlQuery;

/// Tracks the live queries of each connection, so that they can be ended before it is closed. One
/// per process; any thread may call.
class QueryManager : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QueryManager)

public:
    static QueryManager& instance();

    void registerQuery(QSqlQuery* query, const QString& connectionName);

    /// Removes a query, and its connection with the last one.
    void unregisterQuery(QSqlQuery* query, const QString& connectionName);

    /// Ends and removes every query of a connection. Takes the connection's lock first: other
    /// threads may be using them.
    void finishQueries(const QString& connectionName);

    /// Number of live queries of a connection.
    int queryCount(const QString& connectionName) const;

private:
    QueryManager() = default;

    mutable QMutex m_mutex;
    QMap<QString, QSet<QSqlQuery*>> m_queries;
};
