#include "plot/curvelabel.h"
#include "plot/curveoffsetcontroller.h"
#include "plot/curvesamples.h"
#include "plot/loadturns.h"
#include "plotsupport.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "support/exactpoints.h"
#include "support/testprogram.h"

#include <QSqlDatabase>
#include <QTemporaryDir>
#include <qwt_plot_curve.h>

#include <algorithm>
#include <functional>

using namespace plotsupport;

namespace {

constexpr qint64 kDayMs = 86400000;
constexpr int kCurves = 12;
constexpr int kPoints = 40000;
constexpr qint64 kStepMs = 500;

const qint64 kStart = noonToday() - 3 * kDayMs;

/// Five and a half hours, too far back for memory.
QVector<QPointF> past()
{
    QVector<QPointF> points;
    points.reserve(kPoints);
    for (int i = 0; i < kPoints; ++i) {
        points.append(QPointF(static_cast<double>(kStart + kStepMs * i), i % 100));
    }
    return points;
}

/// Points on display of all curves, one number if they agree, and -1 if not.
int pointsShown(const CCurvePlot& plot)
{
    QVector<int> counts;
    for (QwtPlotItem* item : plot.itemList(QwtPlotItem::Rtti_PlotCurve)) {
        counts.append(static_cast<int>(static_cast<QwtPlotCurve*>(item)->dataSize()));
    }
    const bool agree = std::all_of(counts.cbegin(), counts.cend(),
                                   [&counts](int count) { return count == counts.first(); });
    return agree ? counts.first() : -1;
}

/// Points on display of a curve.
QVector<QPointF> pointsOf(const CCurvePlot& plot, int curve)
{
    QwtPlotItem* const item = plot.itemList(QwtPlotItem::Rtti_PlotCurve).at(curve);
    return scn::loadedData(static_cast<QwtPlotCurve*>(item))->points();
}

/// Whether a connection to a file is open.
bool isOpen(const QString& path)
{
    const QStringList names = QSqlDatabase::connectionNames();
    return std::any_of(names.cbegin(), names.cend(), [&path](const QString& name) {
        const QSqlDatabase database = QSqlDatabase::database(name, false);
        return database.databaseName() == path && database.isOpen();
    });
}

/// First time on display of the last curve.
qint64 firstShown(const CCurvePlot& plot)
{
    const QwtPlotItemList curves = plot.itemList(QwtPlotItem::Rtti_PlotCurve);
    return static_cast<qint64>(static_cast<QwtPlotCurve*>(curves.constLast())->sample(0).x());
}

} // namespace

/// Loads that take longer than a turn of the event loop.
class TestCCurvePlotSlices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void longLoadIsShownAtOnceWhenThrough();
    void anotherOffsetIsShownAtOnce();
    void formerPointsStayUntilThen();
    void newCurveShowsNothingUntilThen();
    void newTagStandsAtItsCurveAfterIt();
    void userWhoMovesOnEndsIt();
    void viewThatFollowsIsNotPutOffForever();
    void chartShownLastGoesFirst();
    void moveIsFetchedBeforeItsReload();
    void offsetSetBeforeTheReloadIsShown();
    void otherCurvesChosenBeforeTheReloadAreShown();
    void movesDoNotAddTurns();
    void readingStoredMeanwhileIsShown();
    void readingStoredWithinALoadIsShown();
    void loadInSlicesDetachesTheStore();
    void hiddenChartStartsAgainWhenShown();
    void clearedOrDeletedChartForgetsIt();
    void reopeningAFileMayEndIt_data();
    void reopeningAFileMayEndIt();
    void reloadMayFallDueWithinASlice();
    // These store readings of now, which the others would find.
    void liveViewEndsIt();
    void chartClearedWhileItLoadsStaysEmpty();

private:
    std::unique_ptr<CountingPlot> plotOfAll();
    bool showPast(CountingPlot& plot);
    void look(CCurvePlot& plot, qint64 from, qint64 to);
    void storeElsewhere();

    const SkippedWaits m_waits;
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
    std::vector<std::unique_ptr<CurveSeriesData>> m_series;
};

void TestCCurvePlotSlices::initTestCase()
{
    m_store = std::make_unique<CurveDataDB>(m_directory.path());
    for (int i = 0; i < kCurves; ++i) {
        const QString name = QStringLiteral("%1(V)").arg(101 + i);
        m_store->registerCurveAtOnce(name);
        m_series.push_back(std::make_unique<CurveSeriesData>(name, m_store.get()));
        m_series.back()->addPoints(past());
        m_series.back()->clear();
    }
}

