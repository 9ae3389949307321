#include "plot/custommagnifier.h"
#include "plotsupport.h"
#include "state/globals.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QSignalSpy>
#include <qwt_plot_curve.h>
#include <qwt_scale_div.h>
#include <qwt_scale_draw.h>

#include <cmath>

using namespace plotsupport;

namespace {

const qint64 kStart = noonToday();

QVector<QPointF> ramp(int count, double stepMs = 1000.0)
{
    QVector<QPointF> points;
    for (int i = 0; i < count; ++i) {
        points.append(QPointF(double(kStart) + stepMs * i, i));
    }
    return points;
}

/// Left end of the visible time scale, in ms since the epoch.
qint64 shownLowerMs(const QwtPlot& plot)
{
    return qRound64(plot.axisScaleDraw(QwtPlot::xBottom)->scaleDiv().lowerBound());
}

/// The first pixel of the canvas of `color` or nothing.
bool paints(QwtPlot& plot, const QColor& color)
{
    const QImage image = plot.canvas()->grab().toImage();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

/// When the plot loads and draws, on visible and hidden plots, and the effect of a zoom.
class TestCCurvePlotReload : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { m_pool.reset(); }
    void init();
    void cleanup();

    void batchesMoveTheAxesAndOneReloadDrawsOnce();
    void newestReadingIsOnTheAxisWithItsOwnReload();
    void batchSetsTheBoundsAtOnceAndShowsThemWithTheReload();
    void rangeCheckDoesNotPutOffTheReloadOfABatch();
    void reloadDuringAnUpdateIsIgnored();
    void firstCurveIsLoadedWithoutABatch();
    void curveAddedAfterAClearWaitsForABatch();
    void batchesCloserThanTheDelayPushTheReloadBack();
    void reloadTakesTheWindowWithItsMargins();
    void reloadTruncatesTheBounds();
    void reloadTakesTenThousandPointsAtMost();
    void reloadAddsTheOffsetOfTheCurve();
    void reloadWithoutAShownCurveDrawsNothing();
    void hiddenCurveGetsNoWindow();
    void offsetIsLoadedAfterTheDelayUnlessAScanRuns();

    void plotThatIsNotVisibleNeitherLoadsNorDraws();
    void plotThatWasNeverShownIsNeverDrawn();
    void shownPlotLoadsAndScalesToWhatItLoaded();
    void shownPlotKeepsAnAxisThatTheUserHolds();
    void clearWhileHiddenLeavesNoOldPicture();

    void rangeCheckReloadsAfterAForeignMove();
    void rangeCheckTakesNoNoticeOfAMillisecond();
    void rangeCheckWithoutCurvesReturnsAtOnce();
    void rangeCheckReportsNewValueBounds();

    void newValueBoundsAreReportedBeforeTheReload();

    void wheelZoomsTimeAndHoldsTheView();
    void batchArmsTheReloadOfAHeldView();
    void zoomReloadsOnce();
    void zoomModePicksTheAxes_data();
    void zoomModePicksTheAxes();
    void widestZoomIsExactlyTenHours();
    void widestZoomHoldsWithoutCurves();
    void zoomingInHasNoLimit();
    void valueAxisZoomsOutWithoutLimit();
    void zoomTellsItsFactor();
    void resumeLiveGivesTheViewBack();
    void resumeLiveGoesOnScrolling();
    void setFollowTimeReloadsAtOnce();
    void setAutoScaleYDrawsAtOnce();

    void resizeDrawsAndSpacesTheTicks();
    void loadedRangeIsNeverAnnounced();

private:
    std::unique_ptr<SeriesPool> m_pool;
    std::unique_ptr<CountingPlot> m_plot;
};

void TestCCurvePlotReload::initTestCase()
{
    m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_ccurveplot_reload_Data"));
}

void TestCCurvePlotReload::init()
{
    m_plot = std::make_unique<CountingPlot>();
    m_plot->resize(450, 300);
    m_plot->clearCurves();
    QVERIFY(showSettled(*m_plot));
    m_plot->replots = 0;
}

void TestCCurvePlotReload::cleanup()
{
    g_scanRunning = false;
    m_plot.reset();
}

void TestCCurvePlotReload::batchesMoveTheAxesAndOneReloadDrawsOnce()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(5)), Qt::red, QStringLiteral("101"));
    for (int i = 0; i < 5; ++i) {
        m_plot->onNewSample(kStart + i * 1000);
    }
    QCOMPARE(m_plot->replots, 0);
    QTRY_COMPARE(m_plot->replots, 1);
    QCOMPARE(lowerMs(*m_plot), kStart);
    QCOMPARE(upperMs(*m_plot), kStart + 60000);
    QCOMPARE(valueBounds(*m_plot).minValue(), -0.5);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 4.5);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 1);

    // A batch that scrolls the window is one reload too.
    m_plot->onNewSample(kStart + 90000);
    QCOMPARE(m_plot->replots, 1);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 2);
    QCOMPARE(upperMs(*m_plot), kStart + 90000);
}

