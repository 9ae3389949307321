#pragma once

#include "storage/curverecords.h"
#include "storage/keptinserts.h"
#include "storage/managedquery.h"
#include "storage/savedextremes.h"

#include <QMap>
#include <QSqlDatabase>

#include <functional>
#include <memory>

namespace scn {

/// Stores a reading and its curve's extremes in one commit: a program killed at any moment leaves
/// both or neither. Its statements stay prepared on one connection. Guarded by the store's mutex.
class ReadingTransaction
{
public:
    using Extremes = QMap<int, DBCurveMetadata>;

    /// Widens the curve's extremes in memory by the reading.
    using WidenExtremes = std::function<void()>;

    /// Works with the inserts and the saved extremes of one file, which outlive it.
    ReadingTransaction(KeptInserts& inserts, SavedExtremes& saved)
        : m_inserts(inserts)
        , m_saved(saved)
    {
    }

    /// Inserts a reading, has the extremes widened, and saves those that differ from the file's. A
    /// reading that cannot be inserted counts for the extremes all the same, and extremes that
    /// cannot be saved do not take the reading with them.
    KeptInserts::Outcome store(const QSqlDatabase& db, const Reading& reading,
                               const TimeSlice& slice, const KeptInserts::OpenTable& openTable,
                               const Extremes& extremes, const WidenExtremes& widen);

    /// Drops the statements, for another connection.
    void clear();

private:
    void prepare(const QSqlDatabase& db);
    void spaceCheckpoints(const QSqlDatabase& db);
    bool saveExtremes(const QSqlDatabase& db, const Extremes& extremes, bool inTransaction);

    KeptInserts& m_inserts;
    SavedExtremes& m_saved;
    std::unique_ptr<ManagedQuery> m_begin;
    std::unique_ptr<ManagedQuery> m_commit;
    int m_pageBytes = 0;
    int m_checkpointPages = 0; ///< Pages between checkpoints set on the connection.
};

} // namespace scn
