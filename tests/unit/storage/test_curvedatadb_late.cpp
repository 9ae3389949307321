#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "writtenrows.h"

#include <QDir>
#include <QtTest>

#include <limits>

// Readings of another day than today.

using namespace writtenrows;

class TestCurveDataDBLate : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(at("09:30:00")); }

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

private:
    const SkippedWaits m_waits;
};

void TestCurveDataDBLate::futureReadingGoesToTodaysFileUnderItsOwnDate()
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
void TestCurveDataDBLate::latePointOfYesterdayAfterMidnight()
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

void TestCurveDataDBLate::pastDayWriteGoesToThePastFile()
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

void TestCurveDataDBLate::pastDayWithOtherIdsStoresNothing()
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

void TestCurveDataDBLate::pastDayWithoutTheCurveRegistersIt()
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

void TestCurveDataDBLate::pastDayWithoutFileGetsTodaysCurves()
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

void TestCurveDataDBLate::pastDayThatCannotBeSetUpIsReported()
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

void TestCurveDataDBLate::lateReadingsLogTheBatchesOnceALoad()
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
void TestCurveDataDBLate::namesOfAnotherFileComeIn()
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
void TestCurveDataDBLate::eachLateReadingStartsFromItsFile()
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

SCN_TEST(TestCurveDataDBLate, QCoreApplication)
#include "test_curvedatadb_late.moc"