void TestCCurvePlotSlices::cleanupTestCase()
{
    m_series.clear();
    m_store.reset();
}

std::unique_ptr<CountingPlot> TestCCurvePlotSlices::plotOfAll()
{
    auto plot = std::make_unique<CountingPlot>();
    plot->resize(450, 300);
    plot->clearCurves();
    for (const auto& series : m_series) {
        series->clear();
        plot->addCurve(series.get(), Qt::red, QStringLiteral("101"));
    }
    plot->onMagnifierZoomed(1.0);
    return showSettled(*plot) ? std::move(plot) : nullptr;
}

/// Sets the time axis and begins the reload.
void TestCCurvePlotSlices::look(CCurvePlot& plot, qint64 from, qint64 to)
{
    plot.setAxisScale(QwtPlot::xBottom, static_cast<double>(from), static_cast<double>(to));
    plot.updateVisibleData();
}

/// Stores a reading of now, of a curve that no chart shows.
void TestCCurvePlotSlices::storeElsewhere()
{
    const QString name = QStringLiteral("301(V)");
    m_store->registerCurveAtOnce(name);
    CurveSeriesData series(name, m_store.get());
    series.addPoint(static_cast<double>(QDateTime::currentMSecsSinceEpoch()), 1.0);
}

/// Shows what is stored, and nothing is due after that. False if that takes too long.
bool TestCCurvePlotSlices::showPast(CountingPlot& plot)
{
    passReloads(plot);
    look(plot, kStart, kStart + kPoints * kStepMs);
    const bool isShown = QTest::qWaitFor([&plot] { return pointsShown(plot) == 10000; }, 30000);
    passReloads(plot);
    plot.replots = 0;
    return isShown;
}

void TestCCurvePlotSlices::longLoadIsShownAtOnceWhenThrough()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    passReloads(*plot);
    plot->replots = 0;
    look(*plot, kStart, kStart + kPoints * kStepMs);
    QCOMPARE(plot->replots, 0);
    int turns = 0;
    while (plot->replots == 0 && turns < 1000) {
        QCOMPARE(pointsShown(*plot), 0);
        QCoreApplication::processEvents();
        ++turns;
    }
    QCOMPARE(plot->replots, 1);
    QVERIFY2(turns > 1, qPrintable(QString::number(turns)));
    QCOMPARE(pointsShown(*plot), 10000);
    for (size_t i = 0; i < m_series.size(); ++i) {
        auto* curve = static_cast<QwtPlotCurve*>(
            plot->itemList(QwtPlotItem::Rtti_PlotCurve).at(static_cast<int>(i)));
        const QVector<QPointF> shown = scn::loadedData(curve)->points();
        m_series[i]->loadWindow(kStart - 5000, kStart + kPoints * kStepMs + 5000, 10000, 0.0);
        COMPARE_EXACTLY(shown, m_series[i]->visiblePoints());
    }
    passReloads(*plot);
    QCOMPARE(plot->replots, 1);
}

void TestCCurvePlotSlices::anotherOffsetIsShownAtOnce()
{
    constexpr double kOffset = 0.3;
    constexpr double kNotLoaded = -1.0;
    const auto plot = plotOfAll();
    QVERIFY(plot);
    QVERIFY(showPast(*plot));
    auto* curve =
        static_cast<QwtPlotCurve*>(plot->itemList(QwtPlotItem::Rtti_PlotCurve).constFirst());
    CurveSeriesData& series = *m_series.front();
    series.loadWindow(0, 0, 1, kNotLoaded);
    plot->setCurveOffset(curve, kOffset);
    plot->updateVisibleData();
    QCOMPARE(plot->replots, 1);
    QCOMPARE(series.yOffset(), kNotLoaded); // nothing was read
    const QVector<QPointF> shown = scn::loadedData(curve)->points();
    series.loadWindow(kStart - 5000, kStart + kPoints * kStepMs + 5000, 10000, kOffset);
    COMPARE_EXACTLY(shown, series.visiblePoints());
}

