#include "dayfilewriter.h"
#include "storage/connectionpool.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storage/timeslice.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace scn;

namespace {

constexpr int kRandomMoments = 1000;
constexpr quint32 kSeed = 20260112;

/// Zones whose clocks change at odd hours: in the middle of the night, at midnight itself, a minute
/// after it, by half an hour, never.
constexpr const char* kZones[] = {"UTC",
                                  "Europe/Berlin",
                                  "America/St_Johns",
                                  "America/Sao_Paulo",
                                  "America/Havana",
                                  "Australia/Lord_Howe",
                                  "Asia/Kathmandu"};

bool sameFacts(const TimeSlice& left, const TimeSlice& right)
{
    return left.dateKey == right.dateKey && left.batchStart == right.batchStart &&
           left.batchName == right.batchName && left.ownFile == right.ownFile;
}

} // namespace

class TestShardNaming : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(localTime("2026-06-01 12:00:00.000")); }

    void batchNamesOfADay_data();
    void batchNamesOfADay();
    void keysOfATime();
    void futureReadingHasTodaysKeyButItsOwnBatch();
    void presentMomentIsNotTheFuture();
    void timesBefore1970StayOnTheirOwnDate_data();
    void timesBefore1970StayOnTheirOwnDate();
    void dayOf25HoursHasAFifthBatch();
    void dayOf23HoursHasAShortLastBatch();
    void batchThatLeavesItsDateIsRepaired();
    void skippedMidnightKeepsTheDate();
    void repeatedMidnightStartsTheDateOnce();
    void dateKeyFromPath_data();
    void dateKeyFromPath();
    void hourKeyFromPath();
    void tableNames();
    void literalsDoubleTheirQuotes();
    void slicesAgreeWithTheFunctions();
    void sliceOfARepairedBatchIsOneMillisecond();
};

void TestShardNaming::batchNamesOfADay_data()
{
    QTest::addColumn<QByteArray>("time");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* time, const char* name) {
        QTest::newRow(time) << QByteArray(time) << QString::fromLatin1(name);
    };
    row("2026-01-12 00:00:00.000", "batch_20260112_000000_20260112_055959");
    row("2026-01-12 05:59:59.999", "batch_20260112_000000_20260112_055959");
    row("2026-01-12 06:00:00.000", "batch_20260112_060000_20260112_115959");
    row("2026-01-12 07:30:00.000", "batch_20260112_060000_20260112_115959");
    row("2026-01-12 11:59:59.999", "batch_20260112_060000_20260112_115959");
    row("2026-01-12 12:00:00.000", "batch_20260112_120000_20260112_175959");
    row("2026-01-12 18:00:00.000", "batch_20260112_180000_20260112_235959");
    row("2026-01-12 23:59:59.999", "batch_20260112_180000_20260112_235959");
    row("2024-02-29 06:00:00.001", "batch_20240229_060000_20240229_115959");
    row("2025-12-31 23:59:59.999", "batch_20251231_180000_20251231_235959");
    row("2026-01-01 00:00:00.000", "batch_20260101_000000_20260101_055959");
}

void TestShardNaming::batchNamesOfADay()
{
    QFETCH(QByteArray, time);
    QFETCH(QString, name);
    for (const char* zone : kZones) {
        const ZoneGuard guard(zone);
        const qint64 timestamp = localTime(time.constData());
        QCOMPARE(makeBatchName(timestamp), name);
        QCOMPARE(makeTableName(3, makeBatchName(timestamp)), QStringLiteral("curve_3_") + name);
        const qint64 start = alignToBatchStart(timestamp);
        QVERIFY(start <= timestamp && timestamp - start <= kBatchSpanMs);
    }
}

void TestShardNaming::keysOfATime()
{
    const qint64 time = localTime("2026-01-12 07:05:09.123");
    QCOMPARE(formatHourKey(time), QStringLiteral("2026011207"));
    QCOMPARE(formatMinuteKey(time), QStringLiteral("202601120705"));
    QCOMPARE(formatBatchStamp(time), QStringLiteral("20260112_070509"));
    QCOMPARE(dateKeyForTime(time), QStringLiteral("20260112"));
    QCOMPARE(todayKey(), QStringLiteral("20260601"));
}

void TestShardNaming::futureReadingHasTodaysKeyButItsOwnBatch()
{
    const qint64 future = localTime("2026-06-03 07:00:00.000");
    QCOMPARE(dateKeyForTime(future), QStringLiteral("20260601"));
    QCOMPARE(makeBatchName(future), QStringLiteral("batch_20260603_060000_20260603_115959"));
}

void TestShardNaming::presentMomentIsNotTheFuture()
{
    const qint64 midnight = localTime("2026-06-02 00:00:00.000");
    setPresent(midnight - 1);
    QCOMPARE(dateKeyForTime(midnight), QStringLiteral("20260601"));
    setPresent(midnight);
    QCOMPARE(dateKeyForTime(midnight), QStringLiteral("20260602"));
}