void TestCCurvePlotReload::newestReadingIsOnTheAxisWithItsOwnReload()
{
    CurveSeriesData* series = m_pool->loaded(0, ramp(5));
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart + 4000);
    passReloads(*m_plot);
    m_plot->replots = 0;

    // The axis is set for the batch before its readings are loaded.
    series->addPoint(static_cast<double>(kStart + 5000), 40.0);
    m_plot->onNewSample(kStart + 5000);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 4.5);
    QCOMPARE(m_plot->replots, 0);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 45.0);
    QCOMPARE(m_plot->axisScaleDraw(QwtPlot::yLeft)->scaleDiv().upperBound(), 45.0);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 1);

    // A held axis stays.
    turnWheel(*m_plot, 1);
    const QwtInterval held = valueBounds(*m_plot);
    series->addPoint(static_cast<double>(kStart + 6000), 400.0);
    m_plot->onNewSample(kStart + 6000);
    passReloads(*m_plot);
    QCOMPARE(valueBounds(*m_plot).maxValue(), held.maxValue());
}

void TestCCurvePlotReload::batchSetsTheBoundsAtOnceAndShowsThemWithTheReload()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    const qint64 shown = shownLowerMs(*m_plot);
    m_plot->onNewSample(kStart);
    QCOMPARE(lowerMs(*m_plot), kStart);
    QCOMPARE(upperMs(*m_plot), kStart + 60000);
    QCOMPARE(valueBounds(*m_plot).minValue(), -1.0);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
    QCOMPARE(shownLowerMs(*m_plot), shown);
    QCOMPARE(m_plot->replots, 0);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(shownLowerMs(*m_plot), kStart);

    // New ticks belong to the bounds set last.
    m_plot->onNewSample(kStart + 90000);
    m_plot->setAxisMaxMajor(QwtPlot::xBottom, 2);
    m_plot->replot();
    QCOMPARE(shownLowerMs(*m_plot), kStart + 30000);
}

void TestCCurvePlotReload::rangeCheckDoesNotPutOffTheReloadOfABatch()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart + 500000);
    timerOf(*m_plot, true)->stop();
    m_plot->checkAxisRangeChange();
    QVERIFY(!timerOf(*m_plot, true)->isActive());
}

void TestCCurvePlotReload::reloadDuringAnUpdateIsIgnored()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    auto* engine = new InterruptingEngine;
    m_plot->setAxisScaleEngine(QwtPlot::xBottom, engine);
    int interruptions = 0;
    engine->interruption = [&] {
        ++interruptions;
        m_plot->updateVisibleData();
        m_plot->setFollowTime(true);
    };
    m_plot->onNewSample(kStart);
    engine->interruption = nullptr;
    QCOMPARE(interruptions, 1);
    QCOMPARE(m_plot->replots, 0);
    QCOMPARE(series->visibleEnd(), qint64(0));
}

void TestCCurvePlotReload::firstCurveIsLoadedWithoutABatch()
{
    CountingPlot plot;
    plot.resize(450, 300);
    QVERIFY(showSettled(plot));
    passReloads(plot);
    CurveSeriesData* series = m_pool->empty(0);
    plot.addCurve(series, Qt::red, QStringLiteral("101"));
    QTRY_COMPARE(series->visibleStart(), qint64(timeBounds(plot).minValue()) - 5000);
}

void TestCCurvePlotReload::curveAddedAfterAClearWaitsForABatch()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->clearCurves();
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->checkAxisRangeChange();
    QVERIFY(!timerOf(*m_plot, true)->isActive());
}