void TestCCurvePlotSlices::formerPointsStayUntilThen()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    look(*plot, kStart + 20000, kStart + 25000);
    QCOMPARE(pointsShown(*plot), 31);
    plot->replots = 0;
    look(*plot, kStart, kStart + kPoints * kStepMs);
    while (plot->replots == 0) {
        QCOMPARE(pointsShown(*plot), 31);
        QCoreApplication::processEvents();
    }
    QCOMPARE(pointsShown(*plot), 10000);
}

void TestCCurvePlotSlices::newCurveShowsNothingUntilThen()
{
    const auto plot = plotOfAll();
    const auto other = plotOfAll();
    QVERIFY(plot && other);
    plot->clearCurves();
    plot->onMagnifierZoomed(1.0);
    plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + kPoints * kStepMs));
    plot->replot();
    const QImage empty = plot->canvas()->grab().toImage();
    for (QwtPlotItem* item : other->itemList(QwtPlotItem::Rtti_PlotCurve)) {
        other->setCurveOffset(static_cast<QwtPlotCurve*>(item), 5.0);
    }
    look(*other, kStart + 20000, kStart + 25000);
    QCOMPARE(pointsShown(*other), 31);

    for (const auto& series : m_series) {
        plot->addCurve(series.get(), Qt::red, QStringLiteral("101"));
    }
    plot->replots = 0;
    plot->showCurrentView();
    QCOMPARE(plot->replots, 1);
    while (plot->replots == 1) {
        QCOMPARE(pointsShown(*plot), 0);
        QCOMPARE(plot->canvas()->grab().toImage(), empty);
        plot->autoScaleY();
        QCOMPARE(valueBounds(*plot).maxValue(), 10.0);
        QCoreApplication::processEvents();
    }
    QCOMPARE(pointsShown(*plot), 10000);
    QCOMPARE(firstShown(*plot), kStart);
}

void TestCCurvePlotSlices::newTagStandsAtItsCurveAfterIt()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    plot->setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart + kPoints * kStepMs));
    CurveOffsetController strip(plot.get(), nullptr);
    strip.resize(45, 200);
    auto* curve =
        static_cast<QwtPlotCurve*>(plot->itemList(QwtPlotItem::Rtti_PlotCurve).constFirst());
    plot->showCurrentView();
    strip.addCurveLabel(QStringLiteral("101"), curve, Qt::red, 75.0);
    const auto* tag = strip.findChild<CurveLabel*>();
    QVERIFY(plot->isLoading());
    QCOMPARE(tag->y(), -10); // far above the axis of an empty plot, which ends at 10
    QTRY_COMPARE(pointsShown(*plot), 10000);
    const double above =
        (valueBounds(*plot).maxValue() - 75.0) / valueBounds(*plot).width() * strip.height();
    QVERIFY(qAbs(tag->y() + 10 - above) <= 1.0);
}

void TestCCurvePlotSlices::userWhoMovesOnEndsIt()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    passReloads(*plot);
    look(*plot, kStart, kStart + kPoints * kStepMs);
    QCOMPARE(pointsShown(*plot), 0);
    turnWheel(*plot, -1);
    // The slices end with the next turn; the new view waits for its reload.
    timerOf(*plot, true)->stop();
    plot->replots = 0;
    for (int turn = 0; turn < 200; ++turn) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        timerOf(*plot, true)->stop();
    }
    QCOMPARE(plot->replots, 0);
    QCOMPARE(pointsShown(*plot), 0);
    plot->updateVisibleData();
    QTRY_COMPARE(pointsShown(*plot), 10000);
    QVERIFY(firstShown(*plot) > kStart);
}

void TestCCurvePlotSlices::viewThatFollowsIsNotPutOffForever()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    passReloads(*plot);
    plot->setFollowTime(true);
    plot->replots = 0;
    qint64 time = kStart + kPoints * kStepMs;
    look(*plot, kStart, time += 1000);
    QVERIFY(plot->isLoading());
    // At least one move comes within the load, even if that takes but one turn.
    for (int turn = 0; turn < 500 && plot->replots == 0; ++turn) {
        look(*plot, kStart, time += 1000);
        QCoreApplication::processEvents();
    }
    QCOMPARE(plot->replots, 1);
    QCOMPARE(pointsShown(*plot), 10000);
    // What was due meanwhile follows.
    QTRY_COMPARE_WITH_TIMEOUT(plot->replots, 2, 30000);
}

