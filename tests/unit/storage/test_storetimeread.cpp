#include "dayfilewriter.h"
#include "randomcases.h"
#include "readmodel.h"
#include "skippedwaits.h"
#include "storage/curveseriesdata.h"
#include "storage/storeclock.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "timescene.h"

#include <QtTest>

#include <limits>

// Reads across the edges of time. The zone is Berlin's: the clock goes forward on 29 March 2026 at
// 01:00 UTC and back on 25 October 2026 at 01:00 UTC.

namespace {

constexpr qint64 kDayMs = 86400000;

/// A time of one of the test's readings; its value is its index.
struct Moment
{
    const char* time;
    double value;
};

/// Appends a reading at each time, as it arrives.
void live(TestStore& store, std::initializer_list<Moment> moments)
{
    for (const Moment& moment : moments) {
        play(store, {{moment.time, moment.time, 1, moment.value}});
    }
}

/// The values a read of the range returns, in order.
QVector<double> values(TestStore& store, const char* start, const char* end)
{
    QVector<double> found;
    const QVector<QPointF> points = store->readCurveData(1, instant(start), instant(end), 0);
    for (const QPointF& point : points) {
        found.append(point.y());
    }
    return found;
}

/// Local time of Berlin around the change of a clock, by plain arithmetic.
struct BerlinClock
{
    qint64 change;
    qint64 offsetBefore;
    qint64 offsetAfter;

    qint64 offset(qint64 time) const { return time < change ? offsetBefore : offsetAfter; }
    /// Days since the epoch of the local date.
    qint64 day(qint64 time) const { return (time + offset(time)) / kDayMs; }
    qint64 midnight(qint64 day) const
    {
        const qint64 start = day * kDayMs - offsetBefore;
        return start < change ? start : day * kDayMs - offsetAfter;
    }
    qint64 batch(qint64 time) const { return (time - midnight(day(time))) / kBatchMs; }
};

QString keyOfDay(qint64 day)
{
    return QDate(1970, 1, 1).addDays(day).toString(QStringLiteral("yyyyMMdd"));
}

/// Keys of the days whose files a read opens: every 24 hours from its start.
QSet<QString> visitedDays(const BerlinClock& clock, qint64 start, qint64 end)
{
    QSet<QString> keys;
    for (qint64 time = start; time <= end; time += kDayMs) {
        keys.insert(keyOfDay(clock.day(time)));
    }
    return keys;
}

} // namespace

class TestStoreTimeRead : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { scn::setStoreClock(nullptr); }

    void hourOnEitherSideOfMidnight_data();
    void hourOnEitherSideOfMidnight();
    void dayOf25Hours();
    void dayOf23Hours();
    void dayOf23HoursIsSteppedOver();
    void futureReadingIsFoundThroughItsFile();
    void changedClockIsReadInOrder();
    void rangeFromTheBeginningOfTimeEnds();
    void daysBeforeTheFirstFileAreCounted_data();
    void daysBeforeTheFirstFileAreCounted();
    void chartAcrossMidnight();
    void weeksWithAChangeEqualTheModel_data();
    void weeksWithAChangeEqualTheModel();

private:
    const SkippedWaits m_waits;
};

void TestStoreTimeRead::hourOnEitherSideOfMidnight_data()
{
    QTest::addColumn<QByteArray>("evening");
    QTest::addColumn<QByteArray>("eveningOffset");
    QTest::addColumn<QByteArray>("morning");
    QTest::addColumn<QByteArray>("morningOffset");
    const auto row = [](const char* evening, const char* eveningOffset, const char* morning,
                        const char* morningOffset) {
        QTest::newRow(morning) << QByteArray(evening) << QByteArray(eveningOffset)
                               << QByteArray(morning) << QByteArray(morningOffset);
    };
    row("2026-01-12", "+01:00", "2026-01-13", "+01:00");
    row("2026-01-31", "+01:00", "2026-02-01", "+01:00");
    row("2025-12-31", "+01:00", "2026-01-01", "+01:00");
    row("2024-02-28", "+01:00", "2024-02-29", "+01:00");
    row("2024-02-29", "+01:00", "2024-03-01", "+01:00");
    row("2026-03-28", "+01:00", "2026-03-29", "+01:00");
    row("2026-03-29", "+02:00", "2026-03-30", "+02:00");
    row("2026-10-24", "+02:00", "2026-10-25", "+02:00");
    row("2026-10-25", "+01:00", "2026-10-26", "+01:00");
}

