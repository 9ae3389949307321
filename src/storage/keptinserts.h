#pragma once

#include "storage/managedquery.h"
#include "storage/timeslice.h"

#include <memory>
#include <unordered_map>

namespace scn {

/// The prepared inserts of one file: one per curve, for the table of its latest batch. Preparing
/// one per reading would cost as much as the reading.
class KeptInserts
{
public:
    /// The insert for the batch of a slice; null if none is kept.
    ManagedQuery* find(int curveId, const TimeSlice& slice) const;

    /// Prepares the insert for the batch of a slice; null on failure. It is kept for this batch
    /// only if the table is known to exist: until then each reading looks for it again.
    ManagedQuery* prepare(const QSqlDatabase& db, int curveId, const TimeSlice& slice,
                          bool tableExists);

    /// Drops a curve's insert.
    void drop(int curveId) { m_inserts.erase(curveId); }

    /// Drops all of them, for another connection.
    void clear();

private:
    struct Insert
    {
        qint64 batchStart = 0;
        std::unique_ptr<ManagedQuery> query;
    };

    void growCache(const QSqlDatabase& db);

    std::unordered_map<int, Insert> m_inserts;
    int m_cacheKib = 0; ///< Page cache set on the connection; 0: SQLite's default.
};

} // namespace scn