void TestCCurvePlotReload::batchesCloserThanTheDelayPushTheReloadBack()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(5)), Qt::red, QStringLiteral("101"));
    QCOMPARE(timerOf(*m_plot, true)->interval(), 100);
    // Timers run out in the order of their times, on a busy machine too: here after 50 ms, after 130,
    // and then the reload, which a second batch has put off to 150.
    int replotsAt130 = -1;
    QTimer::singleShot(50, Qt::PreciseTimer, m_plot.get(), [&] {
        QTimer::singleShot(80, Qt::PreciseTimer, m_plot.get(),
                           [&] { replotsAt130 = m_plot->replots; });
        m_plot->onNewSample(kStart);
    });
    m_plot->onNewSample(kStart);
    QTRY_COMPARE(m_plot->replots, 1);
    QCOMPARE(replotsAt130, 0);
}

void TestCCurvePlotReload::reloadTakesTheWindowWithItsMargins()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(series->visibleStart(), kStart - 5000);
    QCOMPARE(series->visibleEnd(), kStart + 65000);

    // The reload after a jump takes the window that the axis was set to, not the one drawn last.
    m_plot->onNewSample(kStart + 500000);
    m_plot->updateVisibleData();
    QCOMPARE(series->visibleStart(), kStart + 435000);
    QCOMPARE(series->visibleEnd(), kStart + 505000);
}

void TestCCurvePlotReload::reloadTruncatesTheBounds()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->setAxisScale(QwtPlot::xBottom, 1000.9, 2000.9);
    m_plot->updateVisibleData();
    QCOMPARE(series->visibleStart(), qint64(-4000));
    QCOMPARE(series->visibleEnd(), qint64(7000));
}

void TestCCurvePlotReload::reloadTakesTenThousandPointsAtMost()
{
    CurveSeriesData* series = m_pool->loaded(0, ramp(10500, 5.0));
    QCOMPARE(series->size(), size_t(10500));
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    m_plot->updateVisibleData();
    QCOMPARE(series->size(), size_t(10000));
}

void TestCCurvePlotReload::reloadAddsTheOffsetOfTheCurve()
{
    CurveSeriesData* series = m_pool->loaded(0, ramp(3));
    QwtPlotCurve* curve = m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    m_plot->setCurveOffset(curve, 10.0);
    m_plot->updateVisibleData();
    QCOMPARE(series->sample(2).y(), 12.0);
    QCOMPARE(series->rawValue(2), 2.0);
}

void TestCCurvePlotReload::reloadWithoutAShownCurveDrawsNothing()
{
    m_plot->updateVisibleData();
    QCOMPARE(m_plot->replots, 0);
    m_plot->addCurve(m_pool->loaded(0, ramp(3)), Qt::red, QStringLiteral("101"))->hide();
    m_plot->addCurve(nullptr, Qt::red, QStringLiteral("102"));
    m_plot->updateVisibleData();
    QCOMPARE(m_plot->replots, 0);
}

void TestCCurvePlotReload::hiddenCurveGetsNoWindow()
{
    CurveSeriesData* shown = m_pool->empty(0);
    CurveSeriesData* hidden = m_pool->empty(1);
    m_plot->addCurve(shown, Qt::red, QStringLiteral("101"));
    m_plot->addCurve(hidden, Qt::blue, QStringLiteral("102"))->hide();
    m_plot->onNewSample(kStart);
    m_plot->updateVisibleData();
    QCOMPARE(shown->visibleStart(), kStart - 5000);
    QCOMPARE(hidden->visibleStart(), qint64(0));
    QCOMPARE(m_plot->replots, 1);
}

void TestCCurvePlotReload::offsetIsLoadedAfterTheDelayUnlessAScanRuns()
{
    CurveSeriesData* series = m_pool->loaded(0, ramp(3));
    QwtPlotCurve* curve = m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    passReloads(*m_plot);

    g_scanRunning = true;
    m_plot->setCurveOffset(curve, 1.0);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(series->yOffset(), 0.0);

    g_scanRunning = false;
    m_plot->setCurveOffset(curve, 2.0);
    QCOMPARE(series->yOffset(), 0.0);
    reloadNow(*m_plot);
    QCOMPARE(series->yOffset(), 2.0);
    QCOMPARE(m_plot->replots, 2);
}

