#include "drivertap.h"
#include "storage/connectionlock.h"
#include "storage/managedquery.h"
#include "storage/querymanager.h"
#include "support/testprogram.h"

#include <QSemaphore>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

using namespace scn;

namespace {

const QString kConnection = QStringLiteral("test_connection");
const QString kThreeSamples =
    QStringLiteral("SELECT 1768000000001, 0.5 UNION ALL SELECT 1768000000002, 9.0 UNION ALL "
                   "SELECT 1768000000003, -2.5");
const QString kThreeRows = QStringLiteral("SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3");

} // namespace

class TestManagedQuery : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void registersWhileItLives();
    void preparesBindsAndFetches();
    void failureOfPrepareIsTold();
    void failureOfExecIsTold();
    void nothingPreparedIsNotASuccess();
    void finishKeepsThePreparation();
    void clearedByTheManagerIsNotASuccess();
    void closedConnectionIsNotTheEndOfTheRows();
    void outlivesItsConnection();
    void keptStatementDoesWhatAnyDoes();
    void columnsAreInsertedAsRows();
    void fetchesInBlocks();
    void samplesComeInBlocks();
    void samplesOfAnEmptyResultAreNone();
    void samplesOfAClosedConnectionAreNotTheEndOfTheRows();
    void samplesThatFailAreTold();
    void lockedQueryIsNotRegistered();
    void driverUsesTheLibraryLinked();
    void finishQueriesLeavesOtherConnectionsAlone();
    void lockOfAConnectionIsOne();
    void lockIsRecursiveAndExcludesOthers();
    void queriesOfOneConnectionLiveOnManyThreads();
    void closedDatabaseGivesFailures();

private:
    QTemporaryDir m_directory;
    QSqlDatabase m_database;
};

void TestManagedQuery::init()
{
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kConnection);
    m_database.setDatabaseName(QStringLiteral(":memory:"));
    QVERIFY(m_database.open());
    QVERIFY(ManagedQuery(m_database)
                .exec(QStringLiteral("CREATE TABLE t (id INTEGER PRIMARY KEY, v REAL NOT NULL)")));
}

void TestManagedQuery::cleanup()
{
    m_database = QSqlDatabase();
    if (QSqlDatabase::contains(kConnection)) {
        QSqlDatabase::removeDatabase(kConnection);
    }
}

void TestManagedQuery::registersWhileItLives()
{
    QCOMPARE(QueryManager::instance().queryCount(kConnection), 0);
    {
        const ManagedQuery first(m_database);
        const ManagedQuery second(m_database);
        QCOMPARE(QueryManager::instance().queryCount(kConnection), 2);
        QCOMPARE(first.connectionName(), kConnection);
    }
    QCOMPARE(QueryManager::instance().queryCount(kConnection), 0);
}

void TestManagedQuery::preparesBindsAndFetches()
{
    ManagedQuery query(m_database);
    QVERIFY(query.prepare(QStringLiteral("INSERT INTO t (v) VALUES (?)")));
    QVERIFY(query.execWith({1.5}));
    QVERIFY(query.execWith({2.5}));
    QCOMPARE(query.lastInsertId().toInt(), 2);
    QVERIFY(query.run(QStringLiteral("SELECT id, v FROM t WHERE v > ? ORDER BY id"), {2.0}));
    QVERIFY(query.next());
    QCOMPARE(query.value(0).toInt(), 2);
    QCOMPARE(query.value(1).toDouble(), 2.5);
    QVERIFY(!query.next());
    QVERIFY(!query.value(0).isValid());
    QVERIFY(query.isUsable());
}

void TestManagedQuery::failureOfPrepareIsTold()
{
    ManagedQuery query(m_database);
    QVERIFY(!query.run(QStringLiteral("SELECT x FROM missing WHERE y = ?"), {1}));
    QVERIFY2(query.errorText().contains(QLatin1String("no such table: missing")),
             qPrintable(query.errorText()));
    QVERIFY(!query.isUsable());
}

