#include "plot/curvetracker.h"
#include "plot/custommagnifier.h"
#include "plot/custompanner.h"
#include "plotsupport.h"
#include "storage/nonowningcurvedata.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QSignalSpy>
#include <qwt_date_scale_draw.h>
#include <qwt_painter.h>
#include <qwt_picker_machine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

#include <cmath>
#include <limits>

using namespace plotsupport;

namespace {

constexpr double kFlatMargin = 0.9999999999999998;
constexpr double kOverload = 9.9e37;
const double kNotANumber = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

QVector<QPointF> pointsOf(const QVector<double>& values)
{
    QVector<QPointF> points;
    for (double value : values) {
        points.append(QPointF(double(noonToday()) + 1000.0 * points.size(), value));
    }
    return points;
}

/// Data of a curve that tell when they go.
class FarewellData : public QwtPointSeriesData
{
public:
    explicit FarewellData(std::function<void()> farewell)
        : m_farewell(std::move(farewell))
    {
    }
    ~FarewellData() override { m_farewell(); }

private:
    Q_DISABLE_COPY_MOVE(FarewellData)

    std::function<void()> m_farewell;
};

} // namespace

/// The plot's setup, its time window and its y scale. Bounds set by the plot apply at once; those
/// set by a test wait for the next replot.
class TestCCurvePlot : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_ccurveplot_Data"));
    }
    void cleanupTestCase() { m_pool.reset(); }

    void newPlotShowsTheMinuteFromNow();
    void newPlotFillsItsLayout();
    void canvasKeepsItsPictureAndPaintsLater();
    void onlyTheTimeAxisShowsAScale();
    void timeAxisIsLabelledWithLocalDateAndTime();
    void gridIsSolidGray();
    void interactionSitsOnTheCanvas();
    void timersRunTheReloadAndTheRangeCheck();
    void addedCurveLooksAtTheSeriesWithoutOwningIt();
    void addCurveAnnouncesTheListAndHandsItToTheTracker();

    void firstReadingAfterAClearOpensAMinute();
    void windowStandsWhileItFills();
    void readingAtTheRightEdgeStartsTheScrolling();
    void olderReadingMovesTheScrollingWindowBack();
    void readingDuringAnUpdateIsIgnored();
    void resetTimeWindowOpensANewOne();
    void timeThatIsNotFollowedStands();

    void valueAxisFitsTheSamples_data();
    void valueAxisFitsTheSamples();
    void flatDataOfAnySizeKeepAnAxis_data();
    void flatDataOfAnySizeKeepAnAxis();
    void valuesTooFarApartLeaveTheValueAxis();
    void valuesAtTheEndsOfTheNumberRangeKeepAnAxis_data();
    void valuesAtTheEndsOfTheNumberRangeKeepAnAxis();
    void plotWithoutCurvesKeepsItsValueAxis();
    void hiddenCurveStillWidensTheValueAxis();
    void curveWithoutSeriesIsPassedOver();
    void setAutoScaleYTakesTheAxisBack();

    void clearCurvesReturnsToTheLastMinute();
    void clearCurvesEmptiesTheTracker();
    void offsetOfACurveIsKept();
    void offsetOfAForeignCurveChangesNothing();
    void askingForAnOffsetMakesACurveKnown();
    void destructionTakesTrackerCurvesAndTimersAlong();

private:
    std::unique_ptr<SeriesPool> m_pool;
};

void TestCCurvePlot::newPlotShowsTheMinuteFromNow()
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    CCurvePlot plot;
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    const QwtInterval time = timeBounds(plot);
    QVERIFY(time.minValue() >= double(before));
    QVERIFY(time.minValue() <= double(after));
    QCOMPARE(time.width(), 60000.0);

    // The time base is set: a later reading inside the minute does not open another.
    plot.onNewSample(after + 1000);
    QVERIFY(timeBounds(plot).minValue() == time.minValue());
}

