#pragma once

#include <QMap>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QString>

class QSqlQuery;

/// Knows which queries are alive on which connection, so that they can be ended before the
/// connection goes away. One for the process; every operation may be called on any thread.
class QueryManager : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QueryManager)

public:
    static QueryManager& instance();

    void registerQuery(QSqlQuery* query, const QString& connectionName);

    /// Forgets a query; a connection without any is forgotten with its last one.
    void unregisterQuery(QSqlQuery* query, const QString& connectionName);

    /// Ends every query of a connection and forgets them. Takes the connection's lock first: the
    /// queries may be in use on other threads.
    void finishQueries(const QString& connectionName);

    /// How many queries are alive on a connection.
    int queryCount(const QString& connectionName) const;

private:
    QueryManager() = default;

    mutable QMutex m_mutex;
    QMap<QString, QSet<QSqlQuery*>> m_queries;
};