void TestManagedQuery::failureOfExecIsTold()
{
    ManagedQuery query(m_database);
    QVERIFY(!query.run(QStringLiteral("INSERT INTO t (v) VALUES (?)"), {QVariant()}));
    QVERIFY2(query.errorText().contains(QLatin1String("NOT NULL")), qPrintable(query.errorText()));
}

void TestManagedQuery::nothingPreparedIsNotASuccess()
{
    ManagedQuery query(m_database);
    QVERIFY(!query.exec());
    QVERIFY(!query.prepare(QStringLiteral("INSERT INTO missing DEFAULT VALUES")));
    QVERIFY(!query.exec());
}

void TestManagedQuery::finishKeepsThePreparation()
{
    ManagedQuery query(m_database);
    QVERIFY(query.prepare(kThreeRows));
    QVERIFY(query.exec());
    QVERIFY(query.next());
    query.finish();
    QVERIFY(!query.next());
    QVERIFY(query.exec());
    QVERIFY(query.next());
    query.clear();
    QVERIFY(!query.exec());
}

/// Executing a query that was cleared reports a success in Qt and does nothing.
void TestManagedQuery::clearedByTheManagerIsNotASuccess()
{
    ManagedQuery query(m_database);
    QVERIFY(query.prepare(QStringLiteral("INSERT INTO t (v) VALUES (1)")));
    QVERIFY(query.isUsable());
    QueryManager::instance().finishQueries(kConnection);
    QCOMPARE(QueryManager::instance().queryCount(kConnection), 0);
    QVERIFY(!query.isUsable());
    QVERIFY(!query.exec());
    QVERIFY(!query.errorText().isEmpty());
    QVERIFY(query.prepare(QStringLiteral("SELECT count(*) FROM t")));
    QVERIFY(query.exec());
    QVERIFY(query.next());
    QCOMPARE(query.value(0).toInt(), 0);
}

void TestManagedQuery::closedConnectionIsNotTheEndOfTheRows()
{
    ManagedQuery query(m_database);
    QVERIFY(query.exec(kThreeRows));
    QVERIFY(query.next());
    m_database.close();
    QVERIFY(!query.next());
    QVERIFY(!query.isUsable());
    QVERIFY(!query.exec());
    QVERIFY(!query.value(0).isValid());
}

void TestManagedQuery::outlivesItsConnection()
{
    auto query = std::make_unique<ManagedQuery>(m_database);
    QVERIFY(query->exec(kThreeRows));
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(kConnection);
    QVERIFY(!query->next());
    QVERIFY(!query->exec());
    QVERIFY(!query->prepare(kThreeRows));
    QVERIFY(!query->lastInsertId().isValid());
    QueryManager::instance().finishQueries(kConnection);
    query.reset();
    QCOMPARE(QueryManager::instance().queryCount(kConnection), 0);
}

/// The same rows of the same types, the same failures, and it can be run again after each.
void TestManagedQuery::keptStatementDoesWhatAnyDoes()
{
    const QString insert = QStringLiteral("INSERT INTO t (id, v) VALUES (?, ?)");
    ManagedQuery kept(m_database);
    ManagedQuery plain(m_database);
    QVERIFY(!kept.runKept({1, 1.0}));
    QVERIFY(!kept.errorText().isEmpty());
    QVERIFY(kept.prepare(insert));
    QVERIFY(plain.prepare(insert));
    QVERIFY(kept.runKept({1, 0.5}));
    QVERIFY(!kept.runKept({1, 0.5}));
    QVERIFY(!plain.execWith({1, 0.5}));
    QCOMPARE(kept.errorText(), plain.errorText());
    QVERIFY(!kept.runKept({2, qQNaN()}));
    QVERIFY(kept.runKept({Q_INT64_C(1768000000001), 3}));
    ManagedQuery rows(m_database);
    QVERIFY(rows.exec(QStringLiteral(
        "SELECT group_concat(id || typeof(id) || v || typeof(v)) FROM t ORDER BY id")));
    QVERIFY(rows.next());
    QCOMPARE(rows.value(0).toString(),
             QStringLiteral("1integer0.5real,1768000000001integer3.0real"));
    rows.clear();
    m_database.close();
    QVERIFY(!kept.runKept({4, 1.0}));
    QVERIFY(m_database.open());
    QVERIFY(!kept.runKept({4, 1.0}));
}

