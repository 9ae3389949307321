#include "dayfilewriter.h"
#include "seriesscene.h"
#include "storage/nonowningcurvedata.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QtTest>

#include <limits>

using namespace seriesscene;

namespace {

constexpr int kLimit = SeriesScene::kLimit;
constexpr double kTiniestMaximum = 2.2250738585072014e-308;
constexpr double kLargest = std::numeric_limits<double>::max();

} // namespace

class TestCurveSeriesData : public QObject
{
    Q_OBJECT

private slots:
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

    void boundsSpanThePointsOnDisplay();
    void boundsRunFromTheFirstToTheLastPoint();
    void sampleOutOfRangeIsZero();
    void rawValueOutOfRangeIsZero();
    void viewWithoutSeriesIsEmpty();
    void viewForwardsToItsSeries();
    void viewDoesNotOwnItsSeries();

    void allDataIsTheWholeStoredCurve();
    void allDataOfAnEmptyCurveIsEmpty();
    void unregisteredSeriesStaysEmpty();
    void refusedSeriesCanBeRegisteredAgain();
    void seriesWithoutStoreStaysEmpty();

private:
    SeriesScene m_scene;
};

void TestCurveSeriesData::registersItsCurveWithTheStore()
{
    const auto series = m_scene.makeSeries();
    QCOMPARE(series->curveId(), m_scene.made());
    QCOMPARE(m_scene.store().curveNames().value(series->curveId()), curveName(m_scene.made()));
    QCOMPARE(series->size(), size_t(0));
}

void TestCurveSeriesData::addPointGoesToTheStoreAndIntoMemory()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), 3);
    for (const QPointF& point : points) {
        series->addPoint(point.x(), point.y());
    }
    COMPARE_EXACTLY(series->recentPoints(), points);
    QCOMPARE(series->recentStart(), today());
    QCOMPARE(series->recentEnd(), today() + 200);
    COMPARE_EXACTLY(m_scene.storedPoints(series->curveId()), points);
    QCOMPARE(series->size(), size_t(0));
}

void TestCurveSeriesData::fractionOfAMillisecondIsCutOffInTheStore()
{
    const auto series = m_scene.makeSeries();
    const double time = static_cast<double>(today());
    series->addPoint(time + 0.75, 4.5);
    COMPARE_EXACTLY(series->recentPoints(), QVector<QPointF>{QPointF(time + 0.75, 4.5)});
    QCOMPARE(series->recentStart(), today());
    COMPARE_EXACTLY(m_scene.storedPoints(series->curveId()), QVector<QPointF>{QPointF(time, 4.5)});
}

void TestCurveSeriesData::addPointsGoToTheStoreAndIntoMemory()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), 50);
    series->addPoint(points.at(0).x(), points.at(0).y());
    series->addPoints(points.mid(1));
    COMPARE_EXACTLY(series->recentPoints(), points);
    QCOMPARE(series->recentStart(), today());
    QCOMPARE(series->recentEnd(), today() + 4900);
    QCOMPARE(series->count(), 50);
    COMPARE_EXACTLY(m_scene.storedPoints(series->curveId()), points);
}

void TestCurveSeriesData::noPointsToAddChangeNothing()
{
    const auto series = m_scene.makeSeries();
    series->addPoints({});
    QVERIFY(series->recentPoints().isEmpty());
    QCOMPARE(series->recentStart(), qint64(0));
    QCOMPARE(series->recentEnd(), qint64(0));
    QVERIFY(m_scene.storedPoints(series->curveId()).isEmpty());
}

void TestCurveSeriesData::the15001stPointDropsExactlyOne()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 1);
    series->addPoints(points.mid(0, kLimit));
    COMPARE_EXACTLY(series->recentPoints(), points.mid(0, kLimit));
    series->addPoint(points.last().x(), points.last().y());
    COMPARE_EXACTLY(series->recentPoints(), points.mid(1));
    QCOMPARE(series->recentStart(), today() + 100);
    QCOMPARE(series->recentEnd(), today() + 100 * kLimit);
    QCOMPARE(series->count(), kLimit);
}