void TestCCurvePlotReload::plotThatIsNotVisibleNeitherLoadsNorDraws()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->hide();
    m_plot->onNewSample(kStart);
    m_plot->onNewSample(kStart + 100000);
    m_plot->updateVisibleData();
    m_plot->setFollowTime(true);
    m_plot->setAutoScaleY(true);
    m_plot->resumeLive();
    m_plot->onNewSample(kStart + 200000);
    m_plot->resize(500, 320);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 0);
    QCOMPARE(series->visibleEnd(), qint64(0));
    // Its axes have moved all the same.
    QCOMPARE(upperMs(*m_plot), kStart + 200000);
}

void TestCCurvePlotReload::plotThatWasNeverShownIsNeverDrawn()
{
    CountingPlot plot;
    CurveSeriesData* series = m_pool->empty(0);
    plot.addCurve(series, Qt::red, QStringLiteral("101"));
    plot.onNewSample(kStart);
    plot.clearCurves();
    plot.addCurve(series, Qt::red, QStringLiteral("101"));
    plot.onNewSample(kStart);
    passReloads(plot);
    QCOMPARE(plot.replots, 0);
    QCOMPARE(series->visibleEnd(), qint64(0));
    QVERIFY(showSettled(plot));
    QVERIFY(plot.replots > 0);
    QVERIFY(series->visibleEnd() > 0);
}

void TestCCurvePlotReload::shownPlotLoadsAndScalesToWhatItLoaded()
{
    CurveSeriesData* series = m_pool->loaded(0, {});
    m_plot->addCurve(series, QColor(255, 0, 0), QStringLiteral("101"));
    m_plot->hide();
    series->addPoints(ramp(9));
    m_plot->onNewSample(kStart + 8000);
    QCOMPARE(series->size(), size_t(0));
    QCOMPARE(m_plot->replots, 0);

    m_plot->show();
    QCOMPARE(series->size(), size_t(9));
    QCOMPARE(valueBounds(*m_plot).minValue(), -1.0);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
    QCOMPARE(m_plot->replots, 1);
}

void TestCCurvePlotReload::shownPlotKeepsAnAxisThatTheUserHolds()
{
    CurveSeriesData* series = m_pool->loaded(0, ramp(1));
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 60000));
    m_plot->updateVisibleData();
    m_plot->setAxisScale(QwtPlot::yLeft, 20.0, 30.0);
    m_plot->onMagnifierZoomed(0.9);
    m_plot->hide();
    series->addPoints(ramp(9));
    m_plot->show();
    QCOMPARE(series->size(), size_t(10));
    QCOMPARE(valueBounds(*m_plot).minValue(), 20.0);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 30.0);
}

void TestCCurvePlotReload::clearWhileHiddenLeavesNoOldPicture()
{
    const QColor color(255, 0, 0);
    QwtPlotCurve* curve =
        m_plot->addCurve(m_pool->loaded(0, ramp(9)), color, QStringLiteral("101"));
    curve->setPen(color, 0.0);
    m_plot->onNewSample(kStart + 8000);
    m_plot->onNewSample(kStart + 68000);
    m_plot->updateVisibleData();
    m_plot->autoScaleY();
    m_plot->replot();
    QVERIFY(paints(*m_plot, color));
    m_plot->replots = 0;
    m_plot->hide();
    m_plot->clearCurves();
    QCOMPARE(m_plot->replots, 0);
    m_plot->show();
    QCOMPARE(m_plot->replots, 1);
    QVERIFY(!paints(*m_plot, color));
}

void TestCCurvePlotReload::rangeCheckReloadsAfterAForeignMove()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 1000));
    m_plot->replot();
    QTRY_COMPARE(series->visibleStart(), kStart - 5000);
    QCOMPARE(series->visibleEnd(), kStart + 6000);
}

void TestCCurvePlotReload::rangeCheckTakesNoNoticeOfAMillisecond()
{
    m_plot->addCurve(m_pool->empty(0), Qt::red, QStringLiteral("101"));
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 1000));
    m_plot->updateVisibleData();
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart + 1), double(kStart + 1001));
    m_plot->replot();
    m_plot->replots = 0;
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 0);
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 1002));
    m_plot->replot();
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 2);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 2);
    // Either end counts.
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart - 2), double(kStart + 1002));
    m_plot->replot();
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 4);
}

