#include "storage/readingtransaction.h"

#include "storage/statements.h"

#include <algorithm>

namespace scn {

namespace {

/// A checkpoint copies every page that changed since the last one into the file, the ends of the
/// trees of all curves among them. Between two checkpoints each curve gets several readings, or
/// each reading would pay for three such pages.
constexpr int kWalKibPerCurve = 45;
constexpr int kWalKibForTheRest = 2000;
constexpr int kOwnCheckpointPages = 1000; // what SQLite does unasked
constexpr int kBytesPerKib = 1024;

int pageBytesOf(const QSqlDatabase& db)
{
    ManagedQuery query(db);
    return query.exec(QStringLiteral("PRAGMA page_size")) && query.next() ? query.value(0).toInt()
                                                                          : 0;
}

} // namespace

KeptInserts::Outcome ReadingTransaction::store(const QSqlDatabase& db, const Reading& reading,
                                               const TimeSlice& slice,
                                               const KeptInserts::OpenTable& openTable,
                                               const Extremes& extremes, const WidenExtremes& widen)
{
    prepare(db);
    for (bool mayRetry = true;; mayRetry = false) {
        // Opening a table is a transaction of its own and may call the pool.
        ManagedQuery* const insert = m_inserts.obtain(db, reading.curveId, slice, openTable);
        spaceCheckpoints(db);
        const ConnectionLocker locker = m_begin->holdConnection();
        bool inTransaction = m_begin->runKept({});
        KeptInserts::Outcome outcome = m_inserts.insert(insert, reading);
        if (outcome.lacksTable && mayRetry) {
            if (inTransaction) {
                ManagedQuery(db).exec(kRollback);
            }
            continue;
        }
        widen();
        // Some failures end the transaction.
        inTransaction = inTransaction && (outcome.isStored || m_begin->isInTransaction());
        if (!saveExtremes(db, extremes, inTransaction) && outcome.isStored) {
            outcome = m_inserts.insert(insert, reading); // it was rolled back with the extremes
        }
        return outcome;
    }
}

/// Saves the extremes and commits. If that fails, everything is rolled back.
bool ReadingTransaction::saveExtremes(const QSqlDatabase& db, const Extremes& extremes,
                                      bool inTransaction)
{
    const QVector<int> ids = m_saved.unsavedCurves(extremes);
    bool isSaved = m_saved.writeRows(db, ids, extremes);
    if (isSaved && inTransaction && !m_commit->runKept({})) {
        m_saved.reportFailure(*m_commit);
        isSaved = false;
    }
    if (isSaved) {
        m_saved.noteSaved(ids, extremes);
    } else if (inTransaction) {
        ManagedQuery(db).exec(kRollback); // left open it would take every later write with it
    }
    return isSaved;
}

void ReadingTransaction::prepare(const QSqlDatabase& db)
{
    if (m_begin && m_begin->isUsable()) {
        return;
    }
    clear();
    m_pageBytes = pageBytesOf(db);
    m_begin = std::make_unique<ManagedQuery>(db);
    m_begin->prepare(kBegin);
    m_commit = std::make_unique<ManagedQuery>(db);
    m_commit->prepare(kCommit);
}

/// Sets how many pages the WAL gets before it is checkpointed, by the number of curves.
void ReadingTransaction::spaceCheckpoints(const QSqlDatabase& db)
{
    const int kib = kWalKibForTheRest + kWalKibPerCurve * m_inserts.count();
    const int wanted = m_pageBytes > 0 ? kib * kBytesPerKib / m_pageBytes : 0;
    if (wanted <= std::max(kOwnCheckpointPages, m_checkpointPages)) {
        return;
    }
    m_checkpointPages = wanted;
    ManagedQuery(db).exec(QStringLiteral("PRAGMA wal_autocheckpoint = %1").arg(wanted));
}

void ReadingTransaction::clear()
{
    m_begin.reset();
    m_commit.reset();
    m_pageBytes = 0;
    m_checkpointPages = 0;
}

} // namespace scn
