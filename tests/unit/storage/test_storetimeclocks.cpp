#include "skippedwaits.h"
#include "storage/storeclock.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "timescene.h"

#include <QtTest>

#include <limits>

/// The contents of the day files after a clock was set, and after readings from the future and from
/// long ago: every row of every table, written out. The zone is Berlin's.
class TestStoreTimeClocks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { scn::setStoreClock(nullptr); }

    void computerSetBackByAnHour();
    void computerSetBackOverMidnight();
    void midnightComesASecondTime();
    void computerSetForward();
    void instrumentSetBack();
    void instrumentSetForward();
    void readingFromTheFuture();
    void dayOfAFutureReadingComes();
    void readingFromLongAgo();
    void readingFromLongAgoWithItsFile();
    void instrumentWithoutAClock();
    void timesThatAreNone();

private:
    const SkippedWaits m_waits;
};

void TestStoreTimeClocks::initTestCase()
{
    // In another zone the lists below would differ.
    QCOMPARE(QDateTime::fromMSecsSinceEpoch(instant("2026-01-12T12:00:00.000+00:00")).time(),
             QTime(13, 0));
    QCOMPARE(QDateTime::fromMSecsSinceEpoch(instant("2026-07-12T12:00:00.000+00:00")).time(),
             QTime(14, 0));
}

/// The instrument continues; its time is now the future and stays in the same file.
void TestStoreTimeClocks::computerSetBackByAnHour()
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

void TestStoreTimeClocks::computerSetBackOverMidnight()
{
    setPresent(instant("2026-01-12T23:30:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T23:30:00.000+01:00", "2026-01-12T23:30:00.000+01:00", 1, 1.5},
                 {"2026-01-13T00:10:00.000+01:00", "2026-01-13T00:10:00.000+01:00", 1, 2.5}});
    const QStringList morning = lines(R"(
        20260113.db
          batch_metadata
            1|1|1768258800000|1768280399999|curve_1_batch_20260113_000000_20260113_055959
          curve_1_batch_20260113_000000_20260113_055959
            1|1|1768259400000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|1768259400000|1768259400000|2.5|2.5
        )");
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
        )") + morning);

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
        )") + morning);
}

void TestStoreTimeClocks::midnightComesASecondTime()
{
    setPresent(instant("2026-01-12T23:30:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    play(store, {{"2026-01-12T23:30:00.000+01:00", "2026-01-12T23:30:00.000+01:00", 1, 1.5},
                 {"2026-01-13T00:10:00.000+01:00", "2026-01-13T00:10:00.000+01:00", 1, 2.5},
                 {"2026-01-12T23:40:00.000+01:00", "2026-01-13T00:10:01.000+01:00", 1, 3.5},
                 {"2026-01-12T23:40:01.000+01:00", "2026-01-12T23:40:01.000+01:00", 1, 4.5},
                 {"2026-01-13T00:00:00.000+01:00", "2026-01-13T00:00:00.000+01:00", 1, 5.5}});
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

/// The computer is set a week ahead, the instrument is not: its readings continue in the file of
/// their own day, and that file's extremes are kept in the file of the computer's day.
void TestStoreTimeClocks::computerSetForward()
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
    const QStringList lateFile = lines(R"(
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
        )");
    QCOMPARE(allRows(store.directory()), lateFile + lines(R"(
        20260119.db
          batch_metadata
          curve_info
            1|101(V)
          curve_metadata
            1|1768204800000|1768204802000|1.5|3.5
        )"));

    // The instrument's clock is corrected.
    play(store, {{"2026-01-19T09:01:00.000+01:00", "2026-01-19T09:00:59.000+01:00", 1, 4.5}});
    QCOMPARE(allRows(store.directory()), lateFile + lines(R"(
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

/// Milliseconds that recur are dropped with their readings, each using up a row number; the others
/// are written after those already there.
void TestStoreTimeClocks::instrumentSetBack()
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

void TestStoreTimeClocks::instrumentSetForward()
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
void TestStoreTimeClocks::readingFromTheFuture()
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

/// The day that a reading was ahead of comes: its file is created as usual, and the reading stays
/// where it is.
void TestStoreTimeClocks::dayOfAFutureReadingComes()
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

/// No file of that day: one with today's curves is made, and the extremes of all curves start again.
void TestStoreTimeClocks::readingFromLongAgo()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    enlist(store, "102(Ohm)");
    play(store, {{"2026-01-12T09:00:00.000+01:00", "2026-01-12T09:00:00.000+01:00", 1, 1.5},
                 {"2026-01-12T09:00:00.000+01:00", "2026-01-12T09:00:00.000+01:00", 2, 2.5}});
    const LogCapture log;
    play(store, {{"2026-01-12T09:00:01.000+01:00", "2001-01-01T00:00:00.000+01:00", 1, 0.5}});
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    const QStringList oldFile = lines(R"(
        20010101.db
          batch_metadata
            1|1|978303600000|978325199999|curve_1_batch_20010101_000000_20010101_055959
          curve_1_batch_20010101_000000_20010101_055959
            1|1|978303600000|0.5
          curve_info
            1|101(V)
            2|102(Ohm)
          curve_metadata
        )");
    QCOMPARE(allRows(store.directory()), oldFile + lines(R"(
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
    QCOMPARE(allRows(store.directory()), oldFile + lines(R"(
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

void TestStoreTimeClocks::readingFromLongAgoWithItsFile()
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

/// Both clocks are at the epoch, and slightly before it.
void TestStoreTimeClocks::instrumentWithoutAClock()
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

/// No calendar reaches that far: nothing is stored and nothing logged. What a calendar does reach
/// is stored, years of five and six digits included.
void TestStoreTimeClocks::timesThatAreNone()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    const LogCapture log;
    for (const qint64 none :
         {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(),
          Q_INT64_C(8640000000000001), Q_INT64_C(-8640000000000001)}) {
        store->appendPoint(1, none, 1.5);
    }
    for (const qint64 far : {Q_INT64_C(253402300799999), Q_INT64_C(8640000000000000)}) {
        store->appendPoint(1, far, 2.5);
    }
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260112.db
          batch_metadata
            1|1|253402297200000|253402318799999|curve_1_batch_100000101_000000_100000101_055959
            2|1|8639999992800000|8640000014399999|curve_1_batch_2757600913_000000_2757600913_055959
          curve_1_batch_100000101_000000_100000101_055959
            1|1|253402300799999|2.5
          curve_1_batch_2757600913_000000_2757600913_055959
            1|1|8640000000000000|2.5
          curve_info
            1|101(V)
          curve_metadata
            1|253402300799999|8640000000000000|2.5|2.5
        )"));
}

SCN_TEST(TestStoreTimeClocks, QCoreApplication)
#include "test_storetimeclocks.moc"