void TestCurveSeriesData::memoryIsTheNewest15000AtEveryPoint()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 2500, 10);
    series->addPoints(points.mid(0, kLimit));
    for (int i = kLimit; i < points.size(); ++i) {
        series->addPoint(points.at(i).x(), points.at(i).y());
        QCOMPARE(series->recentStart(), qint64(points.at(i - kLimit + 1).x()));
        QCOMPARE(series->recentEnd(), qint64(points.at(i).x()));
        if (i % 250 == 0) {
            COMPARE_EXACTLY(series->recentPoints(), points.mid(i - kLimit + 1, kLimit));
        }
    }
    COMPARE_EXACTLY(series->recentPoints(), points.mid(2500));
}

void TestCurveSeriesData::moreThanTheMemoryHoldsAtOnceKeepsTheNewest()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 5000, 10);
    series->addPoints(points);
    COMPARE_EXACTLY(series->recentPoints(), points.mid(5000));
    QCOMPARE(series->recentStart(), today() + 50000);
    QCOMPARE(m_scene.storedPoints(series->curveId()).size(), points.size());
}

void TestCurveSeriesData::emptySeriesHasInitialStatistics()
{
    const auto series = m_scene.makeSeries();
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
    const auto series = m_scene.makeSeries();
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
    const auto series = m_scene.makeSeries();
    series->addPoint(static_cast<double>(today()), -5.0);
    series->addPoint(static_cast<double>(today() + 1), -2.0);
    QVERIFY(series->maximum() == kTiniestMaximum);
    QVERIFY(series->minimum() == -5.0);
}

void TestCurveSeriesData::statisticsForgetWhatLeftTheMemory()
{
    const auto series = m_scene.makeSeries();
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
    const auto series = m_scene.makeSeries();
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
    const auto series = m_scene.makeSeries();
    series->addPoint(static_cast<double>(localTime("2026-03-05 07:08:09.999")), 1.0);
    QCOMPARE(series->lastTimeText(), QStringLiteral("2026-03-05 07:08:09"));
}

void TestCurveSeriesData::clearEmptiesAndResets()
{
    const auto series = m_scene.makeSeries();
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
    QCOMPARE(series->yOffset(), 3.0);
    COMPARE_EXACTLY(series->boundingRect(), QRectF());
    QCOMPARE(series->count(), 0);
    QVERIFY(series->sum() == 0.0);
    QVERIFY(series->lastValue() == 0.0);
    QCOMPARE(series->lastTimeText(), QString());
    QVERIFY(series->maximum() == kTiniestMaximum);
    QVERIFY(series->minimum() == kLargest);
    QVERIFY(series->average() == 0.0);
    QCOMPARE(m_scene.storedPoints(series->curveId()).size(), 100);
}

void TestCurveSeriesData::boundsSpanThePointsOnDisplay()
{
    const auto series = m_scene.makeSeries();
    COMPARE_EXACTLY(series->boundingRect(), QRectF());
    const double time = double(today());
    series->addPoints({{time, 2.0}, {time + 10, -3.0}, {time + 20, 8.0}, {time + 30, 1.0}});
    COMPARE_EXACTLY(series->boundingRect(), QRectF());
    series->loadWindow(today(), today() + 100, 0, 100.0);
    COMPARE_EXACTLY(series->boundingRect(), QRectF(time, 97.0, 30.0, 11.0));
    // The same rectangle when asked again, a new one after the next load.
    COMPARE_EXACTLY(series->boundingRect(), QRectF(time, 97.0, 30.0, 11.0));
    series->loadWindow(today(), today() + 100, 0, 0.0);
    COMPARE_EXACTLY(series->boundingRect(), QRectF(time, -3.0, 30.0, 11.0));
    series->setRectOfInterest(QRectF(0, 0, 1, 1));
    COMPARE_EXACTLY(series->boundingRect(), QRectF(time, -3.0, 30.0, 11.0));
}

