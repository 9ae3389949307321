#pragma once

#include "storage/managedquery.h"
#include "storage/timeslice.h"

#include <functional>
#include <memory>
#include <unordered_map>

namespace scn {

/// A reading on its way to a file.
struct Reading
{
    int curveId;
    qint64 time; ///< Milliseconds since the epoch.
    double value;
};

/// The prepared inserts of one file: one per curve, for the table of its latest batch. Preparing
/// one per reading would cost as much as the reading.
class KeptInserts
{
public:
    /// Ensures that the table of the reading's batch exists; true if it is known to.
    using OpenTable = std::function<bool()>;

    struct Outcome
    {
        bool isStored;
        bool metReadOnly; ///< The connection cannot write.
        bool lacksTable;  ///< It may succeed with an insert obtained again.
    };

    /// Inserts a reading of a slice, with the kept insert if there is one. One whose table is gone
    /// is prepared again, once.
    Outcome store(const QSqlDatabase& db, const Reading& reading, const TimeSlice& slice,
                  const OpenTable& openTable);

    /// The insert for the table of a slice's batch, kept or prepared; the table is opened if not
    /// known to exist. Null if it cannot be prepared.
    ManagedQuery* obtain(const QSqlDatabase& db, int curveId, const TimeSlice& slice,
                         const OpenTable& openTable);

    /// Inserts a reading with what was obtained for it. An insert that fails is dropped.
    Outcome insert(ManagedQuery* query, const Reading& reading);

    /// The number of curves being written.
    int count() const { return static_cast<int>(m_inserts.size()); }

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

    ManagedQuery* find(int curveId, const TimeSlice& slice) const;
    ManagedQuery* prepare(const QSqlDatabase& db, int curveId, const TimeSlice& slice,
                          bool tableExists);
    void growCache(const QSqlDatabase& db);

    std::unordered_map<int, Insert> m_inserts;
    int m_cacheKib = 0; ///< Page cache set on the connection; 0: SQLite's default.
};

} // namespace scn
