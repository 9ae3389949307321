// Whether a long run slows down or grows: 60 curves, a reading of each every 100 ms, from the
// series to the day file, while a chart reads one of them every second.
//
//     bench_longrun [number of points]
//
// Compares the cost of the last points with that of the first. Hours lie between them, so each is a
// ratio to SQLite's C interface starting a file of its own at that moment: what else the machine
// does cancels out, what the run accumulates does not. The first points are taken from several
// runs, the last of which continues.

#include "alternatingrounds.h"
#include "rawappender.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/storeclock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr int kCurves = 60;
constexpr qint64 kSweepMs = 100;
constexpr int kRepeats = 7;
constexpr int kRounds = 98;
constexpr int kPointsPerRound = 200; // about one checkpoint
constexpr int kPointsPerSecond = 600;
constexpr int kWindow = (kRounds + 1) * kPointsPerRound;
constexpr qint64 kEarlyPoint = 10000;
constexpr qint64 kDefaultPoints = 10000000;
constexpr qint64 kMinPoints = (1 + kRepeats) * kWindow;
/// As many as fit into one day, less a second.
constexpr qint64 kMaxPoints = (86400000 / kSweepMs - 10) * kCurves;
constexpr double kCostLimit = 1.1;
constexpr double kGrowthLimitMb = 5.0;

qint64 g_now = 0;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "benchmark is wrong: %s\n", what);
    std::exit(1);
}

/// Resident memory of this process in megabytes (10^6 bytes).
double residentMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("VmRSS:")) {
                return line.mid(6).trimmed().split(' ').first().toDouble() * 1024 / 1e6;
            }
        }
    }
    fail("there is no resident memory to be read");
}

/// Beside the program, which is on a real disk; the system's temporary directory may be in memory.
QString temporaryTemplate()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/longrun-XXXXXX");
}

/// The run. It starts at midnight, with the readings of the half hour before in its series.
class Run
{
public:
    Run()
        : m_midnight(QDateTime(QDate(2026, 1, 12), QTime(0, 0)).toMSecsSinceEpoch())
    {
        g_now = m_midnight;
        scn::setStoreClock([] { return g_now; });
        // So that the store does not pause for each curve.
        RawStore(pathOf(QStringLiteral("20260111"))).createDay(kCurves);
        RawStore(pathOf(QStringLiteral("20260112"))).createDay(kCurves);
        m_store = std::make_unique<CurveDataDB>(m_directory.path());
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            m_series.push_back(
                std::make_unique<CurveSeriesData>(rawCurveName(curveId), m_store.get()));
            if (m_series.back()->curveId() != curveId) {
                fail("a curve has not the number expected");
            }
        }
        fillMemory();
    }

    ~Run() { m_store->closeForExit(QDeadlineTimer(2000)); }

    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void append(int count)
    {
        for (int i = 0; i < count; ++i) {
            appendNext();
        }
    }

    qint64 pointCount() const { return m_points; }
    qint64 midnight() const { return m_midnight; }

    /// Resident memory just after the point kEarlyPoint.
    double earlyMb() const { return m_earlyMb; }

    /// Ends the program unless every reading of the run is in the day file and the newest of each
    /// series in memory.
    void requireAllThere()
    {
        m_store->flushAndDetach();
        RawStore file(pathOf(QStringLiteral("20260112")));
        qint64 rows = 0;
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            if (m_series[size_t(curveId - 1)]->count() != CurveSeriesData::kMaxRecentPoints) {
                fail("a series has not its full memory");
            }
            for (qint64 batch = m_midnight; batch <= g_now; batch += kRawBatchLengthMs) {
                rows += file.number("SELECT count(*) FROM " +
                                    rawTableName(curveId, batch).toStdString());
            }
        }
        if (rows != m_points) {
            fail("readings are missing in the day file");
        }
    }

