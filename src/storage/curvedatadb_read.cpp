#include "storage/curvedatadb.h"

#include "storage/connectionpool.h"
#include "storage/lockpatience.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/windowread.h"

#include <QDate>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>

#include <algorithm>

using namespace scn;

namespace {

/// Looking through fewer rows takes no time to speak of.
constexpr qint64 kManyRows = 5000;

/// Files that one load of a chart keeps open: a process has a thousand or so.
constexpr int kMostHeldFiles = 400;

/// Ten years: within such a range every day is looked up, and a missing file gets its log line.
constexpr quint64 kLongestCountMs = Q_UINT64_C(315576000000);

/// First moment of the oldest day with a file; now if there is none.
qint64 startOfOldestDay(const QString& directory)
{
    const QStringList files =
        QDir(directory).entryList({QStringLiteral("????????.db")}, QDir::Files, QDir::Name);
    for (const QString& file : files) {
        const QDate day = QDate::fromString(file.left(8), QStringLiteral("yyyyMMdd"));
        if (day.isValid()) {
            return day.startOfDay().toMSecsSinceEpoch();
        }
    }
    return storeNow();
}

/// Where counting days starts: at the start of the range or, for more than ten years, as many whole
/// days later as have no file. Otherwise a chart zoomed out further and further would block
/// everyone who needs the store.
qint64 firstTimeToLookAt(qint64 start, qint64 end, const QString& directory)
{
    const auto distance = [](qint64 from, qint64 to) {
        return static_cast<quint64>(to) - static_cast<quint64>(from);
    };
    const qint64 last = std::min(end, storeNow());
    if (start > last || distance(start, last) <= kLongestCountMs) {
        return start;
    }
    const qint64 first = std::min(last, startOfOldestDay(directory));
    if (first <= start) {
        return start;
    }
    return first - static_cast<qint64>(distance(start, first) % static_cast<quint64>(kDayLengthMs));
}

/// Keys of the days whose files a read opens, oldest first. Days are counted from the start of the
/// range, so a range shorter than a day that crosses midnight has only the first day. All future
/// times have today's key, so the count ends with the first of them.
QStringList dateKeysOfRange(qint64 start, qint64 end, const QString& directory)
{
    const qint64 now = storeNow();
    QStringList keys;
    qint64 time = firstTimeToLookAt(start, end, directory);
    while (time <= end) {
        const QString key = dateKeyForTime(time);
        if (keys.isEmpty() || keys.constLast() != key) {
            keys.append(key);
        }
        const quint64 left = static_cast<quint64>(end) - static_cast<quint64>(time);
        if (time > now || left < static_cast<quint64>(kDayLengthMs)) {
            break;
        }
        time += kDayLengthMs;
    }
    return keys;
}

/// Adds the points of one day file. False if not everything in the file could be read.
bool readFile(CurveDataDB& store, const QString& path, WindowRead& read)
{
    if (!QFileInfo::exists(path)) {
        qDebug() << "数据库文件不存在:" << path;
        return true;
    }
    QSharedPointer<QSqlDatabase> db = store.openDb(path);
    if (!db || !db->isOpen()) {
        qWarning() << "无法打开数据库:" << path;
        return false;
    }
    bool failed = false;
    const ReadRange& range = read.range();
    const QVector<DBBatchInfo> batches =
        store.queryBatches(range.curveId, range.start, range.end, db, &failed);
    if (batches.isEmpty()) {
        qDebug() << "在数据库" << path << "中未找到匹配的分片";
    }
    for (const DBBatchInfo& batch : batches) {
        failed = !read.addTable(path, db, batch.tableName) || failed;
    }
    db.reset();
    ConnectionPool::instance().releaseConnection(path);
    return !failed;
}

} // namespace

QVector<QPointF> CurveDataDB::readCurveData(int curveId, qint64 start, qint64 end, int maxPoints)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!m_curveNameMap.contains(curveId)) {
        qWarning() << "曲线ID" << curveId << "不存在";
        return {};
    }
    const ReadRange range{curveId, start, end, maxPoints};
    const auto points = readWindow(WindowRead(range, &m_rowOrders));
    return points ? *points : readWindow(WindowRead(range, nullptr)).value_or(QVector<QPointF>());
}

/// The points of a read that has just begun; nothing if it has to be done row by row.
std::optional<QVector<QPointF>> CurveDataDB::readWindow(WindowRead read)
{
    const QStringList keys = dateKeysOfRange(read.range().start, read.range().end, m_dataDir);
    for (const QString& key : keys) {
        if (!readFile(*this, dbPathForDate(key), read)) {
            m_memory.changes.noteDoubt();
        }
    }
    return read.points();
}

