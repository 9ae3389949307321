#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/lockpatience.h"
#include "storage/readingtime.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"

#include <QDebug>

using namespace scn;

int CurveDataDB::registerCurve(const QString& name)
{
    return enlistCurve(name, CurrentFile::NewCurve::Pause);
}

int CurveDataDB::registerCurveAtOnce(const QString& name)
{
    return enlistCurve(name, CurrentFile::NewCurve::AtOnce);
}

int CurveDataDB::enlistCurve(const QString& name, CurrentFile::NewCurve newCurve)
{
    const QMutexLocker locker(&m_mutex);
    if (isReadOnly()) {
        return m_curveNameMap.key(name, -1);
    }
    const LockPatience patience;
    const int curveId = m_today.registerCurve(name, newCurve);
    m_refusing = m_refusing || curveId < 0;
    return curveId;
}

void CurveDataDB::appendPoint(int curveId, qint64 timestamp, double value)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!isTime(timestamp) || isReadOnly()) {
        return;
    }
    if (targetsCurrentFile(timestamp)) {
        m_today.repair();
    } else {
        ensureCurrentDb();
    }
    const Reading reading{curveId, timestamp, value};
    m_memory.changes.noteReading(curveId, timestamp);
    const bool isStored =
        targetsCurrentFile(timestamp) ? appendToCurrentFile(reading) : appendToOtherFile(reading);
    m_refusing = !isStored && !m_clearing;
}

/// The key of a reading's day file; a reading from the future goes to today's.
const QString& CurveDataDB::dateKeyFor(qint64 timestamp)
{
    return storeNow() < timestamp ? m_today.todayKey() : m_readingSlice.at(timestamp).dateKey;
}

bool CurveDataDB::targetsCurrentFile(qint64 timestamp)
{
    return !m_currentDbPath.isEmpty() && dateKeyFor(timestamp) == m_currentDate;
}

/// False if the reading could not be stored.
bool CurveDataDB::appendToCurrentFile(const Reading& reading)
{
    if (!m_memory.isCurrentOpen()) {
        return false;
    }
    m_today.noteUse();
    const TimeSlice& slice = m_readingSlice.at(reading.time);
    const auto openTable = [this, &reading] { return openForWrite(reading.curveId, reading.time); };
    const auto widen = [this, &reading] {
        updateMetadataCache(reading.curveId, reading.time, reading.value);
    };
    if (m_today.isAttachedToday()) {
        return m_today.storeWithExtremes(reading, slice, openTable, widen);
    }
    // The last readings before midnight arrive after it: their extremes go to the new day's file.
    const bool isStored = m_today.store(reading, slice, openTable);
    widen();
    saveMetadata();
    return isStored;
}

/// Stores a reading of another day, and gives today's file the extremes that follow. False if the
/// reading could not be stored.
bool CurveDataDB::appendToOtherFile(const Reading& reading)
{
    const QString path = dbPathForDate(dateKeyFor(reading.time));
    const QSharedPointer<QSqlDatabase> db = openDb(path);
    if (!db || !db->isOpen()) {
        return false;
    }
    const bool isStored =
        m_late.store(path, *db, reading, m_readingSlice.at(reading.time),
                     [this, &reading] { return openForWrite(reading.curveId, reading.time); });
    updateMetadataCache(reading.curveId, reading.time, reading.value);
    saveMetadata();
    ConnectionPool::instance().releaseConnection(path);
    return isStored;
}

/// Ensures that the table of a reading's batch exists. True if it is known to.
bool CurveDataDB::openForWrite(int curveId, qint64 timestamp)
{
    const qint64 start = alignToBatchStart(timestamp);
    const QString path = dbPathForTime(start);
    QSharedPointer<QSqlDatabase> db = m_currentDb;
    if (path != m_currentDbPath) {
        db = openDb(path);
        if (!db || !db->isOpen()) {
            qWarning() << "切换数据库失败:" << path;
            return false;
        }
        curveId = m_late.curveIdIn(path, *db, curveId);
        if (curveId < 0) {
            return false;
        }
    }
    if (!db || !db->isOpen()) {
        qWarning() << "目标数据库连接无效";
        return false;
    }
    return m_tables.ensure(*db, curveId, start, makeBatchName(timestamp));
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
    m_today.extremes().noteChange(curveId);
    m_late.noteChange(curveId);
}

bool CurveDataDB::saveMetadata()
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_today.isAttachedToday()) {
        ensureCurrentDb();
    }
    return m_today.saveExtremes();
}
