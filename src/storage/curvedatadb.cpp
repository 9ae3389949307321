#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/datadirectory.h"
#include "storage/lockpatience.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QSqlError>
#include <QThread>

#include <algorithm>

namespace {

QMutex g_instanceMutex;
std::atomic<CurveDataDB*> g_instance{nullptr};

struct BaseTable
{
    const char* sql;
    const char* failure;
};

constexpr BaseTable kBaseTables[] = {
    {"CREATE TABLE IF NOT EXISTS curve_info ("
     "curve_id INTEGER PRIMARY KEY AUTOINCREMENT, "
     "name TEXT NOT NULL UNIQUE)",
     "创建curve_info表失败:"},
    {"CREATE TABLE IF NOT EXISTS batch_metadata ("
     "id INTEGER PRIMARY KEY AUTOINCREMENT, "
     "curve_id INTEGER NOT NULL, "
     "batch_start INTEGER NOT NULL, "
     "batch_end INTEGER NOT NULL, "
     "table_name TEXT NOT NULL, "
     "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id), "
     "UNIQUE(curve_id, table_name))",
     "创建batch_metadata表失败:"},
    {"CREATE TABLE IF NOT EXISTS curve_metadata ("
     "curve_id INTEGER PRIMARY KEY, "
     "min_time INTEGER, "
     "max_time INTEGER, "
     "min_value REAL, "
     "max_value REAL, "
     "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id))",
     "创建curve_metadata表失败:"},
};

bool saysMissingTable(const QString& errorText)
{
    return errorText.contains(QLatin1String("no such table"));
}

} // namespace

CurveDataDB* CurveDataDB::instance(const QString& directoryName)
{
    if (CurveDataDB* store = g_instance.load(std::memory_order_acquire)) {
        return store;
    }
    const QMutexLocker locker(&g_instanceMutex);
    if (CurveDataDB* store = g_instance.load(std::memory_order_acquire)) {
        return store;
    }
    const QDir applicationDir(QCoreApplication::applicationDirPath());
    auto* store = new CurveDataDB(applicationDir.filePath(
        directoryName.isEmpty() ? QStringLiteral("curve_data") : directoryName));
    // Its slots and timers belong to the GUI thread, whoever asks for it first.
    store->moveToThread(QCoreApplication::instance()->thread());
    g_instance.store(store, std::memory_order_release);
    return store;
}

void CurveDataDB::shutdown()
{
    if (CurveDataDB* store = g_instance.load(std::memory_order_acquire)) {
        store->closeForExit(QDeadlineTimer(storewaits::kShutdownBudget));
    }
}

CurveDataDB::CurveDataDB(const QString& dataDirectory, QObject* parent)
    : QObject(parent)
    , m_dataDir(dataDirectory)
{
    qRegisterMetaType<DBBatchInfo>("DBBatchInfo");
    qRegisterMetaType<DBCurveMetadata>("DBCurveMetadata");
    qRegisterMetaType<QSharedPointer<QSqlDatabase>>("QSharedPointer<QSqlDatabase>");
    if (!isLinkedDirectory(m_dataDir) && !QDir().mkpath(m_dataDir)) {
        qCritical() << "创建数据目录失败:" << m_dataDir;
    }
    const QMutexLocker locker(&m_mutex);
    ensureCurrentDb();
}

CurveDataDB::~CurveDataDB()
{
    stopClearThreads(storewaits::kClearThreadWait);
    if (m_closedForExit) {
        return;
    }
    flushAndDetach();
    closeAllForClear();
    ConnectionPool::instance().closeAllConnections();
}

