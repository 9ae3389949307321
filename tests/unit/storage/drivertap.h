#pragma once

#include <QStringList>

class QSqlDatabase;
struct sqlite3;

// Failures that no file and no statement can bring about: they are made at the connection itself,
// below Qt's driver, and end with the object that made them.

/// Every statement of a connection is interrupted.
class InterruptedConnection
{
public:
    explicit InterruptedConnection(const QSqlDatabase& database);
    ~InterruptedConnection();
    InterruptedConnection(const InterruptedConnection&) = delete;
    InterruptedConnection& operator=(const InterruptedConnection&) = delete;

private:
    sqlite3* m_handle;
};

/// No statement of a connection may read the tables named.
class DeniedTables
{
public:
    DeniedTables(const QSqlDatabase& database, const QStringList& tables);
    ~DeniedTables();
    DeniedTables(const DeniedTables&) = delete;
    DeniedTables& operator=(const DeniedTables&) = delete;

    bool contains(const char* table) const;

private:
    sqlite3* m_handle;
    QStringList m_tables;
};

/// No transaction of a connection is committed.
class RefusedCommit
{
public:
    explicit RefusedCommit(const QSqlDatabase& database);
    ~RefusedCommit();
    RefusedCommit(const RefusedCommit&) = delete;
    RefusedCommit& operator=(const RefusedCommit&) = delete;

private:
    sqlite3* m_handle;
};
