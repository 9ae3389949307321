#pragma once

#include <QStringList>

#include <atomic>

class QSqlDatabase;
struct sqlite3;

// Observes and disturbs the connection itself, below Qt's driver. The failures are ones that no
// file or statement can cause; they end with the object.

/// Records the statements run on connections opened while it exists. One at a time.
class StatementTrace
{
public:
    StatementTrace();
    ~StatementTrace();
    StatementTrace(const StatementTrace&) = delete;
    StatementTrace& operator=(const StatementTrace&) = delete;

    /// The statements since the last call, word for word. Qt names the placeholders; here they are
    /// question marks again.
    QStringList take();
};

/// Detects two threads inside a connection at the same time, and gives them every chance.
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

/// Interrupts every statement of a connection.
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

/// Denies a connection's statements access to the named tables.
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

/// Prevents commits on a connection.
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
