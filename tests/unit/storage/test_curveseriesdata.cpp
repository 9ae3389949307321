#include "dayfilewriter.h"
#include "plainthinning.h"
#include "randomcases.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/nonowningcurvedata.h"
#include "storage/storeclock.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <limits>

namespace {

constexpr int kLimit = 15000;
constexpr int kCurves = 60;
constexpr double kTiniestMaximum = 2.2250738585072014e-308;
constexpr double kLargest = std::numeric_limits<double>::max();

QString curveName(int number)
{
    return QStringLiteral("%1(V)").arg(1000 + number);
}

/// The store's current time: an afternoon.
qint64 presentTime()
{
    static const qint64 time = localTime("2026-03-05 18:00:00.000");
    return time;
}

/// Start of the store's today: what is written from here on goes to the current file.
qint64 today()
{
    static const qint64 time = localTime("2026-03-05 00:00:00.000");
    return time;
}

QVector<QPointF> ramp(qint64 start, int size, qint64 step = 100)
{
    QVector<QPointF> points;
    for (int i = 0; i < size; ++i) {
        points.append(QPointF(static_cast<double>(start + i * step), i * 0.25 - 100.0));
    }
    return points;
}

QVector<QPointF> shownBy(const CurveSeriesData& series)
{
    QVector<QPointF> points;
    for (size_t i = 0; i < series.size(); ++i) {
        points.append(series.sample(i));
    }
    return points;
}

QVector<QPointF> shifted(QVector<QPointF> points, double offset)
{
    for (QPointF& point : points) {
        point.ry() += offset;
    }
    return points;
}

} // namespace

class TestCurveSeriesData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void registersItsCurveWithTheStore();
    void addPointGoesToTheStoreAndIntoMemory();
    void fractionOfAMillisecondIsCutOffInTheStore();
    void addPointsGoToTheStoreAndIntoMemory();
    void noPointsToAddChangeNothing();
    void the15001stPointDropsExactlyOne();
    void memoryIsTheNewest15000AtEveryPoint();
    void moreThanTheMemoryHoldsAtOnceKeepsTheNewest();

    void emptySeriesHasInitialStatistics();
    void statisticsCoverThePointsInMemory_data();
    void statisticsCoverThePointsInMemory();
    void maximumOfNegativeValuesStaysTiny();
    void statisticsForgetWhatLeftTheMemory();
    void statisticsDoNotFollowTheView();
    void lastTimeTextIsLocalTime();
    void clearEmptiesAndResets();

    void viewIsServedFromMemoryWithin10Seconds_data();
    void viewIsServedFromMemoryWithin10Seconds();
    void memoryShowsAllItHoldsWhateverTheEnd();
    void emptyMemoryReadsTheStore();
    void noLimitOfPointsKeepsAll();
    void memoryIsThinnedToTheLimit();
    void offsetIsAddedAndTakenOff();
    void offsetAppliesToStoredPointsToo();
    void visibleRangeIsThatOfThePointsOrTheOneAskedFor();
    void windowsEqualTheModel();

    void boundsSpanThePointsOnDisplay();
    void sampleOutOfRangeIsZero();
    void rawValueOutOfRangeIsZero();
    void viewWithoutSeriesIsEmpty();
    void viewForwardsToItsSeries();
    void viewDoesNotOwnItsSeries();

    void allDataIsTheWholeStoredCurve();
    void allDataOfAnEmptyCurveIsEmpty();
    void loadingAWindowDetachesTheStore();
    void unregisteredSeriesStaysEmpty();
    void refusedSeriesCanBeRegisteredAgain();
    void seriesWithoutStoreStaysEmpty();

private:
    std::unique_ptr<CurveSeriesData> makeSeries();
    QVector<QPointF> storedPoints(int curveId) const;
    QString todayPath() const;

    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
    int m_curvesMade = 0;
    const SkippedWaits m_waits;
};

void TestCurveSeriesData::initTestCase()
{
    QVERIFY(m_directory.isValid());
    scn::setStoreClock(&presentTime);
    // Curves already in the file are registered without the pause for a new name.
    {
        DayFileWriter file(todayPath());
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            file.addCurve(curveId, curveName(curveId));
        }
    }
    m_store = std::make_unique<CurveDataDB>(m_directory.path());
}

