#include "dayfilewriter.h"
#include "plainthinning.h"
#include "randomcases.h"
#include "seriesscene.h"
#include "storage/connectionpool.h"
#include "support/exactpoints.h"
#include "support/testprogram.h"

#include <QtTest>

using namespace seriesscene;

namespace {

constexpr int kLimit = SeriesScene::kLimit;

} // namespace

/// The windows that a series loads: from memory or from the store, thinned, with an offset.
class TestCurveSeriesWindow : public QObject
{
    Q_OBJECT

private slots:
    void viewIsServedFromMemoryWithin10Seconds_data();
    void viewIsServedFromMemoryWithin10Seconds();
    void marginOfMemoryIsCutToMilliseconds_data();
    void marginOfMemoryIsCutToMilliseconds();
    void memoryShowsAllItHoldsWhateverTheEnd();
    void emptyMemoryReadsTheStore();
    void storeIsAskedForNoMoreThanTheLimit();
    void noLimitOfPointsKeepsAll();
    void memoryIsThinnedToTheLimit();
    void offsetIsAddedAndTakenOff();
    void offsetAppliesToStoredPointsToo();
    void visibleRangeIsThatOfThePointsOrTheOneAskedFor();
    void loadingAWindowDetachesTheStore();
    void windowsEqualTheModel();

private:
    SeriesScene m_scene;
};

void TestCurveSeriesWindow::viewIsServedFromMemoryWithin10Seconds_data()
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

void TestCurveSeriesWindow::viewIsServedFromMemoryWithin10Seconds()
{
    QFETCH(qint64, startAfterFirst);
    QFETCH(bool, fromMemory);
    const auto series = m_scene.makeSeries();
    const qint64 midnight = today();
    const QVector<QPointF> older = ramp(midnight, 590);
    const QVector<QPointF> newer = ramp(midnight + 60000, 101);
    m_scene.store().appendPoints(series->curveId(), older + newer);
    for (const QPointF& point : newer) {
        series->addPoint(point.x(), point.y());
    }
    COMPARE_EXACTLY(series->recentPoints(), newer);

    const qint64 start = midnight + 60000 + startAfterFirst;
    series->loadWindow(start, midnight + 62000, 0, 0.0);
    QVector<QPointF> stored;
    for (const QPointF& point : older + newer) {
        if (qint64(point.x()) >= start && qint64(point.x()) <= midnight + 62000) {
            stored.append(point);
        }
    }
    // Memory shows nothing older than its first point, although the store has more.
    COMPARE_EXACTLY(shownBy(*series), fromMemory ? newer : stored);
}

void TestCurveSeriesWindow::marginOfMemoryIsCutToMilliseconds_data()
{
    QTest::addColumn<qint64>("startAfterMidnight");
    QTest::addColumn<bool>("fromMemory");
    // The points in memory are half a millisecond after 60 s and after 70 s.
    QTest::newRow("9.9995 s before the first point") << qint64(50001) << true;
    QTest::newRow("10.0005 s before it") << qint64(50000) << true;
    QTest::newRow("10.0015 s before it") << qint64(49999) << false;
    QTest::newRow("9.9995 s after the last point") << qint64(80000) << true;
    QTest::newRow("10.0005 s after it") << qint64(80001) << false;
}

void TestCurveSeriesWindow::marginOfMemoryIsCutToMilliseconds()
{
    QFETCH(const qint64, startAfterMidnight);
    QFETCH(const bool, fromMemory);
    const auto series = m_scene.makeSeries();
    const double time = double(today()) + 0.5;
    const QVector<QPointF> memory = {{time + 60000, 1.0}, {time + 70000, 2.0}};
    series->addPoints(memory);
    const qint64 start = today() + startAfterMidnight;
    series->loadWindow(start, start + 1000, 0, 0.0);
    COMPARE_EXACTLY(shownBy(*series), fromMemory ? memory : QVector<QPointF>());
}

void TestCurveSeriesWindow::memoryShowsAllItHoldsWhateverTheEnd()
{
    const auto series = m_scene.makeSeries();
    // The store has more on either side, which a read of the window would bring.
    const qint64 first = today() + kHourMs;
    m_scene.store().appendPoints(series->curveId(), ramp(first - 8000, 80));
    const QVector<QPointF> points = ramp(first, 500);
    series->addPoints(points);
    m_scene.store().appendPoints(series->curveId(), ramp(first + kHourMs, 80));
    series->loadWindow(first + 20000, first + 21000, 0, 0.0);
    COMPARE_EXACTLY(shownBy(*series), points);
    series->loadWindow(first - 8000, first + 40 * kHourMs, 0, 0.0);
    COMPARE_EXACTLY(shownBy(*series), points);
}

void TestCurveSeriesWindow::emptyMemoryReadsTheStore()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), 300);
    series->addPoints(points);
    series->clear();
    series->loadWindow(today() + 1000, today() + 2000, 0, 0.0);
    COMPARE_EXACTLY(shownBy(*series), points.mid(10, 11));
}

