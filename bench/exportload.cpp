// What an export costs besides time: memory that grows with the rows, and the gaps it leaves in the
// GUI thread's work beside a chart that draws 600 readings a second.
//
//     bench_exportload

#include "export/csvexportfromdbthread.h"
#include "plot/ccurveplot.h"
#include "rawday.h"
#include "rawstore.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/shardnaming.h"

#include <QApplication>
#include <QColor>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr double kGrowthLimitMb = 5.0;
constexpr int kFewRows = 10000;
constexpr int kManyRows = 2000000;
constexpr int kMemoryCurves = 2;

constexpr qint64 kGapLimitMs = 100;
constexpr int kLiveCurves = 20;
constexpr int kShownCurves = 8;
constexpr int kHistoryRows = 100000;
constexpr int kTickMs = 100;
constexpr int kReadingsPerTick = 3; // of each curve: 600 a second
constexpr int kBeatMs = 10;
constexpr qint64 kWatchedMs = 8000;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "benchmark is wrong: %s\n", what);
    std::exit(1);
}

/// One batch of a curve: `rows` samples from `start` on, in one statement.
void fillBatch(RawStore& file, int curve, qint64 start, int rows, qint64 stepMs)
{
    const qint64 batch = alignToBatchStart(start);
    const QString table = rawTableName(curve, batch);
    file.createBatchTable(curve, batch, table);
    sqlite3_stmt* const insert = prepareRawInsert(file, table);
    insertRawPoints(insert, curve, rows, start, stepMs);
    sqlite3_finalize(insert);
}

/// Fills the batches of several curves with `rows` samples each, from `start` on.
void fillCurves(const QString& path, int curves, qint64 start, int rows, qint64 stepMs)
{
    RawStore file(path);
    file.execute("PRAGMA synchronous = OFF");
    file.execute("PRAGMA journal_mode = OFF");
    file.execute("PRAGMA cache_size = -400000"); // caches the pages that grow together
    file.createDay(curves);
    const qint64 end = start + rows * stepMs;
    for (int curve = 1; curve <= curves; ++curve) {
        for (qint64 from = start; from < end;) {
            const qint64 last = alignToBatchStart(from) + kRawBatchLengthMs - 1;
            const auto count = static_cast<int>((std::min(last, end - 1) - from) / stepMs + 1);
            fillBatch(file, curve, from, count, stepMs);
            from += count * stepMs;
        }
    }
}

std::unique_ptr<CsvExportFromDBThread> makeExport(CurveDataDB& store, const QString& directory,
                                                  qint64 start, qint64 end)
{
    return std::make_unique<CsvExportFromDBThread>(
        &store, store.curveNames().keys(), directory + QStringLiteral("/export.csv"),
        QStringLiteral(","), QMap<QString, QString>(), start, end);
}

/// Peak memory of this process in megabytes (10^6 bytes).
double peakMemoryMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        fail("the memory of this process cannot be told");
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return line.mid(6).simplified().split(' ').value(0).toDouble() * 1024e-6;
        }
    }
    fail("the memory of this process is not told");
}

qint64 pastMidnight()
{
    return QDateTime(QDate(2026, 3, 4), QTime(0, 0)).toMSecsSinceEpoch();
}

constexpr qint64 kMemoryStepMs = 40; // 2,000,000 of them take 22 hours

/// In a process of its own: exports this many rows and prints its peak memory.
int exportAndPrintPeak(const QString& directory, int rows)
{
    CurveDataDB store(directory);
    for (int curve = 1; curve <= kMemoryCurves; ++curve) {
        store.registerCurve(rawCurveName(curve));
    }
    const auto thread =
        makeExport(store, directory, pastMidnight(), pastMidnight() + (rows - 1) * kMemoryStepMs);
    ExportResult result = ExportNoData;
    QObject::connect(
        thread.get(), &CsvExportFromDBThread::exportFinished, thread.get(),
        [&result](ExportResult outcome) { result = outcome; }, Qt::DirectConnection);
    thread->startExport();
    thread->wait();
    if (result != ExportSuccess) {
        fail("the export did not succeed");
    }
    std::printf("%.3f\n", peakMemoryMb());
    store.closeForExit(QDeadlineTimer(2000));
    return 0;
}

double peakOfExport(const QString& directory, int rows)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {directory, QString::number(rows)});
    if (!child.waitForFinished(-1) || child.exitCode() != 0) {
        fail("the export in a process of its own failed");
    }
    return child.readAllStandardOutput().trimmed().toDouble();
}