void TestCCurvePlot::newPlotFillsItsLayout()
{
    CCurvePlot plot;
    QCOMPARE(plot.sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(plot.sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(plot.minimumSize(), QSize(100, 100));
}

void TestCCurvePlot::canvasKeepsItsPictureAndPaintsLater()
{
    QwtPainter::setPolylineSplitting(false);
    CCurvePlot plot;
    auto* canvas = qobject_cast<QwtPlotCanvas*>(plot.canvas());
    QVERIFY(canvas);
    QCOMPARE(canvas->frameShape(), QFrame::Box);
    QCOMPARE(canvas->frameShadow(), QFrame::Plain);
    QCOMPARE(canvas->lineWidth(), 1);
    QCOMPARE(canvas->palette().color(QPalette::Button), QColor(Qt::white));
    QVERIFY(canvas->testPaintAttribute(QwtPlotCanvas::BackingStore));
    QVERIFY(!canvas->testPaintAttribute(QwtPlotCanvas::ImmediatePaint));
    QVERIFY(!canvas->testAttribute(Qt::WA_PaintOnScreen));
    QVERIFY(QwtPainter::polylineSplitting());
}

void TestCCurvePlot::onlyTheTimeAxisShowsAScale()
{
    CCurvePlot plot;
    for (int axis = 0; axis < QwtPlot::axisCnt; ++axis) {
        const bool shown = axis == QwtPlot::xBottom;
        const QwtScaleDraw* draw = plot.axisScaleDraw(axis);
        QCOMPARE(plot.axisWidget(axis)->margin(), 0);
        QCOMPARE(draw->hasComponent(QwtAbstractScaleDraw::Backbone), shown);
        QCOMPARE(draw->hasComponent(QwtAbstractScaleDraw::Ticks), shown);
        QCOMPARE(draw->hasComponent(QwtAbstractScaleDraw::Labels), shown);
        QVERIFY(plot.plotLayout()->alignCanvasToScale(axis));
    }
    QVERIFY(plot.axisEnabled(QwtPlot::xBottom));
    QVERIFY(plot.axisEnabled(QwtPlot::yLeft));
    QVERIFY(!plot.axisEnabled(QwtPlot::xTop));
    QVERIFY(!plot.axisEnabled(QwtPlot::yRight));
}

void TestCCurvePlot::timeAxisIsLabelledWithLocalDateAndTime()
{
    CCurvePlot plot;
    const auto* draw = dynamic_cast<const QwtDateScaleDraw*>(plot.axisScaleDraw(QwtPlot::xBottom));
    QVERIFY(draw);
    QCOMPARE(draw->timeSpec(), Qt::LocalTime);
    const QString format = QStringLiteral("yyyy/MM/dd\nhh:mm:ss");
    QCOMPARE(draw->dateFormat(QwtDate::Millisecond), format);
    QCOMPARE(draw->dateFormat(QwtDate::Second), format);
    QCOMPARE(draw->dateFormat(QwtDate::Minute), format);
    QCOMPARE(draw->dateFormat(QwtDate::Hour), format);
    const QwtDateScaleDraw library;
    for (const auto type : {QwtDate::Day, QwtDate::Week, QwtDate::Month, QwtDate::Year}) {
        QCOMPARE(draw->dateFormat(type), library.dateFormat(type));
    }

    const qint64 time = QDateTime(QDate(2024, 2, 29), QTime(13, 5, 7)).toMSecsSinceEpoch();
    plot.clearCurves();
    plot.onNewSample(time);
    QCOMPARE(draw->label(double(time)).text(), QStringLiteral("2024/02/29\n13:05:07"));

    QCOMPARE(draw->labelAlignment(), Qt::AlignHCenter | Qt::AlignBottom);
    QCOMPARE(plot.axisFont(QwtPlot::xBottom).pointSize(), 6);
    const QwtScaleEngine* engine = plot.axisScaleEngine(QwtPlot::xBottom);
    QVERIFY(dynamic_cast<const QwtLinearScaleEngine*>(engine));
    QCOMPARE(engine->base(), 10U);
    QVERIFY(engine->testAttribute(QwtScaleEngine::Floating));
}

void TestCCurvePlot::gridIsSolidGray()
{
    CCurvePlot plot;
    const QwtPlotItemList grids = plot.itemList(QwtPlotItem::Rtti_PlotGrid);
    QCOMPARE(grids.size(), 1);
    const auto* grid = static_cast<const QwtPlotGrid*>(grids.first());
    QVERIFY(grid->isVisible());
    QVERIFY(grid->xEnabled());
    QVERIFY(grid->yEnabled());
    QVERIFY(!grid->xMinEnabled());
    QVERIFY(!grid->yMinEnabled());
    QCOMPARE(grid->majorPen().color(), QColor(100, 100, 100));
    QCOMPARE(grid->majorPen().widthF(), 1.0);
    QCOMPARE(grid->majorPen().style(), Qt::SolidLine);
}

void TestCCurvePlot::interactionSitsOnTheCanvas()
{
    CCurvePlot plot;
    QCOMPARE(plot.canvas()->findChildren<CustomPanner*>().size(), 1);
    const auto* magnifier = plot.canvas()->findChild<CustomMagnifier*>();
    QVERIFY(magnifier);
    QVERIFY(magnifier->isAxisEnabled(QwtPlot::xBottom));
    QVERIFY(!magnifier->isAxisEnabled(QwtPlot::yLeft));

    const auto* tracker = plot.canvas()->findChild<CurveTracker*>();
    QVERIFY(tracker);
    QCOMPARE(tracker->xAxis(), int(QwtPlot::xBottom));
    QCOMPARE(tracker->yAxis(), int(QwtPlot::yLeft));
    QCOMPARE(tracker->rubberBand(), QwtPicker::CrossRubberBand);
    QCOMPARE(tracker->trackerMode(), QwtPicker::AlwaysOn);
    QCOMPARE(tracker->trackerPen(), QPen(Qt::black));
    QCOMPARE(tracker->rubberBandPen(),
             QPen(QBrush(Qt::gray), 0.0, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin));
    QVERIFY(dynamic_cast<const QwtPickerTrackerMachine*>(tracker->stateMachine()));
}

void TestCCurvePlot::timersRunTheReloadAndTheRangeCheck()
{
    CCurvePlot plot;
    const QTimer* rangeCheck = timerOf(plot, false);
    QVERIFY(rangeCheck);
    QVERIFY(rangeCheck->isActive());
    QCOMPARE(rangeCheck->interval(), 100);

    QTimer* reload = timerOf(plot, true);
    QVERIFY(reload);
    QVERIFY(reload->isActive());
    reload->stop();
    plot.onNewSample(QDateTime::currentMSecsSinceEpoch());
    QVERIFY(reload->isActive());
    QCOMPARE(reload->interval(), 100);
    plot.clearCurves();
    QVERIFY(!reload->isActive());
}

void TestCCurvePlot::addedCurveLooksAtTheSeriesWithoutOwningIt()
{
    CurveSeriesData* series = m_pool->loaded(0, pointsOf({1.0, 2.0}));
    {
        CCurvePlot plot;
        QwtPlotCurve* curve = plot.addCurve(series, QColor(1, 2, 3), QStringLiteral("101"));
        QCOMPARE(curve->plot(), static_cast<QwtPlot*>(&plot));
        QCOMPARE(curve->title().text(), QStringLiteral("101"));
        QCOMPARE(curve->pen().color(), QColor(1, 2, 3));
        QCOMPARE(curve->pen().widthF(), 1.0);
        QCOMPARE(curve->pen().style(), Qt::SolidLine);
        QVERIFY(curve->testPaintAttribute(QwtPlotCurve::ClipPolygons));
        QVERIFY(curve->testPaintAttribute(QwtPlotCurve::FilterPoints));
        QVERIFY(!curve->testRenderHint(QwtPlotItem::RenderAntialiased));
        const auto* data = dynamic_cast<const NonOwningCurveData*>(curve->data());
        QVERIFY(data);
        QCOMPARE(data->series(), series);
        QCOMPARE(plot.curveOffset(curve), 0.0);
    }
    QCOMPARE(series->size(), size_t(2));
}

void TestCCurvePlot::addCurveAnnouncesTheListAndHandsItToTheTracker()
{
    const QVector<QPointF> points = pointsOf({5.0, 5.0});
    CurveSeriesData* series = m_pool->loaded(0, points);
    CCurvePlot plot;
    plot.resize(400, 300);
    const QSignalSpy updates(&plot, &CCurvePlot::curvesUpdated);
    QwtPlotCurve* curve = plot.addCurve(series, Qt::red, QStringLiteral("101"));
    QCOMPARE(updates.count(), 1);
    double distance = -1.0;
    const auto* tracker = plot.canvas()->findChild<CurveTracker*>();
    QCOMPARE(tracker->nearestCurve(points.first(), &distance), curve);
    QCOMPARE(distance, 0.0);
}

void TestCCurvePlot::firstReadingAfterAClearOpensAMinute()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(1700000000123);
    QCOMPARE(lowerMs(plot), qint64(1700000000123));
    QCOMPARE(upperMs(plot), qint64(1700000060123));
}

void TestCCurvePlot::windowStandsWhileItFills()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(1700000000000);
    plot.onNewSample(1700000059999);
    QCOMPARE(lowerMs(plot), qint64(1700000000000));
    // Older than the window, which stays.
    plot.onNewSample(1699999000000);
    QCOMPARE(lowerMs(plot), qint64(1700000000000));
    QCOMPARE(upperMs(plot), qint64(1700000060000));
}