/// The store thins while it reads, table by table: which points are left shows that it had the limit.
void TestCurveSeriesWindow::storeIsAskedForNoMoreThanTheLimit()
{
    constexpr int kMost = 700;
    constexpr qint64 kStepMs = 10000;
    const auto series = m_scene.makeSeries();
    const qint64 start = today() + 4 * kHourMs;
    const qint64 end = start + 10 * kHourMs;
    series->addPoints(ramp(start, int(10 * kHourMs / kStepMs), kStepMs));
    series->clear();
    series->loadWindow(start, end, kMost, 0.0);
    const int id = series->curveId();
    const QVector<QPointF> limited = m_scene.store().readCurveData(id, start, end, kMost);
    COMPARE_EXACTLY(shownBy(*series), limited);
    const QVector<QPointF> all = m_scene.store().readCurveData(id, start, end, 0);
    QVERIFY(!samePoints(limited, thinned(all, kMost)));
}

void TestCurveSeriesWindow::noLimitOfPointsKeepsAll()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit);
    series->addPoints(points);
    series->loadWindow(today(), today() + 1000, 0, 0.0);
    COMPARE_EXACTLY(shownBy(*series), points);
    series->loadWindow(today(), today() + 1000, -1, 0.0);
    COMPARE_EXACTLY(shownBy(*series), points);
}

void TestCurveSeriesWindow::memoryIsThinnedToTheLimit()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), kLimit);
    series->addPoints(points);
    series->loadWindow(today(), today() + 1000, 10000, 0.0);
    QCOMPARE(series->size(), size_t(10000));
    COMPARE_EXACTLY(shownBy(*series), thinned(points, 10000));
    COMPARE_EXACTLY(series->recentPoints(), points);
    series->loadWindow(today(), today() + 1000, kLimit, 0.0);
    COMPARE_EXACTLY(shownBy(*series), points);
}

void TestCurveSeriesWindow::offsetIsAddedAndTakenOff()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), 50);
    series->addPoints(points);
    series->loadWindow(today(), today() + 1000, 0, 2.5);
    QCOMPARE(series->yOffset(), 2.5);
    COMPARE_EXACTLY(shownBy(*series), shifted(points, 2.5));
    COMPARE_EXACTLY(series->visiblePoints(), shifted(points, 2.5));
    for (int i = 0; i < points.size(); ++i) {
        QCOMPARE(series->rawValue(i), points.at(i).y());
    }
    series->loadWindow(today(), today() + 1000, 0, -1.0);
    COMPARE_EXACTLY(shownBy(*series), shifted(points, -1.0));
    QCOMPARE(series->rawValue(3), points.at(3).y());
}

void TestCurveSeriesWindow::offsetAppliesToStoredPointsToo()
{
    const auto series = m_scene.makeSeries();
    const QVector<QPointF> points = ramp(today(), 50);
    series->addPoints(points);
    series->clear();
    series->loadWindow(today(), today() + 5000, 0, 7.0);
    COMPARE_EXACTLY(shownBy(*series), shifted(points, 7.0));
    QCOMPARE(series->rawValue(49), points.at(49).y());
}

void TestCurveSeriesWindow::visibleRangeIsThatOfThePointsOrTheOneAskedFor()
{
    const auto series = m_scene.makeSeries();
    series->loadWindow(today() + 5, today() + 500, 0, 0.0);
    QCOMPARE(series->visibleStart(), today() + 5);
    QCOMPARE(series->visibleEnd(), today() + 500);
    series->addPoints({{double(today() + 70) + 0.5, 1.0}, {double(today() + 90) + 0.5, 1.0}});
    series->loadWindow(today() + 5, today() + 500, 0, 0.0);
    QCOMPARE(series->visibleStart(), today() + 70);
    QCOMPARE(series->visibleEnd(), today() + 90);
}

void TestCurveSeriesWindow::loadingAWindowDetachesTheStore()
{
    const auto series = m_scene.makeSeries();
    series->addPoint(double(today()), 1.0);
    QVERIFY(ConnectionPool::instance().isHeld(m_scene.todayPath()));
    series->loadWindow(today(), today() + 100, 0, 0.0);
    QVERIFY(!ConnectionPool::instance().isHeld(m_scene.todayPath()));
    // Before a read of the store, too.
    series->addPoint(double(today() + 20), 1.0);
    QVERIFY(ConnectionPool::instance().isHeld(m_scene.todayPath()));
    series->loadWindow(today() + 40000, today() + 50000, 0, 0.0);
    QVERIFY(!ConnectionPool::instance().isHeld(m_scene.todayPath()));
    // Detached and reattached at every load, the store still takes points.
    for (int i = 1; i < 20; ++i) {
        series->addPoint(double(today() + 21 + i), 1.0);
        series->loadWindow(today(), today() + 100, 0, 0.0);
        QCOMPARE(series->size(), size_t(i + 2));
    }
    QCOMPARE(m_scene.storedPoints(series->curveId()).size(), 21);
    QCOMPARE(m_scene.store().curveMetadata(series->curveId()).maxTime, today() + 40);
}

void TestCurveSeriesWindow::windowsEqualTheModel()
{
    const quint32 seed = randomSeed();
    const int cases = randomCaseCount();
    QRandomGenerator random(seed);
    const auto series = m_scene.makeSeries();
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
        if (!samePoints(shownBy(*series), shifted(expected, offset))) {
            QFAIL(qPrintable(QStringLiteral("seed %1, window %2: %3 to %4, at most %5 points")
                                 .arg(seed)
                                 .arg(round)
                                 .arg(start - midnight)
                                 .arg(end - midnight)
                                 .arg(maxPoints)));
        }
    }
}

SCN_TEST(TestCurveSeriesWindow, QCoreApplication)
#include "test_curveserieswindow.moc"
