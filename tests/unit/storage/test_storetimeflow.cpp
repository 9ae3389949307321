#include "acquisition/recorddecoder.h"
#include "skippedwaits.h"
#include "storage/curveseriesdata.h"
#include "storage/storeclock.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "timescene.h"

#include <QtTest>

#include <memory>

// From the instrument's text to the day file, in the two hours of the year in which a local stamp
// does not name exactly one moment. The zone is Berlin's.

namespace {

const QString kBadTime = text("warning: 无效的日期时间格式");
const QString kSkipped = text("warning: 无效的数据记录，跳过解析");

/// What the workspace does with the text of one reply.
void feed(CurveSeriesData& series, const QString& reply)
{
    const QList<MeasurementData> batch = decodeResponse(reply);
    for (const MeasurementData& reading : batch) {
        series.addPoint(static_cast<double>(reading.time.toMSecsSinceEpoch()), reading.value);
    }
}

/// One reading a minute from midnight on, stamped by a clock that just counts.
void feedMinutes(CurveSeriesData& series, const QString& record, int minutes)
{
    for (int minute = 0; minute < minutes; ++minute) {
        feed(series, record.arg(minute / 60).arg(minute % 60));
    }
}

QVector<QPointF> shown(const CurveSeriesData& series)
{
    return series.visiblePoints();
}

QPointF point(const char* time, double value)
{
    return {static_cast<double>(instant(time)), value};
}

} // namespace

class TestStoreTimeFlow : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { scn::setStoreClock(nullptr); }

    void skippedHourIsDropped();
    void hourThatComesTwiceCollides();
    void memoryShowsBothHoursTheStoreTheFirst();
    void hourlyStampsOfTheLongDay();
    void clockThatDoesNotFollowLosesAnHourInSpring();
    void clockThatDoesNotFollowLeapsAnHourInAutumn();

private:
    const SkippedWaits m_waits;
};