/// From 23:00 to 01:00 only the first day's file is opened; each day by itself is complete.
void TestStoreTimeRead::hourOnEitherSideOfMidnight()
{
    QFETCH(QByteArray, evening);
    QFETCH(QByteArray, eveningOffset);
    QFETCH(QByteArray, morning);
    QFETCH(QByteArray, morningOffset);
    const QByteArray eleven = evening + "T23:00:00.000" + eveningOffset;
    const QByteArray last = evening + "T23:59:59.999" + eveningOffset;
    const QByteArray midnight = morning + "T00:00:00.000" + morningOffset;
    const QByteArray one = morning + "T01:00:00.000" + morningOffset;
    setPresent(instant(eleven.constData()));
    TestStore store;
    enlist(store, "101(V)", {QByteArray(morning).replace('-', "").constData()});
    live(store, {{eleven.constData(), 1.0},
                 {last.constData(), 2.0},
                 {midnight.constData(), 3.0},
                 {one.constData(), 4.0}});
    const LogCapture log;
    QCOMPARE(values(store, eleven.constData(), one.constData()), (QVector<double>{1.0, 2.0}));
    QCOMPARE(values(store, eleven.constData(), last.constData()), (QVector<double>{1.0, 2.0}));
    QCOMPARE(values(store, midnight.constData(), one.constData()), (QVector<double>{3.0, 4.0}));
    QCOMPARE(log.lines(), QStringList());
}

void TestStoreTimeRead::dayOf25Hours()
{
    setPresent(instant("2026-10-25T00:00:00.000+02:00"));
    TestStore store;
    enlist(store, "101(V)", {"20261026"});
    live(store, {{"2026-10-25T00:00:00.000+02:00", 0.0},
                 {"2026-10-25T02:30:00.000+02:00", 2.0},
                 {"2026-10-25T02:30:00.000+01:00", 3.0},
                 {"2026-10-25T22:59:59.999+01:00", 22.0},
                 {"2026-10-25T23:00:00.000+01:00", 23.0},
                 {"2026-10-25T23:59:59.999+01:00", 24.0},
                 {"2026-10-26T00:00:00.000+01:00", 25.0},
                 {"2026-10-26T00:15:00.000+01:00", 26.0}});
    QCOMPARE(values(store, "2026-10-25T00:00:00.000+02:00", "2026-10-25T23:59:59.999+01:00"),
             (QVector<double>{0.0, 2.0, 3.0, 22.0, 23.0, 24.0}));
    // Each of the two hours by itself.
    QCOMPARE(values(store, "2026-10-25T02:00:00.000+02:00", "2026-10-25T02:59:59.999+02:00"),
             QVector<double>{2.0});
    QCOMPARE(values(store, "2026-10-25T02:00:00.000+01:00", "2026-10-25T02:59:59.999+01:00"),
             QVector<double>{3.0});
    // The fifth batch.
    QCOMPARE(values(store, "2026-10-25T23:00:00.000+01:00", "2026-10-25T23:59:59.999+01:00"),
             (QVector<double>{23.0, 24.0}));
    // 24 hours after the start it is still the same day: nothing of the next one, though the range
    // reaches into it.
    QCOMPARE(values(store, "2026-10-25T00:30:00.000+02:00", "2026-10-26T00:20:00.000+01:00"),
             (QVector<double>{2.0, 3.0, 22.0, 23.0, 24.0}));
    QCOMPARE(values(store, "2026-10-25T00:00:00.000+02:00", "2026-10-26T23:00:00.000+01:00"),
             (QVector<double>{0.0, 2.0, 3.0, 22.0, 23.0, 24.0, 25.0, 26.0}));
}

