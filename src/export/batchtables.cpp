#include "export/batchtables.h"

#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/datadirectory.h"
#include "storage/managedquery.h"
#include "storage/shardnaming.h"

#include <QDate>
#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace scn {

namespace {

QDate localDate(qint64 timestamp)
{
    return QDateTime::fromMSecsSinceEpoch(timestamp).date();
}

/// Day files that may contain part of a range, oldest first.
QStringList filesOfRange(const CurveDataDB& store, const QList<int>& ids, qint64 start, qint64 end)
{
    if (store.isReadOnly()) {
        return dayFilesBetween(store.dataDirectory(), start, end);
    }
    QSet<QString> files;
    const QDate last = localDate(end);
    for (QDate date = localDate(start); date <= last; date = date.addDays(1)) {
        const QString path = store.dbPathForDate(date.toString(QStringLiteral("yyyyMMdd")));
        if (QFileInfo::exists(path)) {
            files.insert(path);
            continue;
        }
        for (const int id : ids) {
            qDebug() << "[获取分片表] 曲线" << id << "数据库不存在：" << path;
        }
    }
    for (const qint64 time : {start, end}) {
        const QString path = store.dbPathForTime(time);
        if (QFileInfo::exists(path)) {
            files.insert(path);
        }
    }
    QStringList sorted = files.values();
    sorted.sort();
    return sorted;
}

/// A file's entry for a curve's name.
struct FileCurve
{
    int id = -1; ///< -1: the file does not know the curve.
    bool failed = false;
};

FileCurve curveInFile(const QSqlDatabase& db, const QString& name)
{
    ManagedQuery query(db);
    if (!query.run(QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name})) {
        qWarning() << "查询分片元数据失败:" << query.errorText();
        // A file without a catalogue holds no curve; any other failure may hide one.
        return {-1, !query.errorText().contains(QLatin1String("no such table"))};
    }
    const int id = query.next() ? query.value(0).toInt() : -1;
    return {id, !query.isUsable() || !query.errorText().isEmpty()};
}

/// Appends the tables of one curve in one file to `tables`; false if the file cannot be read.
bool appendTablesOfFile(CurveDataDB& store, const QSharedPointer<QSqlDatabase>& db,
                        const BatchTable& like, int curveId, const QString& curveName, qint64 start,
                        qint64 end, QVector<BatchTable>& tables)
{
    FileCurve curve = curveInFile(*db, curveName);
    QVector<DBBatchInfo> batches;
    if (curve.id >= 0) {
        batches = store.queryBatches(curve.id, start, end, db, &curve.failed);
    }
    if (batches.isEmpty() && !curve.failed) {
        qDebug() << "[获取分片表] 曲线" << curveId << "数据库" << like.path
                 << "中无匹配的分片表（时间范围/曲线ID不匹配）";
    }
    for (const DBBatchInfo& batch : qAsConst(batches)) {
        tables.append({like.path, like.file, batch.tableName, curve.id});
    }
    return !curve.failed;
}

/// Without the id, the stamps in the names sort by time: another file may know the curve by another
/// id.
bool isEarlier(const BatchTable& left, const BatchTable& right)
{
    const auto stamp = [](const BatchTable& table) {
        return table.name.midRef(tablePrefix(table.fileCurveId).length());
    };
    const int order = stamp(left).compare(stamp(right));
    return order != 0 ? order < 0 : left.path < right.path;
}

} // namespace

BatchTables collectTables(CurveDataDB& store, const QMap<int, QString>& curves, qint64 start,
                          qint64 end, const std::atomic<bool>& stop)
{
    BatchTables found;
    const QStringList paths = filesOfRange(store, curves.keys(), start, end);
    for (auto curve = curves.cbegin(); curve != curves.cend(); ++curve) {
        found.byCurve[curve.key()];
        if (paths.isEmpty()) {
            qWarning() << "[获取分片表] 曲线" << curve.key() << "时间范围内无有效数据库文件";
        }
    }
    for (const QString& path : paths) {
        if (found.failed || stop) {
            break;
        }
        const FileIdentity file = fileIdentity(path);
        QSharedPointer<QSqlDatabase> db = store.openDb(path);
        for (auto curve = curves.cbegin(); curve != curves.cend() && !found.failed && !stop;
             ++curve) {
            if (!db) {
                qWarning() << "[获取分片表] 曲线" << curve.key() << "打开数据库" << path
                           << "失败（openDb返回空）";
                found.failed = true;
            } else if (!db->isOpen()) {
                qWarning() << "[获取分片表] 曲线" << curve.key() << "数据库" << path << "未打开";
                found.failed = true;
            } else if (!appendTablesOfFile(store, db, {path, file, {}, -1}, curve.key(), *curve,
                                           start, end, found.byCurve[curve.key()])) {
                found.failed = true;
            }
        }
        // If the file has gone or was replaced meanwhile, what was read is not the store's.
        found.failed = found.failed || fileIdentity(path) != file;
        db.reset();
        ConnectionPool::instance().releaseConnection(path);
    }
    for (QVector<BatchTable>& tables : found.byCurve) {
        std::sort(tables.begin(), tables.end(), isEarlier);
    }
    return found;
}

} // namespace scn
