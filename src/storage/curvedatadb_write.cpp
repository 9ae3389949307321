#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/lockpatience.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QDebug>

#include <algorithm>
#include <cmath>

namespace {

/// A reading goes to the ends of three trees, its table and two indexes, each up to three pages of
/// 4 KiB deep. If the ends of all curves do not fit in the page cache, each reading drops what the
/// next one needs, and a run gets slower with every level that its trees grow by.
constexpr int kCacheKibPerCurve = 40;
constexpr int kCacheKibForTheRest = 1600;
constexpr int kOwnCacheKib = 2000; // what SQLite takes unasked

/// Marks an insert whose table is not known to exist; no batch starts there.
constexpr qint64 kNoBatch = std::numeric_limits<qint64>::min();

const QString kBegin = QStringLiteral("BEGIN");
const QString kCommit = QStringLiteral("COMMIT");
const QString kRollback = QStringLiteral("ROLLBACK");

QString insertPointSql(const QString& table)
{
    return QStringLiteral("INSERT OR IGNORE INTO %1 (curve_id, timestamp, value) VALUES (?, ?, ?)")
        .arg(table);
}

/// The calendar's own limit, some 270,000 years from the epoch on either side.
constexpr qint64 kFarthestTime = 8640000000000000;

/// Whether a number of milliseconds can be a time at all: reckoning with others would overflow.
bool isTime(qint64 timestamp)
{
    return timestamp >= -kFarthestTime && timestamp <= kFarthestTime;
}

/// The same of a point's x.
bool hasTime(const QPointF& point)
{
    return std::abs(point.x()) <= static_cast<double>(kFarthestTime);
}

qint64 timeOf(const QPointF& point)
{
    return static_cast<qint64>(point.x());
}

bool sameExtremes(const DBCurveMetadata& left, const DBCurveMetadata& right)
{
    return left.minTime == right.minTime && left.maxTime == right.maxTime &&
           left.minValue == right.minValue && left.maxValue == right.maxValue;
}

/// SQLite has no NaN; it is kept as null and read back as zero.
bool holdsNan(const DBCurveMetadata& extremes)
{
    return std::isnan(extremes.minValue) || std::isnan(extremes.maxValue);
}

/// Whether a kept insert has failed because it has to be prepared anew.
bool isTableGone(const ManagedQuery& insert)
{
    return insert.errorText().contains(QLatin1String("no such table")) || !insert.isUsable();
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

/// The key of the day file that a reading goes to; a reading from the future goes to today's.
const QString& CurveDataDB::dateKeyFor(qint64 timestamp)
{
    return storeNow() < timestamp ? currentDayKey() : m_readingSlice.at(timestamp).dateKey;
}

bool CurveDataDB::targetsCurrentFile(qint64 timestamp)
{
    return !m_currentDbPath.isEmpty() && dateKeyFor(timestamp) == m_currentDate;
}

/// Takes today's file up again after it was deleted, could not be opened or written, or was found
/// incomplete. What cannot be had yet is asked for again every few seconds, not with every reading.
void CurveDataDB::repairAttachment()
{
    const bool gone = isCurrentOpen() && isCurrentFileGone();
    if (isCurrentOpen() && !gone && !m_incomplete && !m_readOnly) {
        return;
    }
    const qint64 now = storeNow();
    const bool tooSoon =
        now >= m_lastRepair && now - m_lastRepair < storewaits::kRepairInterval.count();
    if (m_clearing || (tooSoon && !gone)) {
        return;
    }
    // Whether a file can be written again shows only at the next reading.
    const bool provenByOpening = !m_readOnly;
    m_lastRepair = now;
    m_catalogueTrusted = false;
    m_currentDate.clear();
    ensureCurrentDb();
    if (isCurrentOpen() && !m_incomplete && provenByOpening) {
        m_lastRepair = 0;
    }
}

/// False if the reading could not be stored.
bool CurveDataDB::appendToCurrentFile(int curveId, qint64 timestamp, double value)
{
    if (!isCurrentOpen()) {
        return false;
    }
    noteUse();
    ManagedQuery* insert = liveInsert(curveId, timestamp);
    bool isStored = insert && insert->execWith({curveId, timestamp, value});
    if (insert && !isStored) {
        const bool tableGone = isTableGone(*insert);
        m_readOnly = m_readOnly || insert->metReadOnly();
        m_liveInserts.erase(curveId);
        insert = tableGone ? liveInsert(curveId, timestamp) : nullptr;
        isStored = insert && insert->execWith({curveId, timestamp, value});
    }
    updateMetadataCache(curveId, timestamp, value);
    saveMetadata();
    return isStored;
}

/// The kept insert of a curve in today's file for the table of the reading's batch; null if it
/// cannot be prepared.
ManagedQuery* CurveDataDB::liveInsert(int curveId, qint64 timestamp)
{
    ManagedQuery* insert = keptInsert(m_liveInserts, *m_currentDb, curveId, timestamp);
    growCache(*m_currentDb, m_liveInserts.size(), m_cacheKib);
    return insert;
}

/// The same in the file of an earlier day.
ManagedQuery* CurveDataDB::lateInsert(const QSqlDatabase& db, int curveId, qint64 timestamp)
{
    attachLateFile(db);
    ManagedQuery* insert = keptInsert(m_late.inserts, db, curveId, timestamp);
    growCache(db, m_late.inserts.size(), m_late.cacheKib);
    return insert;
}

/// Until the table is known to exist, each reading looks for it again.
ManagedQuery* CurveDataDB::keptInsert(std::unordered_map<int, LiveInsert>& inserts,
                                      const QSqlDatabase& db, int curveId, qint64 timestamp)
{
    const TimeSlice& slice = m_readingSlice.at(timestamp);
    const auto kept = inserts.find(curveId);
    if (kept != inserts.end() && kept->second.batchStart == slice.batchStart) {
        return kept->second.query.get();
    }

    const bool ready = openForWrite(curveId, timestamp) && slice.ownFile;
    auto query = std::make_unique<ManagedQuery>(db);
    query->setForwardOnly(true);
    if (!query->prepare(insertPointSql(makeTableName(curveId, slice.batchName)))) {
        inserts.erase(curveId);
        return nullptr;
    }
    LiveInsert& entry = inserts[curveId];
    entry.batchStart = ready ? slice.batchStart : kNoBatch;
    entry.query = std::move(query);
    return entry.query.get();
}

/// Gives the page cache of a file the size that the curves being written need.
void CurveDataDB::growCache(const QSqlDatabase& db, size_t curves, int& cacheKib)
{
    const int wanted = kCacheKibForTheRest + kCacheKibPerCurve * static_cast<int>(curves);
    if (wanted <= std::max(kOwnCacheKib, cacheKib)) {
        return;
    }
    cacheKib = wanted;
    ManagedQuery(db).exec(QStringLiteral("PRAGMA cache_size = -%1").arg(wanted));
}

/// The way of a reading of another day. The file's own catalogue is loaded, and today's file gets
/// the extremes that follow from it. While readings go on coming for the same file and nothing else
/// is loaded, what was loaded stands for the file. False if the reading could not be stored.
bool CurveDataDB::appendToOtherFile(int curveId, qint64 timestamp, double value)
{
    const QString path = dbPathForDate(dateKeyFor(timestamp));
    const QSharedPointer<QSqlDatabase> db = openDb(path);
    if (!db || !db->isOpen()) {
        return false;
    }
    if (isLoaded(path, *db)) {
        restoreLateExtremes();
    } else {
        m_loadedPath.clear();
    }
    // The caller's id names the table even where the file knows the curve under another one; the
    // insert then finds no table.
    ManagedQuery* insert = lateInsert(*db, curveId, timestamp);
    bool isStored = insert && insert->execWith({curveId, timestamp, value});
    if (insert && !isStored) {
        const bool tableGone = isTableGone(*insert);
        m_late.inserts.erase(curveId);
        insert = tableGone ? lateInsert(*db, curveId, timestamp) : nullptr;
        isStored = insert && insert->execWith({curveId, timestamp, value});
    }
    if (m_loadedPath != path) { // as a rule it was loaded for the look at its batches
        loadOtherFile(path, *db);
    }
    updateMetadataCache(curveId, timestamp, value);
    saveMetadata();
    ConnectionPool::instance().releaseConnection(path);
    return isStored;
}

/// Whether a file of an earlier day is the one loaded last, through this connection, and takes
/// readings.
bool CurveDataDB::isLoaded(const QString& path, const QSqlDatabase& db) const
{
    return m_loadedPath == path && m_late.connection == db.connectionName() && m_late.isFit;
}

/// Lets go of what was kept for the late readings of another connection.
void CurveDataDB::attachLateFile(const QSqlDatabase& db)
{
    if (m_late.connection == db.connectionName()) {
        return;
    }
    m_late = LateFile();
    m_late.connection = db.connectionName();
}

/// Loads the file of another day, after giving it what it needs to take readings.
void CurveDataDB::loadOtherFile(const QString& path, const QSqlDatabase& db)
{
    const bool isFit = setUpOtherFile(db);
    loadMetadata(path);
    qDebug() << "openForWrite"
             << "-0000-" << m_batchList.size();
    for (const DBBatchInfo& batch : qAsConst(m_batchList)) {
        qDebug() << "openForWrite"
                 << "-0001-" << batch.tableName;
    }
    m_late.isFit = isFit;
}

/// A file without curves gets the base tables and today's curves under today's ids, or stays as it
/// is. False if it cannot take any.
bool CurveDataDB::setUpOtherFile(const QSqlDatabase& db)
{
    {
        ManagedQuery query(db);
        if (!query.exec(QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = 'curve_info'"))) {
            return false;
        }
        if (query.next()) {
            return true;
        }
    }
    if (!isCurrentOpen()) {
        return false;
    }
    ManagedQuery names(*m_currentDb);
    names.setForwardOnly(true);
    if (!names.exec(QStringLiteral("SELECT curve_id, name FROM curve_info ORDER BY curve_id"))) {
        return false;
    }
    ManagedQuery query(db);
    bool isDone = query.exec(kBegin) && createBaseTables(db);
    while (isDone && names.next()) {
        isDone = query.run(QStringLiteral("INSERT INTO curve_info (curve_id, name) VALUES (?, ?)"),
                           {names.value(0), names.value(1)});
    }
    isDone = isDone && query.exec(kCommit);
    if (!isDone) {
        query.exec(kRollback);
    }
    return isDone;
}

/// Goes back to the extremes that the loaded file has: each late reading starts from those.
void CurveDataDB::restoreLateExtremes()
{
    for (const int curveId : qAsConst(m_late.changed)) {
        const auto extremes = m_late.extremes.constFind(curveId);
        if (extremes == m_late.extremes.constEnd()) {
            m_metadataMap.remove(curveId);
            m_changedCurves.remove(curveId);
        } else {
            m_metadataMap.insert(curveId, *extremes);
            m_changedCurves.insert(curveId);
        }
    }
    m_late.changed.clear();
}

/// Makes the table of a reading's batch exist. Gives true when it is known to.
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
        if (!isLoaded(path, *db)) {
            loadOtherFile(path, *db);
        }
        curveId = curveIdInOtherFile(*db, curveId);
        if (curveId < 0) {
            return false;
        }
    }
    if (!db || !db->isOpen()) {
        qWarning() << "目标数据库连接无效";
        return false;
    }
    const QString table = makeTableName(curveId, makeBatchName(timestamp));
    {
        ManagedQuery query(*db);
        if (query.run(QStringLiteral(
                          "SELECT 1 FROM batch_metadata WHERE curve_id = ? AND table_name = ?"),
                      {curveId, table}) &&
            query.next()) {
            m_knownTables.insert(table, true);
            return true;
        }
    }
    if (!createBatchTable({start, start + kBatchSpanMs, table}, *db, curveId)) {
        qWarning() << "创建分片表失败:" << table;
        return false;
    }
    m_knownTables.insert(table, true);
    return true;
}

/// The id under which a file that is not the current one knows a curve, registered there if need
/// be; -1 on failure.
int CurveDataDB::curveIdInOtherFile(const QSqlDatabase& db, int curveId)
{
    if (!m_curveNameMap.contains(curveId)) {
        qWarning() << "曲线ID" << curveId << "在内存映射中不存在";
        return -1;
    }
    const QString name = m_curveNameMap.value(curveId);
    ManagedQuery query(db);
    if (query.run(QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name}) &&
        query.next()) {
        return query.value(0).toInt();
    }
    if (!query.run(QStringLiteral("INSERT INTO curve_info (name) VALUES (?)"), {name})) {
        qWarning() << "在新数据库中注册曲线失败:" << query.errorText();
        return -1;
    }
    const int ownId = query.lastInsertId().toInt();
    m_curveNameMap.insert(ownId, name);
    qDebug() << "openForWrite"
             << "-0002-" << ownId << name;
    return ownId;
}

