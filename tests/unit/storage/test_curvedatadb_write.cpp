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

#include <QDir>
#include <QRandomGenerator>
#include <QtTest>

#include <chrono>
#include <cmath>
#include <limits>

namespace {

constexpr const char* kMorning = "curve_1_batch_20260112_060000_20260112_115959";

QString one(const char* row)
{
    return QString::fromLatin1(row);
}

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

/// "timestamp|value" of a table's rows.
QStringList points(const QString& path, const QString& table)
{
    return dayfile::rows(path,
                         QStringLiteral("SELECT timestamp, value FROM %1 ORDER BY id").arg(table));
}

QString point(qint64 timestamp, const char* value)
{
    return QStringLiteral("%1|%2").arg(timestamp).arg(one(value));
}

QStringList extremes(const QString& path)
{
    return dayfile::rows(path,
                         QStringLiteral("SELECT curve_id, min_time, max_time, min_value, max_value "
                                        "FROM curve_metadata ORDER BY 1"));
}

QString extremesRow(int id, qint64 minTime, qint64 maxTime, const char* values)
{
    return QStringLiteral("%1|%2|%3|%4").arg(id).arg(minTime).arg(maxTime).arg(one(values));
}

} // namespace

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
    void futureReadingGoesToTodaysFileUnderItsOwnDate();
    void latePointOfYesterdayAfterMidnight();
    void pastDayWriteGoesToThePastFile();
    void pastDayWithOtherIdsStoresNothing();
    void pastDayWithoutTheCurveRegistersIt();
    void pastDayWithoutFileGetsTodaysCurves();
    void pastDayThatCannotBeSetUpIsReported();
    void lateReadingsLogTheBatchesOnceALoad();
    void namesOfAnotherFileComeIn();
    void eachLateReadingStartsFromItsFile();
    void unknownCurveStoresNothingAndSpoilsNothing();
    void lateReadingOfAClearedSeriesSpoilsNothing();
    void reattachmentForgetsWhatTheFileDoesNotHold();
    void droppedTableIsMadeAgain();
    void droppedBaseTablesAreMadeAgain();
    void lockedFileIsWaitedFor();
    void failedExtremesAreSavedLater();
    void fullDiskLosesOnlyWhatDoesNotFit();
    void closedConnectionIsReopened();
    void appendPointsSpreadsOverFilesAndBatches();
    void appendPointsOfAnUnknownCurveDoesNothing();
    void appendPointsIsHeldBackInBatchLoadMode();
    void pointsWithoutATimeAreLeftOut();
    void sixHundredCurves();
    void pageCacheGrowsWithTheCurvesWritten();
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

void TestCurveDataDBWrite::futureReadingGoesToTodaysFileUnderItsOwnDate()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const qint64 future = localTime("2026-01-14 13:00:00.000");
    store->appendPoint(1, future, 3.0);
    store->appendPoint(1, at("09:00:00"), 1.0);
    QCOMPARE(QDir(store.directory()).entryList({one("*.db")}), QStringList{one("20260112.db")});
    const QString path = store.path("20260112");
    QCOMPARE(points(path, one("curve_1_batch_20260114_120000_20260114_175959")),
             QStringList{point(future, "3.0")});
    QCOMPARE(
        dayfile::rows(path, one("SELECT batch_start, batch_end FROM batch_metadata ORDER BY id"))
            .first(),
        QStringLiteral("%1|%2")
            .arg(localTime("2026-01-14 12:00:00.000"))
            .arg(localTime("2026-01-14 17:59:59.999")));
    QCOMPARE(extremes(path), QStringList{extremesRow(1, at("09:00:00"), future, "1.0|3.0")});
}

/// The file that is still current takes the point; saving the extremes then moves on to the new
/// day, whose file has none yet.
void TestCurveDataDBWrite::latePointOfYesterdayAfterMidnight()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    setPresent(localTime("2026-01-13 00:00:10.000"));
    store->appendPoint(1, at("23:59:59"), 2.0);
    QCOMPARE(points(store.path("20260112"), one("curve_1_batch_20260112_180000_20260112_235959")),
             QStringList{point(at("23:59:59"), "2.0")});
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00"), "1.0|1.0")});
    QCOMPARE(extremes(store.path("20260113")), QStringList());
    QCOMPARE(store->curveMetadata(1).minTime, std::numeric_limits<qint64>::max());
}

