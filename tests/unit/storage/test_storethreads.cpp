#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/managedquery.h"
#include "storage/shardnaming.h"
#include "support/logcapture.h"
#include "support/standstillwatchdog.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int kRounds = 300; // of the threads, at least
constexpr int kSweeps = 30;
constexpr int kClosings = 15;
constexpr int kClears = 5;
constexpr int kWatchdogMs = 60000;
constexpr int kWriters = 2;
constexpr int kReaders = 4;
constexpr int kPastFiles = 35; // more than the pool keeps

QString one(const char* text)
{
    return QString::fromLatin1(text);
}

/// Threads that repeat one thing until the object is destroyed.
class Crowd
{
public:
    ~Crowd() { stop(); }

    template <typename Work>
    void add(Work work)
    {
        m_threads.emplace_back([this, work]() mutable {
            while (!m_stop) {
                work();
                ++m_rounds;
            }
        });
    }
    void stop()
    {
        m_stop = true;
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }
    int rounds() const { return m_rounds; }

private:
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_rounds{0};
    std::vector<std::thread> m_threads;
};

/// Reads a table of a file through the pool, without the store's lock, as the export does.
void readFile(CurveDataDB* store, const QString& path, const QString& table)
{
    const auto db = store->openDb(path);
    if (!db || !db->isOpen()) {
        return;
    }
    {
        ManagedQuery query(*db);
        query.setForwardOnly(true);
        if (query.exec(QStringLiteral("SELECT timestamp, value FROM %1").arg(table))) {
            while (query.fetchRows(64, [](const QSqlQuery& row) { row.value(1).toDouble(); }) ==
                   64) {
                QThread::yieldCurrentThread();
            }
        }
    }
    ConnectionPool::instance().releaseConnection(path);
}

} // namespace

/// Several threads in one store and one pool at a time. The tests look for crashes, standstills and
/// lost readings.
class TestStoreThreads : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(localTime("2026-03-10 09:30:00.000")); }

    void writersReadersAndSweeps();
    void closingUnderReaders();
    void clearsUnderReadersAndWriters();

private:
    static QString pastPath(TestStore& store, int number);
    static void makePastFiles(TestStore& store);
    const SkippedWaits m_waits;
};

QString TestStoreThreads::pastPath(TestStore& store, int number)
{
    const QDate day = QDate(2026, 1, 1).addDays(number);
    return store->dbPathForDate(day.toString(QStringLiteral("yyyyMMdd")));
}