void CurveDataDB::closeForExit(QDeadlineTimer deadline)
{
    if (m_closedForExit.exchange(true)) {
        return;
    }
    const auto remaining = [&deadline] { return std::max<qint64>(deadline.remainingTime(), 0); };
    const auto threads = findChildren<QThread*>(QString(), Qt::FindDirectChildrenOnly);
    for (QThread* thread : threads) {
        thread->requestInterruption();
    }
    stopClearThreads(std::chrono::milliseconds(remaining() / 2));

    if (m_mutex.tryLock(static_cast<int>(remaining() / 2))) {
        if (isCurrentOpen()) {
            const LockPatience patience;
            ManagedQuery(*m_currentDb)
                .exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(remaining() / 4));
            flushPending();
            writeMetadata();
        }
        forgetAttachment();
        m_late = LateFile();
        m_currentDb.reset();
        m_currentDbPath.clear();
        m_currentDate.clear();
        m_mutex.unlock();
    }
    ConnectionPool::instance().closeForExit(deadline);
}

QString CurveDataDB::dbPathForDate(const QString& dateKey) const
{
    return QDir(m_dataDir).filePath(dateKey + QStringLiteral(".db"));
}

QString CurveDataDB::dbPathForTime(qint64 timestamp) const
{
    return dbPathForDate(dateKeyForTime(timestamp));
}

QString CurveDataDB::todayDbPath() const
{
    return dbPathForDate(todayKey());
}

QSharedPointer<QSqlDatabase> CurveDataDB::openDb(const QString& path)
{
    if (m_closedForExit) {
        return {};
    }
    if (m_clearing) {
        qWarning() << "正在清理数据库，禁止打开新连接：" << path;
        return {};
    }
    if (isLinkedDirectory(m_dataDir)) {
        qCritical() << "数据目录是链接，不予使用：" << m_dataDir;
        return {};
    }
    return ConnectionPool::instance().acquireConnection(path);
}

int CurveDataDB::registerCurve(const QString& name)
{
    const QMutexLocker locker(&m_mutex);
    const int curveId = enlistCurve(name, NewCurve::Pause);
    m_refusing = m_refusing || curveId < 0;
    return curveId;
}

int CurveDataDB::registerCurveAtOnce(const QString& name)
{
    const QMutexLocker locker(&m_mutex);
    const int curveId = enlistCurve(name, NewCurve::AtOnce);
    m_refusing = m_refusing || curveId < 0;
    return curveId;
}

/// Gives a curve its id in today's file. A name that is new there is preceded by the pauses that two
/// further look-ups would take; they give a store that was just cleared time to settle.
int CurveDataDB::enlistCurve(const QString& name, NewCurve newCurve)
{
    const LockPatience patience;
    ensureCurrentDb();
    if (!isCurrentOpen() && !reopenCurrentDb()) {
        return -1;
    }
    int curveId = findCurve(name);
    for (int pause = 0; curveId < 0 && newCurve == NewCurve::Pause &&
                        pause < storewaits::kRegisterPauses && !m_closedForExit;
         ++pause) {
        storeSleep(storewaits::kRegisterPause);
    }
    if (curveId < 0) {
        curveId = insertCurve(name);
    }
    if (curveId < 0) {
        return -1;
    }
    m_curveNameMap.insert(curveId, name);
    m_currentFileIds.insert(curveId);
    m_loadedPath.clear(); // the names of a file loaded before may be others
    return curveId;
}

/// Looks a curve up in today's file; -1 if it is not there.
int CurveDataDB::findCurve(const QString& name)
{
    ManagedQuery query(*m_currentDb);
    if (!query.run(QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name})) {
        if (saysMissingTable(query.errorText())) {
            createBaseTables(*m_currentDb);
        }
    } else if (query.next()) {
        return query.value(0).toInt();
    }
    return -1;
}

