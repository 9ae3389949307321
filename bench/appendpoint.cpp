// The cost of storing one reading, against the C interface of SQLite doing the same two commits on
// the same tables with statements that are prepared once.

#include "alternatingrounds.h"
#include "rawstore.h"

#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/shardnaming.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

constexpr int kRounds = 15;
constexpr int kPointsPerRound = 2400;
constexpr double kLimit = 1.6;

/// Readings of all curves in turn, a millisecond from one to the next.
class Readings
{
public:
    Readings(int curves, qint64 start)
        : m_curves(curves)
        , m_time(start)
    {
    }

    void next()
    {
        m_curveId = m_curveId % m_curves + 1;
        ++m_time;
        m_value = m_value < 1000.0 ? m_value + 0.125 : -1000.0;
    }
    int curveId() const { return m_curveId; }
    qint64 time() const { return m_time; }
    double value() const { return m_value; }

private:
    int m_curves;
    int m_curveId = 0;
    qint64 m_time;
    double m_value = 0.0;
};

/// Two commits a reading: the row, and the extremes of its curve.
class Yardstick
{
public:
    Yardstick(const QString& path, int curves, qint64 batchStart)
        : m_store(path)
        , m_readings(curves, batchStart)
        , m_bounds(static_cast<size_t>(curves))
    {
        m_store.execute("PRAGMA journal_mode = WAL");
        m_store.execute("PRAGMA synchronous = NORMAL");
        m_store.execute("PRAGMA foreign_keys = ON");
        m_store.createBaseTables();
        m_begin = m_store.prepare("BEGIN");
        m_commit = m_store.prepare("COMMIT");
        m_forget = m_store.prepare("DELETE FROM curve_metadata WHERE curve_id = ?");
        m_note = m_store.prepare("INSERT INTO curve_metadata (curve_id, min_time, max_time, "
                                 "min_value, max_value) VALUES (?, ?, ?, ?, ?)");
        for (int curveId = 1; curveId <= curves; ++curveId) {
            const QString table = rawTableName(curveId, batchStart);
            m_store.addCurve(curveId, QStringLiteral("%1(V)").arg(curveId));
            m_store.createBatchTable(curveId, batchStart, table);
            m_inserts.push_back(m_store.prepare("INSERT OR IGNORE INTO " + table.toStdString() +
                                                " (curve_id, timestamp, value) VALUES (?, ?, ?)"));
        }
    }

    ~Yardstick()
    {
        for (sqlite3_stmt* statement : m_inserts)
            sqlite3_finalize(statement);
        for (sqlite3_stmt* statement : {m_begin, m_commit, m_forget, m_note})
            sqlite3_finalize(statement);
    }

    Yardstick(const Yardstick&) = delete;
    Yardstick& operator=(const Yardstick&) = delete;

    void appendPoint()
    {
        m_readings.next();
        const auto index = static_cast<size_t>(m_readings.curveId() - 1);
        sqlite3_stmt* const insert = m_inserts[index];
        sqlite3_bind_int(insert, 1, m_readings.curveId());
        sqlite3_bind_int64(insert, 2, m_readings.time());
        sqlite3_bind_double(insert, 3, m_readings.value());
        stepDone(insert);

        DBCurveMetadata& bounds = m_bounds[index];
        bounds.minTime = std::min(bounds.minTime, m_readings.time());
        bounds.maxTime = std::max(bounds.maxTime, m_readings.time());
        bounds.minValue = std::min(bounds.minValue, m_readings.value());
        bounds.maxValue = std::max(bounds.maxValue, m_readings.value());
        stepDone(m_begin);
        sqlite3_bind_int(m_forget, 1, m_readings.curveId());
        stepDone(m_forget);
        sqlite3_bind_int(m_note, 1, m_readings.curveId());
        sqlite3_bind_int64(m_note, 2, bounds.minTime);
        sqlite3_bind_int64(m_note, 3, bounds.maxTime);
        sqlite3_bind_double(m_note, 4, bounds.minValue);
        sqlite3_bind_double(m_note, 5, bounds.maxValue);
        stepDone(m_note);
        stepDone(m_commit);
    }

private:
    RawStore m_store;
    Readings m_readings;
    std::vector<DBCurveMetadata> m_bounds;
    std::vector<sqlite3_stmt*> m_inserts;
    sqlite3_stmt* m_begin = nullptr;
    sqlite3_stmt* m_commit = nullptr;
    sqlite3_stmt* m_forget = nullptr;
    sqlite3_stmt* m_note = nullptr;
};