private:
    QString pathOf(const QString& day) const
    {
        return m_directory.filePath(day + QStringLiteral(".db"));
    }

    /// Fills the series' memory to its full size: the newest readings and the block dropped at a
    /// time.
    void fillMemory()
    {
        constexpr int kPart = 1000;
        constexpr int kPoints = CurveSeriesData::kMaxRecentPoints + 2 * kPart;
        qint64 time = m_midnight - kPoints * kSweepMs;
        for (int from = 0; from < kPoints; from += kPart, time += kPart * kSweepMs) {
            QVector<QPointF> points;
            for (int i = 0; i < kPart; ++i) {
                points.append(QPointF(static_cast<double>(time + i * kSweepMs), i * 0.125));
            }
            for (const auto& series : m_series) {
                series->addPoints(points);
            }
        }
        malloc_trim(0); // memory freed so far must not serve as a reserve later
    }

    void appendNext()
    {
        const qint64 sweep = m_points / kCurves;
        CurveSeriesData& series = *m_series[size_t(m_points % kCurves)];
        g_now = m_midnight + sweep * kSweepMs;
        series.addPoint(static_cast<double>(g_now), static_cast<double>(sweep % 16000) * 0.125);
        if (++m_points % kPointsPerSecond == 0) {
            series.loadWindow(g_now - 60000, g_now, 10000, 0.0);
        }
        if (m_points == kEarlyPoint) {
            m_earlyMb = residentMb();
        }
    }

    const QTemporaryDir m_directory{temporaryTemplate()};
    qint64 m_midnight;
    std::unique_ptr<CurveDataDB> m_store;
    std::vector<std::unique_ptr<CurveSeriesData>> m_series;
    qint64 m_points = 0;
    double m_earlyMb = 0.0;
};

/// The cost of the run's next points, as a ratio to as many that start a file.
double costOfNextPoints(Run& run)
{
    const QTemporaryDir directory(temporaryTemplate());
    RawAppender baseline(directory.filePath(QStringLiteral("raw.sqlite")), kCurves, run.midnight());
    const qint64 first = run.pointCount() + 1;
    const AlternatingResult result = measureAlternating(
        kRounds, kPointsPerRound, [&run] { run.append(kPointsPerRound); },
        [&baseline] { baseline.appendPoints(kPointsPerRound); });
    std::printf(
        "points %lld to %lld: %.1f us each, baseline %.1f us, ratio %.3f (processor %.3f)\n",
        static_cast<long long>(first), static_cast<long long>(run.pointCount()),
        result.candidateNs / 1000, result.baselineNs / 1000, result.ratio, result.processorRatio);
    return result.ratio;
}

/// Appends up to `last` points and reports progress.
void goOnTo(Run& run, qint64 last)
{
    constexpr qint64 kReportEvery = 1000000;
    while (run.pointCount() < last) {
        const auto count = static_cast<int>(std::min(kReportEvery, last - run.pointCount()));
        QElapsedTimer timer;
        timer.start();
        run.append(count);
        std::printf("point %lld: %.1f us each, %.1f MB resident\n",
                    static_cast<long long>(run.pointCount()),
                    static_cast<double>(timer.nsecsElapsed()) / 1000 / count, residentMb());
    }
}

bool report(const char* what, double value, double limit)
{
    const bool within = value <= limit;
    std::printf("%s %.3f, limit %.1f: %s\n", what, value, limit, within ? "kept" : "ABOVE");
    return within;
}

/// Whether both limits are kept.
bool measure(qint64 points)
{
    std::vector<double> early;
    std::vector<double> late;
    for (int i = 1; i < kRepeats; ++i) {
        Run run;
        early.push_back(costOfNextPoints(run));
    }
    Run run;
    early.push_back(costOfNextPoints(run));
    goOnTo(run, points - kRepeats * kWindow);
    for (int i = 0; i < kRepeats; ++i) {
        late.push_back(costOfNextPoints(run));
    }
    const double lateMb = residentMb();
    run.requireAllThere();

    std::printf("resident: %.1f MB at point %lld, %.1f MB at point %lld\n", run.earlyMb(),
                static_cast<long long>(kEarlyPoint), lateMb, static_cast<long long>(points));
    const bool costKept = report("cost of a late point to an early one",
                                 medianOf(late) / medianOf(early), kCostLimit);
    const bool growthKept =
        report("growth of the resident memory in MB", lateMb - run.earlyMb(), kGrowthLimitMb);
    return costKept && growthKept;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // progress is watched as it runs
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const qint64 points = argc > 1 ? std::atoll(argv[1]) : kDefaultPoints;
    if (argc > 2 || points < kMinPoints || points > kMaxPoints) {
        std::fprintf(stderr, "usage: bench_longrun [number of points, %lld to %lld]\n",
                     static_cast<long long>(kMinPoints), static_cast<long long>(kMaxPoints));
        return 2;
    }
    return measure(points) ? 0 : 1;
}
