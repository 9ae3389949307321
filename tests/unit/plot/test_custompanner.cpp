#include "plot/custompanner.h"
#include "plotsupport.h"
#include "support/testprogram.h"

#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <qwt_picker.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>

#include <cmath>

using namespace plotsupport;

namespace {

const qint64 kStart = noonToday();

QwtScaleDiv scaleDiv(double lower, double upper, const QList<double>& minor,
                     const QList<double>& major)
{
    return QwtScaleDiv(lower, upper, minor, {}, major);
}

/// How far the axis moves for a drag of `dx` pixels: whole steps, against the drag.
double shiftFor(const QwtPlot& plot, int dx, double step)
{
    const QwtScaleMap map = plot.canvasMap(QwtPlot::xBottom);
    const double delta = map.invTransform(0) - map.invTransform(dx);
    return std::copysign(std::ceil(std::abs(delta) / step) * step, delta);
}

double meanMinorGap(const QwtPlot& plot)
{
    const QList<double> minor = plot.axisScaleDiv(QwtPlot::xBottom).ticks(QwtScaleDiv::MinorTick);
    double sum = 0.0;
    for (int i = 1; i < minor.size(); ++i) {
        sum += minor.at(i) - minor.at(i - 1);
    }
    return sum / (minor.size() - 1);
}

/// The platform's screen contents for the plot's window.
QImage onScreen(QWidget& plot)
{
    QCoreApplication::processEvents();
    return plot.screen()->grabWindow(plot.winId()).toImage();
}

} // namespace

/// Drags with a real mouse on a shown chart.
class TestCustomPanner : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_custompanner_Data"));
    }
    void cleanupTestCase() { m_pool.reset(); }
    void init();
    void cleanup() { m_plot.reset(); }

    void dragToTheRightShowsEarlierTimesInWholeSteps();
    void dragToTheLeftShowsLaterTimes();
    void dragMovesTheAxisOnceLiveAndVisibly();
    void snapshotNeverCoversTheCanvas();
    void eachMoveStartsFromTheLastStep();
    void stepIsTheMeanGapOfTheMinorTicks();
    void stepIsAFifthOfTheMajorGapWithoutMinorTicks_data();
    void stepIsAFifthOfTheMajorGapWithoutMinorTicks();
    void stepIsAFiftiethOfTheRangeWithoutTicks();
    void stepIsKeptFromTheDragBefore();
    void readingDuringTheDragMovesNotItsStart();
    void positionsAreRounded();
    void shortDragIsAppliedAtTheRelease_data();
    void shortDragIsAppliedAtTheRelease();
    void restOfTheDragIsForgottenByTheNextPressOnly();
    void clickChangesNothing();
    void verticalDragChangesNothing_data();
    void verticalDragChangesNothing();
    void moveWithoutPressChangesNothing();
    void moveAfterTheReleaseChangesNothing();
    void hidingTheChartEndsTheDrag();
    void hidingTheChartForgetsTheRestOfTheDrag();
    void dragOfNoTimeIsNotSignalled();
    void anyButtonDrags();
    void dragHoldsTheViewAndReloads();
    void readoutSurvivesADrag();
    void freePanIsTheLibrarys();
    void axisThatRunsBackwardsIsPannedFreely();
    void newPannerSnaps();
    void pannerWithoutPlotDoesNothing();

private:
    CustomPanner* panner() const { return m_plot->canvas()->findChild<CustomPanner*>(); }

    std::unique_ptr<SeriesPool> m_pool;
    std::unique_ptr<CountingPlot> m_plot;
};

void TestCustomPanner::init()
{
    m_plot = std::make_unique<CountingPlot>();
    m_plot->resize(600, 400);
    m_plot->clearCurves();
    QVERIFY(showSettled(*m_plot));
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + 60000));
    m_plot->replot();
    m_plot->replots = 0;
}

void TestCustomPanner::dragToTheRightShowsEarlierTimesInWholeSteps()
{
    const double step = meanMinorGap(*m_plot);
    QVERIFY(step > 0.0);
    const double shift = shiftFor(*m_plot, 50, step);
    QVERIFY(shift <= -step);
    const QSignalSpy pans(panner(), qOverload<>(&CustomPanner::panned));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(250, 100));
    QCOMPARE(lowerMs(*m_plot), kStart + qRound64(shift));
    QCOMPARE(upperMs(*m_plot), kStart + 60000 + qRound64(shift));
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), kStart + qRound64(shift));
    QCOMPARE(pans.count(), 1);
    QCOMPARE(m_plot->replots, 1);
}

void TestCustomPanner::dragToTheLeftShowsLaterTimes()
{
    const double shift = shiftFor(*m_plot, -50, meanMinorGap(*m_plot));
    QVERIFY(shift > 0.0);
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(150, 100));
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), kStart + qRound64(shift));
}