bool memoryIsKept()
{
    const QTemporaryDir directory(QCoreApplication::applicationDirPath() +
                                  QStringLiteral("/exportload-XXXXXX"));
    fillCurves(directory.filePath(QStringLiteral("20260304.db")), kMemoryCurves, pastMidnight(),
               kManyRows, kMemoryStepMs);
    const double few = peakOfExport(directory.path(), kFewRows);
    const double many = peakOfExport(directory.path(), kManyRows);
    const bool kept = many - few <= kGrowthLimitMb;
    std::printf("export of %d rows against %d: %+.1f MB of %.1f, limit %.1f: %s\n", kManyRows,
                kFewRows, many - few, few, kGrowthLimitMb, kept ? "kept" : "ABOVE");
    return kept;
}

/// A chart of curves that grow by 600 readings a second, and a heartbeat of the GUI thread.
class LiveChart
{
public:
    LiveChart()
        : m_directory(QCoreApplication::applicationDirPath() + QStringLiteral("/exportload-XXXXXX"))
        , m_start(QDateTime::currentMSecsSinceEpoch() - kHistoryRows * kTickMs)
    {
        // One day file holds it all, so nothing lies before midnight.
        const qint64 midnight = QDate::currentDate().startOfDay().toMSecsSinceEpoch();
        m_start = std::max(m_start, midnight);
        const auto rows =
            static_cast<int>((QDateTime::currentMSecsSinceEpoch() - m_start) / kTickMs);
        fillCurves(m_directory.filePath(todayKey() + QStringLiteral(".db")), kLiveCurves, m_start,
                   rows, kTickMs);
        m_store = std::make_unique<CurveDataDB>(m_directory.path());
        for (int curve = 1; curve <= kLiveCurves; ++curve) {
            m_series.push_back(
                std::make_unique<CurveSeriesData>(rawCurveName(curve), m_store.get()));
        }
        for (int curve = 0; curve < kShownCurves; ++curve) {
            m_plot.addCurve(m_series[static_cast<std::size_t>(curve)].get(),
                            QColor::fromHsv(curve * 40, 200, 220), QString::number(curve));
        }
        m_plot.resize(900, 500);
        m_plot.show();
        QObject::connect(&m_ticker, &QTimer::timeout, &m_plot, [this] { storeReadings(); });
        QObject::connect(&m_heart, &QTimer::timeout, &m_plot,
                         [this] { m_largestGap = std::max(m_largestGap, m_sinceBeat.restart()); });
        m_ticker.setTimerType(Qt::PreciseTimer);
        m_heart.setTimerType(Qt::PreciseTimer);
    }

    ~LiveChart() { m_plot.clearCurves(); }

    /// The largest heartbeat gap while the chart runs for this long, optionally with exports back
    /// to back.
    qint64 largestGap(bool exporting)
    {
        QElapsedTimer clock;
        clock.start();
        m_largestGap = 0;
        m_sinceBeat.start();
        m_heart.start(kBeatMs);
        m_ticker.start(kTickMs);
        std::unique_ptr<CsvExportFromDBThread> thread;
        while (clock.elapsed() < kWatchedMs) {
            if (exporting && (!thread || thread->isFinished())) {
                thread = makeExport(*m_store, m_directory.path(), m_start,
                                    QDateTime::currentMSecsSinceEpoch());
                thread->startExport();
                ++m_exports;
            }
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, kBeatMs);
        }
        m_heart.stop();
        m_ticker.stop();
        return m_largestGap;
    }

    int exports() const { return m_exports; }

private:
    void storeReadings()
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        for (int reading = kReadingsPerTick; reading > 0; --reading) {
            for (const auto& series : m_series) {
                series->addPoint(static_cast<double>(now - reading),
                                 static_cast<double>(now % 1000));
            }
        }
        m_plot.onNewSample(now);
    }

    QTemporaryDir m_directory;
    qint64 m_start;
    std::unique_ptr<CurveDataDB> m_store;
    std::vector<std::unique_ptr<CurveSeriesData>> m_series;
    CCurvePlot m_plot;
    QTimer m_ticker;
    QTimer m_heart;
    QElapsedTimer m_sinceBeat;
    qint64 m_largestGap = 0;
    int m_exports = 0;
};

bool heartbeatIsKept()
{
    LiveChart chart;
    const qint64 quiet = chart.largestGap(false);
    const qint64 busy = chart.largestGap(true);
    const bool kept = busy < kGapLimitMs;
    std::printf("largest gap of a %d ms heartbeat during %d exports %lld ms, without %lld ms, "
                "limit %lld ms: %s\n",
                kBeatMs, chart.exports(), static_cast<long long>(busy),
                static_cast<long long>(quiet), static_cast<long long>(kGapLimitMs),
                kept ? "kept" : "ABOVE");
    return kept;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3) {
        return exportAndPrintPeak(arguments.at(1), arguments.at(2).toInt());
    }
    const bool memoryKept = memoryIsKept();
    const bool heartbeatKept = heartbeatIsKept();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return memoryKept && heartbeatKept ? 0 : 1;
}
