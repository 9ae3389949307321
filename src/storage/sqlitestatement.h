#pragma once

#include <QSqlQuery>
#include <QSqlResult>
#include <QVariant>

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

} // namespace scn