void TestCCurvePlotReload::rangeCheckWithoutCurvesReturnsAtOnce()
{
    const QSignalSpy ranges(m_plot.get(), &CCurvePlot::yAxisRangeChanged);
    m_plot->setAxisScale(QwtPlot::yLeft, 123.0, 456.0);
    m_plot->setAxisScale(QwtPlot::xBottom, 123.0, 456.0);
    m_plot->replot();
    m_plot->checkAxisRangeChange();
    passReloads(*m_plot);
    QCOMPARE(ranges.count(), 0);
    QCOMPARE(m_plot->replots, 1);
}

void TestCCurvePlotReload::rangeCheckReportsNewValueBounds()
{
    m_plot->addCurve(m_pool->empty(0), Qt::red, QStringLiteral("101"));
    m_plot->checkAxisRangeChange();
    QSignalSpy ranges(m_plot.get(), &CCurvePlot::yAxisRangeChanged);
    m_plot->setAxisScale(QwtPlot::yLeft, 123.0, 456.0);
    m_plot->replot();
    runOut(timerOf(*m_plot, false));
    QCOMPARE(ranges.count(), 1);
    QCOMPARE(ranges.at(0).at(0).toDouble(), 123.0);
    QCOMPARE(ranges.at(0).at(1).toDouble(), 456.0);

    m_plot->setAxisScale(QwtPlot::yLeft, 123.0 + 5e-7, 456.0 - 5e-7);
    m_plot->replot();
    m_plot->checkAxisRangeChange();
    QCOMPARE(ranges.count(), 1);
    m_plot->setAxisScale(QwtPlot::yLeft, 123.0 + 5e-6, 456.0);
    m_plot->replot();
    m_plot->checkAxisRangeChange();
    QCOMPARE(ranges.count(), 2);
    m_plot->setAxisScale(QwtPlot::yLeft, 123.0 + 5e-6, 456.0 + 5e-6);
    m_plot->replot();
    m_plot->checkAxisRangeChange();
    QCOMPARE(ranges.count(), 3);

    // A change of the value axis alone loads nothing.
    m_plot->replots = 0;
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 0);
}

void TestCCurvePlotReload::newValueBoundsAreReportedBeforeTheReload()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    m_plot->checkAxisRangeChange();
    const QSignalSpy ranges(m_plot.get(), &CCurvePlot::yAxisRangeChanged);
    m_plot->onNewSample(kStart);
    m_plot->checkAxisRangeChange();
    QCOMPARE(ranges.count(), 1);
    QCOMPARE(ranges.at(0).at(0).toDouble(), -1.0);
    QCOMPARE(ranges.at(0).at(1).toDouble(), 9.0);
    QCOMPARE(m_plot->replots, 0);
}

void TestCCurvePlotReload::wheelZoomsTimeAndHoldsTheView()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    m_plot->updateVisibleData();
    const QwtInterval values = valueBounds(*m_plot);
    turnWheel(*m_plot, 1);
    const QwtInterval zoomed = timeBounds(*m_plot);
    QVERIFY(std::abs(zoomed.width() - 60000.0 / 0.9) < 1.0);
    QVERIFY(valueBounds(*m_plot) == values);

    m_plot->onNewSample(kStart + 1000000);
    m_plot->updateVisibleData();
    QVERIFY(timeBounds(*m_plot) == zoomed);
    QVERIFY(valueBounds(*m_plot) == values);
}

void TestCCurvePlotReload::batchArmsTheReloadOfAHeldView()
{
    CurveSeriesData* series = m_pool->loaded(0, {});
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    turnWheel(*m_plot, 1);
    passReloads(*m_plot);
    const QwtInterval held = timeBounds(*m_plot);
    m_plot->replots = 0;
    series->addPoints(ramp(9));
    m_plot->onNewSample(kStart + 8000);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(series->size(), size_t(9));
    QVERIFY(timeBounds(*m_plot) == held);
}