bool CurveDataDB::createBatchTable(const DBBatchInfo& info, const QSqlDatabase& db, int curveId)
{
    ManagedQuery query(db);
    if (!query.exec(kBegin)) {
        qWarning() << "开始事务失败:" << query.errorText();
        return false;
    }
    if (!query.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS \"%1\" ("
                                   "id INTEGER PRIMARY KEY AUTOINCREMENT, "
                                   "curve_id INTEGER NOT NULL, "
                                   "timestamp INTEGER NOT NULL, "
                                   "value REAL NOT NULL, "
                                   "UNIQUE(curve_id, timestamp), "
                                   "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id))")
                        .arg(info.tableName))) {
        qWarning() << "创建分片表失败:" << info.tableName << "，错误:" << query.errorText();
        noteFailure(query);
        query.exec(kRollback);
        return false;
    }
    query.exec(QStringLiteral("CREATE INDEX IF NOT EXISTS idx_%1_curve_time "
                              "ON \"%1\" (curve_id, timestamp)")
                   .arg(info.tableName));
    if (!insertBatchRow(info, db, curveId)) {
        query.exec(kRollback);
        return false;
    }
    const bool listed =
        std::any_of(m_batchList.cbegin(), m_batchList.cend(), [&info](const DBBatchInfo& batch) {
            return batch.tableName == info.tableName;
        });
    if (!listed) {
        m_batchList.append(info);
    }
    if (!query.exec(kCommit)) {
        qWarning() << "提交事务失败:" << query.errorText();
        noteFailure(query);
        query.exec(kRollback); // left open it would take every later write with it
        return false;
    }
    return true;
}

