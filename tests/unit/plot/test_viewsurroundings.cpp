#include "plot/viewsurroundings.h"
#include "plotsupport.h"
#include "skippedwaits.h"
#include "storage/readslice.h"
#include "support/testprogram.h"

#include <QTemporaryDir>
#include <qwt_plot_curve.h>

#include <functional>

using namespace plotsupport;

namespace {

constexpr int kPoints = 14400;
constexpr qint64 kStepMs = 5000; // twenty hours in four tables, each read in one turn
constexpr qint64 kDayMs = 86400000;
constexpr qint64 kViewMs = 60000;

const qint64 kFirstStart = noonToday() - 60 * kDayMs - 36000000;

/// What a chart that looks at stored readings may be told next.
using Move = std::function<void(CCurvePlot&)>;

} // namespace

Q_DECLARE_METATYPE(Move)

/// The tables around a view are looked through before it moves there. Each test has a day of its own, whose
/// tables nobody knows.
class TestViewSurroundings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { m_series->clear(); }
    void cleanupTestCase();

    void tablesOnEitherSideAreKnown();
    void newestViewGoesFirst();
    void knownTablesTakeTurnsToo();
    void hiddenChartEndsIt();
    void heldChartLooksAround();
    void chartThatMovesOnGivesUp_data();
    void chartThatMovesOnGivesUp();
    void chartHiddenWithinItsLoadDoesNotLookAround();
    void clearedChartForgetsIts();

private:
    qint64 middle() const { return m_start + kPoints * kStepMs / 2 + 1800000; }
    bool isKnown(qint64 start) const;
    bool becomesKnown() const;
    scn::HeldFiles fileOf(qint64 start) const;
    void store(qint64 start);
    bool holdEmpty(CCurvePlot& plot) const;
    void look(CCurvePlot& plot) const;
    bool holdPast(CCurvePlot& plot) const;

    const SkippedWaits m_waits;
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
    std::unique_ptr<CurveSeriesData> m_series;
    qint64 m_start = kFirstStart;
};

void TestViewSurroundings::initTestCase()
{
    m_store = std::make_unique<CurveDataDB>(m_directory.path());
    m_store->registerCurveAtOnce(QStringLiteral("101(V)"));
    m_series = std::make_unique<CurveSeriesData>(QStringLiteral("101(V)"), m_store.get());
}

void TestViewSurroundings::init()
{
    m_start += 3 * kDayMs;
    store(m_start);
}

void TestViewSurroundings::cleanupTestCase()
{
    m_series.reset();
    m_store.reset();
}

/// Stores twenty hours, of which memory keeps none.
void TestViewSurroundings::store(qint64 start)
{
    QVector<QPointF> points;
    points.reserve(kPoints);
    for (int i = 0; i < kPoints; ++i) {
        points.append(QPointF(static_cast<double>(start + kStepMs * i), i % 100));
    }
    m_series->addPoints(points);
    m_series->clear();
}

scn::HeldFiles TestViewSurroundings::fileOf(qint64 start) const
{
    const QString path = m_store->dbPathForTime(start);
    return {{path, m_store->openDb(path)}};
}

/// Whether the tables of the twenty hours from `start` on are known. Each "no" makes one of them known.
bool TestViewSurroundings::isKnown(qint64 start) const
{
    scn::ReadSlice slice(QDeadlineTimer(0), 0);
    return m_series->lookThrough(start, start + kPoints * kStepMs, fileOf(start), slice) &&
           !slice.isOver();
}

/// Whether all tables of the day get known, without the help of this question.
bool TestViewSurroundings::becomesKnown() const
{
    for (const int waitMs : {300, 1500, 6000}) {
        QTest::qWait(waitMs);
        if (isKnown(m_start)) {
            return true;
        }
    }
    return false;
}

/// Has a shown plot hold a view without readings.
bool TestViewSurroundings::holdEmpty(CCurvePlot& plot) const
{
    plot.resize(450, 300);
    plot.clearCurves();
    plot.addCurve(m_series.get(), Qt::red, QStringLiteral("101"));
    if (!showSettled(plot)) {
        return false;
    }
    turnWheel(plot, -1);
    passReloads(plot);
    return true;
}

/// Loads a minute in the middle of the day.
void TestViewSurroundings::look(CCurvePlot& plot) const
{
    plot.setAxisScale(QwtPlot::xBottom, double(middle()), double(middle() + kViewMs));
    plot.updateVisibleData();
}

/// Has a shown plot hold a minute in the middle of the day.
bool TestViewSurroundings::holdPast(CCurvePlot& plot) const
{
    if (!holdEmpty(plot)) {
        return false;
    }
    look(plot);
    return !plot.isLoading() && m_series->size() > 0;
}

