#include "plotsupport.h"
#include "support/testprogram.h"

#include <qwt_plot_curve.h>

#include <cmath>
#include <functional>

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

/// Whether the y axis has these bounds, up to rounding.
bool isScaledTo(const CCurvePlot& plot, double lower, double upper)
{
    const QwtInterval values = valueBounds(plot);
    return qFuzzyCompare(values.minValue(), lower) && qFuzzyCompare(values.maxValue(), upper);
}

/// How a user or the program sets and holds the axes.
using Hold = std::function<void(CCurvePlot&)>;

} // namespace

Q_DECLARE_METATYPE(Hold)

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
    void firstValuesLeaveAnAxisSetByHand_data();
    void firstValuesLeaveAnAxisSetByHand();
    void firstValuesLeaveAnAxisSetByTheProgram_data();
    void firstValuesLeaveAnAxisSetByTheProgram();
    void firstValuesSetAnAxisGivenBack();
    void firstValuesSetTheAxisInEachRun();
    void hiddenCurveDoesNotSetTheAxis();

private:
    CurveSeriesData* showRamp();
    void drag(int pixels);

    std::unique_ptr<SeriesPool> m_pool;
    size_t m_used = 0; ///< Empty series that have got readings; the first stays empty.
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

void TestCCurvePlotHold::firstValuesLeaveAnAxisSetByHand_data()
{
    QTest::addColumn<short>("mode");
    QTest::addColumn<bool>("byHand");
    QTest::newRow("time") << short(1) << false;
    QTest::newRow("values") << short(2) << true;
    QTest::newRow("both") << short(3) << true;
}

void TestCCurvePlotHold::firstValuesLeaveAnAxisSetByHand()
{
    QFETCH(short, mode);
    QFETCH(bool, byHand);
    CurveSeriesData* series = m_pool->empty(++m_used);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    const auto show = [&](int second) {
        series->addPoint(double(kStart + second * 1000), 5.0);
        m_plot->onNewSample(kStart + second * 1000);
        m_plot->updateVisibleData();
    };
    m_plot->onNewSample(kStart);
    m_plot->setZoomMode(mode);
    turnWheel(*m_plot, 3);
    const QwtInterval chosen = valueBounds(*m_plot);
    // The wheel in time alone, or a pan, does not give the axis back.
    m_plot->setZoomMode(1);
    turnWheel(*m_plot, -1);
    drag(5);
    show(10);
    QVERIFY(series->size() > 0);
    if (byHand) {
        QCOMPARE(valueBounds(*m_plot), chosen);
    } else {
        QVERIFY(isScaledTo(*m_plot, 4.0, 6.0));
    }

    m_plot->resumeLive();
    show(11);
    QVERIFY(isScaledTo(*m_plot, 4.0, 6.0));
    m_plot->clearCurves();
    series = m_pool->empty(++m_used);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    turnWheel(*m_plot, -1);
    show(12);
    QVERIFY(isScaledTo(*m_plot, 4.0, 6.0));
}

void TestCCurvePlotHold::firstValuesLeaveAnAxisSetByTheProgram_data()
{
    QTest::addColumn<Hold>("hold");
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");
    QTest::newRow("set before the zoom") << Hold([](CCurvePlot& plot) {
        plot.setAxisScale(QwtPlot::yLeft, -5.0, 5.0);
        plot.replot();
        turnWheel(plot, 1);
    }) << -5.0 << 5.0;
    QTest::newRow("set after the zoom") << Hold([](CCurvePlot& plot) {
        turnWheel(plot, 1);
        plot.setAxisScale(QwtPlot::yLeft, -5.0, 5.0);
    }) << -5.0 << 5.0;
    QTest::newRow("zoomed to where it was") << Hold([](CCurvePlot& plot) {
        plot.setZoomMode(2);
        plot.onMagnifierZoomed(1.0);
    }) << 0.0 << 1.0;
    QTest::newRow("left as it is") << Hold([](CCurvePlot& plot) {
        plot.setAutoScaleY(false);
        turnWheel(plot, 1);
    }) << 0.0 << 1.0;
}

/// The first values leave an axis that the plot did not set.
void TestCCurvePlotHold::firstValuesLeaveAnAxisSetByTheProgram()
{
    QFETCH(Hold, hold);
    QFETCH(double, lower);
    QFETCH(double, upper);
    CurveSeriesData* const series = m_pool->empty(++m_used);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    hold(*m_plot);
    series->addPoint(double(kStart + 20000), 500.0);
    m_plot->onNewSample(kStart + 20000);
    m_plot->updateVisibleData();
    QVERIFY(series->size() > 0);
    const QwtInterval values = valueBounds(*m_plot);
    QCOMPARE(values.minValue(), lower);
    QCOMPARE(values.maxValue(), upper);
}

/// A wheel in the values, and then live again: the axis is no longer held.
void TestCCurvePlotHold::firstValuesSetAnAxisGivenBack()
{
    m_plot->setZoomMode(3);
    turnWheel(*m_plot, 3);
    m_plot->resumeLive();
    CurveSeriesData* const series = m_pool->empty(++m_used);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->setZoomMode(1);
    turnWheel(*m_plot, 1);
    const qint64 shown = (lowerMs(*m_plot) + upperMs(*m_plot)) / 2;
    series->addPoint(double(shown), 500.0);
    m_plot->updateVisibleData();
    QVERIFY(isScaledTo(*m_plot, 499.0, 501.0));
}

void TestCCurvePlotHold::firstValuesSetTheAxisInEachRun()
{
    showRamp();
    for (const double value : {50.0, -50.0}) {
        m_plot->clearCurves();
        CurveSeriesData* const series = m_pool->empty(++m_used);
        m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
        m_plot->onNewSample(kStart);
        turnWheel(*m_plot, 1);
        series->addPoint(double(kStart + 20000), value);
        m_plot->onNewSample(kStart + 20000);
        m_plot->updateVisibleData();
        QVERIFY(isScaledTo(*m_plot, value - 1.0, value + 1.0));
    }
}

void TestCCurvePlotHold::hiddenCurveDoesNotSetTheAxis()
{
    QwtPlotCurve* const hidden =
        m_plot->addCurve(m_pool->loaded(0, ramp()), Qt::red, QStringLiteral("101"));
    CurveSeriesData* const series = m_pool->empty(++m_used);
    m_plot->addCurve(series, Qt::green, QStringLiteral("102"));
    m_plot->onNewSample(kStart);
    hidden->setVisible(false);
    turnWheel(*m_plot, 1);
    m_plot->updateVisibleData();
    series->addPoint(double(kStart + 20000), 16.0);
    m_plot->updateVisibleData();
    QVERIFY(isScaledTo(*m_plot, -2.0, 18.0));
}

SCN_TEST(TestCCurvePlotHold, QApplication)
#include "test_ccurveplot_hold.moc"
