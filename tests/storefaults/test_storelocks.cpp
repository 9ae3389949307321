#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "lockingprocess.h"
#include "logcapture.h"
#include "storage/curvedatadb.h"
#include "storeobserver.h"
#include "teststore.h"

#include <QElapsedTimer>
#include <QtTest>

// The store and a file that another process has locked: a reading waits its five seconds, no
// operation waits longer, and what could not be stored is told.

namespace {

constexpr int kBusyMs = 5000;
constexpr int kMarginMs = 2000; // of a machine that is busy with something else
constexpr int kForever = 120000;

constexpr const char* kMorning = "curve_1_batch_20260112_060000_20260112_115959";
constexpr const char* kSaveFailure =
    "warning: 保存曲线元数据失败: \"database is locked Unable to fetch row\"";

QString one(const char* text)
{
    return QString::fromUtf8(text);
}

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

QStringList times(const QString& path, const char* table)
{
    return dayfile::rows(path,
                         QStringLiteral("SELECT timestamp FROM %1 ORDER BY id").arg(one(table)));
}

/// Appends a reading and gives how long that took.
qint64 append(TestStore& store, qint64 time)
{
    QElapsedTimer timer;
    timer.start();
    store->appendPoint(1, time, 1.0);
    return timer.elapsed();
}

} // namespace

class TestStoreLocks : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(at("09:30:00")); }

    void lockOfTwoSecondsCostsNothingButTime();
    void lockOfTwentySecondsLosesWhatWaitsInVain();
    void lockAtABatchEdge();
    void lockAtTheStart();
    void lockOfAWriterAtTheStart();
    void lockOfAPastDay();
};

void TestStoreLocks::lockOfTwoSecondsCostsNothingButTime()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("09:00:00"));
    LockingProcess lock(store.path("20260112"), LockingProcess::Writing, 2000);
    QVERIFY(lock.isHeld());
    const LogCapture log;
    const qint64 waited = append(store, at("09:00:01"));
    QVERIFY2(waited > 1000 && waited < kBusyMs, qPrintable(QString::number(waited)));
    QVERIFY(append(store, at("09:00:02")) < 1000);
    QCOMPARE(log.lines(), QStringList());
    lock.waitForEnd();
    QCOMPARE(times(store.path("20260112"), kMorning).size(), 3);
}

void TestStoreLocks::lockOfTwentySecondsLosesWhatWaitsInVain()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("09:00:00"));
    StoreObserver observer(store.directory());
    LockingProcess lock(store.path("20260112"), LockingProcess::Writing, 20000);
    QVERIFY(lock.isHeld());
    const LogCapture log;
    QElapsedTimer timer;
    timer.start();
    QStringList expected{QString::number(at("09:00:00"))};
    int lost = 0;
    for (qint64 time = at("09:00:01"); timer.elapsed() < 21000 || expected.size() == 1; ++time) {
        advancePresent(1);
        const qint64 waited = append(store, time);
        QVERIFY2(waited < kBusyMs + kMarginMs, qPrintable(QString::number(waited)));
        if (observer.count(one("20260112"), one(kMorning), 1, time, 1.0) == 1) {
            expected.append(QString::number(time));
        } else {
            ++lost;
        }
        QTest::qWait(10);
    }
    QVERIFY2(lost >= 2 && lost <= 4, qPrintable(QString::number(lost)));
    QCOMPARE(log.lines(), QStringList(QVector<QString>(lost, one(kSaveFailure)).toList()));
    observer.close();
    QCOMPARE(times(store.path("20260112"), kMorning), expected);
    // The extremes that could not be saved have been since.
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT max_time FROM curve_metadata")),
             QStringList{expected.last()});
    // A connection that has waited in vain has its patience back.
    LockingProcess again(store.path("20260112"), LockingProcess::Writing, 1500);
    QVERIFY(again.isHeld());
    QVERIFY(append(store, at("09:29:00")) > 500);
    QCOMPARE(times(store.path("20260112"), kMorning).last(), QString::number(at("09:29:00")));
}

void TestStoreLocks::lockAtABatchEdge()
{
    setPresent(at("12:00:01"));
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("11:59:59"));
    const LockingProcess lock(store.path("20260112"), LockingProcess::Writing, kForever);
    QVERIFY(lock.isHeld());
    const LogCapture log;
    const qint64 waited = append(store, at("12:00:00"));
    QVERIFY2(waited < kBusyMs + kMarginMs, qPrintable(QString::number(waited)));
    QCOMPARE(log.lines(),
             (QStringList{
                 one("warning: 创建分片表失败: \"curve_1_batch_20260112_120000_20260112_175959\" "
                     "，错误: \"database is locked Unable to fetch row\""),
                 one("warning: 创建分片表失败: \"curve_1_batch_20260112_120000_20260112_175959\""),
                 one(kSaveFailure)}));
}

