#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "lockingprocess.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "storeobserver.h"
#include "support/logcapture.h"
#include "teststore.h"

#include <QtTest>

#include <algorithm>
#include <chrono>

// The store and a file locked by another process: a reading waits its five seconds, no operation
// waits longer, and what could not be stored is reported.

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds kPatience(5000);

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

private:
    template <typename Operation>
    milliseconds waitOf(Operation operation);
    milliseconds append(TestStore& store, qint64 time);

    const SkippedWaits m_waits;
    LockWaits m_lockWaits;
};

/// How long an operation waits for locks.
template <typename Operation>
milliseconds TestStoreLocks::waitOf(Operation operation)
{
    m_lockWaits.forget();
    operation();
    return m_lockWaits.total();
}

/// Appends a reading and returns how long it took.
milliseconds TestStoreLocks::append(TestStore& store, qint64 time)
{
    return waitOf([&store, time] { store->appendPoint(1, time, 1.0); });
}

void TestStoreLocks::lockOfTwoSecondsCostsNothingButTime()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("09:00:00"));
    LockingProcess lock(store.path("20260112"), LockingProcess::Writing);
    QVERIFY(lock.isHeld());
    m_lockWaits.after(seconds(2), [&lock] { lock.end(); });
    const LogCapture log;
    const milliseconds waited = append(store, at("09:00:01"));
    QVERIFY2(waited > seconds(2) && waited < kPatience,
             qPrintable(QString::number(waited.count())));
    QCOMPARE(append(store, at("09:00:02")), milliseconds::zero());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(times(store.path("20260112"), kMorning).size(), 3);
}

void TestStoreLocks::lockOfTwentySecondsLosesWhatWaitsInVain()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("09:00:00"));
    StoreObserver observer(store.directory());
    LockingProcess lock(store.path("20260112"), LockingProcess::Writing);
    QVERIFY(lock.isHeld());
    const LogCapture log;
    milliseconds locked = milliseconds::zero();
    QStringList expected{QString::number(at("09:00:00"))};
    int lost = 0;
    for (qint64 time = at("09:00:01"); expected.size() < 10; ++time) {
        advancePresent(1);
        m_lockWaits.after(std::max<milliseconds>(seconds(20) - locked, seconds(0)),
                          [&lock] { lock.end(); });
        const milliseconds waited = append(store, time);
        QVERIFY2(waited <= kPatience, qPrintable(QString::number(waited.count())));
        locked += waited;
        if (observer.count(one("20260112"), one(kMorning), 1, time, 1.0) == 1) {
            expected.append(QString::number(time));
        } else {
            QVERIFY(++lost <= 4);
        }
    }
    QCOMPARE(lost, 4);
    QCOMPARE(log.lines(), QStringList(QVector<QString>(lost, one(kSaveFailure)).toList()));
    observer.close();
    QCOMPARE(times(store.path("20260112"), kMorning), expected);
    // The unsaved extremes have been saved since.
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT max_time FROM curve_metadata")),
             QStringList{expected.last()});
    // A connection that waited in vain has its patience back.
    LockingProcess again(store.path("20260112"), LockingProcess::Writing);
    QVERIFY(again.isHeld());
    m_lockWaits.after(kPatience - seconds(1), [&again] { again.end(); });
    QVERIFY(append(store, at("09:29:00")) > kPatience - seconds(1));
    QCOMPARE(times(store.path("20260112"), kMorning).last(), QString::number(at("09:29:00")));
}

void TestStoreLocks::lockAtABatchEdge()
{
    setPresent(at("12:00:01"));
    TestStore store;
    store->registerCurve(one("101(V)"));
    append(store, at("11:59:59"));
    const LockingProcess lock(store.path("20260112"), LockingProcess::Writing);
    QVERIFY(lock.isHeld());
    const LogCapture log;
    QCOMPARE(append(store, at("12:00:00")), kPatience);
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
    store->closeForExit(QDeadlineTimer(kPatience));
    {
        const LockingProcess lock(store.path("20260112"), LockingProcess::Everything);
        QVERIFY(lock.isHeld());
        const LogCapture log;
        QCOMPARE(waitOf([&store] { store.restart(); }), kPatience);
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
        QCOMPARE(waitOf([&store] { store->registerCurve(one("101(V)")); }), kPatience);
        QCOMPARE(append(store, at("09:00:01")), kPatience);
    }
    advancePresent(kPatience.count());
    const LogCapture log;
    append(store, at("09:00:02"));
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    QCOMPARE(times(store.path("20260112"), kMorning),
             (QStringList{QString::number(at("09:00:00")), QString::number(at("09:00:02"))}));
    // If opened under the lock, it would have worked without a WAL all day.
    QCOMPARE(dayfile::rows(store.path("20260112"), one("PRAGMA journal_mode")),
             QStringList{one("wal")});
}

/// A file that can be read but not switched to WAL is written without it.
void TestStoreLocks::lockOfAWriterAtTheStart()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->closeForExit(QDeadlineTimer(kPatience));
    {
        const LockingProcess lock(store.path("20260112"), LockingProcess::Writing);
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
        const LockingProcess lock(past, LockingProcess::Everything);
        QVERIFY(lock.isHeld());
        for (int i = 0; i < 2; ++i) { // the first opens the file, the second finds it open
            QCOMPARE(append(store, yesterday), kPatience);
        }
        const LogCapture log;
        m_lockWaits.forget();
        QVERIFY(store->readCurveData(1, yesterday, yesterday + 1, 0).isEmpty());
        QCOMPARE(m_lockWaits.total(), kPatience);
        QCOMPARE(log.lines(QtWarningMsg),
                 QStringList{one(
                     "查询分片元数据失败: \"database is locked Unable to execute statement\"")});
        QCOMPARE(append(store, at("09:00:00")), milliseconds::zero()); // today's file is another
    }
    append(store, yesterday + 1);
    QCOMPARE(times(past, "curve_1_batch_20260111_060000_20260111_115959"),
             QStringList{QString::number(yesterday + 1)});
    QCOMPARE(store->readCurveData(1, yesterday, yesterday + 1, 0).size(), 1);
}

SCN_TEST_RUN((&LockingProcess::run<TestStoreLocks>))
#include "test_storelocks.moc"