void TestStoreThreads::makePastFiles(TestStore& store)
{
    for (int number = 0; number < kPastFiles; ++number) {
        DayFileWriter writer(pastPath(store, number));
        writer.addCurve(1, one("101(V)"));
        writer.execute(one("CREATE TABLE past (timestamp INTEGER, value REAL)"));
        writer.execute(one("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                           "WHERE i < 500) INSERT INTO past SELECT i, i FROM n"));
    }
}

void TestStoreThreads::writersReadersAndSweeps()
{
    const StandstillWatchdog watchdog(kWatchdogMs);
    const LogCapture log;
    TestStore store;
    makePastFiles(store);
    const qint64 start = localTime("2026-03-10 06:00:00.000");
    for (int id = 1; id <= kWriters; ++id) {
        QCOMPARE(store->registerCurve(QStringLiteral("10%1(V)").arg(id)), id);
    }
    std::atomic<int> written[kWriters] = {};
    {
        Crowd crowd;
        for (int writer = 0; writer < kWriters; ++writer) {
            crowd.add([&, writer] {
                store->appendPoint(writer + 1, start + written[writer]++, 1.0);
                if (written[writer] % 50 == 0) {
                    store->flushAndDetach();
                }
            });
        }
        for (int reader = 0; reader < kReaders; ++reader) {
            crowd.add([&store, random = QRandomGenerator(quint32(reader))]() mutable {
                readFile(store.get(), pastPath(store, random.bounded(kPastFiles)), one("past"));
            });
        }
        crowd.add([&] {
            readFile(store.get(), store.path("20260310"),
                     one("curve_1_batch_20260310_060000_20260310_115959"));
        });
        for (int sweep = 0; sweep < kSweeps || crowd.rounds() <= kRounds; ++sweep) {
            // Every connection held by no one looks old now and then.
            advancePresent(sweep % 3 == 0 ? 43200001 : 1);
            QMetaObject::invokeMethod(&ConnectionPool::instance(), "cleanExpiredConnections");
            setPresent(localTime("2026-03-10 09:30:00.000"));
            QCoreApplication::processEvents();
        }
        crowd.stop();
    }
    for (int id = 1; id <= kWriters; ++id) {
        QStringList tables = dayfile::rows(
            store.path("20260310"),
            QStringLiteral("SELECT table_name FROM batch_metadata WHERE curve_id = %1").arg(id));
        QCOMPARE(tables.size(), 1);
        QCOMPARE(dayfile::rows(store.path("20260310"),
                               QStringLiteral("SELECT count(*) FROM %1").arg(tables.first())),
                 QStringList{QString::number(written[id - 1].load())});
    }
    const QStringList criticals = log.lines(QtCriticalMsg);
    QVERIFY2(criticals.isEmpty(), qPrintable(criticals.join(QLatin1Char('\n'))));
}

void TestStoreThreads::closingUnderReaders()
{
    const StandstillWatchdog watchdog(kWatchdogMs);
    const LogCapture log;
    TestStore store;
    makePastFiles(store);
    Crowd crowd;
    for (int reader = 0; reader < kReaders; ++reader) {
        crowd.add([&store, random = QRandomGenerator(quint32(reader))]() mutable {
            readFile(store.get(), pastPath(store, random.bounded(3)), one("past"));
        });
    }
    for (int round = 0; round < kClosings || crowd.rounds() <= kRounds; ++round) {
        ConnectionPool::instance().removeConnection(pastPath(store, 0));
        ConnectionPool::instance().discardConnection(pastPath(store, 1));
        ConnectionPool::instance().evictOldestConnection();
    }
    crowd.stop();
    const QStringList criticals = log.lines(QtCriticalMsg);
    QVERIFY2(criticals.isEmpty(), qPrintable(criticals.join(QLatin1Char('\n'))));
    QVERIFY(log.lines(QtWarningMsg).filter(one("QSql")).isEmpty());
}

void TestStoreThreads::clearsUnderReadersAndWriters()
{
    const StandstillWatchdog watchdog(kWatchdogMs);
    const LogCapture log;
    TestStore store;
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    std::atomic<int> name{0};
    {
        Crowd crowd;
        crowd.add([&] {
            const int id = store->registerCurve(QString::number(name++ % 3));
            for (int i = 0; i < 50; ++i) {
                store->appendPoint(id, localTime("2026-03-10 09:00:00.000") + i, i);
            }
        });
        crowd.add([&] {
            store->readCurveData(1, localTime("2026-03-10 08:00:00.000"),
                                 localTime("2026-03-10 10:00:00.000"), 100);
            QThread::yieldCurrentThread();
        });
        crowd.add([&] {
            readFile(store.get(), store.path("20260310"),
                     one("curve_1_batch_20260310_060000_20260310_115959"));
            QThread::yieldCurrentThread();
        });
        for (int round = 1; round <= kClears; ++round) {
            store->clearAll();
            QVERIFY(cleared.wait(15000));
        }
        crowd.stop();
    }
    QCOMPARE(cleared.count(), kClears);
    QVERIFY(log.lines().filter(one("QSql")).isEmpty());
    QVERIFY(log.lines().filter(one("still in use")).isEmpty());
    // The store is intact: a curve can be registered and a reading stored.
    const int id = store->registerCurve(one("last"));
    QVERIFY(id > 0);
    store->appendPoint(id, localTime("2026-03-10 09:20:00.000"), 7.0);
    QCOMPARE(
        dayfile::rows(store.path("20260310"),
                      QStringLiteral("SELECT value FROM %1")
                          .arg(makeTableName(id, one("batch_20260310_060000_20260310_115959")))),
        QStringList{one("7.0")});
}

SCN_TEST(TestStoreThreads, QCoreApplication)
#include "test_storethreads.moc"
