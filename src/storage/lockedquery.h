#pragma once

#include "storage/connectionlock.h"
#include "storage/samplecolumn.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <initializer_list>
#include <memory>

/// A query whose every operation takes the connection's lock for its own length, so that queries of
/// one connection may live on several threads.
///
/// A connection that is closed ends its queries: from then on every operation gives false and
/// isUsable() is false. Failures never print; errorText() tells about the last one.
class LockedQuery
{
public:
    explicit LockedQuery(const QSqlDatabase& database);
    ~LockedQuery();
    Q_DISABLE_COPY_MOVE(LockedQuery)

    /// Asks for rows to be read from first to last only, which saves Qt its copy of them. Before
    /// prepare().
    void setForwardOnly(bool forwardOnly);

    bool prepare(const QString& sql);

    /// Executes what was prepared.
    bool exec();

    /// Prepares and executes a text without placeholders.
    bool exec(const QString& sql);

    /// Binds the values to the placeholders in order, then executes what was prepared.
    bool execWith(std::initializer_list<QVariant> values);

    /// Prepares, binds and executes; a failure of either step is the result.
    bool run(const QString& sql, std::initializer_list<QVariant> values);

    /// Executes what was prepared once for each row, given as one list for each placeholder.
    bool execColumns(const QVector<QVariantList>& columns);

    bool next();

    /// A column of the present row; an invalid value when there is no such row.
    QVariant value(int column) const;

    QVariant lastInsertId() const;

    /// Ends the execution: no lock on the file stays behind, the preparation is kept.
    void finish();

    /// Drops the preparation as well.
    void clear();

    /// Whether the connection is open and something is prepared on it. A query whose connection
    /// was closed under it looks like one that has no more rows; this tells them apart.
    bool isUsable() const;

    QString errorText() const;

    /// Whether the last failure came of a connection that may only read its file.
    bool metReadOnly() const { return m_errorCode == kReadOnlyCode; }

    const QString& connectionName() const { return m_connectionName; }

    /// Steps through up to `limit` rows under one hold of the connection's lock, calling `row`
    /// with the query at each. Gives the number of rows seen; fewer than the limit: no more came.
    /// The callback makes no call into the pool or the store.
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
    /// connection's lock. Gives their number; fewer than the limit: no more came. No other fetch
    /// may follow the first call. Others who want the connection go first. It steps SQLite's own statement, in half the time of next(): Qt
    /// copies each row twice.
    int fetchSamples(int limit, SampleColumn& samples);

protected:
    const std::shared_ptr<ConnectionMutex>& mutex() const { return m_mutex; }

    /// To be touched with the connection's lock held.
    QSqlQuery& query() { return m_query; }

private:
    bool driverOpen() const;
    bool preparedUnlocked() const;
    bool stepUnlocked();
    bool nextRow();
    bool fail(const QString& text);
    bool failWithQueryError();

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
