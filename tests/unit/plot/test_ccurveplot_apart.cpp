#include "plot/curvetracker.h"
#include "plotsupport.h"
#include "support/exactpoints.h"
#include "support/testprogram.h"

#include <QImage>
#include <qwt_plot_curve.h>

#include <array>
#include <cmath>

using namespace plotsupport;

namespace {

const qint64 kStart = noonToday();
constexpr int kStepMs = 100;

/// More than a series keeps in memory, so that a view of the first minute reads the store.
constexpr int kCount = CurveSeriesData::kMaxRecentPoints + 2000;

QVector<QPointF> wave()
{
    QVector<QPointF> points;
    for (int i = 0; i < kCount; ++i) {
        points.append(
            {static_cast<double>(kStart + i * kStepMs), 5.0 * std::sin(i * 0.01) + i * 0.002});
    }
    return points;
}

/// One way to look at the channel.
struct View
{
    /// Right edge of the minute shown, in seconds from the first reading.
    int endSeconds;
    double offset;
    /// Axes of the wheel, and its notches; 0: not touched.
    short zoomMode;
    int notches;
};

constexpr std::array<View, 4> kViews{{
    {kCount * kStepMs / 1000, 0.0, 1, 0},
    {90, 7.5, 1, 0},
    {900, -3.25, 1, 4},
    {600, 1.5, 3, -3},
}};

/// A shown plot of `series`, which looks at it as `view` says.
std::unique_ptr<CCurvePlot> plotOf(CurveSeriesData* series, const View& view)
{
    auto plot = std::make_unique<CCurvePlot>();
    plot->resize(450, 300);
    // Its labels, where they overhang, take from the width of the canvas.
    plot->enableAxis(QwtPlot::xBottom, false);
    plot->clearCurves();
    QwtPlotCurve* curve = plot->addCurve(series, Qt::red, QStringLiteral("101"));
    plot->setCurveOffset(curve, view.offset);
    plot->onNewSample(kStart);
    plot->onNewSample(kStart + view.endSeconds * 1000);
    if (!showSettled(*plot)) {
        return nullptr;
    }
    passReloads(*plot);
    plot->setZoomMode(view.zoomMode);
    for (int turn = 0; turn < std::abs(view.notches); ++turn) {
        turnWheel(*plot, view.notches > 0 ? 1 : -1);
    }
    passReloads(*plot);
    return plot;
}

QwtPlotCurve* curveOf(const CCurvePlot& plot)
{
    return static_cast<QwtPlotCurve*>(plot.itemList(QwtPlotItem::Rtti_PlotCurve).constFirst());
}

/// The canvas as drawn anew.
QImage picture(CCurvePlot& plot)
{
    plot.replot();
    return plot.canvas()->grab().toImage();
}

/// What the read-out says at each sample on screen.
QStringList readouts(const CCurvePlot& plot)
{
    const auto* tracker = plot.findChild<CurveTracker*>();
    const QwtPlotCurve* curve = curveOf(plot);
    QStringList texts;
    for (int index = 0; index < static_cast<int>(curve->dataSize()); index += 97) {
        const QPointF shown = tracker->displaySample(curve, index);
        if (timeBounds(plot).contains(shown.x())) {
            texts.append(tracker->trackerTextF(shown).text());
        }
    }
    return texts;
}

/// All that a chart shows of its curve.
struct Shown
{
    QImage image;
    QwtInterval values;
    QStringList readouts;
};

Shown shownBy(CCurvePlot& plot)
{
    return {picture(plot), valueBounds(plot), readouts(plot)};
}

} // namespace

/// One channel in several charts: each shows its own view, as if it were alone.
class TestCCurvePlotApart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void chartsOfOneChannelKeepTheirViews_data();
    void chartsOfOneChannelKeepTheirViews();
    void lookingBackLeavesTheLiveChartAlone();
    void curveShowsTheSeriesUntilItsPlotLoads();

private:
    std::unique_ptr<SeriesPool> m_pool;
    CurveSeriesData* m_series = nullptr;
};