int CurveDataDB::insertCurve(const QString& name)
{
    const QString sql = QStringLiteral("INSERT INTO curve_info (name) VALUES (?)");
    ManagedQuery query(*m_currentDb);
    if (query.run(sql, {name})) {
        return query.lastInsertId().toInt();
    }
    const QString error = query.errorText();
    if (!saysMissingTable(error) && !error.contains(QLatin1String("SQL logic error"))) {
        return -1;
    }
    createBaseTables(*m_currentDb);
    if (query.run(sql, {name})) {
        return query.lastInsertId().toInt();
    }
    qCritical() << "重新初始化后仍无法注册曲线:" << query.errorText();
    return -1;
}

DBCurveMetadata CurveDataDB::curveMetadata(int curveId) const
{
    const QMutexLocker locker(&m_mutex);
    return m_metadataMap.value(curveId);
}

QMap<int, QString> CurveDataDB::curveNames() const
{
    const QMutexLocker locker(&m_mutex);
    return m_curveNameMap;
}

QMap<int, QString> CurveDataDB::namesForIds(const QList<int>& ids) const
{
    const QMutexLocker locker(&m_mutex);
    QMap<int, QString> names;
    for (const int id : ids) {
        const auto known = m_curveNameMap.constFind(id);
        if (known != m_curveNameMap.constEnd()) {
            names.insert(id, *known);
        }
    }
    return names;
}

int CurveDataDB::knownTableCount() const
{
    const QMutexLocker locker(&m_mutex);
    return m_knownTables.size();
}

/// Makes today's file the current one: after midnight, after a detachment, after the file has
/// gone. Nothing happens while it is current and in place.
void CurveDataDB::ensureCurrentDb()
{
    const LockPatience patience;
    if (m_attaching || m_closedForExit || (isAttachedToday() && !isCurrentFileGone())) {
        return;
    }
    m_attaching = true;
    openCurrentDb(currentDayKey());
    if (isCurrentOpen()) {
        takeUpCurrentDb();
    }
    m_attaching = false;
}

void CurveDataDB::openCurrentDb(const QString& today)
{
    if (!m_currentDbPath.isEmpty()) {
        ConnectionPool::instance().releaseConnection(m_currentDbPath);
    }
    m_currentDate = today;
    m_currentDbPath = dbPathForDate(today);
    m_currentDb.reset();
    const bool unfit = m_readOnly || m_incomplete;
    const FileIdentity found = fileIdentity(m_currentDbPath);
    if (unfit || found != m_currentFile) {
        forgetAttachment(); // the statements are those of a connection that has had its day
    }
    if (unfit) { // what kept it from being set up may have gone
        ConnectionPool::instance().discardConnection(m_currentDbPath);
    }
    m_currentDb = openDb(m_currentDbPath);
    m_currentFile = found.exists() ? found : fileIdentity(m_currentDbPath);
    if (!isCurrentOpen()) {
        qWarning() << "切换数据库失败，连接无效：" << m_currentDbPath;
    }
}

bool CurveDataDB::reopenCurrentDb()
{
    qCritical() << "数据库已关闭，尝试重新打开...";
    m_currentDb = openDb(m_currentDbPath);
    if (!isCurrentOpen()) {
        qCritical() << "重新打开失败! 错误:"
                    << (m_currentDb ? m_currentDb->lastError().text() : QStringLiteral("连接无效"));
        return false;
    }
    if (!m_attaching) {
        m_attaching = true;
        takeUpCurrentDb();
        m_attaching = false;
    }
    return true;
}

/// After a short detachment memory still agrees with the file, and everything goes on as it was.
/// Otherwise the catalogue is built: known curves are registered, the file's records are read.
void CurveDataDB::takeUpCurrentDb()
{
    noteUse();
    if (m_catalogueTrusted && m_changedCurves.isEmpty() && m_attachedPath == m_currentDbPath &&
        m_attachedConnection == m_currentDb->connectionName()) {
        return;
    }
    forgetAttachment();
    m_attachedPath = m_currentDbPath;
    m_attachedConnection = m_currentDb->connectionName();
    buildCatalogue();
}