void TestCCurvePlot::readingAtTheRightEdgeStartsTheScrolling()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(1700000000000);
    plot.onNewSample(1700000060000);
    QCOMPARE(lowerMs(plot), qint64(1700000000000));
    QCOMPARE(upperMs(plot), qint64(1700000060000));
    // It has scrolled since the reading at the edge: an earlier one moves it back.
    plot.onNewSample(1700000059999);
    QCOMPARE(lowerMs(plot), qint64(1699999999999));
    QCOMPARE(upperMs(plot), qint64(1700000059999));
    plot.onNewSample(1700000060001);
    QCOMPARE(upperMs(plot), qint64(1700000060001));
}

void TestCCurvePlot::olderReadingMovesTheScrollingWindowBack()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(1700000000000);
    plot.onNewSample(1700000100000);
    plot.onNewSample(1699990000000);
    QCOMPARE(lowerMs(plot), qint64(1699989940000));
    QCOMPARE(upperMs(plot), qint64(1699990000000));
}

void TestCCurvePlot::readingDuringAnUpdateIsIgnored()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(1700000000000);
    auto* engine = new InterruptingEngine;
    plot.setAxisScaleEngine(QwtPlot::xBottom, engine);
    int interruptions = 0;
    engine->interruption = [&] {
        ++interruptions;
        plot.onNewSample(1800000000000);
    };
    plot.onNewSample(1700000070000);
    engine->interruption = nullptr;
    QCOMPARE(interruptions, 1);
    QCOMPARE(upperMs(plot), qint64(1700000070000));
}