void TestCCurvePlotSlices::chartShownLastGoesFirst()
{
    const auto first = plotOfAll();
    const auto second = plotOfAll();
    QVERIFY(first && second);
    passReloads(*first);
    passReloads(*second);
    first->replots = 0;
    second->replots = 0;
    look(*first, kStart, kStart + kPoints * kStepMs);
    look(*second, kStart, kStart + kPoints * kStepMs);
    while (second->replots == 0) {
        QCOMPARE(first->replots, 0);
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(first->replots, 1);
    QCOMPARE(pointsShown(*first), 10000);
}

void TestCCurvePlotSlices::moveIsFetchedBeforeItsReload()
{
    const auto plot = plotOfAll();
    QVERIFY(plot && showPast(*plot));
    const qint64 former = firstShown(*plot);
    turnWheel(*plot, -1);
    timerOf(*plot, true)->stop();
    plot->replots = 0;
    QTRY_VERIFY(m_series.back()->visibleStart() > former);
    QCOMPARE(firstShown(*plot), former);
    QCOMPARE(plot->replots, 0);
    plot->updateVisibleData();
    QCOMPARE(plot->replots, 1);
    QCOMPARE(firstShown(*plot), m_series.back()->visibleStart());
}

void TestCCurvePlotSlices::offsetSetBeforeTheReloadIsShown()
{
    constexpr double kOffset = 0.3;
    const auto plot = plotOfAll();
    QVERIFY(plot && showPast(*plot));
    const qint64 former = firstShown(*plot);
    turnWheel(*plot, -1);
    timerOf(*plot, true)->stop();
    QTRY_VERIFY(m_series.back()->visibleStart() > former);
    auto* curve =
        static_cast<QwtPlotCurve*>(plot->itemList(QwtPlotItem::Rtti_PlotCurve).constLast());
    plot->setCurveOffset(curve, kOffset);
    plot->updateVisibleData();
    QTRY_VERIFY(firstShown(*plot) > former);
    const QVector<QPointF> shown = pointsOf(*plot, kCurves - 1);
    m_series.back()->loadWindow(lowerMs(*plot) - 5000, upperMs(*plot) + 5000, 10000, kOffset);
    COMPARE_EXACTLY(shown, m_series.back()->visiblePoints());
}

void TestCCurvePlotSlices::otherCurvesChosenBeforeTheReloadAreShown()
{
    const auto plot = plotOfAll();
    QVERIFY(plot && showPast(*plot));
    const qint64 former = firstShown(*plot);
    const QwtPlotItemList curves = plot->itemList(QwtPlotItem::Rtti_PlotCurve);
    auto* const hidden = static_cast<QwtPlotCurve*>(curves.at(0));
    hidden->setVisible(false);
    turnWheel(*plot, -1);
    timerOf(*plot, true)->stop();
    QTRY_VERIFY(m_series.back()->visibleStart() > former);
    hidden->setVisible(true);
    curves.at(1)->setVisible(false);
    plot->updateVisibleData();
    QTRY_VERIFY(!plot->isLoading());
    QVERIFY(hidden->sample(0).x() > static_cast<double>(former));
    QCOMPARE(firstShown(*plot), static_cast<qint64>(hidden->sample(0).x()));
}

void TestCCurvePlotSlices::movesDoNotAddTurns()
{
    QObject chart;
    int turns = 0;
    std::function<void()> again = [&] {
        ++turns;
        scn::LoadTurns::ask(&chart, 1, again);
    };
    for (int move = 0; move < 10; ++move) {
        scn::LoadTurns::withdraw(&chart);
        scn::LoadTurns::ask(&chart, 1, again);
    }
    constexpr int kRounds = 5;
    for (int round = 0; round < kRounds; ++round) {
        QCoreApplication::processEvents();
    }
    scn::LoadTurns::withdraw(&chart);
    QVERIFY2(turns > 0 && turns <= kRounds, qPrintable(QString::number(turns)));
}

void TestCCurvePlotSlices::readingStoredMeanwhileIsShown()
{
    const auto plot = plotOfAll();
    QVERIFY(plot && showPast(*plot));
    const qint64 former = firstShown(*plot);
    turnWheel(*plot, -1);
    timerOf(*plot, true)->stop();
    QTRY_VERIFY(m_series.back()->visibleStart() > former);
    m_series.back()->addPoint(static_cast<double>(m_series.back()->visibleEnd() - 1), 1.0);
    m_series.back()->clear();
    plot->updateVisibleData();
    QTRY_VERIFY(firstShown(*plot) > former);
    const QVector<QPointF> shown = pointsOf(*plot, kCurves - 1);
    m_series.back()->loadWindow(lowerMs(*plot) - 5000, upperMs(*plot) + 5000, 10000, 0.0);
    COMPARE_EXACTLY(shown, m_series.back()->visiblePoints());
}

/// Some of the readings are stored where the load has been already.
void TestCCurvePlotSlices::readingStoredWithinALoadIsShown()
{
    constexpr int kMany = 300000; // several slices for this curve alone
    constexpr qint64 kShortStepMs = 100;
    const qint64 start = kStart - 20 * kDayMs;
    const QString name = QStringLiteral("201(V)");
    m_store->registerCurveAtOnce(name);
    CurveSeriesData series(name, m_store.get());
    QVector<QPointF> points;
    points.reserve(kMany);
    for (int i = 0; i < kMany; ++i) {
        points.append(QPointF(static_cast<double>(start + kShortStepMs * i), i % 100));
    }
    series.addPoints(points);
    series.clear();
    CountingPlot plot;
    plot.resize(450, 300);
    plot.clearCurves();
    plot.addCurve(&series, Qt::red, QStringLiteral("201"));
    plot.onMagnifierZoomed(1.0);
    QVERIFY(showSettled(plot));
    passReloads(plot);
    const qint64 end = start + kMany * kShortStepMs;
    look(plot, start, end);
    QVERIFY(plot.isLoading());
    for (int turn = 1; series.size() == 0; ++turn) {
        series.addPoint(static_cast<double>(start + kShortStepMs * turn + 1), 7.0);
        series.clear();
        QCoreApplication::processEvents();
    }
    QTRY_VERIFY_WITH_TIMEOUT(!plot.isLoading(), 30000);
    plot.updateVisibleData();
    QTRY_VERIFY_WITH_TIMEOUT(!plot.isLoading(), 30000);
    const QVector<QPointF> shown = pointsOf(plot, 0);
    series.loadWindow(start - 5000, end + 5000, 10000, 0.0);
    COMPARE_EXACTLY(shown, series.visiblePoints());
}

void TestCCurvePlotSlices::loadInSlicesDetachesTheStore()
{
    const auto plot = plotOfAll();
    QVERIFY(plot && showPast(*plot));
    storeElsewhere();
    const QString today = m_store->dbPathForTime(QDateTime::currentMSecsSinceEpoch());
    QVERIFY(ConnectionPool::instance().isHeld(today));
    look(*plot, kStart + kStepMs, kStart + kPoints * kStepMs);
    QVERIFY(plot->isLoading());
    QVERIFY(!ConnectionPool::instance().isHeld(today));
}

void TestCCurvePlotSlices::hiddenChartStartsAgainWhenShown()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    passReloads(*plot);
    look(*plot, kStart, kStart + kPoints * kStepMs);
    plot->hide();
    plot->replots = 0;
    for (int turn = 0; turn < 200; ++turn) {
        QCoreApplication::processEvents();
    }
    QCOMPARE(plot->replots, 0);
    QCOMPARE(pointsShown(*plot), 0);
    plot->show();
    QTRY_COMPARE(pointsShown(*plot), 10000);
}

