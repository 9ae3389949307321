#include "storage/managedquery.h"

#include "storage/querymanager.h"

using namespace scn;

ManagedQuery::ManagedQuery(const QSqlDatabase& database)
    : LockedQuery(database)
{
    const ConnectionLocker locker(mutex());
    QueryManager::instance().registerQuery(&query(), connectionName());
}

ManagedQuery::~ManagedQuery()
{
    const ConnectionLocker locker(mutex());
    clear();
    QueryManager::instance().unregisterQuery(&query(), connectionName());
}
