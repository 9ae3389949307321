#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/managedquery.h"
#include "support/daytables.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/standstillwatchdog.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

// Two to eight threads do anything the store and its pool can do, in random order, while the GUI
// thread clears the store and expires connections. The test looks for standstills, crashes and
// damaged files.

namespace {

constexpr int kOperations = 3000; // at least, and so many clears
constexpr int kClears = 3;
constexpr int kStandstillMs = 40000;
constexpr int kPastFiles = 34; // more than the pool keeps
constexpr int kNames = 3;
constexpr qint64 kExpiryMs = 43200001;
constexpr const char* kNoon = "2026-03-10 12:00:00.000";

QString one(const char* text)
{
    return QString::fromUtf8(text);
}

QString pastPath(CurveDataDB& store, int number)
{
    return store.dbPathForDate(QDate(2026, 1, 1).addDays(number).toString(one("yyyyMMdd")));
}

qint64 pastTime(int number)
{
    return QDateTime(QDate(2026, 1, 1).addDays(number), QTime(9, 0)).toMSecsSinceEpoch();
}

/// Creates the past days' files, or fills up existing ones. A file that stays in use is left alone.
void makePastFiles(CurveDataDB& store)
{
    for (int number = 0; number < kPastFiles; ++number) {
        const QString path = pastPath(store, number);
        const qint64 start = pastTime(number) - 3 * kHourMs;
        const QString table = DayFileWriter::tableName(1, start);
        QFile(path).open(QIODevice::Append);
        dayfile::execute(
            path,
            one("BEGIN IMMEDIATE;") +
                (daytables::baseStatements() << daytables::batchStatement(table)).join(u';') +
                QStringLiteral(
                    ";INSERT OR IGNORE INTO curve_info (name) VALUES ('curve 0');"
                    "INSERT OR IGNORE INTO batch_metadata (curve_id, batch_start, batch_end, "
                    "table_name) VALUES (1, %1, %1 + 21599999, '%2');"
                    "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 299) "
                    "INSERT OR IGNORE INTO %2 (curve_id, timestamp, value) "
                    "SELECT 1, %1 + i, i FROM n;COMMIT")
                    .arg(QString::number(start), table));
    }
}

/// One thread's work: an operation, chosen at random, at each call.
class Worker
{
public:
    Worker(CurveDataDB& store, quint32 seed)
        : m_store(store)
        , m_random(seed)
    {
    }

    void operator()()
    {
        const int kind = m_random.bounded(100);
        const int past = m_random.bounded(kPastFiles);
        const int id = 1 + m_random.bounded(kNames);
        const qint64 time = localTime(kNoon) - m_random.bounded(7200000);
        if (kind < 40) {
            m_store.appendPoint(id, time, m_random.generateDouble());
        } else if (kind < 45) {
            m_store.appendPoint(id, pastTime(past) + m_random.bounded(1000), 1.0);
        } else if (kind < 48) {
            m_store.appendPoints(id, {QPointF(static_cast<double>(time), 1.0),
                                      QPointF(static_cast<double>(pastTime(past)), 1.0)});
        } else if (kind < 62) {
            m_store.readCurveData(id, time - kHourMs, time, 100);
        } else if (kind < 68) {
            m_store.readCurveData(id, pastTime(past) - 4 * kHourMs, pastTime(past + 3), 1000);
        } else if (kind < 80) {
            readAsTheExportDoes(past);
        } else if (kind < 84) {
            m_store.flushAndDetach();
        } else if (kind < 87) {
            m_store.saveMetadata();
        } else if (kind < 90) {
            m_store.registerCurve(QStringLiteral("curve %1").arg(id - 1));
        } else if (kind < 93) {
            m_store.listBatchesInFile(id, 0, time, pastPath(m_store, past));
        } else if (kind < 95) {
            m_store.curveMetadata(id);
        } else if (kind < 96) {
            m_store.deleteCurveData(id);
        } else if (kind < 98) {
            ConnectionPool::instance().discardConnection(pastPath(m_store, past));
        } else if (kind < 99) {
            ConnectionPool::instance().evictOldestConnection();
        } else {
            ConnectionPool::instance().removeConnection(pastPath(m_store, past));
        }
    }

private:
    /// A cursor on the pool's connection, without the store's lock.
    void readAsTheExportDoes(int past)
    {
        const QString path = pastPath(m_store, past);
        {
            const auto db = m_store.openDb(path);
            if (!db || !db->isOpen()) {
                return;
            }
            ManagedQuery query(*db);
            query.setForwardOnly(true);
            const qint64 start = pastTime(past) - 3 * kHourMs;
            if (query.exec(QStringLiteral("SELECT timestamp, value FROM %1")
                               .arg(DayFileWriter::tableName(1, start)))) {
                while (query.fetchRows(64, [](const QSqlQuery& row) { row.value(1); }) == 64) {
                    QThread::yieldCurrentThread();
                }
            }
        }
        ConnectionPool::instance().releaseConnection(path);
    }

    CurveDataDB& m_store;
    QRandomGenerator m_random;
};

/// Two threads that wait for each other's lock.
int playStandstill()
{
    static QMutex first;
    static QMutex second;
    static std::atomic<int> ready{0};
    const auto lockBoth = [](QMutex& mine, QMutex& other) {
        mine.lock();
        ++ready;
        while (ready < 2) {
            QThread::yieldCurrentThread();
        }
        other.lock();
    };
    const StandstillWatchdog watchdog(500);
    std::thread a([&lockBoth] { lockBoth(first, second); });
    std::thread b([&lockBoth] { lockBoth(second, first); });
    a.join();
    b.join();
    return 0;
}

} // namespace