void TestCurveSeriesData::cleanupTestCase()
{
    m_store.reset();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    scn::setStoreClock(nullptr);
}

std::unique_ptr<CurveSeriesData> TestCurveSeriesData::makeSeries()
{
    ++m_curvesMade;
    Q_ASSERT(m_curvesMade <= kCurves);
    return std::make_unique<CurveSeriesData>(curveName(m_curvesMade), m_store.get());
}

QString TestCurveSeriesData::todayPath() const
{
    return m_directory.filePath(QStringLiteral("20260305.db"));
}

QVector<QPointF> TestCurveSeriesData::storedPoints(int curveId) const
{
    QVector<QPointF> points;
    const QString connection = QStringLiteral("look");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(todayPath());
        if (!db.open()) {
            qFatal("cannot look into the day file");
        }
        QStringList tables;
        QSqlQuery query(db);
        query.prepare(QStringLiteral(
            "SELECT table_name FROM batch_metadata WHERE curve_id = ? ORDER BY batch_start"));
        query.addBindValue(curveId);
        query.exec();
        while (query.next()) {
            tables.append(query.value(0).toString());
        }
        for (const QString& table : qAsConst(tables)) {
            query.exec(QStringLiteral("SELECT timestamp, value FROM %1 ORDER BY id").arg(table));
            while (query.next()) {
                points.append(QPointF(query.value(0).toDouble(), query.value(1).toDouble()));
            }
        }
    }
    QSqlDatabase::removeDatabase(connection);
    return points;
}

void TestCurveSeriesData::registersItsCurveWithTheStore()
{
    const auto series = makeSeries();
    QCOMPARE(series->curveId(), m_curvesMade);
    QCOMPARE(m_store->curveNames().value(series->curveId()), curveName(m_curvesMade));
    QCOMPARE(series->size(), size_t(0));
}

void TestCurveSeriesData::addPointGoesToTheStoreAndIntoMemory()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), 3);
    for (const QPointF& point : points) {
        series->addPoint(point.x(), point.y());
    }
    QCOMPARE(series->recentPoints(), points);
    QCOMPARE(series->recentStart(), today());
    QCOMPARE(series->recentEnd(), today() + 200);
    QCOMPARE(storedPoints(series->curveId()), points);
    QCOMPARE(series->size(), size_t(0));
}

void TestCurveSeriesData::fractionOfAMillisecondIsCutOffInTheStore()
{
    const auto series = makeSeries();
    const double time = static_cast<double>(today());
    series->addPoint(time + 0.75, 4.5);
    QCOMPARE(series->recentPoints(), QVector<QPointF>{QPointF(time + 0.75, 4.5)});
    QCOMPARE(series->recentStart(), today());
    QCOMPARE(storedPoints(series->curveId()), QVector<QPointF>{QPointF(time, 4.5)});
}

void TestCurveSeriesData::addPointsGoToTheStoreAndIntoMemory()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), 50);
    series->addPoint(points.at(0).x(), points.at(0).y());
    series->addPoints(points.mid(1));
    QCOMPARE(series->recentPoints(), points);
    QCOMPARE(series->recentStart(), today());
    QCOMPARE(series->recentEnd(), today() + 4900);
    QCOMPARE(series->count(), 50);
    QCOMPARE(storedPoints(series->curveId()), points);
}

void TestCurveSeriesData::noPointsToAddChangeNothing()
{
    const auto series = makeSeries();
    series->addPoints({});
    QVERIFY(series->recentPoints().isEmpty());
    QCOMPARE(series->recentStart(), qint64(0));
    QCOMPARE(series->recentEnd(), qint64(0));
    QVERIFY(storedPoints(series->curveId()).isEmpty());
}

void TestCurveSeriesData::the15001stPointDropsExactlyOne()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 1);
    series->addPoints(points.mid(0, kLimit));
    QCOMPARE(series->recentPoints(), points.mid(0, kLimit));
    series->addPoint(points.last().x(), points.last().y());
    QCOMPARE(series->recentPoints(), points.mid(1));
    QCOMPARE(series->recentStart(), today() + 100);
    QCOMPARE(series->recentEnd(), today() + 100 * kLimit);
    QCOMPARE(series->count(), kLimit);
}