void TestShardNaming::timesBefore1970StayOnTheirOwnDate_data()
{
    QTest::addColumn<qint64>("timestamp");
    QTest::newRow("last millisecond of 1969") << qint64(-1);
    QTest::newRow("one batch before") << -kBatchLengthMs;
    QTest::newRow("one batch and a bit") << -kBatchLengthMs - 1;
    QTest::newRow("one day") << -kDayLengthMs;
    QTest::newRow("1915") << qint64(-1735689599999);
}

void TestShardNaming::timesBefore1970StayOnTheirOwnDate()
{
    QFETCH(qint64, timestamp);
    for (const char* zone : kZones) {
        const ZoneGuard guard(zone);
        const qint64 start = alignToBatchStart(timestamp);
        QCOMPARE(QDateTime::fromMSecsSinceEpoch(start).date(),
                 QDateTime::fromMSecsSinceEpoch(timestamp).date());
        QVERIFY(makeBatchName(timestamp).startsWith(QStringLiteral("batch_") +
                                                    formatBatchStamp(start)));
    }
}

void TestShardNaming::dayOf25HoursHasAFifthBatch()
{
    const ZoneGuard guard("Europe/Berlin");
    const qint64 dayStart = localTime("2026-10-25 00:00:00.000");
    const auto name = [dayStart](qint64 hours) {
        return makeBatchName(dayStart + hours * 3600000);
    };
    QCOMPARE(name(0), QStringLiteral("batch_20261025_000000_20261025_045959"));
    QCOMPARE(name(6), QStringLiteral("batch_20261025_050000_20261025_105959"));
    QCOMPARE(name(18), QStringLiteral("batch_20261025_170000_20261025_225959"));
    QCOMPARE(name(24), QStringLiteral("batch_20261025_230000_20261026_045959"));
    QCOMPARE(name(25), QStringLiteral("batch_20261026_000000_20261026_055959"));
}

void TestShardNaming::dayOf23HoursHasAShortLastBatch()
{
    const ZoneGuard guard("Europe/Berlin");
    const qint64 dayStart = localTime("2026-03-29 00:00:00.000");
    const auto name = [dayStart](qint64 hours) {
        return makeBatchName(dayStart + hours * 3600000);
    };
    QCOMPARE(name(0), QStringLiteral("batch_20260329_000000_20260329_065959"));
    QCOMPARE(name(18), QStringLiteral("batch_20260329_190000_20260330_005959"));
    QCOMPARE(name(22), QStringLiteral("batch_20260329_190000_20260330_005959"));
    QCOMPARE(name(23), QStringLiteral("batch_20260330_000000_20260330_055959"));
}

/// Where the clock goes back from 00:01 to 23:01, 24 hours after midnight it is the next date for
/// one minute, and the hour that follows belongs to the old date again.
void TestShardNaming::batchThatLeavesItsDateIsRepaired()
{
    const ZoneGuard guard("America/St_Johns");
    const qint64 dayStart = localTime("2010-11-06 00:00:00.000");
    const qint64 secondTime = dayStart + kDayLengthMs + 30 * 60000; // 23:30 for the second time
    QCOMPARE(QDateTime::fromMSecsSinceEpoch(secondTime).date(), QDate(2010, 11, 6));

    const LogCapture log;
    QCOMPARE(alignToBatchStart(secondTime), dayStart);
    QCOMPARE(log.lines(), QStringList{QStringLiteral(
                              "warning: 分片日期与数据日期不匹配！数据日期: \"2010-11-06\" "
                              "分片日期: \"2010-11-07\" 强制对齐到数据日期")});
    QCOMPARE(makeBatchName(secondTime), QStringLiteral("batch_20101106_000000_20101106_055959"));
}

void TestShardNaming::skippedMidnightKeepsTheDate()
{
    const ZoneGuard guard("America/Sao_Paulo");
    const qint64 first = localTime("2018-11-04 01:00:00.000"); // the date's first moment
    QCOMPARE(QDateTime::fromMSecsSinceEpoch(first - 1).date(), QDate(2018, 11, 3));
    const LogCapture log;
    QCOMPARE(makeBatchName(first - 1), QStringLiteral("batch_20181103_180000_20181103_235959"));
    QCOMPARE(makeBatchName(first), QStringLiteral("batch_20181104_010000_20181104_065959"));
    QCOMPARE(makeBatchName(first + kBatchLengthMs),
             QStringLiteral("batch_20181104_070000_20181104_125959"));
    QCOMPARE(log.lines(), QStringList());
}

