#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A PostgreSQL server of its own, in a temporary directory and on a socket there. It ends with this
/// process, however that ends.
class PostgresServer
{
public:
    /// The directory with the server's programs; empty if it is not installed.
    static QString programDirectory();

    /// Whether what it says it has stored survives a crash of the system.
    enum class Writing { Quick, Safe };

    /// Creates the server's files and starts it.
    explicit PostgresServer(Writing writing = Writing::Quick);
    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    /// Returns when it takes sessions. False if it does not come up.
    bool start();

    /// Ends it without letting it finish anything.
    void stop();

    /// Stops all its processes in their tracks, or lets them go on.
    void freeze(bool isFrozen);

    /// Kills the process of each session of the follower: the server then ends all sessions and recovers.
    void killSessions();

    /// The address of a database, for a role.
    QString address(const QString& database = QStringLiteral("postgres"),
                    const QString& role = QStringLiteral("scn")) const;

    /// What psql prints for statements, columns joined by "|"; a failure is "error: " and its text.
    QString psql(const QString& sql, const QString& database = QStringLiteral("postgres")) const;
    QStringList rows(const QString& sql) const;

private:
    QStringList asServerUser(const QString& program) const;
    bool isUp() const;

    const Writing m_writing;
    QTemporaryDir m_directory;
    QProcess m_process;
};
