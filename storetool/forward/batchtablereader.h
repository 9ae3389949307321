#pragma once

#include "storetool/forward/dayfileconnection.h"
#include "storetool/forward/readingbatch.h"
#include "storetool/forward/tableplace.h"

#include <QByteArray>
#include <QHash>
#include <QVector>

namespace scnstore {

/// Reads the new rows of one batch table. A row's number is larger than those before it, and no row ever
/// changes: the last number says what is left to read.
class BatchTableReader
{
public:
    using CurveNames = QHash<qint64, QByteArray>;

    /// What a look at the table came to.
    enum class Outcome { Complete, More, Failed };

    explicit BatchTableReader(const QByteArray& table)
        : m_table(table)
    {
    }

    /// Whether `lastNumber`, which SQLite keeps for each table, stands for rows that were not read.
    bool hasNews(qint64 lastNumber) const { return lastNumber != m_lastNumber || !m_isVerified; }

    /// Finds the place to go on from among those that the server knows under the table's name, and makes sure
    /// that the table still has what was forwarded. Needed again when tables were created or dropped.
    bool verify(const DayFileConnection& file, const QVector<TablePlace>& known);
    void doubt() { m_isVerified = false; }
    bool isVerified() const { return m_isVerified; }

    /// Adds new rows to the batch, at most `limit`, in a transaction of the file.
    Outcome read(const DayFileConnection& file, const QByteArray& instrument,
                 const CurveNames& names, qint64 lastNumber, int limit, ReadingBatch& batch);

    /// The rows read last are in the database, or they are not and will be read again.
    void keep();
    void drop();

    /// Rows that no database takes, since their time is none.
    int unusableRows() const { return m_unusableRows; }

private:
    bool stillHas(const DayFileConnection& file, const TablePlace& place) const;
    QByteArray curveName(const CurveNames& names, qint64 curveId) const;

    QByteArray m_table;
    Statement m_newRows;
    TablePlace m_place;
    TablePlace m_placeRead;
    qint64 m_lastNumber = 0;
    qint64 m_lastNumberRead = 0;
    int m_unusableRows = 0;
    bool m_isVerified = false;
};

} // namespace scnstore