class TestStoreStress : public QObject
{
    Q_OBJECT

private slots:
    void watchdogTellsTheStacks();
    void anythingAtAnyTime_data();
    void anythingAtAnyTime();

private:
    struct Done
    {
        std::atomic<int> operations{0};
        int clears = 0;
    };

    static void stress(TestStore& store, int threads, quint32 seed, Done& done);

    const SkippedWaits m_waits;
};

void TestStoreStress::watchdogTellsTheStacks()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {testprogram::runningTest(), one("--stand-still")});
    QVERIFY(child.waitForFinished(kStandstillMs));
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    const QString errors = QString::fromUtf8(child.readAllStandardError());
    QVERIFY2(errors.contains(one("standstill for 500 ms")), qPrintable(errors));
    QVERIFY2(errors.count(one("\nthread ")) >= 4, qPrintable(errors)); // main, two, the watchdog
    QVERIFY2(errors.count(one("Mutex")) >= 2, qPrintable(errors));
}

void TestStoreStress::anythingAtAnyTime_data()
{
    QTest::addColumn<int>("threads");
    for (const int threads : {2, 4, 8}) {
        QTest::addRow("%d threads", threads) << threads;
    }
}

/// The crowd at work, while the store is cleared, its files age and past ones come back.
void TestStoreStress::stress(TestStore& store, int threads, quint32 seed, Done& done)
{
    const int runMs = qEnvironmentVariableIntValue("SCN_STRESS_MS");
    StandstillWatchdog watchdog(kStandstillMs);
    std::atomic<bool> stop{false};
    std::vector<std::thread> crowd;
    for (int thread = 0; thread < threads; ++thread) {
        crowd.emplace_back([&, work = Worker(*store.get(), seed + quint32(thread))]() mutable {
            while (!stop) {
                work();
                ++done.operations;
                watchdog.progress();
            }
        });
    }
    QRandomGenerator random(seed);
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < runMs || done.operations < kOperations || done.clears < kClears) {
        QTest::qWait(random.bounded(1, 20));
        const int kind = random.bounded(100);
        if (kind < 10) {
            advancePresent(kExpiryMs); // whatever nobody holds looks old for a moment
            QMetaObject::invokeMethod(&ConnectionPool::instance(), "cleanExpiredConnections");
            setPresent(localTime(kNoon));
        } else if (kind < 15 && cleared.count() == done.clears) {
            store->clearAll();
            ++done.clears;
        } else if (kind < 16) {
            makePastFiles(*store.get());
        }
    }
    stop = true;
    for (std::thread& thread : crowd) {
        thread.join();
    }
    QTRY_COMPARE_WITH_TIMEOUT(cleared.count(), done.clears, kStandstillMs);
}

void TestStoreStress::anythingAtAnyTime()
{
    QFETCH(int, threads);
    const quint32 seed = qEnvironmentVariableIsSet("SCN_SEED")
                             ? qgetenv("SCN_SEED").toUInt()
                             : QRandomGenerator::global()->generate();
    qInfo("SCN_SEED=%u", seed);
    setPresent(localTime(kNoon));
    auto log = std::make_unique<LogCapture>();
    TestStore store;
    makePastFiles(*store.get());
    QCOMPARE(dayfile::rows(pastPath(*store.get(), 0), one("SELECT count(*) FROM batch_metadata")),
             QStringList{one("1")});
    for (int name = 0; name < kNames; ++name) {
        store->registerCurve(QStringLiteral("curve %1").arg(name));
    }
    Done done;
    stress(store, threads, seed, done);
    const QStringList logged = log->lines();
    log.reset();
    qInfo("%d operations, %d clears", done.operations.load(), done.clears);
    for (const char* slip : {"QSql", "still in use", "duplicate connection", "QMutex", "QObject"}) {
        const QStringList lines = logged.filter(one(slip));
        QVERIFY2(lines.isEmpty(), qPrintable(lines.join(QLatin1Char('\n'))));
    }
    // The store is intact: a curve can be registered, a reading stored and read.
    log = std::make_unique<LogCapture>();
    const int id = store->registerCurve(one("last"));
    QVERIFY(id > 0);
    store->appendPoint(id, localTime(kNoon), 7.0);
    COMPARE_EXACTLY(store->readCurveData(id, localTime(kNoon), localTime(kNoon), 0),
                    QVector<QPointF>{QPointF(static_cast<double>(localTime(kNoon)), 7.0)});
    store->closeForExit(QDeadlineTimer(kStandstillMs));
    const QStringList files = QDir(store.directory()).entryList({one("*.db")}, QDir::Files);
    for (const QString& file : files) {
        QCOMPARE(dayfile::rows(store.directory() + QLatin1Char('/') + file,
                               one("PRAGMA integrity_check")),
                 QStringList{one("ok")});
    }
}

namespace {

int runOrPlay(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--stand-still") == 0) {
        const QCoreApplication application(argc, argv);
        return playStandstill();
    }
    return testprogram::run<TestStoreStress, QCoreApplication>(argc, argv);
}

} // namespace

SCN_TEST_RUN(&runOrPlay)
#include "test_storestress.moc"