void TestViewSurroundings::tablesOnEitherSideAreKnown()
{
    const scn::ViewSurroundings surroundings({m_series.get()}, fileOf(m_start), middle(),
                                             middle() + kViewMs);
    QTRY_VERIFY(!surroundings.findChild<QTimer*>()->isActive());
    QVERIFY(isKnown(m_start));
}

void TestViewSurroundings::newestViewGoesFirst()
{
    const qint64 other = m_start + kDayMs;
    store(other);
    const scn::ViewSurroundings first({m_series.get()}, fileOf(m_start), m_start, m_start);
    const scn::ViewSurroundings second({m_series.get()}, fileOf(other), other, other);
    auto* firstTimer = first.findChild<QTimer*>();
    auto* secondTimer = second.findChild<QTimer*>();
    bool isLast = false;
    connect(firstTimer, &QTimer::timeout, this,
            [&] { isLast = !firstTimer->isActive() && !secondTimer->isActive(); });
    QTRY_VERIFY(!firstTimer->isActive() && !secondTimer->isActive());
    QVERIFY(isLast);
}

void TestViewSurroundings::knownTablesTakeTurnsToo()
{
    constexpr int kCurves = 1000; // a few hundred milliseconds
    while (!isKnown(m_start)) {
    }
    const scn::ViewSurroundings surroundings(QVector<CurveSeriesData*>(kCurves, m_series.get()),
                                             fileOf(m_start), middle(), middle() + kViewMs);
    auto* timer = surroundings.findChild<QTimer*>();
    int turns = 0;
    connect(timer, &QTimer::timeout, this, [&turns] { ++turns; });
    QTRY_VERIFY_WITH_TIMEOUT(!timer->isActive(), 60000);
    QVERIFY2(turns > 2, qPrintable(QString::number(turns)));
}

void TestViewSurroundings::hiddenChartEndsIt()
{
    QWidget chart;
    scn::ViewSurroundings surroundings({m_series.get()}, fileOf(m_start), middle(),
                                       middle() + kViewMs);
    chart.installEventFilter(&surroundings);
    QVERIFY(surroundings.findChild<QTimer*>()->isActive());
    chart.show();
    QVERIFY(surroundings.findChild<QTimer*>()->isActive());
    chart.hide();
    QVERIFY(!surroundings.findChild<QTimer*>()->isActive());
    chart.show();
    QVERIFY(!surroundings.findChild<QTimer*>()->isActive());
}

void TestViewSurroundings::heldChartLooksAround()
{
    CCurvePlot plot;
    QVERIFY(holdPast(plot));
    QVERIFY(becomesKnown());
}

void TestViewSurroundings::chartThatMovesOnGivesUp_data()
{
    QTest::addColumn<Move>("move");
    QTest::newRow("live again") << Move([](CCurvePlot& plot) { plot.resumeLive(); });
    QTest::newRow("time follows again") << Move([](CCurvePlot& plot) { plot.setFollowTime(true); });
    QTest::newRow("hidden") << Move([](CCurvePlot& plot) { plot.hide(); });
    QTest::newRow("zoom") << Move([](CCurvePlot& plot) { turnWheel(plot, -1); });
    QTest::newRow("drag") << Move([](CCurvePlot& plot) {
        Mouse mouse(plot);
        mouse.press(QPoint(200, 100));
        mouse.move(QPoint(220, 100));
        mouse.release();
    });
}

void TestViewSurroundings::chartThatMovesOnGivesUp()
{
    QFETCH(Move, move);
    CCurvePlot plot;
    QVERIFY(holdPast(plot));
    move(plot);
    // What a reload would load is not what is asked for here.
    timerOf(plot, true)->blockSignals(true);
    timerOf(plot, false)->stop();
    QTest::qWait(500);
    QVERIFY(!isKnown(m_start));
}

/// The file's connection was closed by others: opening it again handles events.
void TestViewSurroundings::chartHiddenWithinItsLoadDoesNotLookAround()
{
    CCurvePlot plot;
    QVERIFY(holdEmpty(plot));
    m_store->openDb(m_store->dbPathForTime(m_start))->close();
    bool isHiddenWithin = false;
    QTimer::singleShot(0, &plot, [&] {
        plot.hide();
        isHiddenWithin = true;
    });
    look(plot);
    QVERIFY(isHiddenWithin);
    QVERIFY(!plot.isLoading());
    QVERIFY(m_series->size() > 0);
    QTest::qWait(500);
    QVERIFY(!isKnown(m_start));
}

/// The series goes after the clear.
void TestViewSurroundings::clearedChartForgetsIts()
{
    CCurvePlot plot;
    QVERIFY(holdPast(plot));
    plot.clearCurves();
    m_series.reset();
    QTest::qWait(100);
    m_series = std::make_unique<CurveSeriesData>(QStringLiteral("101(V)"), m_store.get());
    QVERIFY(!isKnown(m_start));
}

SCN_TEST(TestViewSurroundings, QApplication)
#include "test_viewsurroundings.moc"
