#include "storechild.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "timescene.h"

#include <QFile>
#include <QtTest>

// Zones whose clocks change at other hours than Berlin's, each in a process of its own: this
// program restarts itself with the zone set, as the program runs on a desktop there.

/// The scenes, each for one zone. Run in the child.
class StoreTimeScenes : public QObject
{
    Q_OBJECT

private slots:
    void plainMidnight();
    void skippedMidnight();
    void lastHourTwice();
    void firstHourTwice();
    void midnightTwice();
    void halfAnHourBack();
    void halfAnHourForward();
    void skippedDay();
    void computersOwnClock();
};

class TestStoreTimeZones : public QObject
{
    Q_OBJECT

private slots:
    void sceneInItsZone_data();
    void sceneInItsZone();
    void computersOwnClock();
};

void StoreTimeScenes::plainMidnight()
{
    setPresent(instant("2026-01-12T23:59:59.999+08:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T23:59:59.999+08:00", "2026-01-12T23:59:59.999+08:00", 1, 1.5},
                 {"2026-01-13T00:00:00.000+08:00", "2026-01-13T00:00:00.000+08:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768212000000|1768233599999|curve_1_batch_20260112_180000_20260112_235959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768233599999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768233599999|1768233599999|1.5|1.5
        20260113.db
          batch_metadata
            1|1|1768233600000|1768255199999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768233600000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768233600000|1768233600000|2.5|2.5
        )"));
}

/// The day begins at one o'clock and has 23 hours.
void StoreTimeScenes::skippedMidnight()
{
    setPresent(instant("2018-11-03T23:59:59.999-03:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2018-11-03T23:59:59.999-03:00", "2018-11-03T23:59:59.999-03:00", 1, 1.5},
                 {"2018-11-04T01:00:00.000-02:00", "2018-11-04T01:00:00.000-02:00", 1, 2.5},
                 {"2018-11-04T07:00:00.000-02:00", "2018-11-04T06:59:59.999-02:00", 1, 3.5},
                 {"2018-11-04T07:00:00.000-02:00", "2018-11-04T07:00:00.000-02:00", 1, 4.5},
                 {"2018-11-04T23:59:59.999-02:00", "2018-11-04T23:59:59.999-02:00", 1, 5.5},
                 {"2018-11-05T00:00:00.000-02:00", "2018-11-05T00:00:00.000-02:00", 1, 6.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20181103.db
          batch_metadata
            1|1|1541278800000|1541300399999|curve_1_batch_20181103_180000_20181103_235959
          curve_1_batch_20181103_180000_20181103_235959
            1|1|1541300399999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1541300399999|1541300399999|1.5|1.5
        20181104.db
          batch_metadata
            1|1|1541300400000|1541321999999|curve_1_batch_20181104_010000_20181104_065959
            2|1|1541322000000|1541343599999|curve_1_batch_20181104_070000_20181104_125959
            3|1|1541365200000|1541386799999|curve_1_batch_20181104_190000_20181105_005959
          curve_1_batch_20181104_010000_20181104_065959
            1|1|1541300400000|2.5
            2|1|1541321999999|3.5
          curve_1_batch_20181104_070000_20181104_125959
            1|1|1541322000000|4.5
          curve_1_batch_20181104_190000_20181105_005959
            1|1|1541383199999|5.5
          curve_info
            1|101(V)
          curve_metadata
            1|1541300400000|1541383199999|2.5|5.5
        20181105.db
          batch_metadata
            1|1|1541383200000|1541404799999|curve_1_batch_20181105_000000_20181105_055959
          curve_1_batch_20181105_000000_20181105_055959
            1|1|1541383200000|6.5
          curve_info
            1|101(V)
          curve_metadata
            1|1541383200000|1541383200000|6.5|6.5
        )"));
}

/// At midnight the clock goes back to eleven: the day has 25 hours, the fifth batch has the second
/// eleven o'clock.
void StoreTimeScenes::lastHourTwice()
{
    setPresent(instant("2018-02-17T23:00:00.000-02:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2018-02-17T23:00:00.000-02:00", "2018-02-17T23:00:00.000-02:00", 1, 1.5},
                 {"2018-02-17T23:59:59.999-02:00", "2018-02-17T23:59:59.999-02:00", 1, 2.5},
                 {"2018-02-17T23:00:00.000-03:00", "2018-02-17T23:00:00.000-03:00", 1, 3.5},
                 {"2018-02-17T23:59:59.999-03:00", "2018-02-17T23:59:59.999-03:00", 1, 4.5},
                 {"2018-02-18T00:00:00.000-03:00", "2018-02-18T00:00:00.000-03:00", 1, 5.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20180217.db
          batch_metadata
            1|1|1518897600000|1518919199999|curve_1_batch_20180217_180000_20180217_235959
            2|1|1518919200000|1518940799999|curve_1_batch_20180217_230000_20180218_045959
          curve_1_batch_20180217_180000_20180217_235959
            1|1|1518915600000|1.5
            2|1|1518919199999|2.5
          curve_1_batch_20180217_230000_20180218_045959
            1|1|1518919200000|3.5
            2|1|1518922799999|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1518915600000|1518922799999|1.5|4.5
        20180218.db
          batch_metadata
            1|1|1518922800000|1518944399999|curve_1_batch_20180218_000000_20180218_055959
          curve_1_batch_20180218_000000_20180218_055959
            1|1|1518922800000|5.5
          curve_info
            1|101(V)
          curve_metadata
            1|1518922800000|1518922800000|5.5|5.5
        )"));
}

/// At one o'clock the clock goes back to midnight of the same date, which starts with the first.
void StoreTimeScenes::firstHourTwice()
{
    setPresent(instant("2025-11-01T23:59:59.999-04:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2025-11-01T23:59:59.999-04:00", "2025-11-01T23:59:59.999-04:00", 1, 1.5},
                 {"2025-11-02T00:00:00.000-04:00", "2025-11-02T00:00:00.000-04:00", 1, 2.5},
                 {"2025-11-02T00:59:59.999-04:00", "2025-11-02T00:59:59.999-04:00", 1, 3.5},
                 {"2025-11-02T00:00:00.000-05:00", "2025-11-02T00:00:00.000-05:00", 1, 4.5},
                 {"2025-11-02T05:00:00.000-05:00", "2025-11-02T05:00:00.000-05:00", 1, 5.5},
                 {"2025-11-02T23:59:59.999-05:00", "2025-11-02T23:59:59.999-05:00", 1, 6.5},
                 {"2025-11-03T00:00:00.000-05:00", "2025-11-03T00:00:00.000-05:00", 1, 7.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20251101.db
          batch_metadata
            1|1|1762034400000|1762055999999|curve_1_batch_20251101_180000_20251101_235959
          curve_1_batch_20251101_180000_20251101_235959
            1|1|1762055999999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1762055999999|1762055999999|1.5|1.5
        20251102.db
          batch_metadata
            1|1|1762056000000|1762077599999|curve_1_batch_20251102_000000_20251102_045959
            2|1|1762077600000|1762099199999|curve_1_batch_20251102_050000_20251102_105959
            3|1|1762142400000|1762163999999|curve_1_batch_20251102_230000_20251103_045959
          curve_1_batch_20251102_000000_20251102_045959
            1|1|1762056000000|2.5
            2|1|1762059599999|3.5
            3|1|1762059600000|4.5
          curve_1_batch_20251102_050000_20251102_105959
            1|1|1762077600000|5.5
          curve_1_batch_20251102_230000_20251103_045959
            1|1|1762145999999|6.5
          curve_info
            1|101(V)
          curve_metadata
            1|1762056000000|1762145999999|2.5|6.5
        20251103.db
          batch_metadata
            1|1|1762146000000|1762167599999|curve_1_batch_20251103_000000_20251103_055959
          curve_1_batch_20251103_000000_20251103_055959
            1|1|1762146000000|7.5
          curve_info
            1|101(V)
          curve_metadata
            1|1762146000000|1762146000000|7.5|7.5
        )"));
}

/// At one minute past midnight the clock goes back to the evening of the day before. Readings in
/// that hour go to the file of their own date, in the table of the first batch, with a warning;
/// then the new date starts for the second time.
void StoreTimeScenes::midnightTwice()
{
    const LogCapture log;
    setPresent(instant("2010-11-06T23:59:59.999-02:30"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2010-11-06T23:59:59.999-02:30", "2010-11-06T23:59:59.999-02:30", 1, 1.5},
                 {"2010-11-07T00:00:59.999-02:30", "2010-11-07T00:00:59.999-02:30", 1, 2.5}});
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    play(store, {{"2010-11-06T23:01:00.000-03:30", "2010-11-06T23:01:00.000-03:30", 1, 3.5},
                 {"2010-11-06T23:59:59.999-03:30", "2010-11-06T23:59:59.999-03:30", 1, 4.5}});
    QVERIFY(!log.lines(QtWarningMsg).isEmpty());
    for (const QString& warning : log.lines(QtWarningMsg)) {
        QCOMPARE(warning, text("分片日期与数据日期不匹配！数据日期: \"2010-11-06\" "
                               "分片日期: \"2010-11-07\" 强制对齐到数据日期"));
    }
    play(store, {{"2010-11-07T00:00:00.000-03:30", "2010-11-07T00:00:00.000-03:30", 1, 5.5},
                 {"2010-11-07T05:00:00.000-03:30", "2010-11-07T05:00:00.000-03:30", 1, 6.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20101106.db
          batch_metadata
            1|1|1289075400000|1289096999999|curve_1_batch_20101106_180000_20101106_235959
            2|1|1289010600000|1289032199999|curve_1_batch_20101106_000000_20101106_055959
          curve_1_batch_20101106_000000_20101106_055959
            1|1|1289097060000|3.5
            2|1|1289100599999|4.5
          curve_1_batch_20101106_180000_20101106_235959
            1|1|1289096999999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1289096999999|1289100599999|1.5|4.5
        20101107.db
          batch_metadata
            1|1|1289097000000|1289118599999|curve_1_batch_20101107_000000_20101107_045959
            2|1|1289118600000|1289140199999|curve_1_batch_20101107_050000_20101107_105959
          curve_1_batch_20101107_000000_20101107_045959
            1|1|1289097059999|2.5
            2|1|1289100600000|5.5
          curve_1_batch_20101107_050000_20101107_105959
            1|1|1289118600000|6.5
          curve_info
            1|101(V)
          curve_metadata
            1|1289097059999|1289118600000|2.5|6.5
        )"));

    // A read finds them if it reaches back to that batch.
    const auto values = [&store](const char* start, const char* end) {
        QVector<double> found;
        for (const QPointF& point : store->readCurveData(1, instant(start), instant(end), 0)) {
            found.append(point.y());
        }
        return found;
    };
    QCOMPARE(values("2010-11-06T23:00:00.000-02:30", "2010-11-06T23:59:59.999-03:30"),
             QVector<double>{1.5});
    QCOMPARE(values("2010-11-06T05:00:00.000-02:30", "2010-11-06T23:59:59.999-03:30"),
             (QVector<double>{1.5, 3.5, 4.5}));
}

/// A day of 24 and a half hours.
void StoreTimeScenes::halfAnHourBack()
{
    setPresent(instant("2026-04-05T01:30:00.000+11:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-04-05T01:30:00.000+11:00", "2026-04-05T01:30:00.000+11:00", 1, 1.5},
                 {"2026-04-05T01:30:00.000+10:30", "2026-04-05T01:30:00.000+10:30", 1, 2.5},
                 {"2026-04-05T05:30:00.000+10:30", "2026-04-05T05:29:59.999+10:30", 1, 3.5},
                 {"2026-04-05T05:30:00.000+10:30", "2026-04-05T05:30:00.000+10:30", 1, 4.5},
                 {"2026-04-05T23:30:00.000+10:30", "2026-04-05T23:29:59.999+10:30", 1, 5.5},
                 {"2026-04-05T23:30:00.000+10:30", "2026-04-05T23:30:00.000+10:30", 1, 6.5},
                 {"2026-04-06T00:00:00.000+10:30", "2026-04-06T00:00:00.000+10:30", 1, 7.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260405.db
          batch_metadata
            1|1|1775307600000|1775329199999|curve_1_batch_20260405_000000_20260405_052959
            2|1|1775329200000|1775350799999|curve_1_batch_20260405_053000_20260405_112959
            3|1|1775372400000|1775393999999|curve_1_batch_20260405_173000_20260405_232959
            4|1|1775394000000|1775415599999|curve_1_batch_20260405_233000_20260406_052959
          curve_1_batch_20260405_000000_20260405_052959
            1|1|1775313000000|1.5
            2|1|1775314800000|2.5
            3|1|1775329199999|3.5
          curve_1_batch_20260405_053000_20260405_112959
            1|1|1775329200000|4.5
          curve_1_batch_20260405_173000_20260405_232959
            1|1|1775393999999|5.5
          curve_1_batch_20260405_233000_20260406_052959
            1|1|1775394000000|6.5
          curve_info
            1|101(V)
          curve_metadata
            1|1775313000000|1775394000000|1.5|6.5
        20260406.db
          batch_metadata
            1|1|1775395800000|1775417399999|curve_1_batch_20260406_000000_20260406_055959
          curve_1_batch_20260406_000000_20260406_055959
            1|1|1775395800000|7.5
          curve_info
            1|101(V)
          curve_metadata
            1|1775395800000|1775395800000|7.5|7.5
        )"));
}

/// A day of 23 and a half hours.
void StoreTimeScenes::halfAnHourForward()
{
    setPresent(instant("2026-10-04T01:59:59.999+10:30"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-10-04T01:59:59.999+10:30", "2026-10-04T01:59:59.999+10:30", 1, 1.5},
                 {"2026-10-04T02:30:00.000+11:00", "2026-10-04T02:30:00.000+11:00", 1, 2.5},
                 {"2026-10-04T06:30:00.000+11:00", "2026-10-04T06:30:00.000+11:00", 1, 3.5},
                 {"2026-10-04T23:59:59.999+11:00", "2026-10-04T23:59:59.999+11:00", 1, 4.5},
                 {"2026-10-05T00:00:00.000+11:00", "2026-10-05T00:00:00.000+11:00", 1, 5.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20261004.db
          batch_metadata
            1|1|1791034200000|1791055799999|curve_1_batch_20261004_000000_20261004_062959
            2|1|1791055800000|1791077399999|curve_1_batch_20261004_063000_20261004_122959
            3|1|1791099000000|1791120599999|curve_1_batch_20261004_183000_20261005_002959
          curve_1_batch_20261004_000000_20261004_062959
            1|1|1791041399999|1.5
            2|1|1791041400000|2.5
          curve_1_batch_20261004_063000_20261004_122959
            1|1|1791055800000|3.5
          curve_1_batch_20261004_183000_20261005_002959
            1|1|1791118799999|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1791041399999|1791118799999|1.5|4.5
        20261005.db
          batch_metadata
            1|1|1791118800000|1791140399999|curve_1_batch_20261005_000000_20261005_055959
          curve_1_batch_20261005_000000_20261005_055959
            1|1|1791118800000|5.5
          curve_info
            1|101(V)
          curve_metadata
            1|1791118800000|1791118800000|5.5|5.5
        )"));
}

/// The island moved to the other side of the date line: the 30th of December never happened.
void StoreTimeScenes::skippedDay()
{
    setPresent(instant("2011-12-29T23:59:59.999-10:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2011-12-29T23:59:59.999-10:00", "2011-12-29T23:59:59.999-10:00", 1, 1.5},
                 {"2011-12-31T00:00:00.000+14:00", "2011-12-31T00:00:00.000+14:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20111229.db
          batch_metadata
            1|1|1325217600000|1325239199999|curve_1_batch_20111229_180000_20111229_235959
          curve_1_batch_20111229_180000_20111229_235959
            1|1|1325239199999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1325239199999|1325239199999|1.5|1.5
        20111231.db
          batch_metadata
            1|1|1325239200000|1325260799999|curve_1_batch_20111231_000000_20111231_055959
          curve_1_batch_20111231_000000_20111231_055959
            1|1|1325239200000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1325239200000|1325239200000|2.5|2.5
        )"));
}

/// The clock is not replaced here: the time shifter sets the computer's own to the local time in a
/// file.
void StoreTimeScenes::computersOwnClock()
{
    const QString clockFile = qEnvironmentVariable("FAKETIME_TIMESTAMP_FILE");
    const auto setClock = [&clockFile](const char* localTime, const char* moment) {
        QFile file(clockFile);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(localTime) > 0);
        file.close();
        QCOMPARE(QDateTime::currentMSecsSinceEpoch(), instant(moment));
    };
    setClock("2026-01-12 23:59:59", "2026-01-12T23:59:59.000+08:00");
    TestStore store;
    store->registerCurve(text("101(V)"));
    store->appendPoint(1, instant("2026-01-12T23:59:58.999+08:00"), 1.5);
    store->appendPoint(1, instant("2026-01-13T00:00:00.250+08:00"), 2.5);
    setClock("2026-01-13 00:00:01", "2026-01-13T00:00:01.000+08:00");
    store->appendPoint(1, instant("2026-01-13T00:00:00.750+08:00"), 3.5);
    setClock("2026-01-12 23:00:00", "2026-01-12T23:00:00.000+08:00");
    store->appendPoint(1, instant("2026-01-13T00:00:01.250+08:00"), 4.5);
    store->appendPoint(1, instant("2026-01-12T22:59:59.000+08:00"), 5.5);
    setClock("2026-02-01 00:00:00", "2026-02-01T00:00:00.000+08:00");
    store->appendPoint(1, instant("2026-02-01T00:00:00.000+08:00"), 6.5);
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768212000000|1768233599999|curve_1_batch_20260112_180000_20260112_235959
            2|1|1768233600000|1768255199999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768233598999|1.5
            2|1|1768229999000|5.5
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768233600250|2.5
            2|1|1768233601250|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768229999000|1768233601250|1.5|5.5
        20260113.db
          batch_metadata
            1|1|1768233600000|1768255199999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768233600750|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768233600750|1768233600750|3.5|3.5
        20260201.db
          batch_metadata
            1|1|1769875200000|1769896799999|curve_1_batch_20260201_000000_20260201_055959
          curve_1_batch_20260201_000000_20260201_055959
            1|1|1769875200000|6.5
          curve_info
            1|101(V)
          curve_metadata
            1|1769875200000|1769875200000|6.5|6.5
        )"));
}

void TestStoreTimeZones::sceneInItsZone_data()
{
    QTest::addColumn<QString>("scene");
    QTest::addColumn<QString>("zone");
    const auto row = [](const char* scene, const char* zone) {
        QTest::newRow(scene) << text(scene) << text(zone);
    };
    row("plainMidnight", "Asia/Shanghai");
    row("skippedMidnight", "America/Sao_Paulo");
    row("lastHourTwice", "America/Sao_Paulo");
    row("firstHourTwice", "America/Havana");
    row("midnightTwice", "America/St_Johns");
    row("halfAnHourBack", "Australia/Lord_Howe");
    row("halfAnHourForward", "Australia/Lord_Howe");
    row("skippedDay", "Pacific/Apia");
}

void TestStoreTimeZones::sceneInItsZone()
{
    QFETCH(QString, scene);
    QFETCH(QString, zone);
    const ChildScene child(scene, {{text("TZ"), zone}});
    QVERIFY2(child.passed(), qPrintable(child.output()));
}

void TestStoreTimeZones::computersOwnClock()
{
    if (qstrlen(SCN_FAKETIME_LIBRARY) == 0) {
        SCN_SKIP(text("the package faketime is not installed"));
    }
    const QTemporaryDir directory;
    const QString clockFile = directory.filePath(text("clock"));
    {
        QFile file(clockFile);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("2026-01-12 23:59:59") > 0);
    }
    const ChildScene child(text("computersOwnClock"),
                           {{text("TZ"), text("Asia/Shanghai")},
                            {text("FAKETIME_TIMESTAMP_FILE"), clockFile},
                            {text("FAKETIME_NO_CACHE"), text("1")},
                            {text("FAKETIME_DONT_FAKE_MONOTONIC"), text("1")},
                            {text("LD_PRELOAD"), text(SCN_FAKETIME_LIBRARY)}});
    QVERIFY2(child.passed(), qPrintable(child.output()));
}

namespace {

int runTestOrScene(int argc, char** argv)
{
    return qEnvironmentVariableIsSet(ChildScene::kMark)
               ? testprogram::run<StoreTimeScenes, QCoreApplication>(argc, argv)
               : testprogram::run<TestStoreTimeZones, QCoreApplication>(argc, argv);
}

} // namespace

SCN_TEST_RUN(&runTestOrScene)
#include "test_storetimezones.moc"