bool CurveDataDB::insertBatchRow(const DBBatchInfo& info, const QSqlDatabase& db, int curveId)
{
    ManagedQuery query(db);
    if (!query.prepare(QStringLiteral("INSERT OR IGNORE INTO batch_metadata "
                                      "(curve_id, batch_start, batch_end, table_name) "
                                      "VALUES (?, ?, ?, ?)"))) {
        qWarning() << "准备分片元数据插入语句失败:" << query.errorText();
        noteFailure(query);
        return false;
    }
    if (!query.execWith({curveId, info.batchStart, info.batchEnd, info.tableName})) {
        qWarning() << "插入分片元数据失败:" << query.errorText();
        noteFailure(query);
        return false;
    }
    return true;
}

void CurveDataDB::appendPoints(int curveId, const QVector<QPointF>& points)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_curveNameMap.contains(curveId) || points.isEmpty()) {
        return;
    }
    if (m_batchLoadMode || m_clearing) {
        m_pendingPoints[curveId] += points;
        return;
    }
    QMap<QString, QVector<QPointF>> pointsByPath;
    for (const QPointF& point : points) {
        if (hasTime(point)) {
            pointsByPath[dbPathForDate(dateKeyFor(timeOf(point)))].append(point);
        }
    }
    for (auto it = pointsByPath.constBegin(); it != pointsByPath.constEnd(); ++it) {
        appendToFile(it.key(), curveId, it.value());
    }
}

