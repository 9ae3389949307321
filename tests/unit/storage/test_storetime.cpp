#include "logcapture.h"
#include "teststore.h"
#include "timescene.h"

#include "storage/storeclock.h"

#include <QtTest>

/// What the day files hold after readings at the edges of time: every row of every table, written
/// out. The zone is that of Berlin, whose days of 2026 have 24 hours but for two.
class TestStoreTime : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { setStoreClock(nullptr); }

    void sixHourEdges();
    void midnight();
    void midnightWithTheInstrumentAhead();
    void endOfAMonth();
    void endOfAYear();
    void leapDay();
    void endOfAnOrdinaryFebruary();
    void dayOf23Hours();
    void dayOf25Hours();
    void computerSetBackByAnHour();
    void computerSetBackOverMidnight();
    void computerSetForward();
    void instrumentSetBack();
    void instrumentSetForward();
    void readingFromTheFuture();
    void dayOfAFutureReadingComes();
    void readingFromLongAgo();
    void readingFromLongAgoWithItsFile();
    void instrumentWithoutAClock();
};

void TestStoreTime::initTestCase()
{
    // Without this zone the lists below would be those of another place.
    QCOMPARE(QDateTime::fromMSecsSinceEpoch(instant("2026-01-12T12:00:00.000+00:00")).time(),
             QTime(13, 0));
    QCOMPARE(QDateTime::fromMSecsSinceEpoch(instant("2026-07-12T12:00:00.000+00:00")).time(),
             QTime(14, 0));
}