void TestCurveSeriesData::memoryIsTheNewest15000AtEveryPoint()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 2500, 10);
    series->addPoints(points.mid(0, kLimit));
    for (int i = kLimit; i < points.size(); ++i) {
        series->addPoint(points.at(i).x(), points.at(i).y());
        QCOMPARE(series->recentStart(), qint64(points.at(i - kLimit + 1).x()));
        QCOMPARE(series->recentEnd(), qint64(points.at(i).x()));
        if (i % 250 == 0) {
            QCOMPARE(series->recentPoints(), points.mid(i - kLimit + 1, kLimit));
        }
    }
    QCOMPARE(series->recentPoints(), points.mid(2500));
}

void TestCurveSeriesData::moreThanTheMemoryHoldsAtOnceKeepsTheNewest()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 5000, 10);
    series->addPoints(points);
    QCOMPARE(series->recentPoints(), points.mid(5000));
    QCOMPARE(series->recentStart(), today() + 50000);
    QCOMPARE(storedPoints(series->curveId()).size(), points.size());
}

void TestCurveSeriesData::emptySeriesHasInitialStatistics()
{
    const auto series = makeSeries();
    QCOMPARE(series->count(), 0);
    QCOMPARE(series->lastValue(), 0.0);
    QCOMPARE(series->lastTimeText(), QString());
    QVERIFY(series->maximum() == kTiniestMaximum);
    QVERIFY(series->minimum() == kLargest);
    QVERIFY(series->sum() == 0.0);
    QVERIFY(series->average() == 0.0);
}

void TestCurveSeriesData::statisticsCoverThePointsInMemory_data()
{
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("sum");
    QTest::addColumn<double>("average");
    QTest::newRow("one value") << QVector<double>{2.5} << 2.5 << 2.5 << 2.5 << 2.5;
    QTest::newRow("rising") << QVector<double>{1.0, 2.0, 6.0} << 1.0 << 6.0 << 9.0 << 3.0;
    QTest::newRow("falling through zero")
        << QVector<double>{3.0, 0.0, -4.0, -3.0} << -4.0 << 3.0 << -4.0 << -1.0;
    QTest::newRow("zero only") << QVector<double>{0.0} << 0.0 << kTiniestMaximum << 0.0 << 0.0;
    QTest::newRow("overload readings count")
        << QVector<double>{1.0, 9.9e37} << 1.0 << 9.9e37 << 9.9e37 + 1.0 << (9.9e37 + 1.0) / 2;
}

void TestCurveSeriesData::statisticsCoverThePointsInMemory()
{
    QFETCH(QVector<double>, values);
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QFETCH(double, sum);
    QFETCH(double, average);
    const auto series = makeSeries();
    qint64 time = today();
    for (const double value : values) {
        series->addPoint(static_cast<double>(time++), value);
    }
    QCOMPARE(series->count(), values.size());
    QVERIFY(series->lastValue() == values.last());
    QVERIFY(series->minimum() == minimum);
    QVERIFY(series->maximum() == maximum);
    QVERIFY(series->sum() == sum);
    QVERIFY(series->average() == average);
}

void TestCurveSeriesData::maximumOfNegativeValuesStaysTiny()
{
    const auto series = makeSeries();
    series->addPoint(static_cast<double>(today()), -5.0);
    series->addPoint(static_cast<double>(today() + 1), -2.0);
    QVERIFY(series->maximum() == kTiniestMaximum);
    QVERIFY(series->minimum() == -5.0);
}

void TestCurveSeriesData::statisticsForgetWhatLeftTheMemory()
{
    const auto series = makeSeries();
    series->addPoint(static_cast<double>(today()), 1e9);
    series->addPoint(static_cast<double>(today() + 1), -1e9);
    QVERIFY(series->maximum() == 1e9);
    QVector<QPointF> later;
    for (int i = 0; i < kLimit; ++i) {
        later.append(QPointF(static_cast<double>(today() + 10 + i), 0.1 + i % 7 * 0.3));
    }
    series->addPoints(later);
    double sum = 0.0;
    for (const QPointF& point : later) {
        sum += point.y();
    }
    QCOMPARE(series->count(), kLimit);
    QVERIFY(series->sum() == sum);
    QVERIFY(series->average() == sum / kLimit);
    QVERIFY(series->maximum() == later.at(6).y());
    QVERIFY(series->minimum() == 0.1);
}