void TestManagedQuery::columnsAreInsertedAsRows()
{
    ManagedQuery query(m_database);
    QVERIFY(query.prepare(QStringLiteral("INSERT INTO t (id, v) VALUES (?, ?)")));
    QVERIFY(query.execColumns({{7, 8, 9}, {0.5, 1.5, 2.5}}));
    QVERIFY(query.exec(QStringLiteral("SELECT sum(id), sum(v), count(*) FROM t")));
    QVERIFY(query.next());
    QCOMPARE(query.value(0).toInt(), 24);
    QCOMPARE(query.value(1).toDouble(), 4.5);
    QCOMPARE(query.value(2).toInt(), 3);
}

void TestManagedQuery::fetchesInBlocks()
{
    ManagedQuery query(m_database);
    query.setForwardOnly(true);
    QVERIFY(query.exec(kThreeRows));
    QVector<int> seen;
    const auto collect = [&seen](const QSqlQuery& row) { seen.append(row.value(0).toInt()); };
    QCOMPARE(query.fetchRows(2, collect), 2);
    QCOMPARE(query.fetchRows(2, collect), 1);
    QCOMPARE(query.fetchRows(2, collect), 0);
    QCOMPARE(seen, (QVector<int>{1, 2, 3}));
}

void TestManagedQuery::samplesComeInBlocks()
{
    LockedQuery query(m_database);
    query.setForwardOnly(true);
    QVERIFY(query.prepare(kThreeSamples));
    for (int run = 0; run < 2; ++run) {
        QVERIFY(query.exec());
        SampleColumn samples;
        QCOMPARE(query.fetchSamples(0, samples), 0);
        QCOMPARE(query.fetchSamples(2, samples), 2);
        QCOMPARE(query.fetchSamples(2, samples), 1);
        QCOMPARE(query.fetchSamples(2, samples), 0); // and does not begin anew
        QVERIFY(query.isUsable());
        QVERIFY(query.errorText().isEmpty());
        QCOMPARE(samples.size(), std::size_t(3));
        QCOMPARE(samples[0].timestamp, Q_INT64_C(1768000000001));
        QCOMPARE(samples[2].timestamp, Q_INT64_C(1768000000003));
        QCOMPARE(samples[0].value, 0.5);
        QCOMPARE(samples[2].value, -2.5);
    }
}

void TestManagedQuery::samplesOfAnEmptyResultAreNone()
{
    LockedQuery query(m_database);
    query.setForwardOnly(true);
    QVERIFY(query.prepare(QStringLiteral("SELECT id, v FROM t")));
    QVERIFY(query.exec());
    SampleColumn samples;
    QCOMPARE(query.fetchSamples(5, samples), 0);
    QCOMPARE(query.fetchSamples(5, samples), 0);
    QVERIFY(query.isUsable());
    QVERIFY(query.errorText().isEmpty());
}

void TestManagedQuery::samplesOfAClosedConnectionAreNotTheEndOfTheRows()
{
    LockedQuery query(m_database);
    query.setForwardOnly(true);
    QVERIFY(query.prepare(kThreeSamples));
    QVERIFY(query.exec());
    SampleColumn samples;
    QCOMPARE(query.fetchSamples(1, samples), 1);
    m_database.close();
    QCOMPARE(query.fetchSamples(1, samples), 0);
    QVERIFY(!query.isUsable());
    QVERIFY(m_database.open()); // the statement does not come back with it
    QCOMPARE(query.fetchSamples(1, samples), 0);
    QVERIFY(!query.errorText().isEmpty());
}

