// The cost of reading stored points back, and of handing points in memory to a chart.

#include "alternatingrounds.h"
#include "rawday.h"
#include "rawstore.h"
#include "runbenchmarks.h"
#include "storage/connectionpool.h"
#include "storage/connectionsetup.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/storeclock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTemporaryDir>
#include <QVector>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr qint64 kHourMs = 3600000;

/// Noon of the store's current day; the files read are from the days before.
qint64 presentTime()
{
    static const qint64 time = QDateTime(QDate(2026, 3, 5), QTime(12, 0)).toMSecsSinceEpoch();
    return time;
}

qint64 midnightOf(int day)
{
    return QDateTime(QDate(2026, 3, day), QTime(0, 0)).toMSecsSinceEpoch();
}

/// Ends the program if a measurement did no work.
void require(bool condition, const char* what)
{
    if (condition) {
        return;
    }
    std::fprintf(stderr, "benchmark is wrong: %s\n", what);
    std::exit(1);
}

/// A store with one curve, number 1, in today's file.
class Store
{
public:
    Store()
        : m_directory(QCoreApplication::applicationDirPath() +
                      QStringLiteral("/readcurvedata-XXXXXX"))
    {
        RawStore(pathOf(5)).createDay(1);
        scn::setStoreClock(&presentTime);
    }

    QString path() const { return m_directory.path(); }
    QString pathOf(int day) const
    {
        return m_directory.filePath(QStringLiteral("2026030%1.db").arg(day));
    }

private:
    QTemporaryDir m_directory;
};

/// One batch of one curve with `points` points, `stepMs` apart.
void fillBatch(const QString& path, qint64 batchStart, int points, qint64 stepMs,
               int pageBytes = scn::kDayFilePageBytes)
{
    RawStore file(path, pageBytes);
    file.createDay(1);
    const QString table = rawTableName(1, batchStart);
    file.createBatchTable(1, batchStart, table);
    sqlite3_stmt* const insert = prepareRawInsert(file, table);
    insertRawPoints(insert, 1, points, batchStart, stepMs);
    sqlite3_finalize(insert);
}

void readMillionPoints(benchmark::State& state)
{
    const auto maxPoints = static_cast<int>(state.range(0));
    constexpr int kPoints = 1000000;
    const Store files;
    const qint64 start = midnightOf(1);
    fillBatch(files.pathOf(1), start, kPoints, 20);
    CurveDataDB store(files.path());
    const auto candidate = [&] {
        const QVector<QPointF> points =
            store.readCurveData(1, start, start + kRawBatchLengthMs, maxPoints);
        require(points.size() == (maxPoints > 0 ? maxPoints : kPoints), "points are missing");
    };
    // The baseline reads from pages of SQLite's own size.
    const QString baselineFile = files.path() + QStringLiteral("/baseline.sqlite");
    fillBatch(baselineFile, start, kPoints, 20, 4096);
    RawStore file(baselineFile);
    const std::string sql = "SELECT timestamp, value FROM \"" +
                            rawTableName(1, start).toStdString() +
                            "\" WHERE curve_id = ? AND timestamp BETWEEN ? AND ? "
                            "ORDER BY timestamp ASC";
    const auto baseline = [&] {
        sqlite3_stmt* const statement = file.prepare(sql);
        sqlite3_bind_int(statement, 1, 1);
        sqlite3_bind_int64(statement, 2, start);
        sqlite3_bind_int64(statement, 3, start + kRawBatchLengthMs);
        int rows = 0;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            benchmark::DoNotOptimize(sqlite3_column_int64(statement, 0));
            benchmark::DoNotOptimize(sqlite3_column_double(statement, 1));
            ++rows;
        }
        sqlite3_finalize(statement);
        require(rows == kPoints, "the baseline did not see all rows");
    };
    for (auto _ : state) {
        reportRatio(state, measureAlternating(9, kPoints, candidate, baseline), 1.7);
    }
}

void readHourOfManyCurves(benchmark::State& state)
{
    constexpr qint64 kStepMs = 10000;
    constexpr int kHourPoints = 360;
    constexpr int kReads = 50;
    const Store files;
    fillRawDay(files.pathOf(1), midnightOf(1), 600, kStepMs);
    fillRawDay(files.pathOf(2), midnightOf(2), 1, kStepMs);
    CurveDataDB store(files.path());
    const auto readDay = [&](int day) {
        // A different hour each time, in the fourth batch as well as the first.
        for (int i = 0; i < kReads; ++i) {
            const qint64 start = midnightOf(day) + (i * 7 % 23) * kHourMs;
            const auto points = store.readCurveData(1, start, start + kHourMs - 1, 10000);
            require(points.size() == kHourPoints, "not all points of the hour were read");
        }
    };
    for (auto _ : state) {
        reportRatio(state,
                    measureAlternating(
                        21, kReads, [&] { readDay(1); }, [&] { readDay(2); }),
                    1.2);
    }
}

void loadWindowFromMemory(benchmark::State& state)
{
    const auto maxPoints = static_cast<int>(state.range(0));
    constexpr int kPoints = CurveSeriesData::kMaxRecentPoints;
    constexpr int kLoads = 100;
    const Store files;
    CurveDataDB store(files.path());
    CurveSeriesData series(rawCurveName(1), &store);
    const qint64 start = midnightOf(5);
    QVector<QPointF> points;
    for (int i = 0; i < kPoints; ++i) {
        points.append(QPointF(static_cast<double>(start + i * 100), i * 0.25));
    }
    series.addPoints(points);
    double offset = 0.0;
    const auto candidate = [&] {
        for (int i = 0; i < kLoads; ++i) {
            offset += 0.5;
            series.loadWindow(start, start + kHourMs, maxPoints, offset);
            benchmark::DoNotOptimize(series.sample(0));
        }
        require(series.size() == size_t(maxPoints > 0 ? maxPoints : kPoints), "wrong size");
    };
    std::vector<QPointF> copy(kPoints);
    const auto baseline = [&] {
        for (int i = 0; i < kLoads; ++i) {
            offset += 0.5;
            const QPointF* const source = points.constData();
            for (size_t k = 0; k < copy.size(); ++k) {
                copy[k] = QPointF(source[k].x(), source[k].y() + offset);
            }
            benchmark::DoNotOptimize(copy.data());
            benchmark::ClobberMemory();
        }
    };
    for (auto _ : state) {
        reportRatio(state, measureAlternating(21, kLoads, candidate, baseline), 4.0);
    }
}

BENCHMARK(readMillionPoints)
    ->ArgName("maxPoints")
    ->Arg(0)
    ->Arg(10000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(readHourOfManyCurves)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(loadWindowFromMemory)
    ->ArgName("maxPoints")
    ->Arg(0)
    ->Arg(10000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const int result = runBenchmarks(argc, argv);
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return result;
}
