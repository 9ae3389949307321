#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "lockwaits.h"
#include "plainstore.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/shardnaming.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "writtenrows.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QtTest>

#include <chrono>
#include <cmath>
#include <limits>

using namespace writtenrows;

class TestCurveDataDBWrite : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(at("09:30:00")); }

    void pointGoesToItsBatchAndExtremesFollow();
    void readingsAreRefusedWhileAFileIsInTheWay();
    void batchEdges();
    void tableOfAnEarlierRunIsGoneOnWith();
    void secondPointOfAMillisecondIsDroppedButCounts();
    void nanIsNotStored();
    void infinitiesAreStored();
    void minimumOfZeroIsGivenUp();
    void timeZeroIsGivenUp();
    void unknownCurveStoresNothingAndSpoilsNothing();
    void lateReadingOfAClearedSeriesSpoilsNothing();
    void reattachmentForgetsWhatTheFileDoesNotHold();
    void droppedTableIsMadeAgain();
    void droppedBaseTablesAreMadeAgain();
    void lockedFileIsWaitedFor();
    void failedExtremesAreSavedLater();
    void fullDiskLosesOnlyWhatDoesNotFit();
    void closedConnectionIsReopened();
    void sixHundredCurves();
    void pageCacheGrowsWithTheCurvesWritten();
    void checkpointsAreSpacedByTheCurvesWritten_data();
    void checkpointsAreSpacedByTheCurvesWritten();
    void dayOf25Hours();
    void hourThatComesTwiceCollides();
    void filesAreThoseOfThePlainStore_data();
    void filesAreThoseOfThePlainStore();

private:
    const SkippedWaits m_waits;
};

void TestCurveDataDBWrite::pointGoesToItsBatchAndExtremesFollow()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->registerCurve(one("102(V)"));
    const LogCapture log;
    store->appendPoint(1, at("09:00:00"), 1.5);
    store->appendPoint(1, at("09:00:01"), -2.5);
    store->appendPoint(2, at("09:00:01"), 1e-300);
    store->appendPoint(1, at("09:00:02"), 0.1);
    QCOMPARE(log.lines(), QStringList());
    const QString path = store.path("20260112");
    QCOMPARE(points(path, one(kMorning)),
             (QStringList{point(at("09:00:00"), "1.5"), point(at("09:00:01"), "-2.5"),
                          point(at("09:00:02"), "0.1")}));
    QCOMPARE(extremes(path),
             (QStringList{extremesRow(1, at("09:00:00"), at("09:00:02"), "-2.5|1.5"),
                          extremesRow(2, at("09:00:01"), at("09:00:01"), "1.0e-300|1.0e-300")}));
    const DBCurveMetadata memory = store->curveMetadata(1);
    QCOMPARE(memory.minTime, at("09:00:00"));
    QCOMPARE(memory.maxTime, at("09:00:02"));
    QCOMPARE(memory.minValue, -2.5);
    QCOMPARE(memory.maxValue, 1.5);
}

void TestCurveDataDBWrite::batchEdges()
{
    setPresent(localTime("2026-01-12 23:59:59.999"));
    TestStore store;
    store->registerCurve(one("101(V)"));
    const qint64 six = at("06:00:00");
    for (const qint64 time : {six, six - 1, at("11:59:59") + 999, at("12:00:00"),
                              at("23:59:59") + 999, at("00:00:00")}) {
        store->appendPoint(1, time, 1.0);
    }
    const QString path = store.path("20260112");
    QCOMPARE(points(path, one("curve_1_batch_20260112_000000_20260112_055959")),
             (QStringList{point(six - 1, "1.0"), point(at("00:00:00"), "1.0")}));
    QCOMPARE(points(path, one(kMorning)),
             (QStringList{point(six, "1.0"), point(at("11:59:59") + 999, "1.0")}));
    QCOMPARE(points(path, one("curve_1_batch_20260112_120000_20260112_175959")),
             QStringList{point(at("12:00:00"), "1.0")});
    QCOMPARE(points(path, one("curve_1_batch_20260112_180000_20260112_235959")),
             QStringList{point(at("23:59:59") + 999, "1.0")});
    QCOMPARE(store->knownTableCount(), 4);
}

