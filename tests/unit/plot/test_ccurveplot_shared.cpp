#include "plotsupport.h"
#include "support/testprogram.h"

#include <QSignalSpy>
#include <qwt_plot_curve.h>

using namespace plotsupport;

namespace {

const qint64 kStart = noonToday();

} // namespace

/// What all plots of a process share: the width that measures the time window, and the value bounds
/// last reported. The functions depend on each other: both are set only once.
class TestCCurvePlotShared : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_ccurveplot_shared_Data"));
    }
    void cleanupTestCase() { m_pool.reset(); }

    void scrollingPlotDoesNotSetTheReferenceWidth();
    void heldPlotDoesNotSetTheReferenceWidth();
    void firstPlotToFillSetsTheReferenceWidth();
    void laterPlotMeasuresByTheFirst();
    void stretchedWindowIsLoadedAtOnce();
    void resetForgetsTheStretchedWidth();
    void scrollingWindowIsNotStretched();
    void windowThatIsNotFollowedIsNotStretched();

    void plotsCompareWithTheBoundsReportedLast();

private:
    std::unique_ptr<SeriesPool> m_pool;
};

void TestCCurvePlotShared::scrollingPlotDoesNotSetTheReferenceWidth()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.onNewSample(kStart + 60000);
    plot.resize(1000, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(upperMs(plot) - lowerMs(plot), qint64(60000));
}

void TestCCurvePlotShared::heldPlotDoesNotSetTheReferenceWidth()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.onMagnifierZoomed(0.9);
    plot.resize(1000, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(upperMs(plot) - lowerMs(plot), qint64(60000));
}

void TestCCurvePlotShared::firstPlotToFillSetsTheReferenceWidth()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.resize(400, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(lowerMs(plot), kStart);
    QCOMPARE(upperMs(plot), kStart + 60000);
    plot.resize(800, 300);
    QCOMPARE(lowerMs(plot), kStart);
    QCOMPARE(upperMs(plot), kStart + 120000);
    // 401 * 60000 / 400, in whole milliseconds.
    plot.resize(401, 300);
    QCOMPARE(upperMs(plot), kStart + 60150);
    plot.resize(333, 300);
    QCOMPARE(upperMs(plot), kStart + 49950);
}

void TestCCurvePlotShared::laterPlotMeasuresByTheFirst()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.resize(600, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(upperMs(plot), kStart + 90000);
    // The window fills to its new edge before it scrolls, and then moves by its new width.
    plot.onNewSample(kStart + 89999);
    QCOMPARE(upperMs(plot), kStart + 90000);
    plot.onNewSample(kStart + 95000);
    QCOMPARE(lowerMs(plot), kStart + 5000);
}

void TestCCurvePlotShared::stretchedWindowIsLoadedAtOnce()
{
    CurveSeriesData* series = m_pool->empty(0);
    CountingPlot plot;
    plot.clearCurves();
    plot.addCurve(series, Qt::red, QStringLiteral("101"));
    plot.onNewSample(kStart);
    plot.resize(400, 300);
    QVERIFY(showSettled(plot));
    plot.resize(500, 300);
    QCOMPARE(series->visibleStart(), kStart - 5000);
    QCOMPARE(series->visibleEnd(), kStart + 80000);
}

void TestCCurvePlotShared::resetForgetsTheStretchedWidth()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.resize(800, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(upperMs(plot), kStart + 120000);
    plot.resetTimeWindow();
    plot.onNewSample(kStart + 1000);
    QCOMPARE(lowerMs(plot), kStart + 1000);
    QCOMPARE(upperMs(plot), kStart + 61000);
}

void TestCCurvePlotShared::scrollingWindowIsNotStretched()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.onNewSample(kStart + 60000);
    plot.resize(800, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(upperMs(plot) - lowerMs(plot), qint64(60000));
}

void TestCCurvePlotShared::windowThatIsNotFollowedIsNotStretched()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(kStart);
    plot.setFollowTime(false);
    plot.resize(800, 300);
    QVERIFY(showSettled(plot));
    QCOMPARE(upperMs(plot) - lowerMs(plot), qint64(60000));
}

void TestCCurvePlotShared::plotsCompareWithTheBoundsReportedLast()
{
    CCurvePlot first;
    CCurvePlot second;
    for (CCurvePlot* plot : {&first, &second}) {
        plot->addCurve(m_pool->empty(0), Qt::red, QStringLiteral("101"));
        plot->setAxisScale(QwtPlot::yLeft, 3.0, 4.0);
        plot->replot();
    }
    const QSignalSpy firstRanges(&first, &CCurvePlot::yAxisRangeChanged);
    const QSignalSpy secondRanges(&second, &CCurvePlot::yAxisRangeChanged);
    first.checkAxisRangeChange();
    QCOMPARE(firstRanges.count(), 1);
    // The second plot has never reported, but its bounds are those that the first reported.
    second.checkAxisRangeChange();
    QCOMPARE(secondRanges.count(), 0);

    second.setAxisScale(QwtPlot::yLeft, 5.0, 6.0);
    second.replot();
    second.checkAxisRangeChange();
    QCOMPARE(secondRanges.count(), 1);
    // The first has not moved, yet differs from what was reported last.
    first.checkAxisRangeChange();
    QCOMPARE(firstRanges.count(), 2);
}

SCN_TEST(TestCCurvePlotShared, QApplication)
#include "test_ccurveplot_shared.moc"
