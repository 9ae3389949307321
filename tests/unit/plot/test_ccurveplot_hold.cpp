#include "plotsupport.h"
#include "support/testprogram.h"

#include <cmath>

using namespace plotsupport;

namespace {

const qint64 kStart = noonToday();
constexpr qint64 kHourMs = 3600000;

/// A reading a second from `kStart`: 0 to 8.
QVector<QPointF> ramp()
{
    QVector<QPointF> points;
    for (int i = 0; i <= 8; ++i) {
        points.append(QPointF(double(kStart + i * 1000), i));
    }
    return points;
}

} // namespace

/// What a zoom or a pan holds, and what gives it back.
class TestCCurvePlotHold : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_ccurveplot_hold_Data"));
    }
    void cleanupTestCase() { m_pool.reset(); }
    void init();
    void cleanup() { m_plot.reset(); }

    void zoomingInWorksRoundAfterRound_data();
    void zoomingInWorksRoundAfterRound();
    void panHoldsTheValuesAndArmsTheReload();
    void panLeavesTheWidthOfTheTimeAxis();
    void scalingAgainLeavesTheHeldTime();
    void followingAgainLeavesTheHeldValues();
    void valuesBesideTheViewDoNotSetTheAxis();

private:
    CurveSeriesData* showRamp();
    void drag(int pixels);

    std::unique_ptr<SeriesPool> m_pool;
    std::unique_ptr<CCurvePlot> m_plot;
};

void TestCCurvePlotHold::init()
{
    m_plot = std::make_unique<CCurvePlot>();
    m_plot->resize(450, 300);
    m_plot->clearCurves();
    QVERIFY(showSettled(*m_plot));
    // No reload but those that the test asks for, and those armed by the plot itself.
    timerOf(*m_plot, false)->stop();
}

/// Puts a curve of the ramp on display, y from -1 to 9.
CurveSeriesData* TestCCurvePlotHold::showRamp()
{
    CurveSeriesData* const series = m_pool->loaded(0, ramp());
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    m_plot->updateVisibleData();
    return series;
}

void TestCCurvePlotHold::drag(int pixels)
{
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(200 + pixels, 100));
    mouse.release();
}

void TestCCurvePlotHold::zoomingInWorksRoundAfterRound_data()
{
    QTest::addColumn<short>("mode");
    QTest::addColumn<bool>("clears");
    QTest::newRow("time, live again") << short(1) << false;
    QTest::newRow("time, cleared") << short(1) << true;
    QTest::newRow("values, live again") << short(2) << false;
    QTest::newRow("values, cleared") << short(2) << true;
    QTest::newRow("both, live again") << short(3) << false;
    QTest::newRow("both, cleared") << short(3) << true;
}

void TestCCurvePlotHold::zoomingInWorksRoundAfterRound()
{
    constexpr int kRounds = 12;
    constexpr int kNotches = 30;
    QFETCH(short, mode);
    QFETCH(bool, clears);
    m_plot->addCurve(m_pool->empty(0), Qt::red, QStringLiteral("101"));
    m_plot->setZoomMode(mode);
    const double zoomed = std::pow(0.9, kNotches);
    for (int round = 0; round < kRounds; ++round) {
        if (clears) {
            m_plot->clearCurves();
        } else {
            m_plot->resumeLive();
        }
        const double time = timeBounds(*m_plot).width();
        const double values = valueBounds(*m_plot).width();
        for (int notch = 0; notch < kNotches; ++notch) {
            turnWheel(*m_plot, -1);
        }
        const double expectedTime = mode == 2 ? time : time * zoomed;
        const double expectedValues = mode == 1 ? values : values * zoomed;
        QVERIFY(std::abs(timeBounds(*m_plot).width() - expectedTime) < 0.1);
        QVERIFY(std::abs(valueBounds(*m_plot).width() - expectedValues) < 1e-6);
    }
}

void TestCCurvePlotHold::panHoldsTheValuesAndArmsTheReload()
{
    CurveSeriesData* const series = showRamp();
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
    timerOf(*m_plot, true)->stop();
    drag(50);
    QVERIFY(timerOf(*m_plot, true)->isActive());

    series->addPoint(double(kStart + 20000), 100.0);
    m_plot->onNewSample(kStart + 20000);
    m_plot->updateVisibleData();
    QCOMPARE(series->size(), size_t(10));
    QCOMPARE(valueBounds(*m_plot).minValue(), -1.0);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
}

void TestCCurvePlotHold::panLeavesTheWidthOfTheTimeAxis()
{
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 11 * kHourMs));
    m_plot->replot();
    drag(50);
    QVERIFY(lowerMs(*m_plot) < kStart);
    QCOMPARE(upperMs(*m_plot) - lowerMs(*m_plot), 11 * kHourMs);
}

void TestCCurvePlotHold::scalingAgainLeavesTheHeldTime()
{
    CurveSeriesData* const series = showRamp();
    m_plot->setZoomMode(3);
    turnWheel(*m_plot, 1);
    const QwtInterval time = timeBounds(*m_plot);
    m_plot->setAutoScaleY(true);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
    series->addPoint(double(kStart + 20000), 16.0);
    m_plot->onNewSample(kStart + 500000);
    m_plot->updateVisibleData();
    QVERIFY(timeBounds(*m_plot) == time);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 18.0);
}

void TestCCurvePlotHold::followingAgainLeavesTheHeldValues()
{
    CurveSeriesData* const series = showRamp();
    m_plot->setZoomMode(3);
    turnWheel(*m_plot, 1);
    const QwtInterval values = valueBounds(*m_plot);
    m_plot->setFollowTime(true);
    series->addPoint(double(kStart + 20000), 100.0);
    m_plot->onNewSample(kStart + 70000);
    m_plot->updateVisibleData();
    QCOMPARE(upperMs(*m_plot), kStart + 70000);
    QVERIFY(valueBounds(*m_plot) == values);
}

void TestCCurvePlotHold::valuesBesideTheViewDoNotSetTheAxis()
{
    const auto look = [this](qint64 from) {
        m_plot->setAxisScale(QwtPlot::xBottom, double(from), double(from + 60000));
        m_plot->updateVisibleData();
    };
    CurveSeriesData* const series = m_pool->loaded(0, ramp());
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onMagnifierZoomed(0.9);
    // Loaded, but only as the margin of what is seen.
    look(kStart + 10000);
    QVERIFY(series->size() > 0);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 10.0);
    look(kStart);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
}

SCN_TEST(TestCCurvePlotHold, QApplication)
#include "test_ccurveplot_hold.moc"
