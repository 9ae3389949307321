#include "dayfilewriter.h"
#include "storage/connectionpool.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

using namespace scn;

// The real lengths of the store's waits, which the other tests do without.

using std::chrono::milliseconds;

class TestStoreWaits : public QObject
{
    Q_OBJECT

private slots:
    void lengths_data();
    void lengths();
    void numbersOfPasses();
    void connectionsWaitForLocks();
    void waitsAreReal();
    void waitsCanBeReplaced();
};

void TestStoreWaits::lengths_data()
{
    QTest::addColumn<qint64>("actual");
    QTest::addColumn<qint64>("expected");
    const auto row = [](const char* name, milliseconds actual, qint64 expected) {
        QTest::newRow(name) << qint64(actual.count()) << expected;
    };
    row("pause before a new name", storewaits::kRegisterPause, 100);
    row("until the files are deleted", storewaits::kReleaseDelay, 1000);
    row("pass of a clear", storewaits::kClearPass, 100);
    row("until a file is tried again", storewaits::kDeleteRetry, 500);
    row("pass of a closing", storewaits::kClosePass, 50);
    row("last events of a connection", storewaits::kLastEvents, 100);
    row("between two closings", storewaits::kCloseGap, 50);
    row("for a lock", storewaits::kLockPatience, 5000);
    row("until an idle connection is closed", storewaits::kIdleLimit, 12 * kHourMs);
    row("between two sweeps", storewaits::kSweepInterval, 4 * kHourMs);
    row("between two notes of use", storewaits::kUseNoteInterval, 1000);
    row("between two repairs", storewaits::kRepairInterval, 5000);
    row("for the store, at the program's end", storewaits::kShutdownBudget, 2000);
    row("for a clear, at the store's end", storewaits::kClearThreadWait, 3000);
}

void TestStoreWaits::lengths()
{
    QFETCH(qint64, actual);
    QFETCH(qint64, expected);
    QCOMPARE(actual, expected);
}

void TestStoreWaits::numbersOfPasses()
{
    QCOMPARE(storewaits::kRegisterPauses, 2);
    QCOMPARE(storewaits::kClearPasses, 3);
    QCOMPARE(storewaits::kDeleteAttempts, 3);
    QCOMPARE(storewaits::kDrainPasses, 10);
    QCOMPARE(storewaits::kSettlePasses, 5);
}

void TestStoreWaits::connectionsWaitForLocks()
{
    const QTemporaryDir directory;
    const auto db = ConnectionPool::instance().acquireConnection(
        directory.filePath(QStringLiteral("20260112.db")));
    QVERIFY(db);
    QSqlQuery query(QStringLiteral("PRAGMA busy_timeout"), *db);
    QVERIFY(query.next());
    QCOMPARE(query.value(0).toInt(), 5000);
    query.clear();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
}

void TestStoreWaits::waitsAreReal()
{
    QCOMPARE(storeWait(milliseconds(1500)).count(), 1500);
    QElapsedTimer timer;
    timer.start();
    storeSleep(milliseconds(30));
    QVERIFY(timer.elapsed() >= 30);
}

void TestStoreWaits::waitsCanBeReplaced()
{
    setStoreWait([](milliseconds wait) { return wait / 1000; });
    QCOMPARE(storeWait(milliseconds(5000)).count(), 5);
    setStoreWait(nullptr);
    QCOMPARE(storeWait(milliseconds(5000)).count(), 5000);
}

SCN_TEST(TestStoreWaits, QCoreApplication)
#include "test_storewaits.moc"
