#include "storetool/runs/runsummary.h"

#include "storage/shardnaming.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/runfile.h"

#include <QFileInfo>

#include <algorithm>

namespace scnstore {
namespace {

void widen(CurveSummary& curve, const CurveSummary& part)
{
    if (part.readings == 0) {
        return;
    }
    const bool isFirst = curve.readings == 0;
    curve.first = isFirst ? part.first : std::min(curve.first, part.first);
    curve.last = isFirst ? part.last : std::max(curve.last, part.last);
    curve.lowest = isFirst ? part.lowest : std::min(curve.lowest, part.lowest);
    curve.highest = isFirst ? part.highest : std::max(curve.highest, part.highest);
    curve.readings += part.readings;
}

QString selectFor(SummaryDetail detail, const QString& table)
{
    // The values need every row, which are read faster than looked up by the index.
    return detail == SummaryDetail::Counts
               ? QStringLiteral(
                     "SELECT count(*), min(timestamp), max(timestamp), 0, 0 FROM %1 WHERE "
                     "curve_id = ?")
                     .arg(quotedName(table))
               : QStringLiteral("SELECT count(*), min(timestamp), max(timestamp), min(value), "
                                "max(value) FROM %1 NOT INDEXED WHERE curve_id = ?")
                     .arg(quotedName(table));
}

void addFile(const QString& path, SummaryDetail detail, RunSummary& summary)
{
    RunFile file(path);
    const qint64 bytes = QFileInfo(path).size() + QFileInfo(path + QStringLiteral("-wal")).size();
    summary.files.append({file.name(), bytes});
    summary.bytes += bytes;
    RunFile::Catalogue catalogue;
    bool succeeded = file.readCatalogue(catalogue);
    for (const QString& curve : qAsConst(catalogue.curves)) {
        summary.curves[curve];
    }
    for (const ListedTable& table : qAsConst(catalogue.tables)) {
        if (!succeeded || isInterrupted() || !catalogue.existing.contains(table.name) ||
            !catalogue.curves.contains(table.curveId)) {
            continue;
        }
        CurveSummary part;
        succeeded = file.queryNumbers(
            selectFor(detail, table.name), {table.curveId}, [&part](const QSqlQuery& row) {
                part = {row.value(0).toLongLong(), row.value(1).toLongLong(),
                        row.value(2).toLongLong(), row.value(3).toDouble(),
                        row.value(4).toDouble()};
            });
        widen(summary.curves[catalogue.curves.value(table.curveId)], part);
    }
    summary.metLock = summary.metLock || file.metLock();
    if (!succeeded && summary.damage.isEmpty()) {
        summary.damage = QStringLiteral("%1 cannot be read: %2").arg(path, file.failure());
    }
}

} // namespace

QDateTime RunSummary::startOf(const StoredRun& run) const
{
    return run.start.isValid() || readings == 0 ? run.start : QDateTime::fromMSecsSinceEpoch(first);
}

QDateTime RunSummary::end() const
{
    return readings > 0 ? QDateTime::fromMSecsSinceEpoch(last) : QDateTime();
}

RunSummary summaryOf(const StoredRun& run, SummaryDetail detail)
{
    RunSummary summary;
    for (const QString& path : run.dayFiles()) {
        addFile(path, detail, summary);
    }
    CurveSummary all;
    for (const CurveSummary& curve : qAsConst(summary.curves)) {
        widen(all, curve);
    }
    summary.readings = all.readings;
    summary.first = all.first;
    summary.last = all.last;
    return summary;
}

} // namespace scnstore