void TestCustomPanner::dragMovesTheAxisOnceLiveAndVisibly()
{
    QVector<QPointF> points;
    for (int i = 0; i <= 60; ++i) {
        points.append(QPointF(double(kStart + i * 1000), i % 7));
    }
    m_plot->addCurve(m_pool->loaded(0, points), Qt::red, QStringLiteral("101"));
    m_plot->autoScaleY();
    m_plot->replot();
    const QImage before = onScreen(*m_plot);
    QVERIFY(!before.isNull());

    const QSignalSpy librarysPan(panner(), qOverload<int, int>(&QwtPanner::panned));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(280, 100));
    const QImage during = onScreen(*m_plot);
    QVERIFY(during != before);
    const qint64 lower = lowerMs(*m_plot);
    QVERIFY(lower < kStart);

    mouse.release();
    QCOMPARE(lowerMs(*m_plot), lower);
    QCOMPARE(onScreen(*m_plot), during);
    QCOMPARE(librarysPan.count(), 0);

    // The picture during the drag is the plot's own at these bounds.
    m_plot->replot();
    QCOMPARE(onScreen(*m_plot), during);
}

void TestCustomPanner::snapshotNeverCoversTheCanvas()
{
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    QVERIFY(!panner()->isVisible());
    mouse.move(QPoint(260, 100));
    QVERIFY(!panner()->isVisible());
    mouse.release();
    QVERIFY(!panner()->isVisible());
}

void TestCustomPanner::eachMoveStartsFromTheLastStep()
{
    const double step = meanMinorGap(*m_plot);
    const double shift = shiftFor(*m_plot, 3, step);
    QCOMPARE(shift, -step);
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    for (int i = 1; i <= 4; ++i) {
        mouse.move(QPoint(200 + 3 * i, 100));
        QCOMPARE(lowerMs(*m_plot), qRound64(double(kStart) - i * step));
    }
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), qRound64(double(kStart) - 4 * step));
}

void TestCustomPanner::stepIsTheMeanGapOfTheMinorTicks()
{
    m_plot->setAxisScaleDiv(QwtPlot::xBottom,
                            scaleDiv(0.0, 6000.0, {0.0, 4000.0, 14000.0}, {0.0, 50.0}));
    m_plot->replot();
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(210, 100));
    QCOMPARE(lowerMs(*m_plot), qint64(-7000));
    mouse.release();
}

void TestCustomPanner::stepIsAFifthOfTheMajorGapWithoutMinorTicks_data()
{
    QTest::addColumn<QList<double>>("majorTicks");
    QTest::newRow("two") << QList<double>{0.0, 30000.0};
    QTest::newRow("the first two count") << QList<double>{0.0, 30000.0, 30001.0};
}

void TestCustomPanner::stepIsAFifthOfTheMajorGapWithoutMinorTicks()
{
    QFETCH(QList<double>, majorTicks);
    m_plot->setAxisScaleDiv(QwtPlot::xBottom, scaleDiv(0.0, 6000.0, {10.0}, majorTicks));
    m_plot->replot();
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(210, 100));
    QCOMPARE(lowerMs(*m_plot), qint64(-6000));
    mouse.release();
}

void TestCustomPanner::stepIsAFiftiethOfTheRangeWithoutTicks()
{
    m_plot->setAxisScaleDiv(QwtPlot::xBottom, scaleDiv(0.0, 60000.0, {}, {0.0}));
    m_plot->replot();
    const double shift = shiftFor(*m_plot, 50, 1200.0);
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(250, 100));
    QCOMPARE(lowerMs(*m_plot), qRound64(shift));
    QCOMPARE(lowerMs(*m_plot) % 1200, qint64(0));
    mouse.release();
}

void TestCustomPanner::stepIsKeptFromTheDragBefore()
{
    m_plot->setAxisScaleDiv(QwtPlot::xBottom, scaleDiv(0.0, 6000.0, {0.0, 7000.0}, {0.0}));
    m_plot->replot();
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.release();
    m_plot->setAxisScaleDiv(QwtPlot::xBottom, scaleDiv(0.0, 6000.0, {50.0}, {0.0, 100.0}));
    m_plot->replot();
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(210, 100));
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), qint64(-7000));
}

void TestCustomPanner::readingDuringTheDragMovesNotItsStart()
{
    const double step = meanMinorGap(*m_plot);
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    m_plot->onNewSample(kStart + 500000);
    QCOMPARE(lowerMs(*m_plot), kStart + 500000);
    const double shift = shiftFor(*m_plot, 50, step);
    mouse.move(QPoint(250, 100));
    QCOMPARE(lowerMs(*m_plot), kStart + qRound64(shift));
    QCOMPARE(upperMs(*m_plot), kStart + 60000 + qRound64(shift));
    mouse.release();
}

