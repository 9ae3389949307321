#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/lockpatience.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QDebug>
#include <QSqlError>

using namespace scn;

namespace {

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

} // namespace

/// Makes today's file the current one: after midnight, after a detachment, after the file has gone.
/// Does nothing while it is current and in place.
void CurveDataDB::ensureCurrentDb()
{
    const LockPatience patience;
    if (m_today.isAttaching() || m_closedForExit ||
        (isAttachedToday() && !m_today.isGoneFrom(m_currentDbPath))) {
        return;
    }
    m_today.beginAttaching();
    openCurrentDb(currentDayKey());
    if (isCurrentOpen()) {
        takeUpCurrentDb();
    }
    m_today.endAttaching();
}

void CurveDataDB::openCurrentDb(const QString& today)
{
    if (!m_currentDbPath.isEmpty()) {
        ConnectionPool::instance().releaseConnection(m_currentDbPath);
    }
    m_currentDate = today;
    m_currentDbPath = dbPathForDate(today);
    m_currentDb.reset();
    const bool unfit = m_today.isUnfit();
    const FileIdentity found = fileIdentity(m_currentDbPath);
    if (unfit || found != m_today.identity()) {
        m_today.forget(); // the statements are those of a connection that has had its day
    }
    if (unfit) { // what kept it from being set up may have gone
        ConnectionPool::instance().discardConnection(m_currentDbPath);
    }
    m_currentDb = openDb(m_currentDbPath);
    m_today.setIdentity(found.exists() ? found : fileIdentity(m_currentDbPath));
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
    if (!m_today.isAttaching()) {
        m_today.beginAttaching();
        takeUpCurrentDb();
        m_today.endAttaching();
    }
    return true;
}

/// After a short detachment memory still agrees with the file, and everything continues as before.
/// Otherwise the catalogue is rebuilt: known curves are registered, the file's records are read.
void CurveDataDB::takeUpCurrentDb()
{
    noteUse();
    const QString connection = m_currentDb->connectionName();
    if (m_today.isUpToDateOn(m_currentDbPath, connection)) {
        return;
    }
    m_today.startOn(m_currentDbPath, connection);
    if (!registerKnownCurves()) {
        m_today.noteIncomplete();
    }
    loadMetadata(m_currentDbPath);
}

/// Gives today's file the base tables and the curves of the previous file, under their ids. Ids are
/// assigned in order: after one that cannot be registered the others would get each other's.
bool CurveDataDB::registerKnownCurves()
{
    const QMap<int, QString> names = m_curveNameMap;
    bool isComplete = createBaseTables(*m_currentDb);
    for (auto name = names.cbegin(); name != names.cend() && isComplete; ++name) {
        isComplete = curveIdInCurrentFile(*name, NewCurve::AtOnce) >= 0;
    }
    return isComplete;
}

/// Reattaches today's file after it was deleted, could not be opened or written, or was found
/// incomplete. What is not available yet is retried every few seconds, not with every reading.
void CurveDataDB::repairAttachment()
{
    const bool gone = isCurrentOpen() && m_today.isGoneFrom(m_currentDbPath);
    if (isCurrentOpen() && !gone && !m_today.isUnfit()) {
        return;
    }
    const qint64 now = storeNow();
    const bool tooSoon =
        now >= m_lastRepair && now - m_lastRepair < storewaits::kRepairInterval.count();
    if (m_clearing || (tooSoon && !gone)) {
        return;
    }
    // Only the next reading shows whether a file can be written again.
    const bool provenByOpening = !m_today.isReadOnly();
    m_lastRepair = now;
    m_today.doubt();
    m_currentDate.clear();
    ensureCurrentDb();
    if (isCurrentOpen() && !m_today.isIncomplete() && provenByOpening) {
        m_lastRepair = 0;
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

/// A write counts as use: otherwise the sweep of idle connections would close the writer's.
void CurveDataDB::noteUse()
{
    const qint64 now = storeNow();
    if (now >= m_lastUseNoted && now - m_lastUseNoted < storewaits::kUseNoteInterval.count()) {
        return;
    }
    m_lastUseNoted = now;
    ConnectionPool::instance().releaseConnection(m_currentDbPath);
}

/// A chart calls this before it reads a window. What was held back is then in the file it reads,
/// and the writer does not hold the connection: a read may evict it, or find its file replaced and
/// reopen it. The next reading attaches again.
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
