#include "storage/batchrows.h"

#include "storage/managedquery.h"
#include "storage/shardnaming.h"

#include <QDebug>

namespace scn {

namespace {

/// Rows fetched per hold of the connection's lock: enough to make the lock cheap, few enough to let
/// others in.
constexpr int kRowsPerBlock = 4096;

/// Reports why the query of a batch could not be prepared. Only then is the catalogue of tables
/// searched: it has no index, and a file of many curves has thousands of entries.
void warnOfUnreadableTable(const QSqlDatabase& database, const QString& table,
                           const QString& prepareError)
{
    ManagedQuery query(database);
    const QString sql =
        QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name=") +
        sqlLiteral(table);
    if (!query.exec(sql)) {
        qWarning() << "检查表存在性失败:" << table << "错误:" << query.errorText();
    } else if (!query.next()) {
        qWarning() << "分片表不存在:" << table;
    } else {
        qWarning() << "SQL准备失败:" << prepareError;
    }
}

} // namespace

ReadStep readBatchRows(const QSqlDatabase& database, const QString& table, const ReadRange& range,
                       std::optional<qint64>& from, QVector<QPointF>& points, ReadSlice& slice)
{
    ManagedQuery query(database);
    query.setForwardOnly(true);
    const QString sql =
        QStringLiteral("SELECT timestamp, value FROM %1 WHERE curve_id = ? AND timestamp "
                       "BETWEEN ? AND ? ORDER BY timestamp ASC")
            .arg(quotedName(table));
    const qint64 start = from.value_or(range.start);
    from.reset();
    if (!query.prepare(sql)) {
        warnOfUnreadableTable(database, table, query.errorText());
        return ReadStep::Failed;
    }
    if (!query.execWith({range.curveId, start, range.end})) {
        qWarning() << "读取分片" << table << "失败:" << query.errorText();
        return ReadStep::Failed;
    }
    SampleColumn block;
    bool atEnd = false;
    while (!atEnd) {
        if (!block.empty() && slice.isOver()) {
            from = block.back().timestamp + 1;
            return ReadStep::Unfinished;
        }
        block.clear();
        atEnd = query.fetchSamplesAtOnce(kRowsPerBlock, block) < kRowsPerBlock;
        for (const Sample& sample : block) {
            points.append(QPointF(static_cast<double>(sample.timestamp), sample.value));
        }
        slice.noteRows(static_cast<qint64>(block.size()));
    }
    // A table that cannot be read to its end returns what was read.
    if (!query.isUsable() || !query.errorText().isEmpty()) {
        qWarning() << "读取分片" << table << "失败:" << query.errorText();
        return ReadStep::Failed;
    }
    return ReadStep::Done;
}

} // namespace scn