void TestCCurvePlot::resetTimeWindowOpensANewOne()
{
    CCurvePlot plot;
    plot.onNewSample(1700000000000);
    plot.onNewSample(1900000000000);
    plot.resetTimeWindow();
    plot.onNewSample(1700000300000);
    QCOMPARE(lowerMs(plot), qint64(1700000300000));
    QCOMPARE(upperMs(plot), qint64(1700000360000));
}

void TestCCurvePlot::timeThatIsNotFollowedStands()
{
    CCurvePlot plot;
    plot.clearCurves();
    plot.onNewSample(1700000000000);
    plot.setFollowTime(false);
    plot.onNewSample(1700000100000);
    QCOMPARE(upperMs(plot), qint64(1700000060000));
    plot.setFollowTime(true);
    plot.onNewSample(1700000100000);
    QCOMPARE(upperMs(plot), qint64(1700000100000));
}

void TestCCurvePlot::valueAxisFitsTheSamples_data()
{
    QTest::addColumn<QVector<double>>("first");
    QTest::addColumn<QVector<double>>("second");
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");
    using Values = QVector<double>;
    QTest::newRow("empty series") << Values{} << Values{} << 0.0 << 1.0;
    QTest::newRow("data fill four fifths") << Values{0.0, 8.0} << Values{} << -1.0 << 9.0;
    QTest::newRow("over all curves") << Values{0.0, 2.0} << Values{-4.0, 1.0} << -4.75 << 2.75;
    QTest::newRow("negative") << Values{-8.0, -4.0} << Values{} << -8.5 << -3.5;
    QTest::newRow("one sample") << Values{3.0} << Values{} << 3.0 - kFlatMargin
                                << 3.0 + kFlatMargin;
    QTest::newRow("one zero") << Values{0.0} << Values{} << -kFlatMargin << kFlatMargin;
    QTest::newRow("all equal") << Values{5.0, 5.0, 5.0} << Values{5.0} << 5.0 - kFlatMargin
                               << 5.0 + kFlatMargin;
    QTest::newRow("flat to 1e-12")
        << Values{0.0, 5e-13} << Values{} << -kFlatMargin << 5e-13 + kFlatMargin;
    const auto margin = [](double range) { return (range / 0.8 - range) * 0.5; };
    QTest::newRow("just not flat")
        << Values{0.0, 2e-12} << Values{} << -margin(2e-12) << 2e-12 + margin(2e-12);
    QTest::newRow("noise on a level") << Values{5.0, 5.001} << Values{} << 5.0 - margin(5.001 - 5.0)
                                      << 5.001 + margin(5.001 - 5.0);
    QTest::newRow("all overload") << Values{kOverload, kOverload} << Values{kOverload} << 0.0
                                  << 1.0;
    QTest::newRow("overload among readings")
        << Values{0.0, kOverload, 8.0} << Values{} << -1.0 << 9.0;
    QTest::newRow("negative overload counts")
        << Values{-kOverload, kOverload, 0.0} << Values{}
        << -kOverload - (kOverload / 0.8 - kOverload) * 0.5 << (kOverload / 0.8 - kOverload) * 0.5;
    QTest::newRow("no finite value") << Values{kInfinity, -kInfinity} << Values{} << 0.0 << 1.0;
    QTest::newRow("infinite among readings")
        << Values{0.0, kInfinity, 8.0} << Values{} << -1.0 << 9.0;
}

