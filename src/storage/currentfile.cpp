#include "storage/currentfile.h"

#include "storage/connectionpool.h"
#include "storage/filecatalogue.h"
#include "storage/lockpatience.h"
#include "storage/statements.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QDebug>
#include <QSqlError>

namespace scn {

CurrentFile::CurrentFile(StoreMemory& memory, const DayFiles& files)
    : m_memory(memory)
    , m_files(files)
{
}

const QString& CurrentFile::todayKey()
{
    return m_nowSlice.at(storeNow()).dateKey;
}

bool CurrentFile::isAttachedToday()
{
    return m_memory.isCurrentOpen() && m_memory.currentDate == todayKey();
}

/// Whether the file was deleted, moved or replaced since: further writes would be lost.
bool CurrentFile::isGone() const
{
    const FileIdentity found = fileIdentity(m_memory.currentDbPath);
    return !found.exists() || found != m_identity;
}

void CurrentFile::attach()
{
    const LockPatience patience;
    if (m_files.isReadOnly() || m_attachment.isAttaching() || m_files.isClosedForExit() ||
        (isAttachedToday() && !isGone())) {
        return;
    }
    m_attachment.begin();
    open();
    if (m_memory.isCurrentOpen()) {
        takeUp();
    }
    m_attachment.end();
}

void CurrentFile::open()
{
    QString& path = m_memory.currentDbPath;
    if (!path.isEmpty()) {
        ConnectionPool::instance().releaseConnection(path);
    }
    m_memory.currentDate = todayKey();
    path = m_files.path(m_memory.currentDate);
    m_memory.currentDb.reset();
    const bool unfit = m_attachment.isUnfit();
    const FileIdentity found = fileIdentity(path);
    if (unfit || found != m_identity) {
        forget(); // the statements belong to the former connection
        m_memory.changes.noteDoubt();
    }
    if (unfit) { // what kept it from being set up may have gone
        ConnectionPool::instance().discardConnection(path);
    }
    m_memory.currentDb = m_files.open(path);
    m_identity = found.exists() ? found : fileIdentity(path);
    if (!m_memory.isCurrentOpen()) {
        qWarning() << "切换数据库失败，连接无效：" << path;
    }
}

bool CurrentFile::reopen()
{
    qCritical() << "数据库已关闭，尝试重新打开...";
    QSharedPointer<QSqlDatabase>& db = m_memory.currentDb;
    db = m_files.open(m_memory.currentDbPath);
    if (!m_memory.isCurrentOpen()) {
        qCritical() << "重新打开失败! 错误:"
                    << (db ? db->lastError().text() : QStringLiteral("连接无效"));
        return false;
    }
    if (!m_attachment.isAttaching()) {
        m_attachment.begin();
        takeUp();
        m_attachment.end();
    }
    return true;
}

/// After a short detachment memory still agrees with the file, and everything continues as before.
/// Otherwise the catalogue is rebuilt: known curves are registered, the file's records are read.
void CurrentFile::takeUp()
{
    noteUse();
    const QString connection = m_memory.currentDb->connectionName();
    if (m_attachment.isTrustedOn(m_memory.currentDbPath, connection) && m_extremes.isUpToDate()) {
        return;
    }
    forget();
    m_attachment.trust(m_memory.currentDbPath, connection);
    if (!registerKnownCurves()) {
        m_attachment.noteIncomplete();
    }
    load();
}

/// Gives the file the base tables and the curves of the previous one, under their ids. Ids are
/// assigned in order: after one that cannot be registered the others would get each other's.
bool CurrentFile::registerKnownCurves()
{
    const QMap<int, QString> names = m_memory.curveNameMap;
    bool isComplete = createBaseTables(*m_memory.currentDb);
    for (auto name = names.cbegin(); name != names.cend() && isComplete; ++name) {
        isComplete = registerCurveInFile(*name, NewCurve::AtOnce) >= 0;
    }
    return isComplete;
}

void CurrentFile::load()
{
    const QString& path = m_memory.currentDbPath;
    m_memory.dropRecords();
    m_extremes.forgetRows();
    const QSharedPointer<QSqlDatabase> db = m_files.open(path);
    if (!db || !db->isOpen()) {
        m_attachment.doubt();
        return;
    }
    const FileCatalogue catalogue =
        readCatalogue(*db, [this](const ManagedQuery& query) { m_attachment.noteFailure(query); });
    m_memory.take(path, catalogue);
    for (auto it = catalogue.names.cbegin(); it != catalogue.names.cend(); ++it) {
        m_extremes.addCurve(it.key());
    }
    for (auto it = catalogue.extremes.cbegin(); it != catalogue.extremes.cend(); ++it) {
        if (catalogue.nullExtremes.contains(it.key())) {
            m_extremes.noteChange(it.key());
        } else {
            m_extremes.addRow(it.key(), *it);
        }
    }
    ConnectionPool::instance().releaseConnection(path);
}

void CurrentFile::repair()
{
    const bool gone = m_memory.isCurrentOpen() && isGone();
    if (m_memory.isCurrentOpen() && !gone && !m_attachment.isUnfit()) {
        return;
    }
    const qint64 now = storeNow();
    const bool tooSoon =
        now >= m_lastRepair && now - m_lastRepair < storewaits::kRepairInterval.count();
    if (m_files.isClearing() || (tooSoon && !gone)) {
        return;
    }
    // Only the next reading shows whether a file can be written again.
    const bool provenByOpening = !m_attachment.isReadOnly();
    m_lastRepair = now;
    m_attachment.doubt();
    m_memory.currentDate.clear();
    attach();
    if (m_memory.isCurrentOpen() && !m_attachment.isUnfit() && provenByOpening) {
        m_lastRepair = 0;
    }
}

void CurrentFile::detach()
{
    m_memory.currentDb.reset();
    ConnectionPool::instance().releaseConnection(m_memory.currentDbPath);
    m_memory.currentDbPath.clear();
    m_memory.currentDate.clear();
}

void CurrentFile::forget()
{
    m_attachment.forget();
    m_inserts.clear();
    m_transaction.clear();
    m_extremes.forget();
}

void CurrentFile::noteUse()
{
    const qint64 now = storeNow();
    if (now >= m_lastUseNoted && now - m_lastUseNoted < storewaits::kUseNoteInterval.count()) {
        return;
    }
    m_lastUseNoted = now;
    ConnectionPool::instance().releaseConnection(m_memory.currentDbPath);
}

int CurrentFile::registerCurve(const QString& name, NewCurve newCurve)
{
    attach();
    return registerCurveInFile(name, newCurve);
}

/// Reopens a connection that was closed meanwhile. Before a new name it makes the pauses of two
/// further look-ups, which give a newly cleared store time to settle.
int CurrentFile::registerCurveInFile(const QString& name, NewCurve newCurve)
{
    if (!m_memory.isCurrentOpen() && !reopen()) {
        return -1;
    }
    int curveId = findCurve(name);
    for (int pause = 0; curveId < 0 && newCurve == NewCurve::Pause &&
                        pause < storewaits::kRegisterPauses && !m_files.isClosedForExit();
         ++pause) {
        storeSleep(storewaits::kRegisterPause);
    }
    if (curveId < 0) {
        curveId = insertCurve(name);
    }
    if (curveId < 0) {
        return -1;
    }
    m_memory.curveNameMap.insert(curveId, name);
    m_extremes.addCurve(curveId);
    m_memory.loadedPath.clear(); // the names of a file loaded before may be others
    return curveId;
}

/// Looks a curve up; -1 if it is not there.
int CurrentFile::findCurve(const QString& name)
{
    const QSqlDatabase& db = *m_memory.currentDb;
    ManagedQuery query(db);
    if (!query.run(QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name})) {
        if (saysMissingTable(query.errorText())) {
            createBaseTables(db);
        }
    } else if (query.next()) {
        return query.value(0).toInt();
    }
    return -1;
}