void TestStoreTimeRead::dayOf23Hours()
{
    setPresent(instant("2026-03-29T00:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)", {"20260330"});
    live(store, {{"2026-03-29T00:00:00.000+01:00", 0.0},
                 {"2026-03-29T01:59:59.999+01:00", 1.0},
                 {"2026-03-29T03:00:00.000+02:00", 2.0},
                 {"2026-03-29T19:00:00.000+02:00", 18.0},
                 {"2026-03-29T23:59:59.999+02:00", 22.0},
                 {"2026-03-30T00:00:00.000+02:00", 23.0}});
    QCOMPARE(values(store, "2026-03-29T00:00:00.000+01:00", "2026-03-29T23:59:59.999+02:00"),
             (QVector<double>{0.0, 1.0, 2.0, 18.0, 22.0}));
    QCOMPARE(values(store, "2026-03-29T01:30:00.000+01:00", "2026-03-29T03:30:00.000+02:00"),
             (QVector<double>{1.0, 2.0}));
    // The rest of the short batch's name covers only the next day.
    QCOMPARE(values(store, "2026-03-29T23:00:00.000+02:00", "2026-03-30T00:59:59.999+02:00"),
             QVector<double>{22.0});
    QCOMPARE(values(store, "2026-03-29T00:00:00.000+01:00", "2026-03-30T01:00:00.000+02:00"),
             (QVector<double>{0.0, 1.0, 2.0, 18.0, 22.0, 23.0}));
}

/// The steps from the start are 24 hours. From the last hour of the day before, one step skips the
/// whole 23-hour day, whose file is not opened.
void TestStoreTimeRead::dayOf23HoursIsSteppedOver()
{
    setPresent(instant("2026-03-28T23:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)", {"20260329", "20260330"});
    live(store, {{"2026-03-28T23:45:00.000+01:00", 1.0},
                 {"2026-03-29T12:00:00.000+02:00", 2.0},
                 {"2026-03-30T00:15:00.000+02:00", 3.0},
                 {"2026-03-30T00:45:00.000+02:00", 4.0}});
    QCOMPARE(values(store, "2026-03-28T23:30:00.000+01:00", "2026-03-30T00:30:00.000+02:00"),
             (QVector<double>{1.0, 3.0}));
    QCOMPARE(values(store, "2026-03-28T22:59:59.999+01:00", "2026-03-30T00:30:00.000+02:00"),
             (QVector<double>{1.0, 2.0}));
}

/// A reading that was ahead of the clock is in the file of the day it arrived. Once its own day has
/// come, a range must start in that other day to find it.
void TestStoreTimeRead::futureReadingIsFoundThroughItsFile()
{
    setPresent(instant("2026-01-12T09:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)", {"20260113"});
    play(store, {{"2026-01-12T09:00:00.000+01:00", "2026-01-13T09:00:00.000+01:00", 1, 1.0}});
    const char* const before = "2026-01-13T08:59:00.000+01:00";
    const char* const after = "2026-01-13T09:01:00.000+01:00";
    QCOMPARE(values(store, before, after), QVector<double>{1.0});

    play(store, {{"2026-01-13T09:00:30.000+01:00", "2026-01-13T09:00:30.000+01:00", 1, 2.0}});
    QCOMPARE(values(store, before, after), QVector<double>{2.0});
    QCOMPARE(values(store, "2026-01-12T09:01:00.000+01:00", after), (QVector<double>{1.0, 2.0}));
}

/// However the clocks changed, reads are in order of time, each moment once.
void TestStoreTimeRead::changedClockIsReadInOrder()
{
    setPresent(instant("2026-01-12T23:59:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)", {"20260113"});
    play(store, {{"2026-01-12T23:59:00.000+01:00", "2026-01-12T23:59:00.000+01:00", 1, 3.0},
                 {"2026-01-12T23:59:01.000+01:00", "2026-01-12T17:59:59.999+01:00", 1, 1.0},
                 {"2026-01-12T23:59:02.000+01:00", "2026-01-12T18:00:00.000+01:00", 1, 2.0},
                 {"2026-01-12T23:59:03.000+01:00", "2026-01-12T23:59:00.000+01:00", 1, 9.0},
                 {"2026-01-12T23:59:04.000+01:00", "2026-01-13T00:00:30.000+01:00", 1, 6.0},
                 {"2026-01-13T00:01:00.000+01:00", "2026-01-12T23:59:30.000+01:00", 1, 4.0},
                 {"2026-01-13T00:01:01.000+01:00", "2026-01-13T00:00:20.000+01:00", 1, 5.0},
                 {"2026-01-13T00:01:02.000+01:00", "2026-01-13T00:01:00.000+01:00", 1, 7.0}});
    QCOMPARE(values(store, "2026-01-12T06:00:00.000+01:00", "2026-01-13T06:00:00.000+01:00"),
             (QVector<double>{1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0}));
}

/// A chart zoomed out endlessly asks for everything, and gets it soon. The steps keep the hour of
/// the day, so they hit the same days as a nearby start would.
void TestStoreTimeRead::rangeFromTheBeginningOfTimeEnds()
{
    setPresent(instant("2026-03-28T23:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)", {"20260329", "20260330"});
    live(store, {{"2026-03-28T23:45:00.000+01:00", 1.0},
                 {"2026-03-29T12:00:00.000+02:00", 2.0},
                 {"2026-03-30T00:15:00.000+02:00", 3.0},
                 {"2026-03-30T00:45:00.000+02:00", 4.0}});
    const auto valuesFrom = [&store](qint64 start, qint64 end) {
        QVector<double> found;
        for (const QPointF& point : store->readCurveData(1, start, end, 0)) {
            found.append(point.y());
        }
        return found;
    };
    const qint64 beginning = std::numeric_limits<qint64>::min();
    const qint64 last = std::numeric_limits<qint64>::max();
    const qint64 tenThousandYears = 3652500 * kDayMs;
    const LogCapture log;
    QCOMPARE(valuesFrom(beginning, last), (QVector<double>{1.0, 2.0, 3.0, 4.0}));
    QCOMPARE(valuesFrom(beginning, instant("2026-03-29T20:00:00.000+02:00")),
             (QVector<double>{1.0, 2.0}));
    QVERIFY(valuesFrom(beginning, 0).isEmpty());
    QVERIFY(valuesFrom(beginning, beginning).isEmpty());
    QCOMPARE(valuesFrom(instant("2026-03-28T23:30:00.000+01:00") - tenThousandYears,
                        instant("2026-03-30T00:30:00.000+02:00")),
             (QVector<double>{1.0, 3.0}));
    QCOMPARE(valuesFrom(instant("2026-03-28T22:59:59.999+01:00") - tenThousandYears,
                        instant("2026-03-30T00:30:00.000+02:00")),
             (QVector<double>{1.0, 2.0}));
    QVERIFY2(log.lines().size() < 20, qPrintable(QString::number(log.lines().size())));
}

void TestStoreTimeRead::daysBeforeTheFirstFileAreCounted_data()
{
    QTest::addColumn<qint64>("start");
    QTest::addColumn<int>("missing");
    const qint64 present = instant("2026-01-12T12:00:00.000+01:00");
    const qint64 tenYears = Q_INT64_C(315576000000); // 3652 days and a half
    QTest::newRow("ten years") << present - tenYears << 3652;
    QTest::newRow("a little more") << present - tenYears - 1 << 1;
}

/// Up to ten years back each day without a file has its line; beyond, the count starts less than a
/// day before the oldest file's.
void TestStoreTimeRead::daysBeforeTheFirstFileAreCounted()
{
    QFETCH(qint64, start);
    QFETCH(int, missing);
    setPresent(instant("2026-01-12T12:00:00.000+01:00"));
    TestStore store;
    enlist(store, "101(V)");
    live(store, {{"2026-01-12T12:00:00.000+01:00", 1.0}});
    const LogCapture log;
    QCOMPARE(store->readCurveData(1, start, start + Q_INT64_C(400000000000), 0).size(), 1);
    QCOMPARE(log.lines().filter(text("debug: 数据库文件不存在: ")).size(), missing);
    QCOMPARE(log.lines().size(), missing);
}

/// A view that starts before what memory holds is read from the store, and ends with the day.
void TestStoreTimeRead::chartAcrossMidnight()
{
    setPresent(instant("2026-10-24T23:00:00.000+02:00"));
    TestStore store;
    CurveSeriesData series(text("101(V)"), store.get());
    live(store, {{"2026-10-24T23:00:00.000+02:00", 1.0}, {"2026-10-24T23:59:59.999+02:00", 2.0}});
    setPresent(instant("2026-10-25T00:30:00.000+02:00"));
    series.addPoint(static_cast<double>(instant("2026-10-25T00:30:00.000+02:00")), 3.0);
    const qint64 end = instant("2026-10-25T01:00:00.000+02:00");
    const auto shown = [&series] {
        QVector<double> found;
        for (const QPointF& point : series.visiblePoints()) {
            found.append(point.y());
        }
        return found;
    };
    series.loadWindow(instant("2026-10-24T22:59:55.000+02:00"), end, 10000, 0.5);
    QCOMPARE(shown(), (QVector<double>{1.5, 2.5}));
    series.loadWindow(instant("2026-10-25T00:29:50.000+02:00"), end, 10000, 0.5);
    QCOMPARE(shown(), QVector<double>{3.5});
}

void TestStoreTimeRead::weeksWithAChangeEqualTheModel_data()
{
    QTest::addColumn<qint64>("change");
    QTest::addColumn<int>("hoursBefore");
    QTest::addColumn<int>("hoursAfter");
    QTest::newRow("spring") << instant("2026-03-29T01:00:00.000+00:00") << 1 << 2;
    QTest::newRow("autumn") << instant("2026-10-25T01:00:00.000+00:00") << 2 << 1;
}

void TestStoreTimeRead::weeksWithAChangeEqualTheModel()
{
    QFETCH(qint64, change);
    QFETCH(int, hoursBefore);
    QFETCH(int, hoursAfter);
    const BerlinClock clock{change, hoursBefore * kHourMs, hoursAfter * kHourMs};
    const quint32 seed = randomSeed();
    QRandomGenerator random(seed);
    const qint64 first = clock.midnight(clock.day(change) - 2);
    const qint64 last = clock.midnight(clock.day(change) + 3) - 1;
    setPresent(first);
    TestStore store;
    // Curves already in a file are registered without the pause for a new name.
    for (qint64 day = clock.day(first); day <= clock.day(last); ++day) {
        DayFileWriter(store.path(qPrintable(keyOfDay(day)))).addCurve(1, text("101(V)"));
    }
    CurveSeriesData series(text("101(V)"), store.get());
    QVector<ModelDay> days;
    qint64 lastBatch = -1;
    constexpr int kAverageStepMs = 600000;
    for (qint64 time = first; time <= last; time += 1 + random.bounded(2 * kAverageStepMs)) {
        const double value = random.bounded(200.0) - 100.0;
        setPresent(time);
        store->appendPoint(1, time, value);
        if (days.isEmpty() || days.constLast().key != keyOfDay(clock.day(time))) {
            days.append({keyOfDay(clock.day(time)), {}});
        }
        ModelDay& day = days.last();
        if (day.batches.isEmpty() || clock.batch(time) != lastBatch) {
            day.batches.append(QVector<QPointF>());
        }
        lastBatch = clock.batch(time);
        day.batches.last().append(QPointF(static_cast<double>(time), value));
    }
    QCOMPARE(days.size(), 5);
    const LogCapture log;
    const int cases = randomCaseCount();
    for (int round = 0; round < cases; ++round) {
        const qint64 start = first + random.bounded(int((last - first) / 1000)) * qint64(1000);
        const qint64 end =
            start + random.bounded(int(kDayMs / 1000) << random.bounded(3)) * qint64(1000);
        const int maxPoints = random.bounded(3) == 0 ? 0 : 1 + random.bounded(400);
        const QVector<QPointF> expected =
            modelRead(days, visitedDays(clock, start, end), start, end, maxPoints);
        series.loadWindow(start, end, maxPoints, 0.0);
        if (!samePoints(store->readCurveData(1, start, end, maxPoints), expected) ||
            !samePoints(series.visiblePoints(), expected)) {
            QFAIL(qPrintable(QStringLiteral("seed %1, read %2: %3 to %4, at most %5 points")
                                 .arg(seed)
                                 .arg(round)
                                 .arg(start)
                                 .arg(end)
                                 .arg(maxPoints)));
        }
    }
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
}

SCN_TEST(TestStoreTimeRead, QCoreApplication)
#include "test_storetimeread.moc"