void TestCCurvePlot::valueAxisFitsTheSamples()
{
    QFETCH(QVector<double>, first);
    QFETCH(QVector<double>, second);
    QFETCH(double, lower);
    QFETCH(double, upper);
    CCurvePlot plot;
    plot.addCurve(m_pool->loaded(0, pointsOf(first)), Qt::red, QStringLiteral("101"));
    plot.addCurve(m_pool->loaded(1, pointsOf(second)), Qt::blue, QStringLiteral("102"));
    plot.autoScaleY();
    // Exactly: the margin of flat data is not a round number.
    QVERIFY(valueBounds(plot).minValue() == lower);
    QVERIFY(valueBounds(plot).maxValue() == upper);
}

void TestCCurvePlot::flatDataOfAnySizeKeepAnAxis_data()
{
    QTest::addColumn<double>("value");
    QTest::newRow("1e15") << 1e15;
    QTest::newRow("1e16") << 1e16;
    QTest::newRow("1e30") << 1e30;
    QTest::newRow("-1e37") << -1e37;
}

void TestCCurvePlot::flatDataOfAnySizeKeepAnAxis()
{
    QFETCH(double, value);
    CCurvePlot plot;
    plot.addCurve(m_pool->loaded(0, pointsOf({value})), Qt::red, QStringLiteral("101"));
    plot.autoScaleY();
    QVERIFY(valueBounds(plot).maxValue() > valueBounds(plot).minValue());
    QVERIFY(valueBounds(plot).contains(value));
}