void TestCCurvePlotSlices::clearedOrDeletedChartForgetsIt()
{
    auto plot = plotOfAll();
    QVERIFY(plot);
    passReloads(*plot);
    look(*plot, kStart, kStart + kPoints * kStepMs);
    plot->clearCurves();
    plot->replots = 0;
    QCoreApplication::processEvents();
    QCOMPARE(plot->replots, 0);
    plot = plotOfAll();
    QVERIFY(plot);
    look(*plot, kStart, kStart + kPoints * kStepMs);
    plot.reset();
    QCoreApplication::processEvents();
}

void TestCCurvePlotSlices::liveViewEndsIt()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    passReloads(*plot);
    for (const auto& series : m_series) {
        series->addPoint(static_cast<double>(QDateTime::currentMSecsSinceEpoch()), 1.0);
    }
    look(*plot, kStart, kStart + kPoints * kStepMs);
    QCOMPARE(pointsShown(*plot), 0);
    plot->resumeLive();
    for (int turn = 0; turn < 200; ++turn) {
        QVERIFY(pointsShown(*plot) < 10000);
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(pointsShown(*plot), 1);
}

void TestCCurvePlotSlices::chartClearedWhileItLoadsStaysEmpty()
{
    const auto plot = plotOfAll();
    QVERIFY(plot);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const auto addReading = [&](qint64 time) {
        for (const auto& series : m_series) {
            series->addPoint(static_cast<double>(time), 1.0);
        }
    };
    addReading(now);
    plot->resumeLive();
    passReloads(*plot);
    QTRY_COMPARE(pointsShown(*plot), 1);
    addReading(now + 1);
    // Reopening the file handles events, and a clear is among them.
    for (const QString& name : QSqlDatabase::connectionNames()) {
        QSqlDatabase::database(name, false).close();
    }
    bool cleared = false;
    QTimer::singleShot(0, plot.get(), [&] {
        plot->clearCurves();
        cleared = true;
    });
    plot->replots = 0;
    plot->updateVisibleData();
    QVERIFY(cleared);
    QCOMPARE(plot->replots, 1);
    for (int turn = 0; turn < 20; ++turn) {
        QCoreApplication::processEvents();
    }
    QVERIFY(plot->itemList(QwtPlotItem::Rtti_PlotCurve).isEmpty());
}