void TestCurveDataDBWrite::tableOfAnEarlierRunIsGoneOnWith()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    store.restart();
    QCOMPARE(store->knownTableCount(), 0);
    store->appendPoint(1, at("09:00:01"), 2.0);
    QCOMPARE(store->knownTableCount(), 1);
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             (QStringList{point(at("09:00:00"), "1.0"), point(at("09:00:01"), "2.0")}));
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT count(*) FROM batch_metadata")),
             QStringList{one("1")});
}

void TestCurveDataDBWrite::secondPointOfAMillisecondIsDroppedButCounts()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const LogCapture log;
    store->appendPoint(1, at("09:00:00"), 7.0);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:00"), "1.0")});
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00"), "1.0|7.0")});
}

/// SQLite binds NaN as null, which the column rejects and "OR IGNORE" skips.
void TestCurveDataDBWrite::nanIsNotStored()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const LogCapture log;
    store->appendPoint(1, at("09:00:00"), 1.0);
    store->appendPoint(1, at("09:00:01"), std::nan(""));
    store->appendPoint(1, at("09:00:02"), 2.0);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             (QStringList{point(at("09:00:00"), "1.0"), point(at("09:00:02"), "2.0")}));
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:02"), "1.0|2.0")});
}

void TestCurveDataDBWrite::infinitiesAreStored()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), std::numeric_limits<double>::infinity());
    store->appendPoint(1, at("09:00:01"), -std::numeric_limits<double>::infinity());
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             (QStringList{point(at("09:00:00"), "Inf"), point(at("09:00:01"), "-Inf")}));
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:01"), "-Inf|Inf")});
}

void TestCurveDataDBWrite::minimumOfZeroIsGivenUp()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 0.0);
    QCOMPARE(store->curveMetadata(1).minValue, 0.0);
    store->appendPoint(1, at("09:00:01"), 5.0);
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:01"), "5.0|5.0")});
}

void TestCurveDataDBWrite::timeZeroIsGivenUp()
{
    const ZoneGuard zone("UTC");
    setPresent(kDayLengthMs / 2); // noon of the first of January 1970
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, 0, 1.0);
    QCOMPARE(extremes(store.path("19700101")), QStringList{extremesRow(1, 0, 0, "1.0|1.0")});
    store->appendPoint(1, 1000, 1.0);
    QCOMPARE(extremes(store.path("19700101")), QStringList{extremesRow(1, 1000, 1000, "1.0|1.0")});
}

void TestCurveDataDBWrite::unknownCurveStoresNothingAndSpoilsNothing()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const LogCapture log;
    store->appendPoint(42, at("09:00:00"), 2.0);
    const QStringList warnings = log.lines(QtWarningMsg);
    QCOMPARE(warnings.size(), 2);
    QVERIFY(warnings.at(0).startsWith(QStringLiteral("插入分片元数据失败: \"")));
    QCOMPARE(warnings.at(1),
             QStringLiteral("创建分片表失败: \"curve_42_batch_20260112_060000_20260112_115959\""));
    store->appendPoint(1, at("09:00:00"), 3.0);
    QCOMPARE(log.lines(QtWarningMsg).size(), 2);
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:00"), "3.0")});
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00"), "3.0|3.0")});
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           one("SELECT name FROM sqlite_master WHERE name LIKE 'curve_42_%'")),
             QStringList());
}

void TestCurveDataDBWrite::lateReadingOfAClearedSeriesSpoilsNothing()
{
    TestStore store;
    for (const char* name : {"101(V)", "102(V)", "103(V)"}) {
        store->registerCurve(one(name));
    }
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    QVERIFY(cleared.wait(10000));
    store->registerCurve(one("101(V)"));
    store->appendPoint(3, at("09:00:00"), 2.0); // of the old third series
    for (int i = 0; i < 3; ++i) {
        store->appendPoint(1, at("09:00:00") + i, i + 1);
    }
    QVERIFY(store->saveMetadata());
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00") + 2, "1.0|3.0")});
}