void CurveDataDB::appendToFile(const QString& path, int curveId, const QVector<QPointF>& points)
{
    if (path != m_currentDbPath) {
        ensureCurrentDb();
    }
    const bool isCurrent = path == m_currentDbPath;
    if (isCurrent) {
        repairAttachment();
    }
    const QSharedPointer<QSqlDatabase> db = isCurrent ? m_currentDb : openDb(path);
    if (!db || !db->isOpen()) {
        return;
    }
    if (isCurrent) {
        noteUse();
    }
    insertPoints(*db, curveId, points);
    if (!isCurrent) {
        loadMetadata(path);
    }
    for (const QPointF& point : points) {
        updateMetadataCache(curveId, timeOf(point), point.y());
    }
    saveMetadata();
    if (!isCurrent) {
        ConnectionPool::instance().releaseConnection(path);
    }
}

/// Inserts points of one curve into one file in a transaction. The tables are made before it: a
/// transaction of their own has no place inside another.
void CurveDataDB::insertPoints(const QSqlDatabase& db, int curveId, const QVector<QPointF>& points)
{
    QMap<QString, QVector<QPointF>> pointsByTable;
    for (const QPointF& point : points) {
        const TimeSlice& slice = m_readingSlice.at(timeOf(point));
        pointsByTable[makeTableName(curveId, slice.batchName)].append(point);
    }
    for (const QVector<QPointF>& tablePoints : qAsConst(pointsByTable)) {
        openForWrite(curveId, timeOf(tablePoints.first()));
    }

    ManagedQuery query(db);
    query.exec(kBegin);
    for (auto it = pointsByTable.constBegin(); it != pointsByTable.constEnd(); ++it) {
        QVariantList ids;
        QVariantList times;
        QVariantList values;
        for (const QPointF& point : it.value()) {
            ids.append(curveId);
            times.append(timeOf(point));
            values.append(point.y());
        }
        if (!query.prepare(insertPointSql(it.key())) || !query.execColumns({ids, times, values})) {
            qWarning() << "批量插入失败:" << query.errorText();
            noteFailure(query);
        }
    }
    if (!query.exec(kCommit)) {
        query.exec(kRollback);
    }
}

