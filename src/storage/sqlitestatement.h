#pragma once

#include <QSqlDriver>
#include <QSqlQuery>
#include <QSqlResult>
#include <QVariant>

struct sqlite3;
struct sqlite3_stmt;

namespace scn {

/// SQLite's own statement behind a prepared query; null once its connection was closed. Use it only
/// with the connection's lock held.
inline sqlite3_stmt* statementOf(const QSqlQuery& query)
{
    const QVariant handle = query.result() ? query.result()->handle() : QVariant();
    const bool known = qstrcmp(handle.typeName(), "sqlite3_stmt*") == 0;
    return known ? *static_cast<sqlite3_stmt* const*>(handle.constData()) : nullptr;
}

/// SQLite's own connection behind an open driver; null if it is another library's.
inline sqlite3* connectionOf(const QSqlDriver& driver)
{
    const QVariant handle = driver.handle();
    const bool known = qstrcmp(handle.typeName(), "sqlite3*") == 0;
    return known ? *static_cast<sqlite3* const*>(handle.constData()) : nullptr;
}

} // namespace scn