void TestStoreLocks::lockAtTheStart()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("09:00:00"));
    store->closeForExit(QDeadlineTimer(kBusyMs));
    const auto timed = [](auto operation) {
        QElapsedTimer timer;
        timer.start();
        operation();
        return timer.elapsed();
    };
    {
        const LockingProcess lock(store.path("20260112"), LockingProcess::Everything, kForever);
        QVERIFY(lock.isHeld());
        const LogCapture log;
        const qint64 opening = timed([&store] { store.restart(); });
        QVERIFY2(opening < kBusyMs + kMarginMs, qPrintable(QString::number(opening)));
        const QStringList lines = log.lines();
        for (const char* line :
             {"warning: 执行PRAGMA失败： \"PRAGMA journal_mode = WAL\"  错误： \"database is "
              "locked Unable to execute statement\"",
              "critical: 创建curve_info表失败: \"database is locked Unable to execute "
              "statement\"",
              "critical: 创建batch_metadata表失败: \"database is locked Unable to execute "
              "statement\"",
              "critical: 创建curve_metadata表失败: \"database is locked Unable to execute "
              "statement\""}) {
            QVERIFY2(lines.contains(one(line)), qPrintable(lines.join(QLatin1Char('\n'))));
        }
        const qint64 registering = timed([&store] { store->registerCurve(one("101(V)")); });
        QVERIFY2(registering < kBusyMs + kMarginMs, qPrintable(QString::number(registering)));
        const qint64 reading = timed([&store] { store->appendPoint(1, at("09:00:01"), 1.0); });
        QVERIFY2(reading < kBusyMs + kMarginMs, qPrintable(QString::number(reading)));
    }
    advancePresent(kBusyMs);
    const LogCapture log;
    append(store, at("09:00:02"));
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    QCOMPARE(times(store.path("20260112"), kMorning),
             (QStringList{QString::number(at("09:00:00")), QString::number(at("09:00:02"))}));
    // Opened under the lock it would have done without its log all day.
    QCOMPARE(dayfile::rows(store.path("20260112"), one("PRAGMA journal_mode")),
             QStringList{one("wal")});
}

/// A file that can be read but not switched to its log is written without one.
void TestStoreLocks::lockOfAWriterAtTheStart()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->closeForExit(QDeadlineTimer(kBusyMs));
    {
        const LockingProcess lock(store.path("20260112"), LockingProcess::Writing, kForever);
        QVERIFY(lock.isHeld());
        const LogCapture log;
        store.restart();
        QVERIFY(log.lines().contains(
            one("warning: 执行PRAGMA失败： \"PRAGMA journal_mode = WAL\"  错误： \"database is "
                "locked Unable to fetch row\"")));
        QCOMPARE(log.lines(QtCriticalMsg), QStringList());
    }
    const LogCapture log;
    append(store, at("09:00:00"));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(dayfile::rows(store.path("20260112"), one("PRAGMA journal_mode")),
             QStringList{one("delete")});
    QCOMPARE(times(store.path("20260112"), kMorning), QStringList{QString::number(at("09:00:00"))});
}

void TestStoreLocks::lockOfAPastDay()
{
    const qint64 yesterday = localTime("2026-01-11 09:00:00.000");
    TestStore store;
    store->registerCurve(one("101(V)"));
    const QString past = store.path("20260111");
    {
        DayFileWriter writer(past);
        writer.addCurve(1, one("101(V)"));
        writer.addBatch(1, localTime("2026-01-11 06:00:00.000"),
                        one("curve_1_batch_20260111_060000_20260111_115959"), {});
    }
    {
        const LockingProcess lock(past, LockingProcess::Everything, kForever);
        QVERIFY(lock.isHeld());
        for (int i = 0; i < 2; ++i) { // the first opens the file, the second finds it open
            const qint64 waited = append(store, yesterday);
            QVERIFY2(waited < kBusyMs + kMarginMs, qPrintable(QString::number(waited)));
        }
        const LogCapture log;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(store->readCurveData(1, yesterday, yesterday + 1, 0).isEmpty());
        QVERIFY2(timer.elapsed() < kBusyMs + kMarginMs,
                 qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(log.lines(QtWarningMsg),
                 QStringList{one(
                     "查询分片元数据失败: \"database is locked Unable to execute statement\"")});
        QVERIFY(append(store, at("09:00:00")) < 1000); // today's file is another
    }
    append(store, yesterday + 1);
    QCOMPARE(times(past, "curve_1_batch_20260111_060000_20260111_115959"),
             QStringList{QString::number(yesterday + 1)});
    QCOMPARE(store->readCurveData(1, yesterday, yesterday + 1, 0).size(), 1);
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (LockingProcess::isMeant(QCoreApplication::arguments())) {
        return LockingProcess::playLock(QCoreApplication::arguments());
    }
    TestStoreLocks test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_storelocks.moc"