void TestCCurvePlot::valuesTooFarApartLeaveTheValueAxis()
{
    CCurvePlot plot;
    plot.setAxisScale(QwtPlot::yLeft, -3.0, 3.0);
    plot.addCurve(m_pool->loaded(0, pointsOf({-1.5e308, 1.5e308, kNotANumber})), Qt::red,
                  QStringLiteral("101"));
    plot.autoScaleY();
    plot.replot();
    QCOMPARE(valueBounds(plot).minValue(), -3.0);
    QCOMPARE(valueBounds(plot).maxValue(), 3.0);
}

void TestCCurvePlot::valuesAtTheEndsOfTheNumberRangeKeepAnAxis_data()
{
    constexpr double largest = std::numeric_limits<double>::max();
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<QVector<double>>("seen");
    const auto add = [](const char* name, const QVector<double>& values,
                        const QVector<double>& seen) { QTest::newRow(name) << values << seen; };
    add("both ends", {-1.7e308, 1.0, 1.7e308, 1.0}, {1.0});
    add("upper end", {0.0, 1.7e308, 0.0}, {0.0, 1.7e308});
    add("lower end", {0.0, -1.7e308, 0.0}, {0.0, -1.7e308});
    add("upper end only", {1.7e308, 1.7e308}, {1.7e308});
    add("largest", {largest, 1.0}, {1.0});
    add("largest and lowest", {largest, -largest, 1.0}, {1.0});
    add("half the range", {-8e307, 8e307}, {-8e307, 8e307});
    add("infinities", {1.0, kInfinity, 2.0, -kInfinity, 3.0}, {1.0, 2.0, 3.0});
    add("infinities only", {kInfinity, -kInfinity, kInfinity}, {});
    add("not a number", {1.0, kNotANumber, 2.0}, {1.0, 2.0});
}

void TestCCurvePlot::valuesAtTheEndsOfTheNumberRangeKeepAnAxis()
{
    QFETCH(QVector<double>, values);
    QFETCH(QVector<double>, seen);
    const LogCapture log;
    CCurvePlot plot;
    plot.resize(400, 300);
    QVERIFY(showSettled(plot));
    plot.addCurve(m_pool->loaded(0, pointsOf(values)), Qt::red, QStringLiteral("101"));
    const auto isUsable = [&plot] {
        const QwtInterval axis = valueBounds(plot);
        return std::isfinite(axis.minValue()) && std::isfinite(axis.maxValue()) &&
               axis.width() > 0 && std::isfinite(axis.width());
    };
    // The run is over: no reading sets the axis.
    plot.replot();
    plot.grab();
    QVERIFY(isUsable());
    plot.autoScaleY();
    plot.replot();
    plot.grab();
    QVERIFY(isUsable());
    for (const double value : seen) {
        QVERIFY2(valueBounds(plot).contains(value), qPrintable(QString::number(value)));
    }

    // By hand in both directions, to the limit.
    for (const short mode : {short(2), short(3)}) {
        plot.setZoomMode(mode);
        for (const int notches : {1, -1}) {
            for (int turn = 0; turn < 30; ++turn) {
                turnWheel(plot, notches);
                plot.grab();
                QVERIFY(isUsable());
            }
        }
    }
    plot.resumeLive();
    plot.grab();
    QVERIFY(isUsable());
    QCOMPARE(log.lines(QtWarningMsg), QStringList());

    // The next values are shown as usual.
    plot.clearCurves();
    plot.addCurve(m_pool->loaded(0, pointsOf({1.0, 5.0})), Qt::red, QStringLiteral("101"));
    plot.autoScaleY();
    QCOMPARE(valueBounds(plot).minValue(), 0.5);
    QCOMPARE(valueBounds(plot).maxValue(), 5.5);
}