void TestCurveDataDBWrite::reattachmentForgetsWhatTheFileDoesNotHold()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    store->appendPoint(42, at("09:00:00"), 2.0);
    QCOMPARE(store->curveMetadata(42).maxValue, 2.0);
    store->flushAndDetach();
    QVERIFY(store->saveMetadata());
    QCOMPARE(store->curveMetadata(42).maxValue, std::numeric_limits<double>::lowest());
    QCOMPARE(store->curveMetadata(1).maxValue, 1.0);
}

void TestCurveDataDBWrite::droppedTableIsMadeAgain()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    QCOMPARE(dayfile::execute(
                 store.path("20260112"),
                 QStringLiteral("DROP TABLE %1; DELETE FROM batch_metadata").arg(one(kMorning))),
             QString());
    store->appendPoint(1, at("09:00:01"), 2.0);
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:01"), "2.0")});
}

void TestCurveDataDBWrite::droppedBaseTablesAreMadeAgain()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    QCOMPARE(
        dayfile::execute(
            store.path("20260112"),
            QStringLiteral("DROP TABLE %1; DROP TABLE curve_metadata; DROP TABLE batch_metadata; "
                           "DROP TABLE curve_info")
                .arg(one(kMorning))),
        QString());
    {
        const LogCapture log;
        store->appendPoint(1, at("09:00:01"), 2.0);
        QVERIFY(
            log.lines(QtWarningMsg).last().startsWith(QStringLiteral("保存曲线元数据失败: \"")));
    }
    store->appendPoint(1, at("09:00:02"), 3.0);
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:02"), "3.0")});
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT curve_id, name FROM curve_info")),
             QStringList{one("1|101(V)")});
}

void TestCurveDataDBWrite::lockedFileIsWaitedFor()
{
    LockWaits lockWaits;
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    auto lock = std::make_unique<DayFileLock>(store.path("20260112"));
    QVERIFY(lock->isHeld());
    lockWaits.after(std::chrono::milliseconds(4000), [&lock] { lock.reset(); });
    const LogCapture log;
    store->appendPoint(1, at("09:00:01"), 2.0);
    QVERIFY(!lock);
    QVERIFY(lockWaits.total() < std::chrono::milliseconds(5000));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             (QStringList{point(at("09:00:00"), "1.0"), point(at("09:00:01"), "2.0")}));
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:01"), "1.0|2.0")});
}

void TestCurveDataDBWrite::failedExtremesAreSavedLater()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    // A trigger stands in for whatever makes the write fail.
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              one("CREATE TRIGGER refuse BEFORE INSERT ON curve_metadata "
                                  "BEGIN SELECT RAISE(ABORT, 'refused'); END")),
             QString());
    {
        const LogCapture log;
        store->appendPoint(1, at("09:00:01"), 2.0);
        QVERIFY(!store->saveMetadata());
        const QStringList warnings = log.lines(QtWarningMsg);
        QCOMPARE(warnings.size(), 2);
        QVERIFY(warnings.first().startsWith(QStringLiteral("保存曲线元数据失败: \"refused")));
    }
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00"), "1.0|1.0")});
    QCOMPARE(points(store.path("20260112"), one(kMorning)).size(), 2);
    QCOMPARE(dayfile::execute(store.path("20260112"), one("DROP TRIGGER refuse")), QString());
    QVERIFY(store->saveMetadata());
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:01"), "1.0|2.0")});
}