void TestCurveDataDBWrite::pastDayWriteGoesToThePastFile()
{
    const qint64 past = localTime("2026-01-11 07:00:00.000");
    setPresent(past);
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->registerCurve(one("102(V)"));
    store->appendPoint(2, past, 40.0);
    setPresent(at("09:30:00"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const LogCapture log;
    store->appendPoint(1, past, 2.0);

    QCOMPARE(points(store.path("20260111"), one("curve_1_batch_20260111_060000_20260111_115959")),
             QStringList{point(past, "2.0")});
    QCOMPARE(
        log.lines(),
        (QStringList{
            one("debug: openForWrite -0000- 1"),
            one("debug: openForWrite -0001- \"curve_2_batch_20260111_060000_20260111_115959\"")}));
    // The extremes of the past file and the point become those of today's file.
    QCOMPARE(extremes(store.path("20260112")),
             (QStringList{extremesRow(1, past, past, "2.0|2.0"),
                          extremesRow(2, past, past, "40.0|40.0")}));
    QCOMPARE(extremes(store.path("20260111")),
             QStringList{extremesRow(2, past, past, "40.0|40.0")});
}

void TestCurveDataDBWrite::pastDayWithOtherIdsStoresNothing()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const QString past = store.path("20260111");
    {
        DayFileWriter writer(past);
        writer.addCurve(1, one("another"));
        writer.addCurve(5, one("102(V)"));
    }
    store->registerCurve(one("102(V)")); // 2 in today's file, 5 in the past one
    const qint64 time = localTime("2026-01-11 07:00:00.000");
    const LogCapture log;
    store->appendPoint(2, time, 2.0);
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    QCOMPARE(dayfile::rows(past, one("SELECT curve_id, table_name FROM batch_metadata")),
             QStringList{one("5|curve_5_batch_20260111_060000_20260111_115959")});
    QCOMPARE(points(past, one("curve_5_batch_20260111_060000_20260111_115959")), QStringList());
    QCOMPARE(dayfile::rows(past, one("SELECT name FROM sqlite_master WHERE name LIKE 'curve_2_%'")),
             QStringList());
}

void TestCurveDataDBWrite::pastDayWithoutTheCurveRegistersIt()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const QString past = store.path("20260111");
    {
        DayFileWriter writer(past);
    }
    const qint64 time = localTime("2026-01-11 07:00:00.000");
    const LogCapture log;
    store->appendPoint(1, time, 2.0);
    QCOMPARE(dayfile::rows(past, one("SELECT curve_id, name FROM curve_info")),
             QStringList{one("1|101(V)")});
    QCOMPARE(points(past, one("curve_1_batch_20260111_060000_20260111_115959")),
             QStringList{point(time, "2.0")});
    QCOMPARE(log.lines(), (QStringList{one("debug: openForWrite -0000- 0"),
                                       one("debug: openForWrite -0002- 1 \"101(V)\"")}));
}

