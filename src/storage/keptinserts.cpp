#include "storage/keptinserts.h"

#include "storage/shardnaming.h"
#include "storage/statements.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace scn {

namespace {

/// A reading goes to the ends of three trees, its table and two indexes, each up to five pages of
/// 1 KiB deep, or three of 4 KiB in a file with such pages. If the ends of all curves do not fit in
/// the page cache, each reading drops what the next one needs, and a run gets slower with every
/// level that its trees grow by.
constexpr int kCacheKibPerCurve = 40;
constexpr int kCacheKibForTheRest = 1600;
constexpr int kOwnCacheKib = 2000; // what SQLite takes unasked

/// Marks an insert whose table is not known to exist; no batch starts there.
constexpr qint64 kNoBatch = std::numeric_limits<qint64>::min();

/// Whether an insert failed because it must be prepared again.
bool isTableGone(const ManagedQuery& insert)
{
    return saysMissingTable(insert.errorText()) || !insert.isUsable();
}

} // namespace

KeptInserts::Outcome KeptInserts::store(const QSqlDatabase& db, const Reading& reading,
                                        const TimeSlice& slice, const OpenTable& openTable)
{
    const Outcome outcome = insert(obtain(db, reading.curveId, slice, openTable), reading);
    return outcome.lacksTable ? insert(obtain(db, reading.curveId, slice, openTable), reading)
                              : outcome;
}

KeptInserts::Outcome KeptInserts::insert(ManagedQuery* query, const Reading& reading)
{
    if (!query) {
        return {false, false, false};
    }
    if (query->runKept({reading.curveId, reading.time, reading.value})) {
        return {true, false, false};
    }
    const Outcome outcome{false, query->metReadOnly(), isTableGone(*query)};
    drop(reading.curveId);
    return outcome;
}

ManagedQuery* KeptInserts::obtain(const QSqlDatabase& db, int curveId, const TimeSlice& slice,
                                  const OpenTable& openTable)
{
    if (ManagedQuery* kept = find(curveId, slice)) {
        return kept;
    }
    const bool tableExists = openTable() && slice.ownFile;
    return prepare(db, curveId, slice, tableExists);
}

/// Null if none is kept.
ManagedQuery* KeptInserts::find(int curveId, const TimeSlice& slice) const
{
    const auto kept = m_inserts.find(curveId);
    const bool fits = kept != m_inserts.end() && kept->second.batchStart == slice.batchStart;
    return fits ? kept->second.query.get() : nullptr;
}

/// Null on failure. The insert is kept for this batch only if the table is known to exist: until
/// then each reading looks for it again.
ManagedQuery* KeptInserts::prepare(const QSqlDatabase& db, int curveId, const TimeSlice& slice,
                                   bool tableExists)
{
    auto query = std::make_unique<ManagedQuery>(db);
    query->setForwardOnly(true);
    if (!query->prepare(insertPointSql(makeTableName(curveId, slice.batchName)))) {
        m_inserts.erase(curveId);
        return nullptr;
    }
    Insert& entry = m_inserts[curveId];
    entry.batchStart = tableExists ? slice.batchStart : kNoBatch;
    entry.query = std::move(query);
    growCache(db);
    return entry.query.get();
}

void KeptInserts::clear()
{
    m_inserts.clear();
    m_cacheKib = 0;
}

/// Gives the page cache of the file the size that the curves being written need.
void KeptInserts::growCache(const QSqlDatabase& db)
{
    const int wanted = kCacheKibForTheRest + kCacheKibPerCurve * static_cast<int>(m_inserts.size());
    if (wanted <= std::max(kOwnCacheKib, m_cacheKib)) {
        return;
    }
    m_cacheKib = wanted;
    ManagedQuery(db).exec(QStringLiteral("PRAGMA cache_size = -%1").arg(wanted));
}

} // namespace scn
