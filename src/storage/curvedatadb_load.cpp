#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"

using namespace scn;

/// Reads a file's catalogue into memory, replacing the last loaded file's. Its names are added to
/// the known ones.
bool CurveDataDB::loadMetadata(const QString& path)
{
    m_batchList.clear();
    m_metadataMap.clear();
    const bool isCurrent = path == m_currentDbPath;
    if (isCurrent) {
        m_today.forgetExtremes();
    } else {
        m_today.noteForeignExtremes();
    }
    const QSharedPointer<QSqlDatabase> db = openDb(path);
    if (!db || !db->isOpen()) {
        m_today.doubt();
        return false;
    }
    loadCurveNames(*db, isCurrent);
    loadBatchList(*db, isCurrent);
    loadExtremes(*db, isCurrent);
    if (!isCurrent) {
        attachLateFile(*db);
        m_late.isFit = false;
        m_late.extremes = m_metadataMap;
        m_late.changed.clear();
    }
    m_loadedPath = path;
    ConnectionPool::instance().releaseConnection(path);
    return true;
}

void CurveDataDB::loadCurveNames(const QSqlDatabase& db, bool isCurrent)
{
    ManagedQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT curve_id, name FROM curve_info"))) {
        if (isCurrent) {
            m_today.noteFailure(query);
        }
        return;
    }
    while (query.next()) {
        const int curveId = query.value(0).toInt();
        m_curveNameMap.insert(curveId, query.value(1).toString());
        if (isCurrent) {
            m_today.addCurve(curveId);
        }
    }
}

void CurveDataDB::loadBatchList(const QSqlDatabase& db, bool isCurrent)
{
    ManagedQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral(
            "SELECT curve_id, batch_start, batch_end, table_name FROM batch_metadata"))) {
        if (isCurrent) {
            m_today.noteFailure(query);
        }
        return;
    }
    while (query.next()) {
        m_batchList.append(
            {query.value(1).toLongLong(), query.value(2).toLongLong(), query.value(3).toString()});
    }
}

void CurveDataDB::loadExtremes(const QSqlDatabase& db, bool isCurrent)
{
    ManagedQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT curve_id, min_time, max_time, min_value, max_value "
                                   "FROM curve_metadata"))) {
        if (isCurrent) {
            m_today.noteFailure(query);
        }
        return;
    }
    while (query.next()) {
        const int curveId = query.value(0).toInt();
        DBCurveMetadata extremes;
        extremes.minTime = query.value(1).toLongLong();
        extremes.maxTime = query.value(2).toLongLong();
        extremes.minValue = query.value(3).toDouble();
        extremes.maxValue = query.value(4).toDouble();
        m_metadataMap.insert(curveId, extremes);
        // A row of nulls reads as zeros but does not hold them.
        const bool hasNull = query.value(1).isNull() || query.value(2).isNull() ||
                             query.value(3).isNull() || query.value(4).isNull();
        if (!isCurrent) {
            continue;
        }
        if (hasNull) {
            m_today.noteChange(curveId);
        } else {
            m_today.addSavedExtremes(curveId, extremes);
        }
    }
}
