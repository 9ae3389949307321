#include "rawday.h"

#include "storage/connectionsetup.h"

#include <vector>

namespace {

constexpr int kBatches = 4;
constexpr qint64 kStretchMs = 600000;

/// All curves over six hours.
void fillBatches(RawStore& file, qint64 start, int curves, qint64 stepMs)
{
    file.execute("BEGIN");
    std::vector<sqlite3_stmt*> inserts;
    for (int curveId = 1; curveId <= curves; ++curveId) {
        const QString table = rawTableName(curveId, start);
        file.createBatchTable(curveId, start, table);
        inserts.push_back(prepareRawInsert(file, table));
    }
    for (qint64 time = start; time < start + kRawBatchLengthMs; time += kStretchMs) {
        int curveId = 0;
        for (sqlite3_stmt* insert : inserts) {
            insertRawPoints(insert, ++curveId, static_cast<int>(kStretchMs / stepMs), time, stepMs);
        }
    }
    for (sqlite3_stmt* insert : inserts) {
        sqlite3_finalize(insert);
    }
    file.execute("COMMIT");
}

} // namespace

sqlite3_stmt* prepareRawInsert(RawStore& file, const QString& table)
{
    return file.prepare("INSERT INTO " + table.toStdString() +
                        " (curve_id, timestamp, value) WITH RECURSIVE counter(i) AS (SELECT 0 "
                        "UNION ALL SELECT i + 1 FROM counter WHERE i < ?2 - 1) "
                        "SELECT ?1, ?3 + i * ?4, i * 0.01 FROM counter");
}

void insertRawPoints(sqlite3_stmt* insert, int curveId, int points, qint64 start, qint64 stepMs)
{
    sqlite3_bind_int(insert, 1, curveId);
    sqlite3_bind_int(insert, 2, points);
    sqlite3_bind_int64(insert, 3, start);
    sqlite3_bind_int64(insert, 4, stepMs);
    stepDone(insert);
}

void fillRawDay(const QString& path, qint64 midnight, int curves, qint64 stepMs)
{
    RawStore file(path, scn::kDayFilePageBytes);
    file.execute("PRAGMA synchronous = OFF");
    file.execute("PRAGMA journal_mode = OFF");
    file.execute("PRAGMA cache_size = -400000"); // caches the pages that grow together
    file.createDay(curves);
    for (int batch = 0; batch < kBatches; ++batch) {
        fillBatches(file, midnight + batch * kRawBatchLengthMs, curves, stepMs);
    }
}