/// On 29 March 2026 two o'clock is followed by three: there is no 02:00 to 02:59.
void TestStoreTimeFlow::skippedHourIsDropped()
{
    setPresent(instant("2026-03-29T03:30:00.000+02:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    const LogCapture log;
    feed(series, text("#3210+1.50000000E+00 V,2026,03,29,01,59,59.999,101,0,"
                      "+2.50000000E+00 V,2026,03,29,02,00,00.000,101,0,"
                      "+3.50000000E+00 V,2026,03,29,02,30,00.000,101,0,"
                      "+4.50000000E+00 V,2026,03,29,02,59,59.999,101,0,"
                      "+5.50000000E+00 V,2026,03,29,03,00,00.000,101,0"));
    QCOMPARE(log.lines(),
             (QStringList{kBadTime, kSkipped, kBadTime, kSkipped, kBadTime, kSkipped}));
    COMPARE_EXACTLY(series.recentPoints(),
                    (QVector<QPointF>{point("2026-03-29T01:59:59.999+01:00", 1.5),
                                      point("2026-03-29T03:00:00.000+02:00", 5.5)}));
    QCOMPARE(allRows(store.directory()), lines(R"(
        20260329.db
          batch_metadata
            1|1|1774738800000|1774760399999|curve_1_batch_20260329_000000_20260329_065959
          curve_1_batch_20260329_000000_20260329_065959
            1|1|1774745999999|1.5
            2|1|1774746000000|5.5
          curve_info
            1|101(V)
          curve_metadata
            1|1774745999999|1774746000000|1.5|5.5
        )"));
}

/// On 25 October 2026 three o'clock is followed by two: what is stamped 02:00 to 02:59 counts as the
/// first of the two hours, both times. The milliseconds that come again are dropped, but for the
/// extremes; the others lie among those of the first hour; of the second hour there is nothing.
void TestStoreTimeFlow::hourThatComesTwiceCollides()
{
    setPresent(instant("2026-10-25T03:30:00.000+01:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    const LogCapture log;
    feed(series, text("#3350+1.50000000E+00 V,2026,10,25,01,59,59.999,101,0,"
                      "+2.50000000E+00 V,2026,10,25,02,00,00.000,101,0,"
                      "+3.50000000E+00 V,2026,10,25,02,30,00.000,101,0,"
                      "+4.50000000E+00 V,2026,10,25,02,59,59.999,101,0"));
    // The same stamps again, and one between them.
    feed(series, text("#3350-5.50000000E+00 V,2026,10,25,02,00,00.000,101,0,"
                      "+6.50000000E+00 V,2026,10,25,02,30,00.500,101,0,"
                      "+7.50000000E+00 V,2026,10,25,02,59,59.999,101,0,"
                      "+0.50000000E+00 V,2026,10,25,03,00,00.000,101,0"));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(allRows(store.directory()), lines(R"(
        20261025.db
          batch_metadata
            1|1|1792879200000|1792900799999|curve_1_batch_20261025_000000_20261025_045959
          curve_1_batch_20261025_000000_20261025_045959
            1|1|1792886399999|1.5
            2|1|1792886400000|2.5
            3|1|1792888200000|3.5
            4|1|1792889999999|4.5
            6|1|1792888200500|6.5
            8|1|1792893600000|0.5
          curve_info
            1|101(V)
          curve_metadata
            1|1792886399999|1792893600000|-5.5|7.5
        )"));
}

/// What is dropped from the file stays in memory, so the two show different curves.
void TestStoreTimeFlow::memoryShowsBothHoursTheStoreTheFirst()
{
    setPresent(instant("2026-10-25T03:30:00.000+01:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    feed(series, text("#3140+1.50000000E+00 V,2026,10,25,02,10,00.000,101,0,"
                      "+2.50000000E+00 V,2026,10,25,02,50,00.000,101,0"));
    feed(series, text("#3140+3.50000000E+00 V,2026,10,25,02,10,00.000,101,0,"
                      "+4.50000000E+00 V,2026,10,25,02,20,00.000,101,0,"
                      "+5.50000000E+00 V,2026,10,25,03,00,00.000,101,0"));
    const qint64 start = instant("2026-10-25T02:10:00.000+02:00");
    const qint64 end = instant("2026-10-25T03:00:00.000+01:00");
    series.loadWindow(start, end, 0, 0.0);
    COMPARE_EXACTLY(shown(series), (QVector<QPointF>{point("2026-10-25T02:10:00.000+02:00", 1.5),
                                                     point("2026-10-25T02:50:00.000+02:00", 2.5),
                                                     point("2026-10-25T02:10:00.000+02:00", 3.5),
                                                     point("2026-10-25T02:20:00.000+02:00", 4.5),
                                                     point("2026-10-25T03:00:00.000+01:00", 5.5)}));
    QCOMPARE(series.count(), 5);
    series.clear();
    series.loadWindow(start, end, 0, 0.0);
    COMPARE_EXACTLY(shown(series), (QVector<QPointF>{point("2026-10-25T02:10:00.000+02:00", 1.5),
                                                     point("2026-10-25T02:20:00.000+02:00", 4.5),
                                                     point("2026-10-25T02:50:00.000+02:00", 2.5),
                                                     point("2026-10-25T03:00:00.000+01:00", 5.5)}));
}

/// 25 readings an hour apart, stamped as a wall clock shows them: 24 rows.
void TestStoreTimeFlow::hourlyStampsOfTheLongDay()
{
    setPresent(instant("2026-10-25T23:59:59.000+01:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    const auto hour = [&series](int wallHour, int value) {
        feed(series, (QStringLiteral("%1 V,2026,10,25,%2,0,0.000,101,0").arg(value).arg(wallHour)));
    };
    for (int wallHour = 0; wallHour <= 2; ++wallHour) {
        hour(wallHour, 100 + wallHour);
    }
    for (int wallHour = 2; wallHour <= 23; ++wallHour) {
        hour(wallHour, 200 + wallHour);
    }
    QCOMPARE(series.count(), 25);
    QCOMPARE(allRows(store.directory()), lines(R"(
        20261025.db
          batch_metadata
            1|1|1792879200000|1792900799999|curve_1_batch_20261025_000000_20261025_045959
            2|1|1792900800000|1792922399999|curve_1_batch_20261025_050000_20261025_105959
            3|1|1792922400000|1792943999999|curve_1_batch_20261025_110000_20261025_165959
            4|1|1792944000000|1792965599999|curve_1_batch_20261025_170000_20261025_225959
            5|1|1792965600000|1792987199999|curve_1_batch_20261025_230000_20261026_045959
          curve_1_batch_20261025_000000_20261025_045959
            1|1|1792879200000|100.0
            2|1|1792882800000|101.0
            3|1|1792886400000|102.0
            5|1|1792893600000|203.0
            6|1|1792897200000|204.0
          curve_1_batch_20261025_050000_20261025_105959
            1|1|1792900800000|205.0
            2|1|1792904400000|206.0
            3|1|1792908000000|207.0
            4|1|1792911600000|208.0
            5|1|1792915200000|209.0
            6|1|1792918800000|210.0
          curve_1_batch_20261025_110000_20261025_165959
            1|1|1792922400000|211.0
            2|1|1792926000000|212.0
            3|1|1792929600000|213.0
            4|1|1792933200000|214.0
            5|1|1792936800000|215.0
            6|1|1792940400000|216.0
          curve_1_batch_20261025_170000_20261025_225959
            1|1|1792944000000|217.0
            2|1|1792947600000|218.0
            3|1|1792951200000|219.0
            4|1|1792954800000|220.0
            5|1|1792958400000|221.0
            6|1|1792962000000|222.0
          curve_1_batch_20261025_230000_20261026_045959
            1|1|1792965600000|223.0
          curve_info
            1|101(V)
          curve_metadata
            1|1792879200000|1792965600000|100.0|223.0
        )"));
}

/// An instrument that knows no summer time continues through the hour that does not exist.
void TestStoreTimeFlow::clockThatDoesNotFollowLosesAnHourInSpring()
{
    setPresent(instant("2026-03-29T12:00:00.000+02:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    const LogCapture log;
    feedMinutes(series, QStringLiteral("1 V,2026,3,29,%1,%2,0.000,101,0"), 5 * 60);
    QCOMPARE(log.lines().count(kBadTime), 60);
    QCOMPARE(log.lines().count(kSkipped), 60);
    QCOMPARE(series.count(), 240);
    const auto stored = [&](const char* start, const char* end) {
        return store->readCurveData(series.curveId(), instant(start), instant(end), 0).size();
    };
    QCOMPARE(stored("2026-03-29T00:00:00.000+01:00", "2026-03-29T01:59:59.999+01:00"), 120);
    QCOMPARE(stored("2026-03-29T03:00:00.000+02:00", "2026-03-29T04:59:59.999+02:00"), 120);
    QCOMPARE(stored("2026-03-29T00:00:00.000+01:00", "2026-03-29T23:59:59.999+02:00"), 240);
}

/// In autumn it loses nothing, and its times skip the second of the two hours.
void TestStoreTimeFlow::clockThatDoesNotFollowLeapsAnHourInAutumn()
{
    setPresent(instant("2026-10-25T12:00:00.000+01:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    const LogCapture log;
    feedMinutes(series, QStringLiteral("1 V,2026,10,25,%1,%2,0.000,101,0"), 6 * 60);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(series.count(), 360);
    const auto stored = [&](const char* start, const char* end) {
        return store->readCurveData(series.curveId(), instant(start), instant(end), 0).size();
    };
    QCOMPARE(stored("2026-10-25T00:00:00.000+02:00", "2026-10-25T02:59:59.999+02:00"), 180);
    QCOMPARE(stored("2026-10-25T02:00:00.000+01:00", "2026-10-25T02:59:59.999+01:00"), 0);
    QCOMPARE(stored("2026-10-25T03:00:00.000+01:00", "2026-10-25T05:59:59.999+01:00"), 180);
}

SCN_TEST(TestStoreTimeFlow, QCoreApplication)
#include "test_storetimeflow.moc"