void TestManagedQuery::samplesThatFailAreTold()
{
    ManagedQuery filler(m_database);
    QVERIFY(
        filler.exec(QStringLiteral("INSERT INTO t WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL "
                                   "SELECT i + 1 FROM c WHERE i < 100000) SELECT i, i FROM c")));
    LockedQuery query(m_database);
    query.setForwardOnly(true);
    QVERIFY(query.prepare(QStringLiteral("SELECT id, v FROM t")));
    QVERIFY(query.exec());
    SampleColumn samples;
    QCOMPARE(query.fetchSamples(1, samples), 1);
    const InterruptedConnection interrupted(m_database);
    QVERIFY(query.fetchSamples(200000, samples) < 100000);
    QCOMPARE(query.errorText(), QStringLiteral("interrupted"));
}

void TestManagedQuery::lockedQueryIsNotRegistered()
{
    const LockedQuery query(m_database);
    QCOMPARE(QueryManager::instance().queryCount(kConnection), 0);
}

void TestManagedQuery::driverUsesTheLibraryLinked()
{
    ManagedQuery query(m_database);
    QVERIFY(query.exec(QStringLiteral("SELECT sqlite_source_id()")));
    QVERIFY(query.next());
    QCOMPARE(query.value(0).toString(), QString::fromLatin1(sqlite3_sourceid()));
}

void TestManagedQuery::finishQueriesLeavesOtherConnectionsAlone()
{
    ManagedQuery query(m_database);
    QVERIFY(query.exec(kThreeRows));
    QueryManager::instance().finishQueries(QStringLiteral("another connection"));
    QVERIFY(query.next());
}

void TestManagedQuery::lockOfAConnectionIsOne()
{
    const auto first = connectionMutex(kConnection);
    QCOMPARE(connectionMutex(kConnection), first);
    QVERIFY(connectionMutex(QStringLiteral("another connection")) != first);
}

void TestManagedQuery::lockIsRecursiveAndExcludesOthers()
{
    const ConnectionLocker outer(m_database);
    const ConnectionLocker inner(m_database);
    std::atomic<bool> entered{false};
    std::thread other([this, &entered] {
        if (connectionMutex(kConnection)->tryLock(std::chrono::milliseconds(50))) {
            entered = true;
        }
    });
    other.join();
    QVERIFY(!entered);
}

/// Neither SQLite as Qt opens it nor Qt's driver survives this on its own.
void TestManagedQuery::queriesOfOneConnectionLiveOnManyThreads()
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 1000;
    const CrowdedConnection connection(m_database);
    QSemaphore ready;
    QSemaphore start;
    std::atomic<int> rows{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this, &ready, &start, &rows] {
            ready.release();
            start.acquire();
            for (int round = 0; round < kRounds; ++round) {
                ManagedQuery query(m_database);
                if (!query.exec(kThreeRows)) {
                    continue;
                }
                while (query.next()) {
                    rows += query.value(0).isValid() ? 1 : 0;
                }
            }
        });
    }
    ready.acquire(kThreads);
    start.release(kThreads);
    for (std::thread& thread : threads) {
        thread.join();
    }
    QVERIFY(!connection.wasCrowded());
    QCOMPARE(rows.load(), kThreads * kRounds * 3);
    QCOMPARE(QueryManager::instance().queryCount(kConnection), 0);
}

void TestManagedQuery::closedDatabaseGivesFailures()
{
    ManagedQuery query{QSqlDatabase()};
    QVERIFY(!query.prepare(kThreeRows));
    QVERIFY(!query.exec(kThreeRows));
    QVERIFY(!query.execColumns({}));
    QVERIFY(!query.next());
    query.finish();
    query.clear();
}

SCN_TEST(TestManagedQuery, QCoreApplication)
#include "test_managedquery.moc"