void TestCurveDataDBWrite::pastDayWithoutFileGetsTodaysCurves()
{
    TestStore store;
    {
        DayFileWriter today(store.path("20260112"));
        today.addCurve(2, one("101(V)")); // ids have gaps
        today.addCurve(5, one("102(V)"));
    }
    store.restart();
    const QString past = store.path("20250611");
    const qint64 time = localTime("2025-06-11 07:00:00.000");
    const LogCapture log;
    store->appendPoint(5, time, 2.0);
    store->appendPoint(5, time + 1, 3.0);
    store->appendPoint(2, time, 4.0);
    QCOMPARE(log.lines(), QStringList{one("debug: openForWrite -0000- 0")});
    QCOMPARE(dayfile::rows(past, one("SELECT curve_id, name FROM curve_info")),
             (QStringList{one("2|101(V)"), one("5|102(V)")}));
    QCOMPARE(
        dayfile::rows(past, one("SELECT value FROM curve_5_batch_20250611_060000_20250611_115959 "
                                "ORDER BY id")),
        (QStringList{one("2.0"), one("3.0")}));
    QCOMPARE(points(past, one("curve_2_batch_20250611_060000_20250611_115959")),
             QStringList{point(time, "4.0")});
    QCOMPARE(store->readCurveData(5, time, time + 1, 0).size(), 2);
    store->appendPoint(9, time, 2.0);
    QCOMPARE(log.lines(QtWarningMsg), QStringList{QStringLiteral("曲线ID 9 在内存映射中不存在")});
    // The live path continues.
    store->appendPoint(2, at("09:00:00"), 3.0);
    QCOMPARE(points(store.path("20260112"), one("curve_2_batch_20260112_060000_20260112_115959")),
             QStringList{point(at("09:00:00"), "3.0")});
}

void TestCurveDataDBWrite::pastDayThatCannotBeSetUpIsReported()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const QString past = store.path("20250611");
    const qint64 time = localTime("2025-06-11 07:00:00.000");
    const auto db = store->openDb(past);
    QVERIFY(db);
    const LogCapture log;
    QVERIFY(ManagedQuery(*db).exec(one("PRAGMA query_only = ON")));
    for (int reading = 1; reading <= 2; ++reading) {
        store->appendPoint(1, time, 2.0);
        const QStringList warnings = log.lines(QtWarningMsg);
        QCOMPARE(warnings.size(), reading);
        QVERIFY2(warnings.last().startsWith(QStringLiteral("在新数据库中注册曲线失败: \"")),
                 qPrintable(warnings.last()));
    }
    QCOMPARE(dayfile::rows(past, one("SELECT name FROM sqlite_master")), QStringList());
    // It is repaired as soon as possible.
    QVERIFY(ManagedQuery(*db).exec(one("PRAGMA query_only = OFF")));
    store->appendPoint(1, time, 3.0);
    QCOMPARE(points(past, one("curve_1_batch_20250611_060000_20250611_115959")),
             QStringList{point(time, "3.0")});
}

void TestCurveDataDBWrite::lateReadingsLogTheBatchesOnceALoad()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    {
        DayFileWriter writer(store.path("20260111"));
        writer.addCurve(1, one("101(V)"));
        writer.addBatch(1, localTime("2026-01-11 00:00:00.000"), one("curve_1_night"), {});
    }
    const QStringList loaded{one("debug: openForWrite -0000- 1"),
                             one("debug: openForWrite -0001- \"curve_1_night\"")};
    const qint64 time = localTime("2026-01-11 07:00:00.000");
    const LogCapture log;
    for (int reading = 0; reading < 5; ++reading) {
        store->appendPoint(1, time + reading, 1.0);
    }
    QCOMPARE(log.lines(), loaded);
    // Another day's file is loaded in between.
    store->appendPoint(1, localTime("2026-01-10 07:00:00.000"), 1.0);
    for (int reading = 5; reading < 9; ++reading) {
        store->appendPoint(1, time + reading, 1.0);
    }
    QCOMPARE(log.lines().filter(one("-0000-")).size(), 3);
    QCOMPARE(
        points(store.path("20260111"), one("curve_1_batch_20260111_060000_20260111_115959")).size(),
        9);
}

/// The names in a past day's file are known once it is loaded, under its ids, and so is one
/// registered there.
void TestCurveDataDBWrite::namesOfAnotherFileComeIn()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    {
        DayFileWriter writer(store.path("20260111"));
        writer.addCurve(7, one("before(V)"));
    }
    QCOMPARE(store->curveNames(), (QMap<int, QString>{{1, one("101(V)")}}));
    store->appendPoint(1, localTime("2026-01-11 07:00:00.000"), 1.0);
    QCOMPARE(store->curveNames(),
             (QMap<int, QString>{{1, one("101(V)")}, {7, one("before(V)")}, {8, one("101(V)")}}));
}