void TestCurveSeriesData::statisticsDoNotFollowTheView()
{
    const auto series = makeSeries();
    series->addPoints(ramp(today(), 1000));
    const double sum = series->sum();
    series->loadWindow(today(), today() + 1000, 10, 500.0);
    QCOMPARE(series->size(), size_t(10));
    QCOMPARE(series->count(), 1000);
    QVERIFY(series->sum() == sum);
    QVERIFY(series->maximum() == 999 * 0.25 - 100.0);
    QVERIFY(series->lastValue() == 999 * 0.25 - 100.0);
}

void TestCurveSeriesData::lastTimeTextIsLocalTime()
{
    const auto series = makeSeries();
    series->addPoint(static_cast<double>(localTime("2026-03-05 07:08:09.999")), 1.0);
    QCOMPARE(series->lastTimeText(), QStringLiteral("2026-03-05 07:08:09"));
}

void TestCurveSeriesData::clearEmptiesAndResets()
{
    const auto series = makeSeries();
    series->addPoints(ramp(today(), 100));
    series->loadWindow(today(), today() + 1000, 0, 3.0);
    QCOMPARE(series->size(), size_t(100));
    series->clear();
    QCOMPARE(series->size(), size_t(0));
    QVERIFY(series->recentPoints().isEmpty());
    QCOMPARE(series->recentStart(), qint64(0));
    QCOMPARE(series->recentEnd(), qint64(0));
    QCOMPARE(series->visibleStart(), qint64(0));
    QCOMPARE(series->visibleEnd(), qint64(0));
    QCOMPARE(series->boundingRect(), QRectF());
    QCOMPARE(series->count(), 0);
    QCOMPARE(series->lastTimeText(), QString());
    QVERIFY(series->maximum() == kTiniestMaximum);
    QVERIFY(series->minimum() == kLargest);
    QVERIFY(series->average() == 0.0);
    QCOMPARE(storedPoints(series->curveId()).size(), 100);
}

void TestCurveSeriesData::viewIsServedFromMemoryWithin10Seconds_data()
{
    QTest::addColumn<qint64>("startAfterFirst");
    QTest::addColumn<bool>("fromMemory");
    // The points in memory are 60 s to 70 s after midnight.
    QTest::newRow("10 s before the first point") << qint64(-10000) << true;
    QTest::newRow("a millisecond earlier") << qint64(-10001) << false;
    QTest::newRow("at the first point") << qint64(0) << true;
    QTest::newRow("at the last point") << qint64(10000) << true;
    QTest::newRow("10 s after the last point") << qint64(20000) << true;
    QTest::newRow("a millisecond later") << qint64(20001) << false;
    QTest::newRow("long before") << qint64(-60000) << false;
}

void TestCurveSeriesData::viewIsServedFromMemoryWithin10Seconds()
{
    QFETCH(qint64, startAfterFirst);
    QFETCH(bool, fromMemory);
    const auto series = makeSeries();
    const qint64 midnight = today();
    const QVector<QPointF> older = ramp(midnight, 590);
    const QVector<QPointF> newer = ramp(midnight + 60000, 101);
    m_store->appendPoints(series->curveId(), older + newer);
    for (const QPointF& point : newer) {
        series->addPoint(point.x(), point.y());
    }
    QCOMPARE(series->recentPoints(), newer);

    const qint64 start = midnight + 60000 + startAfterFirst;
    series->loadWindow(start, midnight + 62000, 0, 0.0);
    QVector<QPointF> stored;
    for (const QPointF& point : older + newer) {
        if (qint64(point.x()) >= start && qint64(point.x()) <= midnight + 62000) {
            stored.append(point);
        }
    }
    // Memory shows nothing older than its first point, although the store has more.
    QCOMPARE(shownBy(*series), fromMemory ? newer : stored);
}

void TestCurveSeriesData::memoryShowsAllItHoldsWhateverTheEnd()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), 500);
    series->addPoints(points);
    series->loadWindow(today() + 20000, today() + 21000, 0, 0.0);
    QCOMPARE(shownBy(*series), points);
    series->loadWindow(today(), today() + 40 * kHourMs, 0, 0.0);
    QCOMPARE(shownBy(*series), points);
}