int CurrentFile::insertCurve(const QString& name)
{
    const QString sql = QStringLiteral("INSERT INTO curve_info (name) VALUES (?)");
    const QSqlDatabase& db = *m_memory.currentDb;
    ManagedQuery query(db);
    if (query.run(sql, {name})) {
        return query.lastInsertId().toInt();
    }
    const QString error = query.errorText();
    if (!saysMissingTable(error) && !error.contains(QLatin1String("SQL logic error"))) {
        return -1;
    }
    createBaseTables(db);
    if (query.run(sql, {name})) {
        return query.lastInsertId().toInt();
    }
    qCritical() << "重新初始化后仍无法注册曲线:" << query.errorText();
    return -1;
}

bool CurrentFile::store(const Reading& reading, const TimeSlice& slice,
                        const KeptInserts::OpenTable& openTable)
{
    return noteOutcome(m_inserts.store(*m_memory.currentDb, reading, slice, openTable));
}

bool CurrentFile::storeWithExtremes(const Reading& reading, const TimeSlice& slice,
                                    const KeptInserts::OpenTable& openTable,
                                    const ReadingTransaction::WidenExtremes& widen)
{
    return noteOutcome(m_transaction.store(*m_memory.currentDb, reading, slice, openTable,
                                           m_memory.metadataMap, widen));
}

bool CurrentFile::noteOutcome(const KeptInserts::Outcome& outcome)
{
    if (outcome.metReadOnly) {
        m_attachment.noteReadOnly();
    }
    return outcome.isStored;
}

bool CurrentFile::saveExtremes()
{
    return m_memory.isCurrentOpen() && m_extremes.save(*m_memory.currentDb, m_memory.metadataMap);
}

void CurrentFile::forgetCurve(int curveId)
{
    m_inserts.drop(curveId);
    m_extremes.forgetRow(curveId);
    m_attachment.doubt();
}

} // namespace scn