/// Memory is in the order of arrival: after the clock was set back, the last point is not the latest.
void TestCurveSeriesData::boundsRunFromTheFirstToTheLastPoint()
{
    const auto series = m_scene.makeSeries();
    const double time = double(today());
    series->addPoints({{time + 1000, 2.0}, {time + 5000, 8.0}, {time + 400, 1.0}});
    series->loadWindow(today(), today() + 100, 0, 0.0);
    COMPARE_EXACTLY(series->boundingRect(), QRectF(time + 1000, 1.0, -600.0, 7.0));
}

void TestCurveSeriesData::sampleOutOfRangeIsZero()
{
    const auto series = m_scene.makeSeries();
    COMPARE_EXACTLY(series->sample(0), QPointF());
    series->addPoints(ramp(today(), 2));
    series->loadWindow(today(), today() + 100, 0, 1.0);
    COMPARE_EXACTLY(series->sample(1), QPointF(double(today() + 100), 0.25 - 100.0 + 1.0));
    COMPARE_EXACTLY(series->sample(2), QPointF());
    COMPARE_EXACTLY(series->sample(size_t(-1)), QPointF());
}

void TestCurveSeriesData::rawValueOutOfRangeIsZero()
{
    const auto series = m_scene.makeSeries();
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
    COMPARE_EXACTLY(view.sample(0), QPointF());
    COMPARE_EXACTLY(view.boundingRect(), QRectF(0, 0, 0, 0));
}

void TestCurveSeriesData::viewForwardsToItsSeries()
{
    const auto series = m_scene.makeSeries();
    const NonOwningCurveData first(series.get());
    const NonOwningCurveData second(series.get());
    QCOMPARE(first.series(), series.get());
    series->addPoints(ramp(today(), 5));
    QCOMPARE(first.size(), size_t(0));
    series->loadWindow(today(), today() + 100, 0, 1.0);
    for (const NonOwningCurveData* view : {&first, &second}) {
        QCOMPARE(view->size(), size_t(5));
        COMPARE_EXACTLY(view->sample(4), series->sample(4));
        COMPARE_EXACTLY(view->sample(5), QPointF());
        COMPARE_EXACTLY(view->boundingRect(), series->boundingRect());
    }
    QCOMPARE(first.boundingRect().height(), 1.0);
}

void TestCurveSeriesData::viewDoesNotOwnItsSeries()
{
    const auto series = m_scene.makeSeries();
    series->addPoints(ramp(today(), 5));
    series->loadWindow(today(), today() + 100, 0, 0.0);
    auto view = std::make_unique<NonOwningCurveData>(series.get());
    view.reset();
    QCOMPARE(series->size(), size_t(5));
}

void TestCurveSeriesData::allDataIsTheWholeStoredCurve()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit + 500, 10);
    series->addPoints(points);
    series->loadWindow(today(), today() + 100, 10, 5.0);
    COMPARE_EXACTLY(series->allData(), points);
    series->clear();
    COMPARE_EXACTLY(series->allData(), points);
}

void TestCurveSeriesData::allDataOfAnEmptyCurveIsEmpty()
{
    const auto series = m_scene.makeSeries();
    const LogCapture log;
    QVERIFY(series->allData().isEmpty());
    QCOMPARE(log.lines(), QStringList());
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
    COMPARE_EXACTLY(series.allData(), (QVector<QPointF>{{double(today()), 1.0}}));
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
    series.addPoints(ramp(today(), 10));
    series.loadWindow(today(), today() + 100, 0, 2.0);
    QCOMPARE(series.size(), size_t(0));
    QCOMPARE(series.count(), 0);
    QVERIFY(series.allData().isEmpty());
    QVERIFY(!series.registerAgain());
}

SCN_TEST(TestCurveSeriesData, QCoreApplication)
#include "test_curveseriesdata.moc"