void TestCurveDataDBWrite::fullDiskLosesOnlyWhatDoesNotFit()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QString path = store.path("20260112");
    const auto limitPages = [&store, &path](int extra) {
        const auto db = store->openDb(path);
        ManagedQuery query(*db);
        QVERIFY(query.exec(one("PRAGMA page_count")) && query.next());
        const int pages = query.value(0).toInt() + extra;
        QVERIFY(query.exec(QStringLiteral("PRAGMA max_page_count = %1").arg(pages)));
    };
    limitPages(0);
    const LogCapture log;
    constexpr int kReadings = 2000;
    for (int i = 1; i <= kReadings; ++i) {
        store->appendPoint(1, at("09:00:00") + i, i);
    }
    const int fitted = points(path, one(kMorning)).size();
    QVERIFY(fitted > 1 && fitted < kReadings);
    // There is no room for the table of another batch either.
    store->appendPoint(1, at("03:00:00"), 1.0);
    QVERIFY(log.lines(QtWarningMsg)
                .last()
                .startsWith(QStringLiteral("创建分片表失败: \"curve_1_batch_20260112_000000")));
    limitPages(1000);
    store->appendPoint(1, at("03:00:01"), 5.0);
    store->appendPoint(1, at("09:20:00"), 6.0);
    QCOMPARE(points(path, one("curve_1_batch_20260112_000000_20260112_055959")),
             QStringList{point(at("03:00:01"), "5.0")});
    QCOMPARE(points(path, one(kMorning)).last(), point(at("09:20:00"), "6.0"));
    QCOMPARE(dayfile::rows(path, one("PRAGMA integrity_check")), QStringList{one("ok")});
    QCOMPARE(extremes(path),
             QStringList{extremesRow(1, at("03:00:00"), at("09:20:00"), "1.0|2000.0")});
}

void TestCurveDataDBWrite::closedConnectionIsReopened()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    for (int i = 1; i <= 2; ++i) {
        ConnectionPool::instance().removeConnection(store.path("20260112"));
        store->appendPoint(1, at("09:00:00") + i, i);
    }
    QCOMPARE(points(store.path("20260112"), one(kMorning)).size(), 3);
}

void TestCurveDataDBWrite::sixHundredCurves()
{
    constexpr int kCurves = 600;
    TestStore store;
    {
        DayFileWriter writer(store.path("20260112"));
        for (int id = 1; id <= kCurves; ++id) {
            writer.addCurve(id, QStringLiteral("%1(V)").arg(id));
        }
    }
    store.restart();
    for (int round = 0; round < 2; ++round) {
        for (int id = 1; id <= kCurves; ++id) {
            store->appendPoint(id, at("09:00:00") + round, id);
        }
    }
    QCOMPARE(extremes(store.path("20260112")).size(), kCurves);
    QCOMPARE(store->knownTableCount(), kCurves);
    for (const int id : {1, 299, kCurves}) {
        QCOMPARE(points(store.path("20260112"),
                        makeTableName(id, one("batch_20260112_060000_20260112_115959")))
                     .size(),
                 2);
    }
}

void TestCurveDataDBWrite::pageCacheGrowsWithTheCurvesWritten()
{
    constexpr int kCurves = 12;
    TestStore store;
    {
        DayFileWriter file(store.path("20260112"));
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            file.addCurve(curveId, QStringLiteral("%1(V)").arg(100 + curveId));
        }
    }
    store.restart();
    const auto cacheSize = [&store] {
        ManagedQuery query(*store->openDb(store.path("20260112")));
        return query.exec(one("PRAGMA cache_size")) && query.next() ? query.value(0).toInt() : 0;
    };
    const QVector<int> expected = {-2000, -2000, -2000, -2000, -2000, -2000,
                                   -2000, -2000, -2000, -2000, -2040, -2080};
    QVector<int> sizes;
    for (int curveId = 1; curveId <= kCurves; ++curveId) {
        store->appendPoint(curveId, at("09:00:00"), 1.0);
        sizes.append(cacheSize());
    }
    QCOMPARE(sizes, expected);
    store->appendPoint(1, at("09:00:01"), 1.0);
    QCOMPARE(cacheSize(), -2080);
    store->flushAndDetach();
    ConnectionPool::instance().discardConnection(store.path("20260112"));
    store->appendPoint(1, at("09:00:02"), 1.0);
    QCOMPARE(cacheSize(), -2000);
}

