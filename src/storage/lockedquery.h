#pragma once

#include "storage/connectionlock.h"
#include "storage/samplecolumn.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <initializer_list>
#include <memory>

namespace scn {

/// A query that takes the connection's lock for each operation, so that queries of one connection
/// may be used on several threads.
///
/// Closing a connection ends its queries: every operation then returns false and isUsable() is
/// false. Failures never print; errorText() has the last one.
class LockedQuery
{
public:
    explicit LockedQuery(const QSqlDatabase& database);
    ~LockedQuery();
    Q_DISABLE_COPY_MOVE(LockedQuery)

    /// Requests forward-only reading, which saves Qt's copy of the rows. Call before prepare().
    void setForwardOnly(bool forwardOnly);

    bool prepare(const QString& sql);

    /// Executes what was prepared.
    bool exec();

    /// Prepares and executes a text without placeholders.
    bool exec(const QString& sql);

    /// Binds the values to the placeholders in order, then executes what was prepared.
    bool execWith(std::initializer_list<QVariant> values);

    /// The same for a statement that takes numbers, gives no rows and is run for every reading: it
    /// runs SQLite's own statement, without Qt's part of the cost.
    bool runKept(std::initializer_list<QVariant> numbers);

    /// Prepares, binds and executes; a failure of either step is the result.
    bool run(const QString& sql, std::initializer_list<QVariant> values);

    /// Executes what was prepared once per row, given as one list per placeholder.
    bool execColumns(const QVector<QVariantList>& columns);

    bool next();

    /// A column of the current row; an invalid value if there is none.
    QVariant value(int column) const;

    QVariant lastInsertId() const;

    /// Ends the execution: releases any lock on the file and keeps the preparation.
    void finish();

    /// Drops the preparation as well.
    void clear();

    /// Whether the connection is open and something is prepared on it. Tells a query whose
    /// connection was closed from one without further rows.
    bool isUsable() const;

    QString errorText() const;

    /// Whether the last failure came from a read-only connection.
    bool metReadOnly() const { return m_errorCode == kReadOnlyCode; }

    /// Whether the last failure came from another connection's lock.
    bool metLock() const { return m_errorCode == kBusyCode; }

    /// Whether a transaction is open on the connection, whoever began it.
    bool isInTransaction() const;

    /// Keeps other threads off the connection while what is returned exists.
    ConnectionLocker holdConnection() const { return ConnectionLocker(m_mutex); }

    const QString& connectionName() const { return m_connectionName; }

    /// Steps through up to `limit` rows under one hold of the connection's lock, calling `row` with
    /// the query at each. Returns the number of rows; fewer than the limit means the end. The
    /// callback must not call the pool or the store.
    template <typename Row>
    int fetchRows(int limit, Row&& row)
    {
        const ConnectionLocker locker(m_mutex);
        int count = 0;
        if (!driverOpen()) { // and it stays so: who closes it holds the lock
            return count;
        }
        while (count < limit && nextRow()) {
            row(static_cast<const QSqlQuery&>(m_query));
            ++count;
        }
        return count;
    }

    /// Appends up to `limit` rows of a time and a value, or of a value alone, under one hold of the
    /// connection's lock. Returns their number; fewer than the limit means the end. No other fetch
    /// may follow the first call. Others waiting for the connection go first. It steps SQLite's own
    /// statement, in half the time of next(): Qt copies each row twice.
    int fetchSamples(int limit, SampleColumn& samples);

    /// The same, but nobody goes first.
    int fetchSamplesAtOnce(int limit, SampleColumn& samples);

protected:
    const std::shared_ptr<ConnectionMutex>& mutex() const { return m_mutex; }

    /// Use only with the connection's lock held.
    QSqlQuery& query() { return m_query; }

private:
    /// Whether a failure is told by its result code's name or in full, as by Qt.
    enum class FailureText { Result, Message };

    bool driverOpen() const;
    bool preparedUnlocked() const;
    bool nextRow();
    bool fail(const QString& text);
    bool failWithQueryError();
    bool failWithCode(int code, const QString& text);
    int stepSamples(int limit, SampleColumn& samples, FailureText text);

    // Result codes of SQLite.
    static constexpr int kBusyCode = 5;
    static constexpr int kReadOnlyCode = 8;
    static constexpr int kPrimaryCodeMask = 0xff;

    QString m_connectionName;
    std::shared_ptr<ConnectionMutex> m_mutex;
    QSqlQuery m_query;
    bool m_prepared = false;
    bool m_samplesEnded = false; ///< A further step would begin anew.
    QString m_errorText;
    int m_errorCode = 0;
};

} // namespace scn
