#include "storage/batchtablewriter.h"

#include "storage/shardnaming.h"
#include "storage/statements.h"

#include <QDebug>

#include <algorithm>

namespace scn {

bool BatchTableWriter::ensure(const QSqlDatabase& db, int curveId, qint64 batchStart,
                              const QString& batchName)
{
    const QString table = makeTableName(curveId, batchName);
    {
        ManagedQuery query(db);
        if (query.run(QStringLiteral(
                          "SELECT 1 FROM batch_metadata WHERE curve_id = ? AND table_name = ?"),
                      {curveId, table}) &&
            query.next()) {
            m_known.insert(table, true);
            return true;
        }
    }
    if (!createBatchTable({batchStart, batchStart + kBatchSpanMs, table}, db, curveId)) {
        qWarning() << "创建分片表失败:" << table;
        return false;
    }
    m_known.insert(table, true);
    return true;
}

bool BatchTableWriter::createBatchTable(const DBBatchInfo& info, const QSqlDatabase& db,
                                        int curveId)
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
        m_today.noteFailure(query);
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
        std::any_of(m_list.cbegin(), m_list.cend(), [&info](const DBBatchInfo& batch) {
            return batch.tableName == info.tableName;
        });
    if (!listed) {
        m_list.append(info);
    }
    if (!query.exec(kCommit)) {
        qWarning() << "提交事务失败:" << query.errorText();
        m_today.noteFailure(query);
        query.exec(kRollback); // left open it would take every later write with it
        return false;
    }
    return true;
}

bool BatchTableWriter::insertBatchRow(const DBBatchInfo& info, const QSqlDatabase& db, int curveId)
{
    ManagedQuery query(db);
    if (!query.prepare(QStringLiteral("INSERT OR IGNORE INTO batch_metadata "
                                      "(curve_id, batch_start, batch_end, table_name) "
                                      "VALUES (?, ?, ?, ?)"))) {
        qWarning() << "准备分片元数据插入语句失败:" << query.errorText();
        m_today.noteFailure(query);
        return false;
    }
    if (!query.execWith({curveId, info.batchStart, info.batchEnd, info.tableName})) {
        qWarning() << "插入分片元数据失败:" << query.errorText();
        m_today.noteFailure(query);
        return false;
    }
    return true;
}

} // namespace scn