/// Whatever has changed in memory since the file was loaded.
void TestCurveDataDBWrite::eachLateReadingStartsFromItsFile()
{
    const qint64 past = localTime("2026-01-11 07:00:00.000");
    setPresent(past);
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->registerCurve(one("102(V)"));
    store->appendPoint(1, past, 5.0);
    QCOMPARE(dayfile::execute(store.path("20260111"),
                              one("INSERT INTO curve_info VALUES (3, 'another')")),
             QString());
    setPresent(at("09:30:00"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    store->appendPoint(2, past, 6.0);
    QCOMPARE(store->curveNames().value(3), one("another"));
    QCOMPARE(store->registerCurve(one("103(V)")), 3);
    QCOMPARE(store->curveNames().value(3), one("103(V)"));
    store->appendPoint(2, past + 1, 6.0);
    QCOMPARE(store->curveNames().value(3), one("another"));

    QVERIFY(store->deleteCurveData(1));
    QCOMPARE(store->curveMetadata(1).maxValue, std::numeric_limits<double>::lowest());
    store->appendPoint(2, past + 2, 6.0);
    QCOMPARE(store->curveMetadata(1).maxValue, 5.0);
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

void TestCurveDataDBWrite::appendPointsSpreadsOverFilesAndBatches()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const QString past = store.path("20260111");
    {
        DayFileWriter writer(past);
        writer.addCurve(1, one("101(V)"));
    }
    const qint64 yesterday = localTime("2026-01-11 23:00:00.000");
    const auto x = [](qint64 time) { return static_cast<double>(time); };
    const LogCapture log;
    store->appendPoints(1, {QPointF(x(at("09:00:00")), 1.0), QPointF(x(yesterday), 2.0),
                            QPointF(x(at("03:00:00")) + 0.9, 3.0), QPointF(x(at("09:00:00")), 4.0),
                            QPointF(x(at("09:00:01")), 5.0)});
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    QCOMPARE(points(past, one("curve_1_batch_20260111_180000_20260111_235959")),
             QStringList{point(yesterday, "2.0")});
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             (QStringList{point(at("09:00:00"), "1.0"), point(at("09:00:01"), "5.0")}));
    QCOMPARE(points(store.path("20260112"), one("curve_1_batch_20260112_000000_20260112_055959")),
             QStringList{point(at("03:00:00"), "3.0")});
    // Files in path order: today's extremes continue from the past day's.
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, yesterday, at("09:00:01"), "1.0|5.0")});
}

void TestCurveDataDBWrite::appendPointsOfAnUnknownCurveDoesNothing()
{
    TestStore store;
    const QStringList before = dayfile::dump(store.path("20260112"));
    const LogCapture log;
    store->appendPoints(1, {QPointF(static_cast<double>(at("09:00:00")), 1.0)});
    store->registerCurve(one("101(V)"));
    store->appendPoints(1, {});
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT count(*) FROM batch_metadata")),
             QStringList{one("0")});
    QCOMPARE(before.filter(one("curve_metadata: ")), QStringList{one("curve_metadata: ")});
}

void TestCurveDataDBWrite::appendPointsIsHeldBackInBatchLoadMode()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->loadBatchesForCurve(1, 0, at("09:00:00"));
    store->appendPoints(1, {QPointF(static_cast<double>(at("09:00:00")), 1.0)});
    store->flushPending();
    store->flushAndDetach();
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT count(*) FROM batch_metadata")),
             QStringList{one("0")});
    store->appendPoint(1, at("09:00:01"), 2.0); // the live path is not held back
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:01"), "2.0")});
}

void TestCurveDataDBWrite::pointsWithoutATimeAreLeftOut()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoints(1, {QPointF(std::nan(""), 1.0), QPointF(1e300, 1.0),
                            QPointF(static_cast<double>(at("09:00:00")), 2.0)});
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:00"), "2.0")});
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00"), "2.0|2.0")});
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