void TestCCurvePlotSlices::reopeningAFileMayEndIt_data()
{
    QTest::addColumn<bool>("isTodays");
    QTest::newRow("where the readings are") << false;
    QTest::newRow("where the store writes") << true;
}

/// The file's connection was closed by others: opening it again handles events, one of which takes the
/// curves out of the chart. Nothing is fetched for them any more.
void TestCCurvePlotSlices::reopeningAFileMayEndIt()
{
    QFETCH(bool, isTodays);
    CountingPlot plot;
    plot.resize(450, 300);
    plot.clearCurves();
    // So few that they are fetched in one turn.
    const qint64 start = kStart - kDayMs;
    CurveSeriesData& series = *m_series.front();
    series.addPoints({QPointF(static_cast<double>(start), 1.0)});
    series.clear();
    plot.addCurve(&series, Qt::red, QStringLiteral("101"));
    plot.onMagnifierZoomed(1.0);
    QVERIFY(showSettled(plot));
    passReloads(plot);
    series.clear(); // it shows what other tests stored today
    storeElsewhere();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const QString path = m_store->dbPathForTime(start);
    m_store->openDb(path)->close();
    if (isTodays) {
        m_store->openDb(m_store->dbPathForTime(now))->close();
    }
    bool isCleared = false;
    QTimer::singleShot(0, &plot, [&] {
        plot.clearCurves();
        isCleared = true;
    });
    look(plot, start, start + 1000);
    QVERIFY(isCleared);
    QCOMPARE(series.size(), size_t(0));
    QCOMPARE(isOpen(path), !isTodays);
    for (int turn = 0; turn < 20; ++turn) {
        QCoreApplication::processEvents();
    }
    QCOMPARE(series.size(), size_t(0));
}

/// Opening a file again handles events, and the reload of the view that is just fetched is among them.
void TestCCurvePlotSlices::reloadMayFallDueWithinASlice()
{
    const auto plot = plotOfAll();
    QVERIFY(plot && showPast(*plot));
    turnWheel(*plot, -1);
    timerOf(*plot, true)->stop();
    QVERIFY(plot->isLoading());
    for (const QString& name : QSqlDatabase::connectionNames()) {
        QSqlDatabase::database(name, false).close();
    }
    plot->replots = 0;
    bool isDue = false;
    QTimer::singleShot(0, plot.get(), [&] {
        plot->updateVisibleData();
        isDue = true;
    });
    QTRY_VERIFY(isDue);
    QTRY_VERIFY(!plot->isLoading());
    QCOMPARE(pointsShown(*plot), 10000);
    const QVector<QPointF> shown = pointsOf(*plot, 0);
    m_series.front()->loadWindow(lowerMs(*plot) - 5000, upperMs(*plot) + 5000, 10000, 0.0);
    COMPARE_EXACTLY(shown, m_series.front()->visiblePoints());
}

SCN_TEST(TestCCurvePlotSlices, QApplication)
#include "test_ccurveplot_slices.moc"