void TestCurveSeriesData::emptyMemoryReadsTheStore()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), 300);
    series->addPoints(points);
    series->clear();
    series->loadWindow(today() + 1000, today() + 2000, 0, 0.0);
    QCOMPARE(shownBy(*series), points.mid(10, 11));
}

void TestCurveSeriesData::noLimitOfPointsKeepsAll()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit);
    series->addPoints(points);
    series->loadWindow(today(), today() + 1000, 0, 0.0);
    QCOMPARE(shownBy(*series), points);
    series->loadWindow(today(), today() + 1000, -1, 0.0);
    QCOMPARE(shownBy(*series), points);
}

void TestCurveSeriesData::memoryIsThinnedToTheLimit()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit);
    series->addPoints(points);
    series->loadWindow(today(), today() + 1000, 10000, 0.0);
    QCOMPARE(series->size(), size_t(10000));
    QCOMPARE(shownBy(*series), thinned(points, 10000));
    QCOMPARE(series->recentPoints(), points);
    series->loadWindow(today(), today() + 1000, kLimit, 0.0);
    QCOMPARE(shownBy(*series), points);
}

void TestCurveSeriesData::offsetIsAddedAndTakenOff()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), 50);
    series->addPoints(points);
    series->loadWindow(today(), today() + 1000, 0, 2.5);
    QCOMPARE(series->yOffset(), 2.5);
    QCOMPARE(shownBy(*series), shifted(points, 2.5));
    QCOMPARE(series->visiblePoints(), shifted(points, 2.5));
    for (int i = 0; i < points.size(); ++i) {
        QCOMPARE(series->rawValue(i), points.at(i).y());
    }
    series->loadWindow(today(), today() + 1000, 0, -1.0);
    QCOMPARE(shownBy(*series), shifted(points, -1.0));
    QCOMPARE(series->rawValue(3), points.at(3).y());
}

void TestCurveSeriesData::offsetAppliesToStoredPointsToo()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), 50);
    series->addPoints(points);
    series->clear();
    series->loadWindow(today(), today() + 5000, 0, 7.0);
    QCOMPARE(shownBy(*series), shifted(points, 7.0));
    QCOMPARE(series->rawValue(49), points.at(49).y());
}

void TestCurveSeriesData::visibleRangeIsThatOfThePointsOrTheOneAskedFor()
{
    const auto series = makeSeries();
    series->loadWindow(today() + 5, today() + 500, 0, 0.0);
    QCOMPARE(series->visibleStart(), today() + 5);
    QCOMPARE(series->visibleEnd(), today() + 500);
    series->addPoints({{double(today() + 70) + 0.5, 1.0}, {double(today() + 90) + 0.5, 1.0}});
    series->loadWindow(today() + 5, today() + 500, 0, 0.0);
    QCOMPARE(series->visibleStart(), today() + 70);
    QCOMPARE(series->visibleEnd(), today() + 90);
}

void TestCurveSeriesData::windowsEqualTheModel()
{
    const quint32 seed = randomSeed();
    const int cases = randomCaseCount();
    QRandomGenerator random(seed);
    const auto series = makeSeries();
    const qint64 midnight = today();
    // The store has twice the points of memory; half a millisecond tells the two apart.
    QVector<QPointF> all;
    qint64 time = midnight;
    for (int i = 0; i < 2 * kLimit; ++i) {
        time += 1 + random.bounded(20);
        all.append(QPointF(double(time) + 0.5, random.bounded(2000.0) - 1000.0));
    }
    series->addPoints(all);
    const QVector<QPointF> memory = all.mid(kLimit);

    for (int round = 0; round < cases; ++round) {
        const qint64 start = midnight - 2000 + random.bounded(int(time - midnight) + 30000);
        const qint64 end = start + random.bounded(100000) - 500;
        const int maxPoints = random.bounded(4) == 0 ? 0 : 1 + random.bounded(12000);
        const double offset = random.bounded(10) - 5.0;
        series->loadWindow(start, end, maxPoints, offset);

        QVector<QPointF> expected;
        if (qint64(memory.last().x() + 10000.0) >= start &&
            qint64(memory.first().x() - 10000.0) <= start) {
            expected = thinned(memory, maxPoints);
        } else if (start >= midnight) { // from before, the store looks into that day's file only
            for (const QPointF& point : qAsConst(all)) {
                if (qint64(point.x()) >= start && qint64(point.x()) <= end) {
                    expected.append(QPointF(double(qint64(point.x())), point.y()));
                }
            }
            expected = thinned(expected, maxPoints);
        }
        if (shownBy(*series) != shifted(expected, offset)) {
            QFAIL(qPrintable(QStringLiteral("seed %1, window %2: %3 to %4, at most %5 points")
                                 .arg(seed)
                                 .arg(round)
                                 .arg(start - midnight)
                                 .arg(end - midnight)
                                 .arg(maxPoints)));
        }
    }
}

