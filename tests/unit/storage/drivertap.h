#pragma once

#include <QStringList>

#include <atomic>

class QSqlDatabase;
struct sqlite3;

// What is seen and done at the connection itself, below Qt's driver. The failures are such that no
// file and no statement can bring about; they end with the object that made them.

/// Writes down the statements that are run on the connections opened while it lives. One at a time.
class StatementTrace
{
public:
    StatementTrace();
    ~StatementTrace();
    StatementTrace(const StatementTrace&) = delete;
    StatementTrace& operator=(const StatementTrace&) = delete;

    /// The statements run since the last call, word for word. Qt names the
    /// placeholders; here they are question marks again.
    QStringList take();
};

/// Notices whether two threads are inside a connection at a time, and gives them every chance.
class CrowdedConnection
{
public:
    explicit CrowdedConnection(const QSqlDatabase& database);
    ~CrowdedConnection();
    CrowdedConnection(const CrowdedConnection&) = delete;
    CrowdedConnection& operator=(const CrowdedConnection&) = delete;

    bool wasCrowded() const { return m_crowded; }

private:
    static int visit(void* connection);

    sqlite3* m_handle;
    std::atomic<int> m_inside{0};
    std::atomic<bool> m_crowded{false};
};

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
