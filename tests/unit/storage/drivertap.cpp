#include "drivertap.h"

#include <QMutex>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QVariant>

#include <sqlite3.h>

#include <thread>
#include <utility>

namespace {

QMutex g_traceMutex;
bool g_tracing = false;
QStringList g_traced;

int noteStatement(unsigned, void*, void* statement, void*)
{
    const QMutexLocker locker(&g_traceMutex);
    if (g_tracing) {
        g_traced.append(QString::fromUtf8(sqlite3_sql(static_cast<sqlite3_stmt*>(statement))));
    }
    return 0;
}

int traceConnection(sqlite3* handle, char**, const void*)
{
    return sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, &noteStatement, nullptr);
}

/// SQLite takes such a function's address as one without arguments.
void (*const kTraceConnection)() = reinterpret_cast<void (*)()>(&traceConnection);

void setTracing(bool tracing)
{
    const QMutexLocker locker(&g_traceMutex);
    g_tracing = tracing;
    g_traced.clear();
}

sqlite3* handleOf(const QSqlDatabase& database)
{
    const QVariant handle = database.driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0) {
        qFatal("not a connection of SQLite");
    }
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

StatementTrace::StatementTrace()
{
    setTracing(true);
    if (sqlite3_auto_extension(kTraceConnection) != SQLITE_OK) {
        qFatal("connections cannot be traced");
    }
}

StatementTrace::~StatementTrace()
{
    sqlite3_cancel_auto_extension(kTraceConnection);
    setTracing(false);
}

QStringList StatementTrace::take()
{
    const QMutexLocker locker(&g_traceMutex);
    static const QRegularExpression placeholder(QStringLiteral(":[a-z]+"));
    return std::exchange(g_traced, {}).replaceInStrings(placeholder, QStringLiteral("?"));
}

CrowdedConnection::CrowdedConnection(const QSqlDatabase& database)
    : m_handle(handleOf(database))
{
    sqlite3_progress_handler(m_handle, 1, &visit, this);
}

CrowdedConnection::~CrowdedConnection()
{
    sqlite3_progress_handler(m_handle, 0, nullptr, nullptr);
}

/// Called for each step of a statement.
int CrowdedConnection::visit(void* connection)
{
    auto* const self = static_cast<CrowdedConnection*>(connection);
    if (++self->m_inside > 1) {
        self->m_crowded = true;
    }
    std::this_thread::yield();
    --self->m_inside;
    return 0;
}

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
