#include "chartfixture.h"
#include "plotsupport.h"
#include "seriesstore.h"
#include "support/hand.h"
#include "support/testprogram.h"

#include <QDateTime>

namespace {

constexpr qint64 kSecondMs = 1000;
constexpr qint64 kRunMs = 10 * kSecondMs;

/// A run of ten seconds from `start`: by turns `low` and 6 more.
void addRun(CurveSeriesData& series, qint64 start, double low)
{
    QVector<QPointF> points;
    for (qint64 time = 0; time < kRunMs; time += 100) {
        points.append({static_cast<double>(start + time), low + (points.size() % 2) * 6.0});
    }
    series.addPoints(points);
}

/// Whether the canvas has the curve of `row`, and the y axis is that of a run from `low`.
bool showsRun(const ChartFixture& f, int row, double low)
{
    const QwtInterval values = plotsupport::valueBounds(*f.plot());
    return f.paints(f.button(row)->color()) && qAbs(values.minValue() - (low - 0.75)) < 1e-6 &&
           qAbs(values.maxValue() - (low + 6.75)) < 1e-6;
}

/// Drags the canvas to the right: earlier times come into view.
void dragBack(const ChartFixture& f, int pixels)
{
    const int y = f.plot()->canvas()->height() / 2;
    plotsupport::Mouse mouse(*f.plot());
    mouse.press(QPoint(20, y));
    mouse.move(QPoint(20 + pixels, y));
    mouse.release();
}

void lookBack(const ChartFixture& f, const QString& gesture)
{
    if (gesture == QStringLiteral("zoom")) {
        hand::turnWheel(f.plot()->canvas(), 17);
        return;
    }
    for (int drag = 0; drag < 5; ++drag) {
        dragBack(f, f.plot()->canvas()->width() / 2);
    }
}

/// Chooses the last channel of a row's list with the End key.
void chooseLast(const ChartFixture& f, int row)
{
    f.combo(row)->setFocus();
    QTest::keyClick(f.combo(row), Qt::Key_End);
}

} // namespace

/// A run that is over: no reading brings its chart up to date.
class TestBarChartWidgetPast : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_store = std::make_unique<SeriesStore>(QStringLiteral("test_barchartwidget_past_Data"));
    }
    void cleanupTestCase() { m_store.reset(); }
    void init() { m_now = QDateTime::currentMSecsSinceEpoch(); }
    void cleanup() { SeriesStore::reset(); }

    void runIsDrawnAtTheFirstChoice();
    void runBeforeTheChartIsScaledToWhenFound_data();
    void runBeforeTheChartIsScaledToWhenFound();
    void runWithoutValuesLeavesTheAxisForTheFirst();
    void runComesBackAtTheFirstClick();

private:
    CurveSeriesData& newSeries(int channel);

    std::unique_ptr<SeriesStore> m_store;
    int m_nextName = 201;
    qint64 m_now = 0;
};

/// The series of a channel; nothing is stored of it yet.
CurveSeriesData& TestBarChartWidgetPast::newSeries(int channel)
{
    const auto series = m_store->makeUnshared(m_nextName++);
    g_curveSeries[channel] = series;
    return *series;
}

void TestBarChartWidgetPast::runIsDrawnAtTheFirstChoice()
{
    const qint64 start = m_now - 240 * kSecondMs;
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    // The chart was open during the run.
    f.chart.clearChart();
    f.chart.onNewSample(start);
    CurveSeriesData& series = newSeries(101);
    addRun(series, start, 100.0);
    QVERIFY(!g_scanRunning);
    f.goDown(0, 1);
    QVERIFY(showsRun(f, 0, 100.0));

    // A channel that comes back shows what was stored while it was hidden.
    f.combo(0)->setFocus();
    QTest::keyClick(f.combo(0), Qt::Key_Home);
    QVERIFY(!f.curve(101)->isVisible());
    addRun(series, start + 20 * kSecondMs, 500.0);
    f.goDown(0, 1);
    QVERIFY(f.paints(f.button(0)->color()));
    QVERIFY(plotsupport::valueBounds(*f.plot()).contains(506.0));
}

void TestBarChartWidgetPast::runBeforeTheChartIsScaledToWhenFound_data()
{
    QTest::addColumn<QString>("gesture");
    QTest::addColumn<bool>("chosenFirst");
    QTest::newRow("chosen, then zoomed out") << "zoom" << true;
    QTest::newRow("chosen, then dragged back") << "drag" << true;
    QTest::newRow("zoomed out, then chosen") << "zoom" << false;
    QTest::newRow("dragged back, then chosen") << "drag" << false;
}

void TestBarChartWidgetPast::runBeforeTheChartIsScaledToWhenFound()
{
    QFETCH(QString, gesture);
    QFETCH(bool, chosenFirst);
    addRun(newSeries(101), m_now - 120 * kSecondMs, 100.0);
    addRun(newSeries(103), m_now - 120 * kSecondMs, 500.0);
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    if (chosenFirst) {
        f.goDown(0, 1);
        QVERIFY(!f.paints(f.button(0)->color()));
    }
    lookBack(f, gesture);
    if (!chosenFirst) {
        f.goDown(0, 1);
    }
    QTRY_VERIFY(showsRun(f, 0, 100.0));

    // From now on the user's hold counts.
    chooseLast(f, 1);
    QVERIFY(f.curve(103));
    QVERIFY(f.curve(103)->dataSize() > 0);
    QVERIFY(showsRun(f, 0, 100.0));
}

void TestBarChartWidgetPast::runWithoutValuesLeavesTheAxisForTheFirst()
{
    constexpr double kOverload = 9.9e37;
    const qint64 start = m_now - 120 * kSecondMs;
    newSeries(101).addPoint(static_cast<double>(start + 1000), kOverload);
    addRun(newSeries(103), start, 500.0);
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    f.goDown(0, 1);
    lookBack(f, QStringLiteral("drag"));
    QTRY_COMPARE(f.curve(101)->dataSize(), size_t(1));
    chooseLast(f, 1);
    QVERIFY(showsRun(f, 1, 500.0));
}

void TestBarChartWidgetPast::runComesBackAtTheFirstClick()
{
    const qint64 start = m_now - 40 * kSecondMs;
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    f.chart.clearChart();
    f.chart.onNewSample(start);
    CurveSeriesData& series = newSeries(101);
    f.goDown(0, 1);
    lookBack(f, QStringLiteral("drag"));
    // Nothing tells the chart of these readings.
    addRun(series, start + kSecondMs, 3000.0);
    f.plot()->updateVisibleData();
    QVERIFY(!f.paints(f.button(0)->color()));
    QTest::mouseClick(f.buttonWithText(QStringLiteral("实时显示")), Qt::LeftButton);
    QVERIFY(showsRun(f, 0, 3000.0));

    addRun(series, start + 12 * kSecondMs, 5000.0);
    emit f.button(0)->colorChanged(Qt::green);
    QVERIFY(f.paints(Qt::green));
    QVERIFY(plotsupport::valueBounds(*f.plot()).contains(5006.0));
}

SCN_TEST(TestBarChartWidgetPast, QApplication)
#include "test_barchartwidget_past.moc"
