#include "storage/curvedatadb.h"

#include "storage/lockpatience.h"
#include "storage/readingtime.h"
#include "storage/statements.h"
#include "storage/storeclock.h"

using namespace scn;

namespace {

/// Whether a kept insert failed because it must be prepared again.
bool isTableGone(const ManagedQuery& insert)
{
    return saysMissingTable(insert.errorText()) || !insert.isUsable();
}

} // namespace

void CurveDataDB::appendPoint(int curveId, qint64 timestamp, double value)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!isTime(timestamp)) {
        return;
    }
    if (targetsCurrentFile(timestamp)) {
        repairAttachment();
    } else {
        ensureCurrentDb();
    }
    const bool isStored = targetsCurrentFile(timestamp)
                              ? appendToCurrentFile(curveId, timestamp, value)
                              : appendToOtherFile(curveId, timestamp, value);
    m_refusing = !isStored && !m_clearing;
}

/// The key of a reading's day file; a reading from the future goes to today's.
const QString& CurveDataDB::dateKeyFor(qint64 timestamp)
{
    return storeNow() < timestamp ? currentDayKey() : m_readingSlice.at(timestamp).dateKey;
}

bool CurveDataDB::targetsCurrentFile(qint64 timestamp)
{
    return !m_currentDbPath.isEmpty() && dateKeyFor(timestamp) == m_currentDate;
}

/// False if the reading could not be stored.
bool CurveDataDB::appendToCurrentFile(int curveId, qint64 timestamp, double value)
{
    if (!isCurrentOpen()) {
        return false;
    }
    noteUse();
    bool metReadOnly = false;
    const bool isStored =
        insertReading(m_today.inserts(), *m_currentDb, {curveId, timestamp, value}, metReadOnly);
    if (metReadOnly) {
        m_today.noteReadOnly();
    }
    updateMetadataCache(curveId, timestamp, value);
    saveMetadata();
    return isStored;
}

/// Inserts a reading into a file, with a kept insert if there is one. One whose table is gone is
/// prepared again, once.
bool CurveDataDB::insertReading(KeptInserts& inserts, const QSqlDatabase& db,
                                const Reading& reading, bool& metReadOnly)
{
    ManagedQuery* insert = insertFor(inserts, db, reading);
    const auto isStored = [&insert, &reading] {
        return insert && insert->execWith({reading.curveId, reading.time, reading.value});
    };
    if (isStored()) {
        return true;
    }
    if (!insert) {
        return false;
    }
    const bool tableGone = isTableGone(*insert);
    metReadOnly = insert->metReadOnly();
    inserts.drop(reading.curveId);
    insert = tableGone ? insertFor(inserts, db, reading) : nullptr;
    return isStored();
}

/// The insert for the table of a reading's batch, created if not known to exist; null if it cannot
/// be prepared.
ManagedQuery* CurveDataDB::insertFor(KeptInserts& inserts, const QSqlDatabase& db,
                                     const Reading& reading)
{
    const TimeSlice& slice = m_readingSlice.at(reading.time);
    if (ManagedQuery* kept = inserts.find(reading.curveId, slice)) {
        return kept;
    }
    const bool tableExists = openForWrite(reading.curveId, reading.time) && slice.ownFile;
    return inserts.prepare(db, reading.curveId, slice, tableExists);
}

/// The first reading sets all four. A bound of exactly zero counts as not set, so a true minimum of
/// zero is given up at the next reading.
void CurveDataDB::updateMetadataCache(int curveId, qint64 timestamp, double value)
{
    DBCurveMetadata& extremes = m_metadataMap[curveId];
    if (timestamp < extremes.minTime || extremes.minTime == 0) {
        extremes.minTime = timestamp;
    }
    if (timestamp > extremes.maxTime) {
        extremes.maxTime = timestamp;
    }
    if (value < extremes.minValue || extremes.minValue == 0.0) {
        extremes.minValue = value;
    }
    if (value > extremes.maxValue) {
        extremes.maxValue = value;
    }
    m_today.noteChange(curveId);
    m_late.changed.insert(curveId);
}

bool CurveDataDB::saveMetadata()
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!isAttachedToday()) {
        ensureCurrentDb();
    }
    return isCurrentOpen() && m_today.saveExtremes(*m_currentDb, m_metadataMap);
}
