// What a follower costs the writer of a day file: the same readings stored in a file that is followed into a
// database and, in turns, in one that nobody follows.

#include "alternatingrounds.h"
#include "followerprocess.h"
#include "rawstore.h"
#include "readings.h"
#include "runbenchmarks.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/shardnaming.h"
#include "support/postgresserver.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QTest>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr int kRounds = 61;
constexpr int kReadingsPerRound = 2400;
constexpr double kLimit = 1.05;
constexpr int kPatienceMs = 60000;

/// A store of its own, with readings that go on where the last ones ended.
class Day
{
public:
    Day(const QString& directory, int curves)
        : m_store(directory)
        , m_readings(curves, alignToBatchStart(QDateTime::currentMSecsSinceEpoch()))
    {
        for (int curve = 1; curve <= curves; ++curve) {
            m_store.registerCurveAtOnce(rawCurveName(curve));
        }
    }

    void append()
    {
        for (int i = 0; i < kReadingsPerRound; ++i) {
            m_readings.next();
            m_store.appendPoint(m_readings.curveId(), m_readings.time(), m_readings.value());
        }
    }

private:
    CurveDataDB m_store;
    Readings m_readings;
};

void followed(benchmark::State& state, int curves)
{
    qputenv("TZ", ":/etc/localtime");
    tzset();
    const QTemporaryDir directory(QCoreApplication::applicationDirPath() +
                                  QStringLiteral("/forward-XXXXXX"));
    PostgresServer server;
    Day day(directory.filePath(QStringLiteral("followed/MY1_Data")), curves);
    Day alone(directory.filePath(QStringLiteral("alone/MY2_Data")), curves);
    const FollowerProcess follower(
        {directory.filePath(QStringLiteral("followed")), QStringLiteral("--to"), server.address()});
    for (auto _ : state) {
        reportRatio(
            state,
            measureAlternating(
                kRounds, kReadingsPerRound, [&day] { day.append(); }, [&alone] { alone.append(); }),
            kLimit);
    }
    const int written = (kRounds + 1) * kReadingsPerRound;
    const auto forwarded = [&server] {
        return server.psql(QStringLiteral("SELECT count(*) FROM reading")).toInt();
    };
    if (!QTest::qWaitFor([&] { return forwarded() == written; }, kPatienceMs)) {
        std::fprintf(stderr, "benchmark is wrong: %d of %d readings were forwarded\n", forwarded(),
                     written);
        std::exit(1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    for (const int curves : {1, 60}) {
        benchmark::RegisterBenchmark(
            ("appendPointFollowed/curves:" + std::to_string(curves)).c_str(),
            [=](benchmark::State& state) { followed(state, curves); })
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    const int result = runBenchmarks(argc, argv);
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return result;
}
