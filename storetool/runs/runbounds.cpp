#include "storetool/runs/runbounds.h"

#include "storage/shardnaming.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/runfile.h"

#include <algorithm>

namespace scnstore {
namespace {

bool addFile(RunFile& file, RunBounds& bounds)
{
    RunFile::Catalogue catalogue;
    if (!file.readCatalogue(catalogue)) {
        return false;
    }
    for (const ListedTable& table : qAsConst(catalogue.tables)) {
        // Two look-ups in the index; one statement for both would read all of it.
        const QString sql = QStringLiteral("SELECT (SELECT min(timestamp) FROM %1 WHERE curve_id = "
                                           "?), (SELECT max(timestamp) FROM %1 WHERE curve_id = ?)")
                                .arg(quotedName(table.name));
        const auto widen = [&bounds](const QSqlQuery& row) {
            if (row.isNull(0)) {
                return;
            }
            const qint64 first = row.value(0).toLongLong();
            const qint64 last = row.value(1).toLongLong();
            const bool isFirst = !bounds.hasReadings();
            bounds = {isFirst ? first : std::min(bounds.first, first),
                      isFirst ? last : std::max(bounds.last, last)};
        };
        if (!isInterrupted() && catalogue.existing.contains(table.name) &&
            !file.queryNumbers(sql, {table.curveId, table.curveId}, widen)) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<RunBounds> boundsOf(const StoredRun& run, BoundsFailure& failure)
{
    RunBounds bounds;
    for (const QString& path : run.dayFiles()) {
        RunFile file(path);
        if (!addFile(file, bounds)) {
            failure = {QStringLiteral("%1 cannot be read: %2. 'scn4070a-store check' tells more.")
                           .arg(path, file.failure()),
                       file.metLock()};
            return std::nullopt;
        }
    }
    return bounds;
}

} // namespace scnstore
