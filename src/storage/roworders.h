#pragma once

#include "storage/readslice.h"
#include "storage/roworder.h"

#include <QHash>
#include <QString>

class QSqlDatabase;

namespace scn {

/// What is known of the tables in the day files. Each table is looked through once, and after that only
/// for rows added since. Guarded by the store's mutex.
class RowOrders
{
public:
    /// The order of a curve's readings in a table, up to date; null if that takes another slice. Valid
    /// until the next call.
    const RowOrder* update(const QString& path, const QSqlDatabase& database, const QString& table,
                           int curveId, ReadSlice& slice);

    /// Forgets everything: tables are about to be dropped.
    void clear() { m_files.clear(); }

private:
    /// The tables of a file as one connection knows them.
    struct File
    {
        QString connection;
        qint64 version = -1; ///< Changes when others write to the file.
        QHash<QString, RowOrder> tables;
    };

    File& fileFor(const QString& path, const QSqlDatabase& database);

    QHash<QString, File> m_files;
};

} // namespace scn
