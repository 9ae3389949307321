// The cost of storing one reading, against SQLite's C interface making the same two commits on the
// same tables with statements prepared once; and that of a reading of an earlier day, against one
// of today.

#include "alternatingrounds.h"
#include "rawappender.h"
#include "runbenchmarks.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/shardnaming.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

constexpr int kRounds = 15;
constexpr int kPointsPerRound = 2400;
constexpr double kLimit = 1.6;
constexpr double kLateLimit = 3.0;

/// Ends the program unless the file holds that many readings of all curves, and the extremes of
/// each.
void requireRows(const QString& path, int curves, qint64 batchStart, int expected)
{
    RawStore file(path);
    qint64 rows = 0;
    for (int curveId = 1; curveId <= curves; ++curveId) {
        rows +=
            file.number("SELECT count(*) FROM " + rawTableName(curveId, batchStart).toStdString());
    }
    const qint64 extremes =
        file.number("SELECT count(*) FROM curve_metadata WHERE max_time > min_time");
    if (rows == expected && extremes == curves) {
        return;
    }
    std::fprintf(stderr, "benchmark is wrong: %s holds %lld readings and %lld extremes\n",
                 qPrintable(path), static_cast<long long>(rows), static_cast<long long>(extremes));
    std::exit(1);
}

void registerCurves(CurveDataDB& store, int curves)
{
    for (int curveId = 1; curveId <= curves; ++curveId) {
        store.registerCurveAtOnce(rawCurveName(curveId));
    }
}

void setZone(bool set)
{
    if (set) {
        qputenv("TZ", ":/etc/localtime");
    } else {
        qunsetenv("TZ");
    }
    tzset();
}

/// `pointsPerRefresh` above 0: every so many points a chart reads the store and detaches the
/// writer.
void appendPoint(benchmark::State& state, int curves, bool zoneSet, int pointsPerRefresh)
{
    setZone(zoneSet);
    const QTemporaryDir directory(QCoreApplication::applicationDirPath() +
                                  QStringLiteral("/appendpoint-XXXXXX"));
    const qint64 batchStart = alignToBatchStart(QDateTime::currentMSecsSinceEpoch());
    const QString dayFile = directory.filePath(todayKey() + QStringLiteral(".db"));
    const QString baselineFile = directory.filePath(QStringLiteral("baseline.sqlite"));
    CurveDataDB store(directory.path());
    registerCurves(store, curves);
    RawAppender baseline(baselineFile, curves, batchStart);
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
    const auto baselineMany = [&] { baseline.appendPoints(kPointsPerRound); };
    for (auto _ : state) {
        reportRatio(state, measureAlternating(kRounds, kPointsPerRound, appendMany, baselineMany),
                    kLimit);
    }
    store.flushAndDetach();
    for (const QString& path : {dayFile, baselineFile}) {
        requireRows(path, curves, batchStart, (kRounds + 1) * kPointsPerRound);
    }
}

/// A store with this many curves in today's file.
class DayStore
{
public:
    explicit DayStore(int curves)
        : m_directory(QCoreApplication::applicationDirPath() +
                      QStringLiteral("/appendpoint-XXXXXX"))
    {
        m_store = std::make_unique<CurveDataDB>(m_directory.path());
        registerCurves(*m_store, curves);
    }

    QString path(const QString& dateKey) const
    {
        return m_directory.filePath(dateKey + QStringLiteral(".db"));
    }

    void append(Readings& readings)
    {
        for (int i = 0; i < kPointsPerRound; ++i) {
            readings.next();
            m_store->appendPoint(readings.curveId(), readings.time(), readings.value());
        }
    }

private:
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};

/// Readings of yesterday, whose file does not exist at first, against readings of today.
void appendLatePoint(benchmark::State& state, int curves)
{
    setZone(true);
    const qint64 today = alignToBatchStart(QDateTime::currentMSecsSinceEpoch());
    const qint64 yesterday = alignToBatchStart(today - kDayLengthMs);
    DayStore late(curves);
    DayStore live(curves);
    Readings lateReadings(curves, yesterday);
    Readings liveReadings(curves, today);
    const auto appendLate = [&] { late.append(lateReadings); };
    const auto appendLive = [&] { live.append(liveReadings); };
    for (auto _ : state) {
        reportRatio(state, measureAlternating(kRounds, kPointsPerRound, appendLate, appendLive),
                    kLateLimit);
    }
    const QString file = late.path(dateKeyForTime(yesterday));
    RawStore written(file);
    qint64 rows = 0;
    for (int curveId = 1; curveId <= curves; ++curveId) {
        rows += written.number("SELECT count(*) FROM " +
                               rawTableName(curveId, yesterday).toStdString());
    }
    if (rows == (kRounds + 1) * kPointsPerRound) {
        return;
    }
    std::fprintf(stderr, "benchmark is wrong: %s holds %lld readings\n", qPrintable(file),
                 static_cast<long long>(rows));
    std::exit(1);
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
    for (const int curves : {60, 600}) {
        const std::string name = "appendLatePoint/curves:" + std::to_string(curves);
        benchmark::RegisterBenchmark(
            name.c_str(), [=](benchmark::State& state) { appendLatePoint(state, curves); })
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    const int result = runBenchmarks(argc, argv);
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return result;
}
