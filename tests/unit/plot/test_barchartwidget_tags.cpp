#include "chartfixture.h"
#include "plotsupport.h"
#include "seriesstore.h"
#include "support/hand.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QWindow>
#include <qwt_interval.h>

#include <cmath>

namespace {

/// A hand that drags a tag. It acts on the window, so a covered tag would not move.
class TagHand
{
public:
    TagHand(ChartFixture& chart, int channel)
        : m_window(chart.chart.windowHandle())
        , m_at(chart.label(channel)->mapTo(&chart.chart, chart.label(channel)->rect().center()))
    {
    }

    void press()
    {
        QTest::mouseMove(m_window, m_at);
        QTest::mousePress(m_window, Qt::LeftButton, Qt::NoModifier, m_at);
    }
    void move(int deltaY)
    {
        m_at += QPoint(0, deltaY);
        QTest::mouseMove(m_window, m_at);
    }
    void release() { QTest::mouseRelease(m_window, Qt::LeftButton, Qt::NoModifier, m_at); }

private:
    QWindow* m_window;
    QPoint m_at;
};

/// What a drag of one pixel upwards adds to the offset.
double valuePerPixel(const ChartFixture& f)
{
    return plotsupport::valueBounds(*f.plot()).width() / f.strip()->height();
}

bool isInsideItsStrip(const ChartFixture& f, int channel)
{
    return f.strip()->rect().contains(f.label(channel)->geometry());
}

/// Drags a channel's tag up; returns how far the curve was shifted beyond the way of the hand, in
/// pixels.
double excessOfADrag(ChartFixture& f, int channel, int pixels)
{
    const double perPixel = valuePerPixel(f);
    TagHand hand(f, channel);
    hand.press();
    hand.move(-pixels);
    const double offset = f.plot()->curveOffset(f.curve(channel));
    hand.release();
    return offset / perPixel - pixels;
}

/// Ten seconds of readings up to now: by turns half above and half below 5.
void addReadings(CurveSeriesData& series)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    QVector<QPointF> points;
    for (int i = 0; i < 100; ++i) {
        points.append({static_cast<double>(now - 10000 + i * 100), i % 2 ? 5.5 : 4.5});
    }
    series.addPoints(points);
}

/// What a batch of readings brings about in a chart, in the order of the chart's timers.
void passBatch(ChartFixture& f, qint64 time)
{
    f.chart.onNewSample(time);
    f.plot()->updateVisibleData();
    f.plot()->checkAxisRangeChange();
}

/// How far the middle of a channel's tag is from where the y axis of its chart has `mean`, in pixels.
double tagError(const ChartFixture& f, int channel, double mean)
{
    const QwtInterval values = plotsupport::valueBounds(*f.plot());
    const double value = mean + f.plot()->curveOffset(f.curve(channel));
    const double above = (values.maxValue() - value) / values.width() * f.strip()->height();
    const QRect tag = f.label(channel)->geometry();
    return std::abs(tag.y() + tag.height() / 2 - above);
}

constexpr int kLongerThanARangeCheckMs = 250;
constexpr int kNotchesToAnHour = 17;

} // namespace

/// Tags and the y axis beside them, with charts that set their axes themselves.
class TestBarChartWidgetTags : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_store = std::make_unique<SeriesStore>(QStringLiteral("test_barchartwidget_tags_Data"));
    }
    void cleanupTestCase() { m_store.reset(); }
    void cleanup() { SeriesStore::reset(); }

    void tagFollowsTheHand();
    void tagOfAReopenedChartFollowsTheHand();
    void tagOfASecondChartFollowsTheHand();
    void tagsOfTwoLiveChartsStandAtTheirCurves();
    void tagOfAHeldChartStandsAtItsCurve();
    void tagStaysInTheHandBesideAnotherChart();
    void hiddenTagLetsGoOfTheHand();

private:
    std::unique_ptr<SeriesStore> m_store;
};

void TestBarChartWidgetTags::tagFollowsTheHand()
{
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    addReadings(*m_store->add(101));
    f.goDown(0, 1);
    QVERIFY(isInsideItsStrip(f, 101));
    const int middle = f.strip()->height() / 2 - 10;
    QVERIFY(qAbs(f.label(101)->y() - middle) <= 1);
    QVERIFY(qAbs(excessOfADrag(f, 101, 30)) <= 1.0);
    const double offset = f.plot()->curveOffset(f.curve(101));
    QVERIFY(qAbs(f.spinBox(0)->value() - offset) < 1e-5);
    // The reload moves the axis with the curve, and the report of it the tag.
    QTRY_VERIFY(qAbs(f.curve(101)->sample(0).y() - (4.5 + offset)) < 1e-9);
    QTRY_VERIFY(qAbs(f.label(101)->y() - middle) <= 1);
}

void TestBarChartWidgetTags::tagOfAReopenedChartFollowsTheHand()
{
    addReadings(*m_store->add(101));
    for (int opening = 0; opening < 2; ++opening) {
        ChartFixture f;
        QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
        plotsupport::timerOf(*f.plot(), false)->stop();
        f.goDown(0, 1);
        // The second time these bounds are no news.
        f.plot()->checkAxisRangeChange();
        QVERIFY(isInsideItsStrip(f, 101));
        QVERIFY(qAbs(f.label(101)->y() - (f.strip()->height() / 2 - 10)) <= 1);
        QVERIFY(qAbs(excessOfADrag(f, 101, 30)) <= 1.0);
    }
}