void CurveDataDB::buildCatalogue()
{
    const QMap<int, QString> names = m_curveNameMap;
    m_catalogueTrusted = true;
    m_incomplete = !createBaseTables(*m_currentDb);
    // Ids are given in order: after one that cannot be registered the others would get each other's.
    for (auto name = names.cbegin(); name != names.cend() && !m_incomplete; ++name) {
        m_incomplete = enlistCurve(*name, NewCurve::AtOnce) < 0;
    }
    loadMetadata(m_currentDbPath);
    m_catalogueTrusted = m_catalogueTrusted && !m_incomplete;
}

/// Drops all that is known of the file which was current.
void CurveDataDB::forgetAttachment()
{
    m_liveInserts.clear();
    m_cacheKib = 0;
    m_metadataWriter.reset();
    m_currentFileIds.clear();
    m_savedMetadata.clear();
    m_changedCurves.clear();
    m_compareAll = false;
    m_attachedPath.clear();
    m_attachedConnection.clear();
    m_catalogueTrusted = false;
    m_incomplete = false;
    m_readOnly = false;
}

/// Looks at the failure of a query; those of today's file tell what has to be repaired.
void CurveDataDB::noteFailure(const ManagedQuery& query)
{
    if (query.connectionName() != m_attachedConnection) {
        return;
    }
    m_catalogueTrusted = false;
    if (saysMissingTable(query.errorText())) {
        m_incomplete = true;
    }
    if (query.metReadOnly()) {
        m_readOnly = true;
    }
}

bool CurveDataDB::createBaseTables(const QSqlDatabase& db)
{
    if (!db.isOpen()) {
        return false;
    }
    bool created = true;
    ManagedQuery query(db);
    for (const BaseTable& table : kBaseTables) {
        if (!query.exec(QString::fromLatin1(table.sql))) {
            qCritical() << table.failure << query.errorText();
            created = false;
        }
    }
    return created;
}

bool CurveDataDB::loadMetadata(const QString& path)
{
    m_batchList.clear();
    m_metadataMap.clear();
    const bool isCurrent = path == m_currentDbPath;
    if (isCurrent) {
        m_savedMetadata.clear();
        m_changedCurves.clear();
        m_compareAll = false;
    } else {
        m_compareAll = true;
        m_catalogueTrusted = false;
    }
    const QSharedPointer<QSqlDatabase> db = openDb(path);
    if (!db || !db->isOpen()) {
        m_catalogueTrusted = false;
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
            noteFailure(query);
        }
        return;
    }
    while (query.next()) {
        const int curveId = query.value(0).toInt();
        m_curveNameMap.insert(curveId, query.value(1).toString());
        if (isCurrent) {
            m_currentFileIds.insert(curveId);
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
            noteFailure(query);
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
            noteFailure(query);
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
            m_changedCurves.insert(curveId);
        } else {
            m_savedMetadata.insert(curveId, extremes);
        }
    }
}

const QString& CurveDataDB::currentDayKey()
{
    return m_nowSlice.at(storeNow()).dateKey;
}

bool CurveDataDB::isCurrentOpen() const
{
    return m_currentDb && m_currentDb->isOpen();
}

bool CurveDataDB::isAttachedToday()
{
    return isCurrentOpen() && m_currentDate == currentDayKey();
}

/// Whether today's file was deleted, moved or replaced since it was opened: what is written to it
/// then is lost.
bool CurveDataDB::isCurrentFileGone() const
{
    const FileIdentity found = fileIdentity(m_currentDbPath);
    return !found.exists() || found != m_currentFile;
}

/// A write is a use: without this the sweep of idle connections would take the writer's for one.
void CurveDataDB::noteUse()
{
    const qint64 now = storeNow();
    if (now >= m_lastUseNoted && now - m_lastUseNoted < storewaits::kUseNoteInterval.count()) {
        return;
    }
    m_lastUseNoted = now;
    ConnectionPool::instance().releaseConnection(m_currentDbPath);
}