void TestCurveDataDBWrite::checkpointsAreSpacedByTheCurvesWritten_data()
{
    QTest::addColumn<bool>("isOld"); // with pages of 4096 bytes
    QTest::addColumn<QVector<int>>("expected");
    QTest::newRow("new file") << false << QVector<int>{2045, 2450, 2495, 2540};
    QTest::newRow("old file") << true << QVector<int>{1000, 1000, 1000, 1000};
}

void TestCurveDataDBWrite::checkpointsAreSpacedByTheCurvesWritten()
{
    QFETCH(const bool, isOld);
    TestStore store;
    if (isOld) {
        store->closeForExit(QDeadlineTimer(1000));
        QVERIFY(QFile::remove(store.path("20260112")));
        DayFileWriter(store.path("20260112")).addCurve(1, one("101(V)"));
        store.restart();
    }
    const auto pages = [&store] {
        ManagedQuery query(*store->openDb(store.path("20260112")));
        return query.exec(one("PRAGMA wal_autocheckpoint")) && query.next() ? query.value(0).toInt()
                                                                            : 0;
    };
    QVector<int> found;
    for (int curveId = 1; curveId <= 12; ++curveId) {
        store->registerCurve(QStringLiteral("%1(V)").arg(100 + curveId));
        store->appendPoint(curveId, at("09:00:00"), 1.0);
        if (curveId == 1 || curveId >= 10) {
            found.append(pages());
        }
    }
    QFETCH(const QVector<int>, expected);
    QCOMPARE(found, expected);
    store->flushAndDetach();
    ConnectionPool::instance().discardConnection(store.path("20260112"));
    store->appendPoint(1, at("09:00:01"), 1.0);
    QCOMPARE(pages(), expected.constFirst());
}

void TestCurveDataDBWrite::dayOf25Hours()
{
    const ZoneGuard zone("Europe/Berlin");
    const qint64 dayStart = localTime("2026-10-25 00:00:00.000");
    setPresent(dayStart + 25 * 3600000 - 1);
    TestStore store;
    store->registerCurve(one("101(V)"));
    for (int hour = 0; hour < 25; ++hour) {
        store->appendPoint(1, dayStart + hour * 3600000, hour);
    }
    const QString path = store.path("20261025");
    QCOMPARE(dayfile::rows(path, one("SELECT table_name FROM batch_metadata ORDER BY id")),
             (QStringList{one("curve_1_batch_20261025_000000_20261025_045959"),
                          one("curve_1_batch_20261025_050000_20261025_105959"),
                          one("curve_1_batch_20261025_110000_20261025_165959"),
                          one("curve_1_batch_20261025_170000_20261025_225959"),
                          one("curve_1_batch_20261025_230000_20261026_045959")}));
    QCOMPARE(points(path, one("curve_1_batch_20261025_230000_20261026_045959")),
             QStringList{point(dayStart + 24 * 3600000, "24.0")});
}

/// A local stamp does not say which of the two hours it means: both give the same millisecond.
void TestCurveDataDBWrite::hourThatComesTwiceCollides()
{
    const ZoneGuard zone("Europe/Berlin");
    setPresent(localTime("2026-10-25 12:00:00.000"));
    TestStore store;
    store->registerCurve(one("101(V)"));
    const qint64 firstHour = localTime("2026-10-25 02:30:00.000");
    const qint64 secondHour = localTime("2026-10-25 02:30:00.000");
    store->appendPoint(1, firstHour, 1.0);
    store->appendPoint(1, secondHour, 2.0);
    QCOMPARE(points(store.path("20261025"), one("curve_1_batch_20261025_000000_20261025_045959")),
             QStringList{point(firstHour, "1.0")});
}