void TestCurveSeriesData::boundsSpanThePointsOnDisplay()
{
    const auto series = makeSeries();
    QCOMPARE(series->boundingRect(), QRectF());
    const double time = double(today());
    series->addPoints({{time, 2.0}, {time + 10, -3.0}, {time + 20, 8.0}, {time + 30, 1.0}});
    QCOMPARE(series->boundingRect(), QRectF());
    series->loadWindow(today(), today() + 100, 0, 100.0);
    QCOMPARE(series->boundingRect(), QRectF(time, 97.0, 30.0, 11.0));
    // The same rectangle when asked again, a new one after the next load.
    QCOMPARE(series->boundingRect(), QRectF(time, 97.0, 30.0, 11.0));
    series->loadWindow(today(), today() + 100, 0, 0.0);
    QCOMPARE(series->boundingRect(), QRectF(time, -3.0, 30.0, 11.0));
    series->setRectOfInterest(QRectF(0, 0, 1, 1));
    QCOMPARE(series->boundingRect(), QRectF(time, -3.0, 30.0, 11.0));
}

void TestCurveSeriesData::sampleOutOfRangeIsZero()
{
    const auto series = makeSeries();
    QCOMPARE(series->sample(0), QPointF());
    series->addPoints(ramp(today(), 2));
    series->loadWindow(today(), today() + 100, 0, 1.0);
    QCOMPARE(series->sample(1), QPointF(double(today() + 100), 0.25 - 100.0 + 1.0));
    QCOMPARE(series->sample(2), QPointF());
    QCOMPARE(series->sample(size_t(-1)), QPointF());
}

void TestCurveSeriesData::rawValueOutOfRangeIsZero()
{
    const auto series = makeSeries();
    series->addPoints(ramp(today(), 2));
    series->loadWindow(today(), today() + 100, 0, 1.0);
    QCOMPARE(series->rawValue(0), -100.0);
    QCOMPARE(series->rawValue(-1), 0.0);
    QCOMPARE(series->rawValue(2), 0.0);
}

void TestCurveSeriesData::viewWithoutSeriesIsEmpty()
{
    const NonOwningCurveData view(nullptr);
    QVERIFY(!view.series());
    QCOMPARE(view.size(), size_t(0));
    QCOMPARE(view.sample(0), QPointF());
    QCOMPARE(view.boundingRect(), QRectF(0, 0, 0, 0));
}

void TestCurveSeriesData::viewForwardsToItsSeries()
{
    const auto series = makeSeries();
    const NonOwningCurveData first(series.get());
    const NonOwningCurveData second(series.get());
    QCOMPARE(first.series(), series.get());
    series->addPoints(ramp(today(), 5));
    QCOMPARE(first.size(), size_t(0));
    series->loadWindow(today(), today() + 100, 0, 1.0);
    for (const NonOwningCurveData* view : {&first, &second}) {
        QCOMPARE(view->size(), size_t(5));
        QCOMPARE(view->sample(4), series->sample(4));
        QCOMPARE(view->sample(5), QPointF());
        QCOMPARE(view->boundingRect(), series->boundingRect());
    }
    QCOMPARE(first.boundingRect().height(), 1.0);
}

void TestCurveSeriesData::viewDoesNotOwnItsSeries()
{
    const auto series = makeSeries();
    series->addPoints(ramp(today(), 5));
    series->loadWindow(today(), today() + 100, 0, 0.0);
    auto view = std::make_unique<NonOwningCurveData>(series.get());
    view.reset();
    QCOMPARE(series->size(), size_t(5));
}

