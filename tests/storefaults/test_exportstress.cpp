#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "support/logcapture.h"
#include "support/standstillwatchdog.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QDir>
#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

// Exports beside everything a running program does: a writer, reloading charts, the sweep of idle
// connections, evictions. Every export is compared byte for byte.

namespace {

constexpr int kRunMs = 3000;
constexpr int kStandstillMs = 60000;
constexpr int kPastFiles = 34; // more than the pool keeps
constexpr int kExports = 4;    // at least
constexpr int kCurves = 3;
constexpr int kRowsADay = 60;
constexpr const char* kEarly = "2026-03-10 00:05:00.000";
constexpr const char* kLate = "2026-03-10 12:10:00.000"; // later than what was used early is kept

int runMs()
{
    const int wanted = qEnvironmentVariableIntValue("SCN_STRESS_MS");
    return wanted > 0 ? wanted : kRunMs;
}

QString curveName(int number)
{
    return QStringLiteral("%1(V)").arg(101 + number);
}

/// Past days on which the curves have different ids every day, and a morning of the current one.
ExportOrder fill(ExportScene& scene)
{
    scene.know({{1, curveName(0)}, {2, curveName(1)}, {3, curveName(2)}});
    const QDate first(2026, 1, 12);
    for (int day = 0; day < kPastFiles; ++day) {
        const QDate date = first.addDays(day);
        const qint64 start = QDateTime(date, QTime(11, 59, 30)).toMSecsSinceEpoch();
        QVector<DayCurve> curves;
        for (int curve = 0; curve < kCurves; ++curve) {
            curves.append({1 + (curve + day) % kCurves, curveName(curve),
                           samplesFrom(start + curve, kRowsADay + curve * day)});
        }
        scene.addDay(date.toString(QStringLiteral("yyyyMMdd")).toLatin1().constData(), curves);
    }
    const qint64 today = localTime("2026-03-10 05:59:00.000");
    for (int i = 0; i < 200; ++i) {
        scene.append(1 + i % kCurves, today + i * 1000, i);
    }
    return scene.order({1, 2, 3}, QDateTime(first, QTime(0, 0)).toMSecsSinceEpoch(),
                       localTime("2026-03-10 10:00:00.000"));
}

/// Exports repeatedly to its own directory, with different block sizes.
class Exporter
{
public:
    Exporter(ExportOrder order, const QString& directory, const QVector<QByteArray>& expected)
        : m_order(std::move(order))
        , m_directory(directory)
        , m_expected(expected)
    {
        m_order.path = directory + QStringLiteral("/curves.csv");
    }

    void operator()()
    {
        constexpr int kBlocks[] = {1, 7, 64, 1000};
        CsvExportFromDBThread thread(m_order.store, m_order.ids, m_order.path, m_order.separator,
                                     m_order.header, m_order.start, m_order.end);
        thread.setRowsPerBlock(kBlocks[m_count % 4]);
        ExportResult result = ExportCancelled;
        QObject::connect(
            &thread, &CsvExportFromDBThread::exportFinished, &thread,
            [&result](ExportResult told) { result = told; }, Qt::DirectConnection);
        thread.startExport();
        thread.wait();
        if (result != ExportSuccess || partsIn(m_directory).values().toVector() != m_expected) {
            ++m_wrong;
        }
        QDir(m_directory).removeRecursively();
        ++m_count;
    }

    int count() const { return m_count; }
    int wrong() const { return m_wrong; }

private:
    ExportOrder m_order;
    QString m_directory;
    QVector<QByteArray> m_expected;
    std::atomic<int> m_count{0};
    std::atomic<int> m_wrong{0};
};

/// Threads that repeat one thing until the object is destroyed.
class Crowd
{
public:
    ~Crowd()
    {
        m_stop = true;
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    template <typename Work>
    void add(Work work)
    {
        m_threads.emplace_back([this, work]() mutable {
            while (!m_stop) {
                work();
            }
        });
    }

private:
    std::atomic<bool> m_stop{false};
    std::vector<std::thread> m_threads;
};

} // namespace

class TestExportStress : public QObject
{
    Q_OBJECT

private slots:
    void exportsBesideARunningProgram();

private:
    const SkippedWaits m_waits;
};

void TestExportStress::exportsBesideARunningProgram()
{
    ExportScene scene;
    const ExportOrder order = fill(scene);
    const QVector<QByteArray> expected = scene.expectedParts(order);
    QVERIFY(expected.first().count('\n') > kPastFiles * kRowsADay);
    CurveDataDB* store = scene.store().get();
    const StandstillWatchdog watchdog(kStandstillMs);
    Exporter first(order, scene.outputDirectory() + text("/first"), expected);
    Exporter second(order, scene.outputDirectory() + text("/second"), expected);
    const auto exports = [&] { return first.count() + second.count(); };
    std::atomic<int> written{0};
    std::atomic<int> wrongReads{0};
    {
        const LogCapture log;
        const int stored = store->readCurveData(1, order.start, order.end, 0).size();
        Crowd crowd;
        crowd.add([&first] { first(); });
        crowd.add([&second] { second(); });
        crowd.add([&] {
            const int number = ++written;
            store->appendPoint(1 + number % kCurves, order.end + 1 + number, number);
        });
        crowd.add([&] {
            const int points = store->readCurveData(1, order.start, order.end, 0).size();
            wrongReads += points == stored ? 0 : 1;
        });
        crowd.add([] {
            ConnectionPool::instance().evictOldestConnection();
            QThread::msleep(5);
        });
        QElapsedTimer clock;
        clock.start();
        for (int sweep = 0; clock.elapsed() < runMs() || exports() < kExports; ++sweep) {
            setPresent(localTime(sweep % 2 == 0 ? kLate : kEarly));
            QMetaObject::invokeMethod(&ConnectionPool::instance(), "cleanExpiredConnections",
                                      Qt::DirectConnection);
            QTest::qWait(5);
        }
    }
    QCOMPARE(first.wrong() + second.wrong(), 0);
    QCOMPARE(wrongReads.load(), 0);
    QVERIFY(written > 100);
}

SCN_TEST(TestExportStress, QCoreApplication)
#include "test_exportstress.moc"
