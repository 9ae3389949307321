// The cost of storing one reading, against SQLite's C interface making a commit for the row and one
// for the extremes on the same tables in pages of 4096 bytes, with statements prepared once; that of
// a reading of an earlier day, against the same; and what a reading writes to the disk.

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

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>

namespace {

constexpr int kRounds = 15;
constexpr int kPointsPerRound = 2400;
constexpr double kLimit = 0.7;
constexpr double kLateLimit = 2.0;
constexpr double kWrittenLimitKb = 7.0;

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

    QString filePath(const QString& name) const { return m_directory.filePath(name); }

    void append(Readings& readings, int count)
    {
        for (int i = 0; i < count; ++i) {
            readings.next();
            m_store->appendPoint(readings.curveId(), readings.time(), readings.value());
        }
    }

private:
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};

/// Readings of yesterday, whose file does not exist at first.
void appendLatePoint(benchmark::State& state, int curves)
{
    setZone(true);
    const qint64 today = alignToBatchStart(QDateTime::currentMSecsSinceEpoch());
    const qint64 yesterday = alignToBatchStart(today - kDayLengthMs);
    DayStore late(curves);
    RawAppender baseline(late.filePath(QStringLiteral("baseline.sqlite")), curves, today);
    Readings readings(curves, yesterday);
    const auto appendLate = [&] { late.append(readings, kPointsPerRound); };
    const auto baselineMany = [&] { baseline.appendPoints(kPointsPerRound); };
    for (auto _ : state) {
        reportRatio(state, measureAlternating(kRounds, kPointsPerRound, appendLate, baselineMany),
                    kLateLimit);
    }
    const QString file = late.filePath(dateKeyForTime(yesterday) + QStringLiteral(".db"));
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

/// What this process has written so far, in bytes: what it made the system write to disks, or what
/// it asked it to write if that is more.
qint64 bytesWritten()
{
    std::ifstream file("/proc/self/io");
    std::string key;
    qint64 value = 0;
    qint64 most = 0;
    while (file >> key >> value) {
        if (key == "write_bytes:" || key == "wchar:") {
            most = std::max(most, value);
        }
    }
    return most;
}

/// The bytes that a reading costs the disk, checkpoints included, once the tables have grown to
/// several pages.
void writtenPerReading(benchmark::State& state, int curves)
{
    constexpr int kReadingsBefore = 60000;
    constexpr int kReadings = 120000;
    constexpr double kBytesPerKb = 1024.0;
    setZone(true);
    DayStore store(curves);
    Readings readings(curves, alignToBatchStart(QDateTime::currentMSecsSinceEpoch()));
    for (auto _ : state) {
        store.append(readings, kReadingsBefore);
        const qint64 before = bytesWritten();
        store.append(readings, kReadings);
        const auto written = static_cast<double>(bytesWritten() - before);
        reportKilobytes(state, written / kReadings / kBytesPerKb, kWrittenLimitKb);
    }
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
    for (const int curves : {1, 60, 600}) {
        const std::string name = "writtenPerReading/curves:" + std::to_string(curves);
        benchmark::RegisterBenchmark(
            name.c_str(), [=](benchmark::State& state) { writtenPerReading(state, curves); })
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    const int result = runBenchmarks(argc, argv);
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return result;
}