void TestCCurvePlotApart::initTestCase()
{
    m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_ccurveplot_apart_Data"));
    m_series = m_pool->loaded(0, wave());
    // All plots measure their windows by the first one's width.
    CCurvePlot first;
    first.resize(450, 300);
    QVERIFY(showSettled(first));
}

void TestCCurvePlotApart::cleanupTestCase()
{
    m_series = nullptr;
    m_pool.reset();
}

void TestCCurvePlotApart::chartsOfOneChannelKeepTheirViews_data()
{
    QTest::addColumn<QVector<int>>("order");
    QTest::newRow("live, past") << QVector<int>{0, 1};
    QTest::newRow("past, live") << QVector<int>{1, 0};
    QTest::newRow("four") << QVector<int>{0, 1, 2, 3};
    QTest::newRow("four, reversed") << QVector<int>{3, 2, 1, 0};
}

void TestCCurvePlotApart::chartsOfOneChannelKeepTheirViews()
{
    QFETCH(const QVector<int>, order);

    std::vector<Shown> alone;
    for (const int view : order) {
        const std::unique_ptr<CCurvePlot> plot = plotOf(m_series, kViews[view]);
        QVERIFY(plot);
        alone.push_back(shownBy(*plot));
        QVERIFY(!alone.back().readouts.isEmpty());
    }

    std::vector<std::unique_ptr<CCurvePlot>> plots;
    for (const int view : order) {
        plots.push_back(plotOf(m_series, kViews[view]));
        QVERIFY(plots.back());
    }
    // Replots and y axes of the first charts come after the loads of the others.
    for (size_t i = 0; i < plots.size(); ++i) {
        plots[i]->autoScaleY();
        const Shown shown = shownBy(*plots[i]);
        QCOMPARE(shown.image, alone[i].image);
        QCOMPARE(shown.values.minValue(), alone[i].values.minValue());
        QCOMPARE(shown.values.maxValue(), alone[i].values.maxValue());
        QCOMPARE(shown.readouts, alone[i].readouts);
    }
}

void TestCCurvePlotApart::lookingBackLeavesTheLiveChartAlone()
{
    const std::unique_ptr<CCurvePlot> live = plotOf(m_series, kViews[0]);
    const QImage before = picture(*live);
    const std::unique_ptr<CCurvePlot> past = plotOf(m_series, kViews[1]);
    QVERIFY(curveOf(*past)->sample(0).x() < double(kStart + 60000));
    QCOMPARE(picture(*live), before);
    QVERIFY(curveOf(*live)->sample(0).x() > double(kStart + 60000));
    // The series itself has what was loaded last.
    COMPARE_EXACTLY(m_series->visiblePoints().constFirst(), curveOf(*past)->sample(0));
    QCOMPARE(m_series->yOffset(), kViews[1].offset);
}

void TestCCurvePlotApart::curveShowsTheSeriesUntilItsPlotLoads()
{
    const auto start = static_cast<double>(kStart);
    CurveSeriesData* series = m_pool->loaded(1, {{start, 1.0}, {start + 1.0, 2.0}}, 0.5);
    CCurvePlot plot;
    const QwtPlotCurve* curve = plot.addCurve(series, Qt::red, QStringLiteral("102"));
    QCOMPARE(curve->dataSize(), size_t(2));
    COMPARE_EXACTLY(curve->sample(1), QPointF(start + 1.0, 2.5));
    COMPARE_EXACTLY(curve->data()->boundingRect(), QRectF(start, 1.5, 1.0, 1.0));
    COMPARE_EXACTLY(plot.findChild<CurveTracker*>()->rawSample(curve, 1),
                    QPointF(start + 1.0, 2.0));
    plot.autoScaleY();
    QCOMPARE(valueBounds(plot).minValue(), 1.375);
    QCOMPARE(valueBounds(plot).maxValue(), 2.625);
}

SCN_TEST(TestCCurvePlotApart, QApplication)

#include "test_ccurveplot_apart.moc"
