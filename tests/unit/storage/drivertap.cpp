#include "drivertap.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QVariant>

#include <sqlite3.h>

namespace {

sqlite3* handleOf(const QSqlDatabase& database)
{
    const QVariant handle = database.driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
        qFatal("not a connection of SQLite");
    return *static_cast<sqlite3* const*>(handle.constData());
}

int yes(void*)
{
    return 1;
}

int denyTables(void* denied, int action, const char* table, const char*, const char*, const char*)
{
    return action == SQLITE_READ && static_cast<DeniedTables*>(denied)->contains(table)
               ? SQLITE_DENY
               : SQLITE_OK;
}

} // namespace

InterruptedConnection::InterruptedConnection(const QSqlDatabase& database)
    : m_handle(handleOf(database))
{
    sqlite3_progress_handler(m_handle, 1, &yes, nullptr);
}

InterruptedConnection::~InterruptedConnection()
{
    sqlite3_progress_handler(m_handle, 0, nullptr, nullptr);
}

DeniedTables::DeniedTables(const QSqlDatabase& database, const QStringList& tables)
    : m_handle(handleOf(database))
    , m_tables(tables)
{
    sqlite3_set_authorizer(m_handle, &denyTables, this);
}

DeniedTables::~DeniedTables()
{
    sqlite3_set_authorizer(m_handle, nullptr, nullptr);
}

bool DeniedTables::contains(const char* table) const
{
    return m_tables.contains(QString::fromUtf8(table));
}

RefusedCommit::RefusedCommit(const QSqlDatabase& database)
    : m_handle(handleOf(database))
{
    sqlite3_commit_hook(m_handle, &yes, nullptr);
}

RefusedCommit::~RefusedCommit()
{
    sqlite3_commit_hook(m_handle, nullptr, nullptr);
}
