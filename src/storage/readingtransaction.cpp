#include "storage/readingtransaction.h"

#include "storage/statements.h"

namespace scn {

KeptInserts::Outcome ReadingTransaction::store(const QSqlDatabase& db, const Reading& reading,
                                               const TimeSlice& slice,
                                               const KeptInserts::OpenTable& openTable,
                                               const Extremes& extremes, const WidenExtremes& widen)
{
    prepare(db);
    for (bool mayRetry = true;; mayRetry = false) {
        // Opening a table is a transaction of its own and may call the pool.
        ManagedQuery* const insert = m_inserts.obtain(db, reading.curveId, slice, openTable);
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
    m_begin = std::make_unique<ManagedQuery>(db);
    m_begin->prepare(kBegin);
    m_commit = std::make_unique<ManagedQuery>(db);
    m_commit->prepare(kCommit);
}

void ReadingTransaction::clear()
{
    m_begin.reset();
    m_commit.reset();
}

} // namespace scn