void TestShardNaming::repeatedMidnightStartsTheDateOnce()
{
    const ZoneGuard guard("America/Havana"); // from 01:00 back to 00:00
    const qint64 first = localTime("2025-11-01 23:59:59.999") + 1;
    const LogCapture log;
    for (const qint64 time : {first + kBatchSpanMs, first, first + 3599999, first + 3600000}) {
        QCOMPARE(alignToBatchStart(time), first);
    }
    QCOMPARE(makeBatchName(first), QStringLiteral("batch_20251102_000000_20251102_045959"));
    QCOMPARE(makeBatchName(first + kBatchLengthMs),
             QStringLiteral("batch_20251102_050000_20251102_105959"));
    QCOMPARE(log.lines(), QStringList());
}

void TestShardNaming::dateKeyFromPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("key");
    QTest::newRow("a day file") << QStringLiteral("/a/b/20260112.db") << QStringLiteral("20260112");
    QTest::newRow("no directory") << QStringLiteral("20260112.db") << QStringLiteral("20260112");
    QTest::newRow("a letter") << QStringLiteral("/a/2026011x.db") << QString();
    QTest::newRow("a further dot") << QStringLiteral("/a/20260112.bak.db") << QString();
    QTest::newRow("seven digits") << QStringLiteral("/a/2026011.db") << QString();
    QTest::newRow("ten digits") << QStringLiteral("/a/2026011207.db") << QString();
    QTest::newRow("digits of another script") << QStringLiteral("/a/٢٠٢٦٠١١٢.db") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestShardNaming::dateKeyFromPath()
{
    QFETCH(QString, path);
    QFETCH(QString, key);
    QCOMPARE(ConnectionPool::dateKeyFromPath(path), key);
}

void TestShardNaming::hourKeyFromPath()
{
    QCOMPARE(ConnectionPool::hourKeyFromPath(QStringLiteral("/a/2026011207.db")),
             QStringLiteral("2026011207"));
    QCOMPARE(ConnectionPool::hourKeyFromPath(QStringLiteral("/a/20260112.db")), QString());
    QCOMPARE(ConnectionPool::hourKeyFromPath(QStringLiteral("/a/20260112o7.db")), QString());
}

void TestShardNaming::tableNames()
{
    QCOMPARE(makeTableName(3, makeBatchName(localTime("2026-01-12 07:30:00.000"))),
             QStringLiteral("curve_3_batch_20260112_060000_20260112_115959"));
    QCOMPARE(tablePrefix(12), QStringLiteral("curve_12_"));
}

void TestShardNaming::literalsDoubleTheirQuotes()
{
    QCOMPARE(sqlLiteral(QStringLiteral("it's")), QStringLiteral("'it''s'"));
    QCOMPARE(sqlLiteral(QString()), QStringLiteral("''"));
}

void TestShardNaming::slicesAgreeWithTheFunctions()
{
    const LogCapture log; // repaired batches warn
    QRandomGenerator random(kSeed);
    const qint64 first = localTime("2010-11-05 00:00:00.000");
    const qint64 change = localTime("2010-11-07 00:00:00.000");
    for (const char* zone : kZones) {
        const ZoneGuard guard(zone);
        qint64 wide = 0;
        for (int i = 0; i < kRandomMoments; ++i) {
            // Every second moment is close to a change of the clock.
            const qint64 time = i % 2 ? change + static_cast<qint64>(random.bounded(1e7)) - 5000000
                                      : first + static_cast<qint64>(random.bounded(5e11));
            const TimeSlice slice = timeSliceFor(time);
            QVERIFY(slice.contains(time));
            wide += slice.last - slice.first;
            const qint64 inside =
                slice.first + static_cast<qint64>(random.bounded(
                                  static_cast<double>(slice.last - slice.first + 1)));
            for (const qint64 moment : {slice.first, inside, slice.last, time}) {
                QVERIFY2(sameFacts(slice, timeSliceFor(moment)), zone);
                QCOMPARE(slice.batchStart, alignToBatchStart(moment));
                QCOMPARE(slice.batchName, makeBatchName(moment));
                QCOMPARE(slice.dateKey, formatHourKey(moment).left(8));
            }
        }
        QVERIFY2(wide / kRandomMoments > kBatchLengthMs / 3, zone); // worth remembering
    }
}

void TestShardNaming::sliceOfARepairedBatchIsOneMillisecond()
{
    const ZoneGuard guard("America/St_Johns");
    const LogCapture log;
    const qint64 time = localTime("2010-11-06 00:00:00.000") + kDayLengthMs + 30 * 60000;
    const TimeSlice slice = timeSliceFor(time);
    QCOMPARE(slice.first, time);
    QCOMPARE(slice.last, time);
    QCOMPARE(slice.dateKey, QStringLiteral("20101106"));
}

SCN_TEST(TestShardNaming, QCoreApplication)
#include "test_shardnaming.moc"
