#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

struct pg_conn;
struct pg_result;

namespace scnstore {

/// A session of the database server. While the server is silent, it calls back, so that nothing else has to
/// wait for it.
class ServerConnection
{
public:
    /// False ends the wait, and with it the session.
    using WhileWaiting = std::function<bool()>;

    /// A row of texts; a null is an empty one.
    using Row = QVector<QByteArray>;

    ServerConnection(const QString& target, WhileWaiting whileWaiting);
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    /// What is wrong with the address of a server, empty if nothing is.
    static QString complaintAbout(const QString& target);

    bool connect();
    void close();
    bool isConnected() const { return m_connection != nullptr; }

    /// Whether the server answers although it takes no session of ours.
    bool isRefusal() const;

    /// Whether it refused the last statement for what that says, or for want of a right.
    bool isRejection() const;

    /// Whether it refused the last statement because another session was in the way.
    bool isConflict() const { return m_errorCode.startsWith("40"); }

    /// Runs one statement, or several without parameters. False on failure, after which the session may be
    /// gone.
    bool run(const QByteArray& sql, const QVector<QByteArray>& parameters = {});

    /// The rows of the last statement, and how many it changed.
    const QVector<Row>& rows() const { return m_rows; }
    qint64 changedRows() const { return m_changedRows; }

    /// Sends rows to a COPY FROM STDIN statement.
    bool copy(const QByteArray& sql, const QByteArray& bytes);

    /// What failed last, in the server's or the library's words, on one line.
    const QString& errorText() const { return m_errorText; }

    /// The server's code for it, empty if it has none.
    const QByteArray& errorCode() const { return m_errorCode; }

private:
    struct ConnectionEnd
    {
        void operator()(pg_conn* connection) const;
    };

    bool waitForSocket(bool toWrite, QDeadlineTimer patience = QDeadlineTimer::Forever);
    bool flush();
    bool takeResults();
    bool takeResult(pg_result* result);
    bool failed();

    const QByteArray m_target;
    const WhileWaiting m_whileWaiting;
    std::unique_ptr<pg_conn, ConnectionEnd> m_connection;
    QVector<Row> m_rows;
    qint64 m_changedRows = 0;
    QString m_errorText;
    QByteArray m_errorCode;
};

} // namespace scnstore
