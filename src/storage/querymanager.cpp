#include "storage/querymanager.h"

#include "storage/connectionlock.h"

#include <QSqlDriver>
#include <QSqlQuery>

using namespace scn;

QueryManager& QueryManager::instance()
{
    // Never destroyed: threads may still end their queries while the process exits.
    static auto* const manager = new QueryManager;
    return *manager;
}

void QueryManager::registerQuery(QSqlQuery* query, const QString& connectionName)
{
    const QMutexLocker locker(&m_mutex);
    m_queries[connectionName].insert(query);
}

void QueryManager::unregisterQuery(QSqlQuery* query, const QString& connectionName)
{
    const QMutexLocker locker(&m_mutex);
    const auto entry = m_queries.find(connectionName);
    if (entry == m_queries.end()) {
        return;
    }
    entry->remove(query);
    if (entry->isEmpty()) {
        m_queries.erase(entry);
    }
}

void QueryManager::finishQueries(const QString& connectionName)
{
    const ConnectionLocker connection(connectionMutex(connectionName));
    const QMutexLocker locker(&m_mutex);
    const auto entry = m_queries.find(connectionName);
    if (entry == m_queries.end()) {
        return;
    }
    for (QSqlQuery* query : qAsConst(*entry)) {
        if (query->isActive()) {
            query->finish();
        }
        if (query->driver()) { // clearing a query whose driver has gone would crash
            query->clear();
        }
    }
    m_queries.erase(entry);
}

int QueryManager::queryCount(const QString& connectionName) const
{
    const QMutexLocker locker(&m_mutex);
    return m_queries.value(connectionName).size();
}