/// Today's file with its curves, so that the store finds them instead of pausing for each.
void prepareDayFile(const QString& path, int curves)
{
    RawStore file(path);
    file.createBaseTables();
    for (int curveId = 1; curveId <= curves; ++curveId)
        file.addCurve(curveId, QStringLiteral("%1(V)").arg(curveId));
}

/// Ends the program unless the file holds that many readings of all curves, and the extremes of
/// each.
void requireRows(const QString& path, int curves, qint64 batchStart, int expected)
{
    RawStore file(path);
    qint64 rows = 0;
    for (int curveId = 1; curveId <= curves; ++curveId)
        rows +=
            file.number("SELECT count(*) FROM " + rawTableName(curveId, batchStart).toStdString());
    const qint64 extremes =
        file.number("SELECT count(*) FROM curve_metadata WHERE max_time > min_time");
    if (rows == expected && extremes == curves)
        return;
    std::fprintf(stderr, "benchmark is wrong: %s holds %lld readings and %lld extremes\n",
                 qPrintable(path), static_cast<long long>(rows), static_cast<long long>(extremes));
    std::exit(1);
}

void setZone(bool set)
{
    if (set)
        qputenv("TZ", ":/etc/localtime");
    else
        qunsetenv("TZ");
    tzset();
}

/// `pointsPerRefresh` above 0: a chart looks at the store each time that many points have come, and
/// detaches it.
void appendPoint(benchmark::State& state, int curves, bool zoneSet, int pointsPerRefresh)
{
    setZone(zoneSet);
    const QTemporaryDir directory(QCoreApplication::applicationDirPath() +
                                  QStringLiteral("/appendpoint-XXXXXX"));
    const qint64 batchStart = alignToBatchStart(QDateTime::currentMSecsSinceEpoch());
    const QString dayFile = directory.filePath(todayKey() + QStringLiteral(".db"));
    const QString yardstickFile = directory.filePath(QStringLiteral("yardstick.sqlite"));
    prepareDayFile(dayFile, curves);
    CurveDataDB store(directory.path());
    for (int curveId = 1; curveId <= curves; ++curveId)
        store.registerCurve(QStringLiteral("%1(V)").arg(curveId));
    Yardstick yardstick(yardstickFile, curves, batchStart);
    Readings readings(curves, batchStart);
    int untilRefresh = pointsPerRefresh;
    const auto appendMany = [&] {
        for (int i = 0; i < kPointsPerRound; ++i) {
            readings.next();
            store.appendPoint(readings.curveId(), readings.time(), readings.value());
            if (pointsPerRefresh > 0 && --untilRefresh == 0) {
                store.flushAndDetach();
                untilRefresh = pointsPerRefresh;
            }
        }
    };
    const auto yardstickMany = [&] {
        for (int i = 0; i < kPointsPerRound; ++i)
            yardstick.appendPoint();
    };
    for (auto _ : state)
        reportRatio(state, measureAlternating(kRounds, kPointsPerRound, appendMany, yardstickMany),
                    kLimit);
    store.flushAndDetach();
    for (const QString& path : {dayFile, yardstickFile})
        requireRows(path, curves, batchStart, (kRounds + 1) * kPointsPerRound);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    for (const bool zoneSet : {true, false}) {
        for (const int curves : {1, 60, 600}) {
            const std::string name = "appendPoint/curves:" + std::to_string(curves) +
                                     (zoneSet ? "/TZ:set" : "/TZ:unset");
            benchmark::RegisterBenchmark(
                name.c_str(),
                [=](benchmark::State& state) { appendPoint(state, curves, zoneSet, 0); })
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (const int curves : {60, 600}) {
        const std::string name = "appendPointWithChart/curves:" + std::to_string(curves);
        benchmark::RegisterBenchmark(
            name.c_str(), [=](benchmark::State& state) { appendPoint(state, curves, true, 600); })
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return 0;
}