void TestStoreTime::sixHourEdges()
{
    setPresent(instant("2026-01-12T23:59:59.999+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    const char* const now = "2026-01-12T23:59:59.999+01:00";
    play(store, {{now, "2026-01-12T00:00:00.000+01:00", 1, 1.5},
                 {now, "2026-01-12T05:59:59.999+01:00", 1, 2.5},
                 {now, "2026-01-12T06:00:00.000+01:00", 1, 3.5},
                 {now, "2026-01-12T11:59:59.999+01:00", 1, 4.5},
                 {now, "2026-01-12T12:00:00.000+01:00", 1, 5.5},
                 {now, "2026-01-12T17:59:59.999+01:00", 1, 6.5},
                 {now, "2026-01-12T18:00:00.000+01:00", 1, 7.5},
                 {now, "2026-01-12T23:59:59.999+01:00", 1, 8.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768172400000|1768193999999|curve_1_batch_20260112_000000_20260112_055959
            2|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
            3|1|1768215600000|1768237199999|curve_1_batch_20260112_120000_20260112_175959
            4|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
          curve_1_batch_20260112_000000_20260112_055959
            1|1|1768172400000|1.5
            2|1|1768193999999|2.5
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768194000000|3.5
            2|1|1768215599999|4.5
          curve_1_batch_20260112_120000_20260112_175959
            1|1|1768215600000|5.5
            2|1|1768237199999|6.5
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768237200000|7.5
            2|1|1768258799999|8.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768172400000|1768258799999|1.5|8.5
        )"));
}

void TestStoreTime::midnight()
{
    setPresent(instant("2026-01-12T23:59:58.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    enlist(store, "102(Ohm)");
    play(store, {{"2026-01-12T23:59:59.998+01:00", "2026-01-12T23:59:59.998+01:00", 1, 1.5},
                 {"2026-01-12T23:59:59.999+01:00", "2026-01-12T23:59:59.999+01:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768258799998|1.5
            2|1|1768258799999|2.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|1768258799998|1768258799999|1.5|2.5
        )"));

    // The first reading of the day finds all curves registered in the day's own file.
    play(store, {{"2026-01-13T00:00:00.000+01:00", "2026-01-13T00:00:00.000+01:00", 1, -3.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768258799998|1.5
            2|1|1768258799999|2.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|1768258799998|1768258799999|1.5|2.5
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768258800000|-3.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|1768258800000|1768258800000|-3.5|-3.5
        )"));

    // A late one of the evening goes back to its file; the extremes that this file has, go on in
    // the new day's.
    play(store, {{"2026-01-13T00:00:00.300+01:00", "2026-01-12T23:59:59.990+01:00", 2, 4.5},
                 {"2026-01-13T00:00:00.300+01:00", "2026-01-13T00:00:00.200+01:00", 2, 5.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
            2|2|1768237200000|1768258799999|curve_2_batch_20260112_180000_20260112_235959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768258799998|1.5
            2|1|1768258799999|2.5
          curve_2_batch_20260112_180000_20260112_235959
            1|2|1768258799990|4.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|1768258799998|1768258799999|1.5|2.5
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
            2|2|1768258800000|1768280399999|curve_2_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768258800000|-3.5
          curve_2_batch_20260113_000000_20260113_055959
            1|2|1768258800200|5.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|1768258799998|1768258799999|1.5|2.5
            2|1768258799990|1768258800200|4.5|5.5
        )"));
}

/// The instrument's clock goes ahead of the computer's by 600 ms: its first readings of the new day
/// lie in the old day's file, in a table of the new day, and a table of the same name follows in the
/// new file.
void TestStoreTime::midnightWithTheInstrumentAhead()
{
    setPresent(instant("2026-01-12T23:59:59.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T23:59:59.300+01:00", "2026-01-12T23:59:59.900+01:00", 1, 1.5},
                 {"2026-01-12T23:59:59.500+01:00", "2026-01-13T00:00:00.100+01:00", 1, 2.5},
                 {"2026-01-12T23:59:59.999+01:00", "2026-01-13T00:00:00.000+01:00", 1, 3.5},
                 {"2026-01-13T00:00:00.000+01:00", "2026-01-13T00:00:00.600+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
            2|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768258799900|1.5
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768258800100|2.5
            2|1|1768258800000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768258799900|1768258800100|1.5|3.5
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768258800600|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768258800600|1768258800600|4.5|4.5
        )"));
}

void TestStoreTime::endOfAMonth()
{
    setPresent(instant("2026-04-30T23:59:59.999+02:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-04-30T23:59:59.999+02:00", "2026-04-30T23:59:59.999+02:00", 1, 1.5},
                 {"2026-05-01T00:00:00.000+02:00", "2026-05-01T00:00:00.000+02:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260430.db
          batch_metadata
            1|1|1777564800000|1777586399999|curve_1_batch_20260430_180000_20260430_235959
          curve_1_batch_20260430_180000_20260430_235959
            1|1|1777586399999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1777586399999|1777586399999|1.5|1.5
        20260501.db
          batch_metadata
            1|1|1777586400000|1777607999999|curve_1_batch_20260501_000000_20260501_055959
          curve_1_batch_20260501_000000_20260501_055959
            1|1|1777586400000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1777586400000|1777586400000|2.5|2.5
        )"));
}

void TestStoreTime::endOfAYear()
{
    setPresent(instant("2025-12-31T23:59:59.999+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2025-12-31T23:59:59.999+01:00", "2025-12-31T23:59:59.999+01:00", 1, 1.5},
                 {"2026-01-01T00:00:00.000+01:00", "2026-01-01T00:00:00.000+01:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20251231.db
          batch_metadata
            1|1|1767200400000|1767221999999|curve_1_batch_20251231_180000_20251231_235959
          curve_1_batch_20251231_180000_20251231_235959
            1|1|1767221999999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1767221999999|1767221999999|1.5|1.5
        20260101.db
          batch_metadata
            1|1|1767222000000|1767243599999|curve_1_batch_20260101_000000_20260101_055959
          curve_1_batch_20260101_000000_20260101_055959
            1|1|1767222000000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1767222000000|1767222000000|2.5|2.5
        )"));
}

void TestStoreTime::leapDay()
{
    setPresent(instant("2024-02-28T23:59:59.999+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2024-02-28T23:59:59.999+01:00", "2024-02-28T23:59:59.999+01:00", 1, 1.5},
                 {"2024-02-29T00:00:00.000+01:00", "2024-02-29T00:00:00.000+01:00", 1, 2.5},
                 {"2024-02-29T23:59:59.999+01:00", "2024-02-29T23:59:59.999+01:00", 1, 3.5},
                 {"2024-03-01T00:00:00.000+01:00", "2024-03-01T00:00:00.000+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20240228.db
          batch_metadata
            1|1|1709139600000|1709161199999|curve_1_batch_20240228_180000_20240228_235959
          curve_1_batch_20240228_180000_20240228_235959
            1|1|1709161199999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1709161199999|1709161199999|1.5|1.5
        20240229.db
          batch_metadata
            1|1|1709161200000|1709182799999|curve_1_batch_20240229_000000_20240229_055959
            2|1|1709226000000|1709247599999|curve_1_batch_20240229_180000_20240229_235959
          curve_1_batch_20240229_000000_20240229_055959
            1|1|1709161200000|2.5
          curve_1_batch_20240229_180000_20240229_235959
            1|1|1709247599999|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1709161200000|1709247599999|2.5|3.5
        20240301.db
          batch_metadata
            1|1|1709247600000|1709269199999|curve_1_batch_20240301_000000_20240301_055959
          curve_1_batch_20240301_000000_20240301_055959
            1|1|1709247600000|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1709247600000|1709247600000|4.5|4.5
        )"));
}

void TestStoreTime::endOfAnOrdinaryFebruary()
{
    setPresent(instant("2026-02-28T23:59:59.999+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-02-28T23:59:59.999+01:00", "2026-02-28T23:59:59.999+01:00", 1, 1.5},
                 {"2026-03-01T00:00:00.000+01:00", "2026-03-01T00:00:00.000+01:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260228.db
          batch_metadata
            1|1|1772298000000|1772319599999|curve_1_batch_20260228_180000_20260228_235959
          curve_1_batch_20260228_180000_20260228_235959
            1|1|1772319599999|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1772319599999|1772319599999|1.5|1.5
        20260301.db
          batch_metadata
            1|1|1772319600000|1772341199999|curve_1_batch_20260301_000000_20260301_055959
          curve_1_batch_20260301_000000_20260301_055959
            1|1|1772319600000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1772319600000|1772319600000|2.5|2.5
        )"));
}

/// The steps of six hours count from midnight, so after the clock has gone forward the batches start
/// an hour later by the clock, and the last one is named beyond the day that it ends with.
void TestStoreTime::dayOf23Hours()
{
    setPresent(instant("2026-03-29T00:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-03-29T00:00:00.000+01:00", "2026-03-29T00:00:00.000+01:00", 1, 1.5},
                 {"2026-03-29T01:59:59.999+01:00", "2026-03-29T01:59:59.999+01:00", 1, 2.5},
                 {"2026-03-29T03:00:00.000+02:00", "2026-03-29T03:00:00.000+02:00", 1, 3.5},
                 {"2026-03-29T06:59:59.999+02:00", "2026-03-29T06:59:59.999+02:00", 1, 4.5},
                 {"2026-03-29T07:00:00.000+02:00", "2026-03-29T07:00:00.000+02:00", 1, 5.5},
                 {"2026-03-29T12:59:59.999+02:00", "2026-03-29T12:59:59.999+02:00", 1, 6.5},
                 {"2026-03-29T13:00:00.000+02:00", "2026-03-29T13:00:00.000+02:00", 1, 7.5},
                 {"2026-03-29T19:00:00.000+02:00", "2026-03-29T19:00:00.000+02:00", 1, 8.5},
                 {"2026-03-29T23:59:59.999+02:00", "2026-03-29T23:59:59.999+02:00", 1, 9.5},
                 {"2026-03-30T00:00:00.000+02:00", "2026-03-30T00:00:00.000+02:00", 1, 10.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260329.db
          batch_metadata
            1|1|1774738800000|1774760399999|curve_1_batch_20260329_000000_20260329_065959
            2|1|1774760400000|1774781999999|curve_1_batch_20260329_070000_20260329_125959
            3|1|1774782000000|1774803599999|curve_1_batch_20260329_130000_20260329_185959
            4|1|1774803600000|1774825199999|curve_1_batch_20260329_190000_20260330_005959
          curve_1_batch_20260329_000000_20260329_065959
            1|1|1774738800000|1.5
            2|1|1774745999999|2.5
            3|1|1774746000000|3.5
            4|1|1774760399999|4.5
          curve_1_batch_20260329_070000_20260329_125959
            1|1|1774760400000|5.5
            2|1|1774781999999|6.5
          curve_1_batch_20260329_130000_20260329_185959
            1|1|1774782000000|7.5
          curve_1_batch_20260329_190000_20260330_005959
            1|1|1774803600000|8.5
            2|1|1774821599999|9.5
          curve_info
            1|101(V)
          curve_metadata
            1|1774738800000|1774821599999|1.5|9.5
        20260330.db
          batch_metadata
            1|1|1774821600000|1774843199999|curve_1_batch_20260330_000000_20260330_055959
          curve_1_batch_20260330_000000_20260330_055959
            1|1|1774821600000|10.5
          curve_info
            1|101(V)
          curve_metadata
            1|1774821600000|1774821600000|10.5|10.5
        )"));
}

/// A fifth batch holds the day's last hour.
void TestStoreTime::dayOf25Hours()
{
    setPresent(instant("2026-10-25T00:00:00.000+02:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-10-25T00:00:00.000+02:00", "2026-10-25T00:00:00.000+02:00", 1, 1.5},
                 {"2026-10-25T02:59:59.999+02:00", "2026-10-25T02:59:59.999+02:00", 1, 2.5},
                 {"2026-10-25T02:00:00.000+01:00", "2026-10-25T02:00:00.000+01:00", 1, 3.5},
                 {"2026-10-25T04:59:59.999+01:00", "2026-10-25T04:59:59.999+01:00", 1, 4.5},
                 {"2026-10-25T05:00:00.000+01:00", "2026-10-25T05:00:00.000+01:00", 1, 5.5},
                 {"2026-10-25T16:59:59.999+01:00", "2026-10-25T16:59:59.999+01:00", 1, 6.5},
                 {"2026-10-25T17:00:00.000+01:00", "2026-10-25T17:00:00.000+01:00", 1, 7.5},
                 {"2026-10-25T22:59:59.999+01:00", "2026-10-25T22:59:59.999+01:00", 1, 8.5},
                 {"2026-10-25T23:00:00.000+01:00", "2026-10-25T23:00:00.000+01:00", 1, 9.5},
                 {"2026-10-25T23:59:59.999+01:00", "2026-10-25T23:59:59.999+01:00", 1, 10.5},
                 {"2026-10-26T00:00:00.000+01:00", "2026-10-26T00:00:00.000+01:00", 1, 11.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20261025.db
          batch_metadata
            1|1|1792879200000|1792900799999|curve_1_batch_20261025_000000_20261025_045959
            2|1|1792900800000|1792922399999|curve_1_batch_20261025_050000_20261025_105959
            3|1|1792922400000|1792943999999|curve_1_batch_20261025_110000_20261025_165959
            4|1|1792944000000|1792965599999|curve_1_batch_20261025_170000_20261025_225959
            5|1|1792965600000|1792987199999|curve_1_batch_20261025_230000_20261026_045959
          curve_1_batch_20261025_000000_20261025_045959
            1|1|1792879200000|1.5
            2|1|1792889999999|2.5
            3|1|1792890000000|3.5
            4|1|1792900799999|4.5
          curve_1_batch_20261025_050000_20261025_105959
            1|1|1792900800000|5.5
          curve_1_batch_20261025_110000_20261025_165959
            1|1|1792943999999|6.5
          curve_1_batch_20261025_170000_20261025_225959
            1|1|1792944000000|7.5
            2|1|1792965599999|8.5
          curve_1_batch_20261025_230000_20261026_045959
            1|1|1792965600000|9.5
            2|1|1792969199999|10.5
          curve_info
            1|101(V)
          curve_metadata
            1|1792879200000|1792969199999|1.5|10.5
        20261026.db
          batch_metadata
            1|1|1792969200000|1792990799999|curve_1_batch_20261026_000000_20261026_055959
          curve_1_batch_20261026_000000_20261026_055959
            1|1|1792969200000|11.5
          curve_info
            1|101(V)
          curve_metadata
            1|1792969200000|1792969200000|11.5|11.5
        )"));
}

/// The instrument goes on; what it says is now the future, and stays in the same file.
void TestStoreTime::computerSetBackByAnHour()
{
    setPresent(instant("2026-01-12T12:30:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T12:30:00.000+01:00", "2026-01-12T12:30:00.000+01:00", 1, 1.5},
                 {"2026-01-12T11:30:01.000+01:00", "2026-01-12T12:30:01.000+01:00", 1, 2.5},
                 {"2026-01-12T11:30:02.000+01:00", "2026-01-12T12:30:02.000+01:00", 1, 3.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768215600000|1768237199999|curve_1_batch_20260112_120000_20260112_175959
          curve_1_batch_20260112_120000_20260112_175959
            1|1|1768217400000|1.5
            2|1|1768217401000|2.5
            3|1|1768217402000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768217400000|1768217402000|1.5|3.5
        )"));
}

void TestStoreTime::computerSetBackOverMidnight()
{
    setPresent(instant("2026-01-12T23:30:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T23:30:00.000+01:00", "2026-01-12T23:30:00.000+01:00", 1, 1.5},
                 {"2026-01-13T00:10:00.000+01:00", "2026-01-13T00:10:00.000+01:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768257000000|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768257000000|1768257000000|1.5|1.5
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768259400000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768259400000|1768259400000|2.5|2.5
        )"));

    // Back to yesterday, whose file is today's again and takes what is now the future.
    play(store, {{"2026-01-12T23:40:00.000+01:00", "2026-01-13T00:10:01.000+01:00", 1, 3.5},
                 {"2026-01-12T23:40:01.000+01:00", "2026-01-12T23:40:01.000+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
            2|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768257000000|1.5
            2|1|1768257601000|4.5
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768259401000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768257000000|1768259401000|1.5|4.5
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768259400000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768259400000|1768259400000|2.5|2.5
        )"));

    // Midnight comes a second time.
    play(store, {{"2026-01-13T00:00:00.000+01:00", "2026-01-13T00:00:00.000+01:00", 1, 5.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
            2|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768257000000|1.5
            2|1|1768257601000|4.5
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768259401000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768257000000|1768259401000|1.5|4.5
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768259400000|2.5
            2|1|1768258800000|5.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768258800000|1768259400000|2.5|5.5
        )"));
}

/// The computer is set to a week later, the instrument is not: its readings go on in the file of
/// their own day, and the extremes of that file are kept in the file of the computer's day.
void TestStoreTime::computerSetForward()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T09:00:00.000+01:00", "2026-01-12T09:00:00.000+01:00", 1, 1.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800000|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768204800000|1768204800000|1.5|1.5
        )"));

    play(store, {{"2026-01-19T09:00:01.000+01:00", "2026-01-12T09:00:01.000+01:00", 1, 2.5},
                 {"2026-01-19T09:00:02.000+01:00", "2026-01-12T09:00:02.000+01:00", 1, 3.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800000|1.5
            2|1|1768204801000|2.5
            3|1|1768204802000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768204800000|1768204800000|1.5|1.5
        20260119.db
          batch_metadata
          curve_info
            1|101(V)
          curve_metadata
            1|1768204800000|1768204802000|1.5|3.5
        )"));

    // The instrument is set right.
    play(store, {{"2026-01-19T09:01:00.000+01:00", "2026-01-19T09:00:59.000+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800000|1.5
            2|1|1768204801000|2.5
            3|1|1768204802000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768204800000|1768204800000|1.5|1.5
        20260119.db
          batch_metadata
            1|1|1768798800000|1768820399999|curve_1_batch_20260119_060000_20260119_115959
          curve_1_batch_20260119_060000_20260119_115959
            1|1|1768809659000|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768204800000|1768809659000|1.5|4.5
        )"));
}

/// The milliseconds that come again are dropped with their readings, at the cost of a row's number
/// each; the others are written after those that are there.
void TestStoreTime::instrumentSetBack()
{
    setPresent(instant("2026-01-12T12:00:10.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    const char* const now = "2026-01-12T12:00:10.000+01:00";
    play(store, {{now, "2026-01-12T12:00:00.000+01:00", 1, 1.5},
                 {now, "2026-01-12T12:00:01.000+01:00", 1, 2.5},
                 {now, "2026-01-12T11:59:59.500+01:00", 1, 3.5},
                 {now, "2026-01-12T12:00:00.000+01:00", 1, -4.5},
                 {now, "2026-01-12T12:00:00.500+01:00", 1, 5.5},
                 {now, "2026-01-12T12:00:01.000+01:00", 1, 6.5},
                 {now, "2026-01-12T12:00:01.500+01:00", 1, 0.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768215600000|1768237199999|curve_1_batch_20260112_120000_20260112_175959
            2|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768215599500|3.5
          curve_1_batch_20260112_120000_20260112_175959
            1|1|1768215600000|1.5
            2|1|1768215601000|2.5
            4|1|1768215600500|5.5
            6|1|1768215601500|0.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768215599500|1768215601500|-4.5|6.5
        )"));
}

void TestStoreTime::instrumentSetForward()
{
    setPresent(instant("2026-01-12T12:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T12:00:00.000+01:00", "2026-01-12T12:00:00.000+01:00", 1, 1.5},
                 {"2026-01-12T12:00:01.000+01:00", "2026-01-12T18:00:01.000+01:00", 1, 2.5},
                 {"2026-01-12T12:00:02.000+01:00", "2026-01-13T00:00:02.000+01:00", 1, 3.5},
                 {"2026-01-12T12:00:03.000+01:00", "2026-01-12T12:00:03.000+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768215600000|1768237199999|curve_1_batch_20260112_120000_20260112_175959
            2|1|1768237200000|1768258799999|curve_1_batch_20260112_180000_20260112_235959
            3|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260112_120000_20260112_175959
            1|1|1768215600000|1.5
            2|1|1768215603000|4.5
          curve_1_batch_20260112_180000_20260112_235959
            1|1|1768237201000|2.5
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768258802000|3.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768215600000|1768258802000|1.5|4.5
        )"));
}

/// From a millisecond ahead to the end of the next century: today's file, the table of the
/// reading's own date.
void TestStoreTime::readingFromTheFuture()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    const char* const now = "2026-01-12T09:00:00.000+01:00";
    play(store, {{now, "2026-01-12T09:00:00.001+01:00", 1, 1.5},
                 {now, "2026-01-13T09:00:00.000+01:00", 1, 2.5},
                 {now, "2026-08-01T09:00:00.000+02:00", 1, 3.5},
                 {now, "2199-12-31T23:59:59.999+01:00", 1, 4.5},
                 {now, "2026-01-12T08:59:59.000+01:00", 1, 5.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
            2|1|1768280400000|1768301999999|curve_1_batch_20260113_060000_20260113_115959
            3|1|1785556800000|1785578399999|curve_1_batch_20260801_060000_20260801_115959
            4|1|7258093200000|7258114799999|curve_1_batch_21991231_180000_21991231_235959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800001|1.5
            2|1|1768204799000|5.5
          curve_1_batch_20260113_060000_20260113_115959
            1|1|1768291200000|2.5
          curve_1_batch_20260801_060000_20260801_115959
            1|1|1785567600000|3.5
          curve_1_batch_21991231_180000_21991231_235959
            1|1|7258114799999|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768204799000|7258114799999|1.5|5.5
        )"));
}

/// The day that a reading was ahead of comes: its file is made as that of any day, and the reading
/// stays where it is.
void TestStoreTime::dayOfAFutureReadingComes()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T09:00:00.000+01:00", "2026-01-13T09:00:00.000+01:00", 1, 1.5},
                 {"2026-01-13T09:00:00.000+01:00", "2026-01-13T09:00:00.000+01:00", 1, 2.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|1768280400000|1768301999999|curve_1_batch_20260113_060000_20260113_115959
          curve_1_batch_20260113_060000_20260113_115959
            1|1|1768291200000|1.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768291200000|1768291200000|1.5|1.5
        20260113.db
          batch_metadata
            1|1|1768280400000|1768301999999|curve_1_batch_20260113_060000_20260113_115959
          curve_1_batch_20260113_060000_20260113_115959
            1|1|1768291200000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768291200000|1768291200000|2.5|2.5
        )"));
}

/// No file of that day: an empty one is left behind, the reading is lost with a warning, and the
/// extremes of all curves start again, those of its own from the lost reading.
void TestStoreTime::readingFromLongAgo()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    enlist(store, "102(Ohm)");
    play(store, {{"2026-01-12T09:00:00.000+01:00", "2026-01-12T09:00:00.000+01:00", 1, 1.5},
                 {"2026-01-12T09:00:00.000+01:00", "2026-01-12T09:00:00.000+01:00", 2, 2.5}});
    const LogCapture log;
    play(store, {{"2026-01-12T09:00:01.000+01:00", "2001-01-01T00:00:00.000+01:00", 1, 0.5}});
    QCOMPARE(log.lines(QtWarningMsg).size(), 1);
    QVERIFY2(log.lines(QtWarningMsg)
                 .constFirst()
                 .startsWith(text("在新数据库中注册曲线失败: \"no such table: curve_info")),
             qPrintable(log.lines(QtWarningMsg).constFirst()));
    QCOMPARE(allRows(store.directory()), lines(R"(
        20010101.db
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
            2|2|1768194000000|1768215599999|curve_2_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800000|1.5
          curve_2_batch_20260112_060000_20260112_115959
            1|2|1768204800000|2.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|978303600000|978303600000|0.5|0.5
            2|1768204800000|1768204800000|2.5|2.5
        )"));

    play(store, {{"2026-01-12T09:00:02.000+01:00", "2026-01-12T09:00:02.000+01:00", 1, 3.5},
                 {"2026-01-12T09:00:02.000+01:00", "2026-01-12T09:00:02.000+01:00", 2, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20010101.db
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
            2|2|1768194000000|1768215599999|curve_2_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800000|1.5
            2|1|1768204802000|3.5
          curve_2_batch_20260112_060000_20260112_115959
            1|2|1768204800000|2.5
            2|2|1768204802000|4.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
            1|978303600000|1768204802000|0.5|3.5
            2|1768204802000|1768204802000|4.5|4.5
        )"));
}

void TestStoreTime::readingFromLongAgoWithItsFile()
{
    setPresent(instant("2001-01-01T00:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2001-01-01T00:00:00.000+01:00", "2001-01-01T00:00:00.000+01:00", 1, 1.5},
                 {"2026-01-12T09:00:00.000+01:00", "2026-01-12T09:00:00.000+01:00", 1, 2.5},
                 {"2026-01-12T09:00:01.000+01:00", "2001-01-01T00:00:01.000+01:00", 1, 3.5},
                 {"2026-01-12T09:00:01.000+01:00", "2001-01-01T06:00:00.000+01:00", 1, 4.5},
                 {"2026-01-12T09:00:02.000+01:00", "2026-01-12T09:00:02.000+01:00", 1, 0.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        20010101.db
          batch_metadata
            1|1|978303600000|978325199999|curve_1_batch_20010101_000000_20010101_055959
            2|1|978325200000|978346799999|curve_1_batch_20010101_060000_20010101_115959
          curve_1_batch_20010101_000000_20010101_055959
            1|1|978303600000|1.5
            2|1|978303601000|3.5
          curve_1_batch_20010101_060000_20010101_115959
            1|1|978325200000|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|978303600000|978303600000|1.5|1.5
        20260112.db
          batch_metadata
            1|1|1768194000000|1768215599999|curve_1_batch_20260112_060000_20260112_115959
          curve_1_batch_20260112_060000_20260112_115959
            1|1|1768204800000|2.5
            2|1|1768204802000|0.5
          curve_info
            1|101(V)
          curve_metadata
            1|978303600000|1768204802000|0.5|4.5
        )"));
}

/// The clocks of both stand at the beginning of time, and a little before it.
void TestStoreTime::instrumentWithoutAClock()
{
    setPresent(instant("1970-01-01T06:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    const char* const now = "1970-01-01T06:00:00.000+01:00";
    play(store, {{now, "1970-01-01T00:00:00.000+01:00", 1, 1.5},
                 {now, "1970-01-01T00:59:59.999+01:00", 1, 2.5},
                 {now, "1970-01-01T01:00:00.000+01:00", 1, 3.5},
                 {now, "1970-01-01T06:00:00.000+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lines(R"(
        19700101.db
          batch_metadata
            1|1|-3600000|17999999|curve_1_batch_19700101_000000_19700101_055959
            2|1|18000000|39599999|curve_1_batch_19700101_060000_19700101_115959
          curve_1_batch_19700101_000000_19700101_055959
            1|1|-3600000|1.5
            2|1|-1|2.5
            3|1|0|3.5
          curve_1_batch_19700101_060000_19700101_115959
            1|1|18000000|4.5
          curve_info
            1|101(V)
          curve_metadata
            1|-3600000|18000000|1.5|4.5
        )"));
}

QTEST_GUILESS_MAIN(TestStoreTime)
#include "test_storetime.moc"