void TestBarChartWidgetTags::tagOfASecondChartFollowsTheHand()
{
    const auto series = m_store->add(101);
    addReadings(*series);
    ChartFixture first;
    ChartFixture second;
    for (ChartFixture* f : {&first, &second}) {
        QVERIFY(QTest::qWaitForWindowExposed(&f->chart));
        plotsupport::timerOf(*f->plot(), false)->stop();
        f->goDown(0, 1);
        f->plot()->checkAxisRangeChange();
    }
    qint64 time = QDateTime::currentMSecsSinceEpoch();
    for (int batch = 0; batch < 6; ++batch) {
        time += 1000;
        series->addPoint(static_cast<double>(time), 5.0 + (batch + 1) * (batch % 2 ? 1.0 : -1.0));
        passBatch(first, time);
        // Each time the first chart has just reported the same bounds.
        passBatch(second, time);
    }
    QCOMPARE(plotsupport::valueBounds(*second.plot()).maxValue(),
             plotsupport::valueBounds(*first.plot()).maxValue());
    QVERIFY(plotsupport::valueBounds(*second.plot()).width() > 10.0);
    for (ChartFixture* f : {&first, &second}) {
        QVERIFY(isInsideItsStrip(*f, 101));
        QVERIFY(qAbs(excessOfADrag(*f, 101, 30)) <= 1.0);
    }
}

void TestBarChartWidgetTags::tagsOfTwoLiveChartsStandAtTheirCurves()
{
    const auto series = m_store->add(101);
    const auto other = m_store->add(102);
    ChartFixture first;
    ChartFixture second;
    const auto takeReading = [&](double value) {
        const qint64 time = QDateTime::currentMSecsSinceEpoch();
        series->addPoint(static_cast<double>(time), value);
        other->addPoint(static_cast<double>(time), value + 40.0);
        first.chart.onNewSample(time);
        second.chart.onNewSample(time);
    };
    takeReading(5.0);
    for (ChartFixture* f : {&first, &second}) {
        QVERIFY(QTest::qWaitForWindowExposed(&f->chart));
        f->goDown(0, 1);
        QTest::qWait(kLongerThanARangeCheckMs);
        f->combo(1)->setFocus();
        QTest::keyClick(f->combo(1), Qt::Key_End);
        QTest::keyClick(f->combo(1), Qt::Key_Up);
        QTest::qWait(kLongerThanARangeCheckMs);
    }
    for (int batch = 0; batch < 6; ++batch) {
        takeReading(6.0 + 5.0 * batch);
        QTest::qWait(kLongerThanARangeCheckMs);
    }
    for (ChartFixture* f : {&first, &second}) {
        QVERIFY(valuePerPixel(*f) > 0.1);
        QVERIFY(tagError(*f, 101, 5.0) <= 1.0);
        QVERIFY(qAbs(excessOfADrag(*f, 101, 30)) <= 1.0);
    }
}

void TestBarChartWidgetTags::tagOfAHeldChartStandsAtItsCurve()
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    QVector<QPointF> ended;
    for (int i = 0; i < 100; ++i) {
        ended.append({static_cast<double>(now - 120000 + i * 100), i % 2 ? 106.0 : 100.0});
    }
    m_store->add(103)->addPoints(ended);
    ChartFixture first;
    ChartFixture second;
    for (ChartFixture* f : {&first, &second}) {
        QVERIFY(QTest::qWaitForWindowExposed(&f->chart));
        f->goDown(0, 3);
        QTest::qWait(kLongerThanARangeCheckMs);
        hand::turnWheel(f->plot()->canvas(), kNotchesToAnHour);
        QTRY_VERIFY(f->curve(103)->dataSize() == 100);
        QTest::qWait(kLongerThanARangeCheckMs);
        QVERIFY(tagError(*f, 103, 103.0) <= 1.0);
        QVERIFY(qAbs(excessOfADrag(*f, 103, 30)) <= 1.0);
    }
}

void TestBarChartWidgetTags::tagStaysInTheHandBesideAnotherChart()
{
    addReadings(*m_store->add(101));
    addReadings(*m_store->add(102));
    m_store->add(102)->addPoint(static_cast<double>(QDateTime::currentMSecsSinceEpoch()), 70.0);
    ChartFixture held;
    ChartFixture beside;
    QVERIFY(QTest::qWaitForWindowExposed(&held.chart));
    QVERIFY(QTest::qWaitForWindowExposed(&beside.chart));
    held.goDown(0, 1);
    beside.goDown(0, 2);
    QTest::qWait(kLongerThanARangeCheckMs);
    hand::turnWheel(held.plot()->canvas(), 1);
    QTest::qWait(kLongerThanARangeCheckMs);
    int reports = 0;
    connect(held.plot(), &CCurvePlot::yAxisRangeChanged, this, [&reports] { ++reports; });

    const int start = held.label(101)->y();
    TagHand hand(held, 101);
    hand.press();
    for (int step = 1; step <= 30; ++step) {
        hand.move(step <= 15 ? -1 : 1);
        const int before = reports;
        QTRY_VERIFY(reports > before);
    }
    QCOMPARE(held.label(101)->y(), start);
    hand.release();
}

void TestBarChartWidgetTags::hiddenTagLetsGoOfTheHand()
{
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    addReadings(*m_store->add(101));
    f.goDown(0, 1);
    TagHand hand(f, 101);
    hand.press();
    hand.move(-10);
    f.combo(0)->setFocus();
    QTest::keyClick(f.combo(0), Qt::Key_Home);
    QVERIFY(!f.label(101)->isVisible());
    hand.release();
    f.goDown(0, 1);
    QVERIFY(f.label(101)->isVisible());

    const double offset = f.plot()->curveOffset(f.curve(101));
    QVERIFY(offset > 0.0);
    TagHand passing(f, 101);
    passing.move(0);
    passing.move(-6);
    passing.move(4);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), offset);
}

SCN_TEST(TestBarChartWidgetTags, QApplication)
#include "test_barchartwidget_tags.moc"