void TestCCurvePlot::plotWithoutCurvesKeepsItsValueAxis()
{
    CCurvePlot plot;
    plot.setAxisScale(QwtPlot::yLeft, -7.0, 7.0);
    plot.replot();
    plot.autoScaleY();
    plot.onNewSample(1700000000000);
    QCOMPARE(valueBounds(plot).minValue(), -7.0);
    QCOMPARE(valueBounds(plot).maxValue(), 7.0);
}

void TestCCurvePlot::hiddenCurveStillWidensTheValueAxis()
{
    CCurvePlot plot;
    plot.addCurve(m_pool->loaded(0, pointsOf({0.0, 2.0})), Qt::red, QStringLiteral("101"));
    plot.addCurve(m_pool->loaded(1, pointsOf({8.0})), Qt::blue, QStringLiteral("102"))->hide();
    plot.onNewSample(1700000000000);
    QCOMPARE(valueBounds(plot).minValue(), -1.0);
    QCOMPARE(valueBounds(plot).maxValue(), 9.0);
}

void TestCCurvePlot::curveWithoutSeriesIsPassedOver()
{
    CCurvePlot plot;
    plot.addCurve(nullptr, Qt::red, QStringLiteral("101"));
    plot.addCurve(m_pool->loaded(0, pointsOf({0.0, 8.0})), Qt::blue, QStringLiteral("102"));
    plot.onNewSample(1700000000000);
    QCOMPARE(valueBounds(plot).minValue(), -1.0);
    QCOMPARE(valueBounds(plot).maxValue(), 9.0);
}

void TestCCurvePlot::setAutoScaleYTakesTheAxisBack()
{
    CCurvePlot plot;
    plot.addCurve(m_pool->loaded(0, pointsOf({0.0, 8.0})), Qt::red, QStringLiteral("101"));
    plot.setAutoScaleY(false);
    plot.setAxisScale(QwtPlot::yLeft, 20.0, 30.0);
    plot.replot();
    plot.onNewSample(1700000000000);
    QCOMPARE(valueBounds(plot).minValue(), 20.0);
    plot.autoScaleY();
    QCOMPARE(valueBounds(plot).minValue(), 20.0);
    plot.onMagnifierZoomed(0.9);
    plot.setAutoScaleY(true);
    QCOMPARE(valueBounds(plot).minValue(), -1.0);
    QCOMPARE(valueBounds(plot).maxValue(), 9.0);
}

void TestCCurvePlot::clearCurvesReturnsToTheLastMinute()
{
    CCurvePlot plot;
    plot.addCurve(m_pool->loaded(0, pointsOf({0.0, 8.0})), Qt::red, QStringLiteral("101"));
    plot.onNewSample(1700000000000);
    plot.onNewSample(1900000000000);
    plot.onMagnifierZoomed(0.9);
    const QSignalSpy updates(&plot, &CCurvePlot::curvesUpdated);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    plot.clearCurves();
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    QCOMPARE(updates.count(), 1);
    QVERIFY(plot.itemList(QwtPlotItem::Rtti_PlotCurve).isEmpty());
    QVERIFY(timeBounds(plot).maxValue() >= double(before));
    QVERIFY(timeBounds(plot).maxValue() <= double(after));
    QCOMPARE(timeBounds(plot).width(), 60000.0);
    QCOMPARE(valueBounds(plot).minValue(), -10.0);
    QCOMPARE(valueBounds(plot).maxValue(), 10.0);

    // The hold is over: the next reading opens a window, and the y axis scales itself again.
    plot.addCurve(m_pool->loaded(0, pointsOf({0.0, 8.0})), Qt::red, QStringLiteral("101"));
    plot.onNewSample(1700000500000);
    QCOMPARE(lowerMs(plot), qint64(1700000500000));
    QCOMPARE(valueBounds(plot).maxValue(), 9.0);
}