void TestCCurvePlotReload::zoomReloadsOnce()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    turnWheel(*m_plot, 1);
    turnWheel(*m_plot, 1);
    QCOMPARE(m_plot->replots, 3);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 4);
    QCOMPARE(series->visibleStart(), qint64(timeBounds(*m_plot).minValue()) - 5000);
    QCOMPARE(series->visibleEnd(), qint64(timeBounds(*m_plot).maxValue()) + 5000);
}

void TestCCurvePlotReload::zoomModePicksTheAxes_data()
{
    QTest::addColumn<QVector<int>>("modes");
    QTest::addColumn<bool>("time");
    QTest::addColumn<bool>("value");
    QTest::newRow("at first") << QVector<int>{} << true << false;
    QTest::newRow("horizontal") << QVector<int>{3, 1} << true << false;
    QTest::newRow("vertical") << QVector<int>{2} << false << true;
    QTest::newRow("both") << QVector<int>{3} << true << true;
    QTest::newRow("0 changes nothing") << QVector<int>{2, 0} << false << true;
    QTest::newRow("4 changes nothing") << QVector<int>{3, 4} << true << true;
    QTest::newRow("-1 changes nothing") << QVector<int>{2, -1} << false << true;
}

void TestCCurvePlotReload::zoomModePicksTheAxes()
{
    QFETCH(QVector<int>, modes);
    QFETCH(bool, time);
    QFETCH(bool, value);
    for (int mode : modes) {
        m_plot->setZoomMode(short(mode));
    }
    const QwtInterval times = timeBounds(*m_plot);
    const QwtInterval values = valueBounds(*m_plot);
    turnWheel(*m_plot, -1);
    QCOMPARE(timeBounds(*m_plot).width() < times.width(), time);
    QCOMPARE(valueBounds(*m_plot).width() < values.width(), value);
}

void TestCCurvePlotReload::widestZoomIsExactlyTenHours()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    for (int i = 0; i < 100; ++i) {
        turnWheel(*m_plot, 1);
    }
    QCOMPARE(qint64(timeBounds(*m_plot).width()), qint64(36000000));
    QCOMPARE(lowerMs(*m_plot) + 18000000, kStart + 30000);
    QCOMPARE(shownLowerMs(*m_plot), lowerMs(*m_plot));
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 102);
    QCOMPARE(series->visibleStart(), lowerMs(*m_plot) - 5000);
    QCOMPARE(qint64(timeBounds(*m_plot).width()), qint64(36000000));

    // The clamp does not count as a move that makes the range check reload.
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 36000000));
    m_plot->replot();
    turnWheel(*m_plot, 1);
    timerOf(*m_plot, true)->stop();
    m_plot->checkAxisRangeChange();
    QVERIFY(!timerOf(*m_plot, true)->isActive());
}

void TestCCurvePlotReload::widestZoomHoldsWithoutCurves()
{
    for (int i = 0; i < 100; ++i) {
        turnWheel(*m_plot, 1);
    }
    QCOMPARE(qint64(timeBounds(*m_plot).width()), qint64(36000000));
}

void TestCCurvePlotReload::zoomingInHasNoLimit()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    m_plot->setZoomMode(3);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    m_plot->onNewSample(now);
    m_plot->updateVisibleData();
    for (int i = 0; i < 100; ++i) {
        turnWheel(*m_plot, -1);
    }
    QVERIFY(timeBounds(*m_plot).width() < 2.0);
    QVERIFY(valueBounds(*m_plot).width() < 1e-3);
    // Beyond what a double can resolve: the plot survives and comes back.
    for (int i = 0; i < 400; ++i) {
        turnWheel(*m_plot, -1);
        m_plot->canvas()->repaint();
    }
    passReloads(*m_plot);
    m_plot->resumeLive();
    QCOMPARE(lowerMs(*m_plot), now);
    QCOMPARE(upperMs(*m_plot), now + 60000);
    QVERIFY(valueBounds(*m_plot).width() >= 1.0);
}

void TestCCurvePlotReload::valueAxisZoomsOutWithoutLimit()
{
    m_plot->setZoomMode(2);
    const double width = valueBounds(*m_plot).width();
    for (int i = 0; i < 200; ++i) {
        turnWheel(*m_plot, 1);
    }
    const double widened = width * std::pow(1.0 / 0.9, 200);
    QVERIFY(std::abs(valueBounds(*m_plot).width() / widened - 1.0) < 1e-6);
}