void TestCurveDataDBWrite::filesAreThoseOfThePlainStore_data()
{
    QTest::addColumn<quint32>("seed");
    for (const quint32 seed : {1u, 2u, 3u, 4u}) {
        QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }
}

void TestCurveDataDBWrite::filesAreThoseOfThePlainStore()
{
    QFETCH(quint32, seed);
    constexpr int kSteps = 400;
    const LogCapture log; // past days warn
    QRandomGenerator random(seed);
    TestStore store;
    const QTemporaryDir plainDirectory;
    PlainStore plain(plainDirectory.path());
    qint64 present = at("09:30:00");
    int curves = 0;
    for (int step = 0; step < kSteps; ++step) {
        const int action = random.bounded(100);
        if (curves == 0 || (action < 2 && curves < 4)) {
            const QString name = QStringLiteral("10%1(V)").arg(++curves);
            QCOMPARE(store->registerCurve(name), plain.registerCurve(name));
        } else if (action < 8) {
            store->flushAndDetach();
            plain.flushAndDetach();
        } else if (action < 10) {
            store->saveMetadata();
            plain.saveMetadata();
        } else if (action < 12) {
            present += kBatchLengthMs; // now and then over midnight
            setPresent(present);
        } else {
            // Mostly the present; sometimes earlier days, the future, an unknown id.
            const int kind = random.bounded(20);
            const qint64 span = kind < 16 ? 60000 : kind < 19 ? 2 * kDayLengthMs : -kDayLengthMs;
            const qint64 time = present - static_cast<qint64>(random.bounded(1000) / 1000.0 *
                                                              static_cast<double>(span));
            const int id = random.bounded(50) == 0 ? 9 : 1 + random.bounded(curves);
            const double value = random.bounded(8) == 0 ? 0.0 : random.generateDouble() - 0.5;
            store->appendPoint(id, time, value);
            plain.appendPoint(id, time, value);
        }
    }
    store->flushAndDetach();
    plain.flushAndDetach();
    const QStringList files = QDir(plainDirectory.path()).entryList({one("*.db")});
    QCOMPARE(QDir(store.directory()).entryList({one("*.db")}), files);
    QVERIFY(files.size() > 1);
    QVERIFY(dayfile::dump(store.path("20260112")).filter(one("_batch_")).size() > 50);
    for (const QString& file : files) {
        QCOMPARE(dayfile::dump(store.directory() + QLatin1Char('/') + file),
                 dayfile::dump(plainDirectory.filePath(file)));
    }
}

void TestCurveDataDBWrite::readingsAreRefusedWhileAFileIsInTheWay()
{
    const auto putFile = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly);
    };
    const QTemporaryDir parent;
    const QString directory = parent.filePath(one("data"));
    QVERIFY(putFile(directory));
    CurveDataDB store(directory);
    QVERIFY(!store.refusesReadings());
    QCOMPARE(store.registerCurve(one("101(Vdc)")), -1);
    QVERIFY(store.refusesReadings());

    QVERIFY(QFile::remove(directory));
    const int id = store.registerCurve(one("101(Vdc)"));
    QVERIFY(id > 0);
    store.appendPoint(id, at("09:00:00"), 1.5);
    QVERIFY(!store.refusesReadings());

    // In mid-run the directory disappears and returns.
    const QString aside = parent.filePath(one("aside"));
    QVERIFY(QDir().rename(directory, aside));
    QVERIFY(putFile(directory));
    store.appendPoint(id, at("09:00:01"), 1.5);
    QVERIFY(store.refusesReadings());
    QVERIFY(QFile::remove(directory));
    QVERIFY(QDir().rename(aside, directory));
    advancePresent(10000);
    store.appendPoint(id, at("09:00:02"), 1.5);
    QVERIFY(!store.refusesReadings());
    store.closeForExit(QDeadlineTimer(2000));
}

SCN_TEST(TestCurveDataDBWrite, QCoreApplication)
#include "test_curvedatadb_write.moc"