void TestCurveSeriesData::allDataIsTheWholeStoredCurve()
{
    const auto series = makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 500, 10);
    series->addPoints(points);
    series->loadWindow(today(), today() + 100, 10, 5.0);
    QCOMPARE(series->allData(), points);
    series->clear();
    QCOMPARE(series->allData(), points);
}

void TestCurveSeriesData::allDataOfAnEmptyCurveIsEmpty()
{
    const auto series = makeSeries();
    const LogCapture log;
    QVERIFY(series->allData().isEmpty());
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveSeriesData::loadingAWindowDetachesTheStore()
{
    const auto series = makeSeries();
    series->addPoint(double(today()), 1.0);
    QVERIFY(ConnectionPool::instance().isHeld(todayPath()));
    series->loadWindow(today(), today() + 100, 0, 0.0);
    QVERIFY(!ConnectionPool::instance().isHeld(todayPath()));
    // Detached and reattached at every load, the store still takes points.
    for (int i = 1; i < 20; ++i) {
        series->addPoint(double(today() + i), 1.0);
        series->loadWindow(today(), today() + 100, 0, 0.0);
        QCOMPARE(series->size(), size_t(i + 1));
    }
    QCOMPARE(storedPoints(series->curveId()).size(), 20);
    QCOMPARE(m_store->curveMetadata(series->curveId()).maxTime, today() + 19);
}

void TestCurveSeriesData::unregisteredSeriesStaysEmpty()
{
    // A directory in the place of today's file: the store cannot open it.
    const QTemporaryDir directory;
    QVERIFY(QDir(directory.path()).mkdir(QStringLiteral("20260305.db")));
    CurveDataDB store(directory.path());
    const LogCapture log;
    CurveSeriesData series(curveName(1), &store);
    QCOMPARE(series.curveId(), -1);
    QCOMPARE(log.lines().last(), QStringLiteral("warning: 曲线注册失败，无法生成有效curve_id"));
    const int lines = log.lines().size();
    series.addPoint(double(today()), 1.0);
    series.addPoints(ramp(today(), 10));
    series.loadWindow(today(), today() + 100, 0, 2.0);
    QCOMPARE(series.size(), size_t(0));
    QVERIFY(series.recentPoints().isEmpty());
    QCOMPARE(series.yOffset(), 0.0);
    QCOMPARE(series.visibleEnd(), qint64(0));
    QVERIFY(series.allData().isEmpty());
    QCOMPARE(log.lines().size(), lines);
}

void TestCurveSeriesData::refusedSeriesCanBeRegisteredAgain()
{
    const QTemporaryDir directory;
    QVERIFY(QDir(directory.path()).mkdir(QStringLiteral("20260305.db")));
    CurveDataDB store(directory.path());
    CurveSeriesData series(curveName(1), &store);
    QVERIFY(!series.registerAgain());
    QCOMPARE(series.curveId(), -1);
    QVERIFY(QDir(directory.path()).rmdir(QStringLiteral("20260305.db")));
    QVERIFY(series.registerAgain());
    QCOMPARE(series.curveId(), 1);
    QCOMPARE(store.curveNames().value(1), curveName(1));
    series.addPoint(double(today()), 1.0);
    QCOMPARE(series.allData(), (QVector<QPointF>{{double(today()), 1.0}}));
    // One that has its curve keeps it.
    QVERIFY(series.registerAgain());
    QCOMPARE(series.curveId(), 1);
    store.closeForExit(QDeadlineTimer(2000));
}

void TestCurveSeriesData::seriesWithoutStoreStaysEmpty()
{
    const LogCapture log;
    CurveSeriesData series(curveName(1), nullptr);
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: 曲线注册失败，无法生成有效curve_id")});
    series.addPoint(double(today()), 1.0);
    series.loadWindow(today(), today() + 100, 0, 2.0);
    QCOMPARE(series.size(), size_t(0));
    QCOMPARE(series.count(), 0);
    QVERIFY(!series.registerAgain());
}

SCN_TEST(TestCurveSeriesData, QCoreApplication)
#include "test_curveseriesdata.moc"