void TestCCurvePlotReload::zoomTellsItsFactor()
{
    const QSignalSpy zooms(m_plot->canvas()->findChild<CustomMagnifier*>(),
                           &CustomMagnifier::zoomed);
    turnWheel(*m_plot, 1);
    turnWheel(*m_plot, -1);
    QCOMPARE(zooms.count(), 2);
    QCOMPARE(zooms.at(0).at(0).toDouble(), 1.0 / 0.9);
    QCOMPARE(zooms.at(1).at(0).toDouble(), 0.9);
}

void TestCCurvePlotReload::resumeLiveGivesTheViewBack()
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    QVector<QPointF> points = ramp(9);
    for (QPointF& point : points) {
        point.rx() += static_cast<double>(now - kStart);
    }
    m_plot->addCurve(m_pool->loaded(0, points), Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(now);
    turnWheel(*m_plot, 5);
    m_plot->setAxisScale(QwtPlot::yLeft, 20.0, 30.0);
    m_plot->replot();
    m_plot->replots = 0;
    m_plot->resumeLive();
    QCOMPARE(m_plot->replots, 1);
    // An unscrolled chart returns to its first window.
    QCOMPARE(lowerMs(*m_plot), now);
    QCOMPARE(upperMs(*m_plot), now + 60000);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
    passReloads(*m_plot);
    QCOMPARE(m_plot->replots, 2);
}

void TestCCurvePlotReload::resumeLiveGoesOnScrolling()
{
    m_plot->onNewSample(kStart);
    m_plot->onNewSample(kStart + 70000);
    turnWheel(*m_plot, 1);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    m_plot->resumeLive();
    QVERIFY(upperMs(*m_plot) >= before);
    QVERIFY(upperMs(*m_plot) <= QDateTime::currentMSecsSinceEpoch());
    QCOMPARE(upperMs(*m_plot) - lowerMs(*m_plot), qint64(60000));
}

void TestCCurvePlotReload::setFollowTimeReloadsAtOnce()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    m_plot->onMagnifierZoomed(0.9);
    m_plot->setFollowTime(false);
    QCOMPARE(m_plot->replots, 0);
    m_plot->onNewSample(kStart + 500000);
    m_plot->setFollowTime(true);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(series->visibleStart(), kStart - 5000);
    m_plot->onNewSample(kStart + 500000);
    m_plot->updateVisibleData();
    QCOMPARE(series->visibleEnd(), kStart + 505000);
}

void TestCCurvePlotReload::setAutoScaleYDrawsAtOnce()
{
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    m_plot->setAutoScaleY(false);
    QCOMPARE(m_plot->replots, 0);
    m_plot->setAutoScaleY(true);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(valueBounds(*m_plot).maxValue(), 9.0);
}

void TestCCurvePlotReload::resizeDrawsAndSpacesTheTicks()
{
    m_plot->onMagnifierZoomed(0.9);
    m_plot->replots = 0;
    m_plot->resize(500, 300);
    QCOMPARE(m_plot->replots, 1);
    QCOMPARE(m_plot->axisMaxMajor(QwtPlot::xBottom), 5);
    m_plot->resize(539, 300);
    QCOMPARE(m_plot->axisMaxMajor(QwtPlot::xBottom), 5);
    m_plot->resize(540, 300);
    QCOMPARE(m_plot->axisMaxMajor(QwtPlot::xBottom), 6);
    QCOMPARE(m_plot->replots, 3);
}

void TestCCurvePlotReload::loadedRangeIsNeverAnnounced()
{
    const QSignalSpy announced(m_plot.get(), &CCurvePlot::dataRangeChanged);
    m_plot->addCurve(m_pool->loaded(0, ramp(9)), Qt::red, QStringLiteral("101"));
    m_plot->onNewSample(kStart);
    reloadNow(*m_plot);
    QCOMPARE(m_plot->replots, 1);
    turnWheel(*m_plot, 1);
    m_plot->updateVisibleData();
    m_plot->clearCurves();
    QVERIFY(announced.isValid());
    QCOMPARE(announced.count(), 0);
}

SCN_TEST(TestCCurvePlotReload, QApplication)
#include "test_ccurveplot_reload.moc"