bool CurveDataDB::lookThrough(int curveId, qint64 start, qint64 end, qint64& from,
                              QDeadlineTimer deadline, HeldFiles& files)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    const QStringList keys = dateKeysOfRange(from, end, m_dataDir);
    for (const QString& key : keys) {
        const QString path = dbPathForDate(key);
        // What cannot be opened is left to the read, which reports it.
        const bool isThere = QFileInfo(path).isFile();
        const QSharedPointer<QSqlDatabase> db = isThere ? openDb(path) : nullptr;
        if (db && files.size() < kMostHeldFiles) {
            files.insert(path, db);
        }
        const QVector<DBBatchInfo> batches =
            db ? queryBatches(curveId, start, end, db) : QVector<DBBatchInfo>();
        for (const DBBatchInfo& batch : batches) {
            const qint64 before = m_rowOrders.rowsLookedAt();
            m_rowOrders.update(path, *db, batch.tableName, curveId);
            if (m_rowOrders.rowsLookedAt() - before > kManyRows && deadline.hasExpired()) {
                return false;
            }
        }
        const quint64 left = static_cast<quint64>(end) - static_cast<quint64>(from);
        from = left < static_cast<quint64>(kDayLengthMs) ? end : from + kDayLengthMs;
    }
    return true;
}

StoredState CurveDataDB::storedState(int curveId)
{
    const QMutexLocker locker(&m_mutex);
    return m_memory.changes.stateOf(curveId, m_today.todayKey());
}

QVector<DBBatchInfo> CurveDataDB::queryBatches(int curveId, qint64 start, qint64 end,
                                               const QSharedPointer<QSqlDatabase>& db, bool* failed)
{
    const QMutexLocker locker(&m_mutex);
    const auto noteFailure = [failed](bool hasFailed) {
        if (failed) {
            *failed = *failed || hasFailed;
        }
    };
    if (!pingConnection(db)) {
        qWarning() << "外部数据库连接无效";
        noteFailure(true);
        return {};
    }
    ManagedQuery query(*db);
    query.setForwardOnly(true);
    const QString sql = QStringLiteral(
        "SELECT curve_id, batch_start, batch_end, table_name FROM batch_metadata WHERE curve_id = "
        "? "
        "AND ( (batch_start BETWEEN ? AND ?) OR (batch_end BETWEEN ? AND ?) OR (batch_start <= ? "
        "AND batch_end >= ?) )");
    if (!query.run(sql, {curveId, start, end, start, end, start, end})) {
        qWarning() << "查询分片元数据失败:" << query.errorText();
        noteFailure(!query.errorText().contains(QLatin1String("no such table")));
        return {};
    }
    // A reused id may find the tables of the curve that had it before.
    const QString prefix = tablePrefix(curveId);
    QVector<DBBatchInfo> batches;
    while (query.next()) {
        const DBBatchInfo batch{query.value(1).toLongLong(), query.value(2).toLongLong(),
                                query.value(3).toString()};
        if (batch.tableName.startsWith(prefix)) {
            batches.append(batch);
        }
    }
    noteFailure(!query.isUsable() || !query.errorText().isEmpty());
    return batches;
}

bool CurveDataDB::pingConnection(const QSharedPointer<QSqlDatabase>& db)
{
    const QMutexLocker locker(&m_mutex);
    if (!db || !db->isOpen()) {
        return false;
    }
    ManagedQuery query(*db);
    return query.exec(QStringLiteral("SELECT 1"));
}

QVector<DBBatchInfo> CurveDataDB::listBatchesInFile(int curveId, qint64 start, qint64 end,
                                                    const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    if (!QFileInfo::exists(path)) {
        return {};
    }
    QSharedPointer<QSqlDatabase> db = openDb(path);
    QVector<DBBatchInfo> batches;
    if (pingConnection(db)) {
        batches = queryBatches(curveId, start, end, db);
    } else {
        qWarning() << "数据库连接无效:" << path;
    }
    db.reset();
    ConnectionPool::instance().releaseConnection(path);
    return batches;
}

void CurveDataDB::loadBatchesForCurve(int curveId, qint64 start, qint64 end)
{
    const QMutexLocker locker(&m_mutex);
    const QVector<DBBatchInfo> batches = listBatchesInFile(curveId, start, end, m_currentDbPath);
    for (const DBBatchInfo& batch : batches) {
        m_knownTables[batch.tableName] = true;
    }
    m_batchLoadMode = true;
}