void TestCustomPanner::positionsAreRounded()
{
    const auto send = [this](QEvent::Type type, double x) {
        QMouseEvent event(type, QPointF(x, 100.0), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_plot->canvas(), &event);
    };
    send(QEvent::MouseButtonPress, 200.6);
    send(QEvent::MouseMove, 203.4);
    QCOMPARE(lowerMs(*m_plot), kStart);
    send(QEvent::MouseMove, 203.6);
    QVERIFY(lowerMs(*m_plot) < kStart);
    send(QEvent::MouseButtonRelease, 203.6);
}

void TestCustomPanner::shortDragIsAppliedAtTheRelease_data()
{
    QTest::addColumn<int>("dx");
    QTest::newRow("1 right") << 1;
    QTest::newRow("2 right") << 2;
    QTest::newRow("2 left") << -2;
}

void TestCustomPanner::shortDragIsAppliedAtTheRelease()
{
    QFETCH(int, dx);
    const double shift = shiftFor(*m_plot, dx, meanMinorGap(*m_plot));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(200 + dx, 100));
    QCOMPARE(lowerMs(*m_plot), kStart);
    QCOMPARE(m_plot->replots, 0);
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), kStart + qRound64(shift));
    QCOMPARE(m_plot->replots, 1);
}

void TestCustomPanner::restOfTheDragIsForgottenByTheNextPressOnly()
{
    const double step = meanMinorGap(*m_plot);
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.press(QPoint(200, 100), Qt::RightButton);
    mouse.move(QPoint(201, 100));
    mouse.release(Qt::RightButton);
    QCOMPARE(lowerMs(*m_plot), qRound64(double(kStart) - step));
    // The second button's release applies the same pixel again.
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), qRound64(double(kStart) - 2 * step));
    mouse.press(QPoint(201, 100));
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), qRound64(double(kStart) - 2 * step));
}

void TestCustomPanner::clickChangesNothing()
{
    const QSignalSpy pans(panner(), qOverload<>(&CustomPanner::panned));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.release();
    QCOMPARE(pans.count(), 0);
    QCOMPARE(m_plot->replots, 0);
    // The view is not held: readings move it.
    m_plot->onNewSample(kStart + 1000);
    m_plot->replot();
    QCOMPARE(lowerMs(*m_plot), kStart + 1000);
}

void TestCustomPanner::verticalDragChangesNothing_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("horizontal") << 1;
    QTest::newRow("vertical") << 2;
    QTest::newRow("both") << 3;
}

void TestCustomPanner::verticalDragChangesNothing()
{
    QFETCH(int, mode);
    m_plot->setZoomMode(short(mode));
    const QwtInterval values = valueBounds(*m_plot);
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(200, 150));
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), kStart);
    QVERIFY(valueBounds(*m_plot) == values);
    QCOMPARE(m_plot->replots, 0);
}

void TestCustomPanner::moveWithoutPressChangesNothing()
{
    Mouse mouse(*m_plot);
    mouse.move(QPoint(200, 100));
    mouse.move(QPoint(300, 100));
    QCOMPARE(lowerMs(*m_plot), kStart);
    QCOMPARE(m_plot->replots, 0);
}

void TestCustomPanner::moveAfterTheReleaseChangesNothing()
{
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.release();
    mouse.move(QPoint(250, 100));
    mouse.move(QPoint(300, 100));
    QCOMPARE(lowerMs(*m_plot), kStart);
    QCOMPARE(m_plot->replots, 0);
}

void TestCustomPanner::hidingTheChartEndsTheDrag()
{
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(230, 100));
    m_plot->hide();
    QVERIFY(showSettled(*m_plot));
    const QwtInterval dragged = timeBounds(*m_plot);
    m_plot->replots = 0;
    mouse.move(QPoint(300, 100));
    mouse.move(QPoint(340, 100));
    QVERIFY(timeBounds(*m_plot) == dragged);
    QCOMPARE(m_plot->replots, 0);
    mouse.release();

    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(230, 100));
    mouse.release();
    QVERIFY(timeBounds(*m_plot).minValue() < dragged.minValue());
}

void TestCustomPanner::hidingTheChartForgetsTheRestOfTheDrag()
{
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(202, 100)); // too little to pan before the release
    m_plot->hide();
    QVERIFY(showSettled(*m_plot));
    mouse.release();
    QCOMPARE(lowerMs(*m_plot), kStart);
}

void TestCustomPanner::dragOfNoTimeIsNotSignalled()
{
    // So narrow that a double cannot distinguish the times of neighbouring pixels.
    const QwtScaleDiv narrow = scaleDiv(double(kStart), double(kStart) + 0.001, {0.0, 1.0}, {});
    m_plot->setAxisScaleDiv(QwtPlot::xBottom, narrow);
    m_plot->replot();
    m_plot->replots = 0;
    const QwtScaleMap map = m_plot->canvasMap(QwtPlot::xBottom);
    QVERIFY(map.invTransform(0) == map.invTransform(3));
    const QSignalSpy pans(panner(), qOverload<>(&CustomPanner::panned));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(203, 100));
    mouse.release();
    QCOMPARE(pans.count(), 0);
    QCOMPARE(m_plot->replots, 0);
}