void CurveDataDB::flushPending()
{
    const QMutexLocker locker(&m_mutex);
    if (m_pendingPoints.isEmpty() || m_batchLoadMode || m_clearing) {
        return;
    }
    const QMap<int, QVector<QPointF>> pending = m_pendingPoints;
    for (auto it = pending.constBegin(); it != pending.constEnd(); ++it) {
        appendPoints(it.key(), it.value());
    }
    m_pendingPoints.clear();
}

void CurveDataDB::flushAndDetach()
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_currentDb) {
        return;
    }
    flushPending();
    saveMetadata();
    m_currentDb.reset();
    ConnectionPool::instance().releaseConnection(m_currentDbPath);
    m_currentDbPath.clear();
    m_currentDate.clear();
}

/// The first reading sets all four, whatever it is: a bound of exactly zero counts as not set, so
/// that a true minimum of zero is given up at the next reading.
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
    m_changedCurves.insert(curveId);
    m_late.changed.insert(curveId);
}

bool CurveDataDB::saveMetadata()
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!isAttachedToday()) {
        ensureCurrentDb();
    }
    return isCurrentOpen() && writeMetadata();
}

/// Ids, ascending, whose extremes differ from what today's file holds. Ids that the file does not
/// know have no row to go to: readings of a series that a clear has outlived carry them.
QVector<int> CurveDataDB::unsavedCurves() const
{
    const QList<int> candidates = m_compareAll ? m_metadataMap.keys() : m_changedCurves.values();
    QVector<int> ids;
    for (const int id : candidates) {
        const auto extremes = m_metadataMap.constFind(id);
        if (extremes == m_metadataMap.constEnd() || !m_currentFileIds.contains(id)) {
            continue;
        }
        const auto saved = m_savedMetadata.constFind(id);
        if (saved == m_savedMetadata.constEnd() || !sameExtremes(*saved, *extremes)) {
            ids.append(id);
        }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

/// Brings the rows of curve_metadata to what memory holds. Rows that have their values already
/// are left alone; several go in one transaction.
bool CurveDataDB::writeMetadata()
{
    const QVector<int> ids = unsavedCurves();
    if (!ids.isEmpty() && !writeMetadataRows(ids)) {
        m_metadataWriter.reset();
        if (ids.size() > 1) {
            ManagedQuery(*m_currentDb).exec(kRollback);
        }
        return false;
    }
    for (const int id : ids) {
        const DBCurveMetadata& extremes = m_metadataMap[id];
        m_savedMetadata.insert(id, extremes);
        m_changedCurves.remove(id);
        if (holdsNan(extremes)) {
            m_catalogueTrusted = false;
        }
    }
    m_compareAll = false;
    return true;
}

bool CurveDataDB::writeMetadataRows(const QVector<int>& ids)
{
    if (!m_metadataWriter || !m_metadataWriter->isUsable()) {
        m_metadataWriter = std::make_unique<ManagedQuery>(*m_currentDb);
        m_metadataWriter->setForwardOnly(true);
        if (!m_metadataWriter->prepare(QStringLiteral(
                "INSERT OR REPLACE INTO curve_metadata "
                "(curve_id, min_time, max_time, min_value, max_value) VALUES (?, ?, ?, ?, ?)"))) {
            return failedToSaveMetadata(*m_metadataWriter);
        }
    }
    const bool several = ids.size() > 1;
    if (several) {
        ManagedQuery(*m_currentDb).exec(kBegin);
    }
    for (const int id : ids) {
        const DBCurveMetadata& extremes = m_metadataMap[id];
        if (!m_metadataWriter->execWith(
                {id, extremes.minTime, extremes.maxTime, extremes.minValue, extremes.maxValue})) {
            return failedToSaveMetadata(*m_metadataWriter);
        }
    }
    if (!several) {
        return true;
    }
    ManagedQuery commit(*m_currentDb);
    return commit.exec(kCommit) || failedToSaveMetadata(commit);
}

bool CurveDataDB::failedToSaveMetadata(const ManagedQuery& query)
{
    noteFailure(query);
    qWarning() << "保存曲线元数据失败:" << query.errorText();
    return false;
}
