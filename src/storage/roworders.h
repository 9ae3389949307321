#pragma once

#include "storage/readslice.h"
#include "storage/roworder.h"

#include <QHash>
#include <QString>

class QSqlDatabase;

namespace scn {

/// What is known of the tables in the day files. Each table is looked through once, and after that only
/// for rows added since. The readings found on the way stay in memory, up to a limit: beyond it those of
/// the tables that were not asked for longest are dropped. Guarded by the store's mutex.
class RowOrders
{
public:
    /// Readings kept: 144 MB.
    static constexpr qint64 kMostKept = 12000000;

    explicit RowOrders(qint64 mostKept = kMostKept)
        : m_mostKept(mostKept)
    {
    }

    /// The order of a curve's readings in a table, up to date; null if that takes another slice. Valid
    /// until the next call.
    const RowOrder* update(const QString& path, const QSqlDatabase& database, const QString& table,
                           int curveId, ReadSlice& slice);

    /// The same for a table that may be asked for next: the readings of what is shown are not dropped for its own.
    /// False if that takes another slice.
    bool lookThrough(const QString& path, const QSqlDatabase& database, const QString& table,
                     int curveId, ReadSlice& slice);

    /// Forgets everything: tables are about to be dropped.
    void clear();

    /// Readings kept of all tables.
    qint64 kept() const { return m_kept; }

private:
    struct Table
    {
        RowOrder order;
        quint64 asked = 0; ///< Number of the last call that was for this table.
    };

    /// The tables of a file as one connection knows them.
    struct File
    {
        QString connection;
        qint64 version = -1; ///< Changes when others write to the file.
        QHash<QString, Table> tables;
    };

    const RowOrder* extend(Table& entry, const QSqlDatabase& database, const QString& table,
                           int curveId, ReadSlice& slice);
    File& fileFor(const QString& path, const QSqlDatabase& database);
    void dropLongestNotAsked();

    QHash<QString, File> m_files;
    qint64 m_mostKept;
    qint64 m_kept = 0;
    quint64 m_calls = 0;
};

} // namespace scn