void TestCustomPanner::anyButtonDrags()
{
    const double shift = shiftFor(*m_plot, 50, meanMinorGap(*m_plot));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100), Qt::MiddleButton);
    mouse.move(QPoint(250, 100));
    mouse.release(Qt::MiddleButton);
    QCOMPARE(lowerMs(*m_plot), kStart + qRound64(shift));
}

void TestCustomPanner::dragHoldsTheViewAndReloads()
{
    CurveSeriesData* series = m_pool->empty(0);
    m_plot->addCurve(series, Qt::red, QStringLiteral("101"));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(250, 100));
    mouse.release();
    const qint64 lower = lowerMs(*m_plot);
    QVERIFY(lower < kStart);
    QTRY_COMPARE(series->visibleStart(), qint64(timeBounds(*m_plot).minValue()) - 5000);
    m_plot->onNewSample(kStart + 1000000);
    m_plot->updateVisibleData();
    QCOMPARE(lowerMs(*m_plot), lower);
    m_plot->resumeLive();
    QVERIFY(lowerMs(*m_plot) != lower);
}

void TestCustomPanner::readoutSurvivesADrag()
{
    auto* picker = m_plot->canvas()->findChild<QwtPicker*>();
    Mouse mouse(*m_plot);
    mouse.move(QPoint(190, 100));
    mouse.move(QPoint(200, 100));
    QTRY_VERIFY(picker->isActive());
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(250, 100));
    QVERIFY(picker->isEnabled());
    QVERIFY(picker->isActive());
    QCOMPARE(picker->trackerPosition(), QPoint(250, 100));
    mouse.release();
    mouse.move(QPoint(240, 110));
    QVERIFY(picker->isActive());
    QCOMPARE(picker->trackerPosition(), QPoint(240, 110));
}

void TestCustomPanner::freePanIsTheLibrarys()
{
    panner()->setSnapToTicks(false);
    const QwtScaleMap map = m_plot->canvasMap(QwtPlot::xBottom);
    const double shift = map.invTransform(0) - map.invTransform(50);
    const QSignalSpy pans(panner(), qOverload<>(&CustomPanner::panned));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(250, 100));
    mouse.release();
    QVERIFY(std::abs(timeBounds(*m_plot).minValue() - double(kStart) - shift) < 1.0);
    QCOMPARE(pans.count(), 0);
}

void TestCustomPanner::axisThatRunsBackwardsIsPannedFreely()
{
    // Every step that its ticks and bounds give is below 0.
    m_plot->setAxisScale(QwtPlot::xBottom, double(kStart + 60000), double(kStart));
    m_plot->replot();
    const QwtScaleMap map = m_plot->canvasMap(QwtPlot::xBottom);
    const double shift = map.invTransform(0) - map.invTransform(50);
    QVERIFY(shift > 0.0);
    const QSignalSpy pans(panner(), qOverload<>(&CustomPanner::panned));
    Mouse mouse(*m_plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(250, 100));
    mouse.release();
    QVERIFY(std::abs(timeBounds(*m_plot).minValue() - double(kStart + 60000) - shift) < 1.0);
    QCOMPARE(pans.count(), 0);
}

void TestCustomPanner::newPannerSnaps()
{
    QwtPlot plot;
    plot.setAxisScale(QwtPlot::xBottom, 0.0, 100.0);
    plot.resize(600, 400);
    const CustomPanner lone(plot.canvas());
    QVERIFY(showSettled(plot));
    const double step = meanMinorGap(plot);
    QCOMPARE(shiftFor(plot, 3, step), -step);
    Mouse mouse(plot);
    mouse.press(QPoint(200, 100));
    mouse.move(QPoint(203, 100));
    mouse.release();
    QCOMPARE(timeBounds(plot).minValue(), -step);
}

void TestCustomPanner::pannerWithoutPlotDoesNothing()
{
    QWidget holder;
    auto* canvas = new QWidget(&holder);
    canvas->resize(100, 100);
    const CustomPanner lone(canvas);
    const QSignalSpy pans(&lone, qOverload<>(&CustomPanner::panned));
    QVERIFY(showSettled(holder));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("borderPath")));
    QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
    QTest::mouseMove(canvas, QPoint(50, 20));
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, QPoint(60, 20));
    QCOMPARE(pans.count(), 0);
    QVERIFY(!lone.isVisible());
}

SCN_TEST(TestCustomPanner, QApplication)
#include "test_custompanner.moc"