void TestCCurvePlot::clearCurvesEmptiesTheTracker()
{
    const QVector<QPointF> points = pointsOf({5.0});
    CCurvePlot plot;
    plot.addCurve(m_pool->loaded(0, points), Qt::red, QStringLiteral("101"));
    plot.clearCurves();
    double distance = 0.0;
    const auto* tracker = plot.canvas()->findChild<CurveTracker*>();
    QVERIFY(!tracker->nearestCurve(points.first(), &distance));
    QCOMPARE(distance, 1000000.0);
}

void TestCCurvePlot::offsetOfACurveIsKept()
{
    CCurvePlot plot;
    QwtPlotCurve* curve = plot.addCurve(m_pool->empty(0), Qt::red, QStringLiteral("101"));
    plot.setCurveOffset(curve, 2.5);
    QCOMPARE(plot.curveOffset(curve), 2.5);
}

void TestCCurvePlot::offsetOfAForeignCurveChangesNothing()
{
    CCurvePlot plot;
    CCurvePlot other;
    QwtPlotCurve* foreign = other.addCurve(m_pool->empty(0), Qt::red, QStringLiteral("101"));
    timerOf(plot, true)->stop();
    plot.setCurveOffset(foreign, 2.5);
    QVERIFY(!timerOf(plot, true)->isActive());
    QCOMPARE(plot.curveOffset(foreign), 0.0);
    QCOMPARE(other.curveOffset(foreign), 0.0);
    plot.setCurveOffset(nullptr, 1.0);
    QCOMPARE(plot.curveOffset(nullptr), 0.0);
}

void TestCCurvePlot::askingForAnOffsetMakesACurveKnown()
{
    CCurvePlot plot;
    QCOMPARE(plot.curveOffset(nullptr), 0.0);
    plot.setCurveOffset(nullptr, 1.5);
    QCOMPARE(plot.curveOffset(nullptr), 1.5);
}

void TestCCurvePlot::destructionTakesTrackerCurvesAndTimersAlong()
{
    auto plot = std::make_unique<CCurvePlot>();
    plot->addCurve(m_pool->loaded(0, pointsOf({0.0, 8.0})), Qt::red, QStringLiteral("101"));
    QwtPlotCurve* curve = plot->addCurve(nullptr, Qt::red, QStringLiteral("102"));
    plot->onNewSample(1700000000000);
    const QPointer<CurveTracker> tracker = plot->canvas()->findChild<CurveTracker*>();
    const QPointer<CustomMagnifier> magnifier = plot->canvas()->findChild<CustomMagnifier*>();
    const QPointer<CustomPanner> panner = plot->canvas()->findChild<CustomPanner*>();
    const QPointer<QTimer> reload = timerOf(*plot, true);
    const QPointer<QTimer> rangeCheck = timerOf(*plot, false);
    QVERIFY(showSettled(*plot));
    QVERIFY(tracker && magnifier && panner && reload && rangeCheck);
    bool curveWentAfterTheTracker = false;
    curve->setSamples(new FarewellData([&] { curveWentAfterTheTracker = !tracker; }));
    plot.reset();
    QVERIFY(curveWentAfterTheTracker);
    QVERIFY(!tracker);
    QVERIFY(!magnifier);
    QVERIFY(!panner);
    QVERIFY(!reload);
    QVERIFY(!rangeCheck);
}

SCN_TEST(TestCCurvePlot, QApplication)
#include "test_ccurveplot.moc"
