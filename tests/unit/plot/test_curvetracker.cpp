#include "plot/curvetracker.h"
#include "plotsupport.h"
#include "state/globals.h"
#include "storage/nonowningcurvedata.h"
#include "support/exactpoints.h"
#include "support/settle.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QRandomGenerator>
#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>
#include <qwt_series_data.h>
#include <qwt_text.h>

#include <cmath>

using namespace plotsupport;

namespace {

const qint64 kStart = noonToday();

/// Lower left corner of the plots here; x in ms from kStart, y in units.
constexpr double kWidthMs = 60000.0;
constexpr double kTop = 10.0;

/// A visible plot over one minute and 0 to 10, with its tracker.
class TrackedPlot
{
public:
    TrackedPlot()
    {
        plot.clearCurves();
        plot.setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart) + kWidthMs);
        plot.setAxisScale(QwtPlot::yLeft, 0.0, kTop);
        plot.setAutoScaleY(false);
        plot.resize(600, 400);
        showSettled(plot);
        // When shown, the plot takes its minute from the clock: reset it to the tests' own.
        plot.setAxisScale(QwtPlot::xBottom, double(kStart), double(kStart) + kWidthMs);
        plot.replot();
        tracker = plot.canvas()->findChild<CurveTracker*>();
    }

    /// Plot coordinates of a place on the canvas, in pixels.
    QPointF at(const QPointF& pixels) const
    {
        return {plot.canvasMap(QwtPlot::xBottom).invTransform(pixels.x()),
                plot.canvasMap(QwtPlot::yLeft).invTransform(pixels.y())};
    }

    /// Plot coordinates of the middle of a pixel of the canvas.
    QPointF at(int x, int y) const { return at(QPointF(x + 0.5, y + 0.5)); }

    CCurvePlot plot;
    CurveTracker* tracker = nullptr;
};

int truncatedPixel(const QwtScaleMap& map, double value)
{
    return int(map.transform(value));
}

/// A curve and how far its nearest sample is, in pixels.
struct Nearest
{
    const QwtPlotCurve* curve = nullptr;
    double distance = 1000000.0;
};

/// The specified choice of the curve, without short cuts.
Nearest nearestByBruteForce(const CCurvePlot& plot, const QList<QwtPlotCurve*>& curves,
                            const QPointF& pos)
{
    const QwtScaleMap xMap = plot.canvasMap(QwtPlot::xBottom);
    const QwtScaleMap yMap = plot.canvasMap(QwtPlot::yLeft);
    const int x = truncatedPixel(xMap, pos.x());
    const int y = truncatedPixel(yMap, pos.y());
    Nearest nearest;
    for (const QwtPlotCurve* curve : curves) {
        for (size_t i = 0; curve->isVisible() && i < curve->dataSize(); ++i) {
            const QPointF sample = curve->sample(int(i));
            const double dx = truncatedPixel(xMap, sample.x()) - x;
            const double dy = truncatedPixel(yMap, sample.y()) - y;
            const double distance = std::sqrt(dx * dx + dy * dy);
            if (distance < nearest.distance) {
                nearest = {curve, distance};
            }
        }
    }
    return nearest;
}

/// The parts of the read-out.
struct Pick
{
    const QwtPlotCurve* curve = nullptr;
    qint64 timeMs = 0;
    double value = 0.0;
};

/// The specified choice of curve and sample, without short cuts.
Pick pickByBruteForce(const CCurvePlot& plot, const QList<QwtPlotCurve*>& curves,
                      const QPointF& pos)
{
    const Nearest nearest = nearestByBruteForce(plot, curves, pos);
    Pick pick;
    if (nearest.distance >= 10.0) {
        return pick;
    }
    pick.curve = nearest.curve;
    double best = 1000000.0;
    const auto* series = static_cast<const NonOwningCurveData*>(pick.curve->data())->series();
    for (int i = 0; i < int(series->size()); ++i) {
        const double dx = series->sample(size_t(i)).x() - pos.x();
        const double dy = series->rawValue(i) - pos.y();
        const double distance = std::sqrt(dx * dx + dy * dy);
        if (distance < best) {
            best = distance;
            pick.timeMs = qint64(series->sample(size_t(i)).x());
            pick.value = series->rawValue(i);
        }
    }
    return pick;
}

QString readout(const QString& title, qint64 timeMs, const QString& value, const QString& unit)
{
    return QLatin1Char('\n') + title + QLatin1Char('\n') +
           QDateTime::fromMSecsSinceEpoch(timeMs).toString(
               QStringLiteral(" yyyy:MM:dd HH:mm:ss ")) +
           QLatin1Char('\n') + value + QLatin1Char(' ') + unit + QLatin1Char('\n');
}

} // namespace

/// The read-out: which sample it picks, and its text.
class TestCurveTracker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_pool = std::make_unique<SeriesPool>(QStringLiteral("test_curvetracker_Data"));
    }
    void cleanupTestCase() { m_pool.reset(); }
    void init() { g_scanChannels = {{101, QStringLiteral("VDC")}, {102, QStringLiteral("°C")}}; }

    void noCurvesGiveNoReadout();
    void trackerWithoutPlotPicksNothing();
    void readoutAppearsWithinTenPixels_data();
    void readoutAppearsWithinTenPixels();
    void pixelsAreCutOffTowardsZero_data();
    void pixelsAreCutOffTowardsZero();
    void readoutTellsChannelTimeReadingAndUnit();
    void readoutIsWrittenInTheCurvesColour();
    void titleIsNotTakenForAPlaceHolder();
    void unknownChannelIsEnteredWithoutUnit();
    void hiddenCurveHasNoReadout();
    void curveOfAnotherPlotHasNoReadout();
    void earlierOfTwoEqualCurvesWins();
    void curveNearerByALittleWins();
    void offsetMovesTheTargetAndNotTheValue();
    void sampleClosestInTimeIsRead();
    void readingsDecideBetweenTheSamples();
    void firstOfEquallyDistantSamplesIsRead();
    void sampleFarInDataUnitsReadsAsTheEpoch();
    void samplesFarOffScreenAreHarmless();
    void samplesOfAnyOtherSeriesAreReadAsTheyAre();
    void curveThatOwnsItsSeriesIsReadWithoutTheOffset();
    void samplesOutOfRangeAreZero();
    void picksWhatBruteForcePicks();
    void nearestOfFewSamplesIsThatOfBruteForce();
    void pointerOnTheCanvasShowsTheReadout();

private:
    std::unique_ptr<SeriesPool> m_pool;
};

void TestCurveTracker::noCurvesGiveNoReadout()
{
    const TrackedPlot tracked;
    QVERIFY(tracked.tracker->trackerTextF(tracked.at(300, 200)).isEmpty());
    double distance = 0.0;
    QVERIFY(!tracked.tracker->nearestCurve(tracked.at(300, 200), &distance));
    QCOMPARE(distance, 1000000.0);
}

void TestCurveTracker::trackerWithoutPlotPicksNothing()
{
    QWidget holder;
    auto* lone = new QWidget(&holder);
    CurveTracker tracker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::NoRubberBand,
                         QwtPicker::AlwaysOn, lone);
    QwtPlotCurve curve;
    tracker.setCurves({&curve});
    double distance = 0.0;
    QVERIFY(!tracker.nearestCurve(QPointF(), &distance));
    QCOMPARE(distance, 1000000.0);
    QVERIFY(tracker.trackerTextF(QPointF()).isEmpty());
}

void TestCurveTracker::readoutAppearsWithinTenPixels_data()
{
    QTest::addColumn<int>("dx");
    QTest::addColumn<int>("dy");
    QTest::addColumn<bool>("shown");
    QTest::newRow("on the sample") << 0 << 0 << true;
    QTest::newRow("9 right") << 9 << 0 << true;
    QTest::newRow("10 right") << 10 << 0 << false;
    QTest::newRow("9 up") << 0 << -9 << true;
    QTest::newRow("10 up") << 0 << -10 << false;
    QTest::newRow("7 and 7") << -7 << 7 << true;
    QTest::newRow("6 and 8 make 10") << 6 << 8 << false;
}

void TestCurveTracker::readoutAppearsWithinTenPixels()
{
    QFETCH(int, dx);
    QFETCH(int, dy);
    QFETCH(bool, shown);
    TrackedPlot tracked;
    const QPointF sample = tracked.at(300, 200);
    tracked.plot.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("101"));
    const QPointF pos = tracked.at(300 + dx, 200 + dy);
    double distance = 0.0;
    QVERIFY(tracked.tracker->nearestCurve(pos, &distance));
    QCOMPARE(distance, std::sqrt(double(dx * dx + dy * dy)));
    QCOMPARE(!tracked.tracker->trackerTextF(pos).isEmpty(), shown);
}

void TestCurveTracker::pixelsAreCutOffTowardsZero_data()
{
    QTest::addColumn<QPointF>("sample");
    QTest::addColumn<QPointF>("pointer");
    QTest::addColumn<double>("distance");
    QTest::newRow("within a pixel") << QPointF(300.1, 200.9) << QPointF(300.9, 200.1) << 0.0;
    QTest::newRow("across a border") << QPointF(300.9, 200.5) << QPointF(301.1, 200.5) << 1.0;
    QTest::newRow("below a border") << QPointF(300.5, 201.1) << QPointF(300.5, 200.9) << 1.0;
    QTest::newRow("left of the canvas") << QPointF(-0.9, 200.5) << QPointF(0.9, 200.5) << 0.0;
    QTest::newRow("above the canvas") << QPointF(300.5, 0.9) << QPointF(300.5, -0.9) << 0.0;
    QTest::newRow("further to the left") << QPointF(-1.1, 200.5) << QPointF(0.9, 200.5) << 1.0;
}

void TestCurveTracker::pixelsAreCutOffTowardsZero()
{
    QFETCH(QPointF, sample);
    QFETCH(QPointF, pointer);
    QFETCH(double, distance);
    TrackedPlot tracked;
    tracked.plot.addCurve(m_pool->loaded(0, {tracked.at(sample)}), Qt::red, QStringLiteral("101"));
    double found = -1.0;
    QVERIFY(tracked.tracker->nearestCurve(tracked.at(pointer), &found));
    QCOMPARE(found, distance);
}

void TestCurveTracker::readoutTellsChannelTimeReadingAndUnit()
{
    TrackedPlot tracked;
    const qint64 time = QDateTime(QDate(2023, 11, 14), QTime(9, 5, 7)).toMSecsSinceEpoch();
    tracked.plot.setAxisScale(QwtPlot::xBottom, double(time - 1000), double(time + 1000));
    tracked.plot.replot();
    // The fraction of a millisecond is truncated: rounded, it would be the next second.
    const QPointF sample(double(time) + 999.7, 1.2345678);
    tracked.plot.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("101"));
    QCOMPARE(tracked.tracker->trackerTextF(sample).text(),
             QStringLiteral("\n101\n 2023:11:14 09:05:07 \n1.23457 VDC\n"));
}

void TestCurveTracker::readoutIsWrittenInTheCurvesColour()
{
    TrackedPlot tracked;
    const QPointF sample = tracked.at(300, 200);
    tracked.plot.addCurve(m_pool->loaded(0, {sample}), QColor(1, 2, 3), QStringLiteral("101"));
    const QwtText text = tracked.tracker->trackerTextF(sample);
    QCOMPARE(text.color(), QColor(1, 2, 3));
    QCOMPARE(text.font().pointSize(), 10);
    QCOMPARE(text.backgroundBrush(), QBrush(Qt::black));
    QCOMPARE(text.borderPen(),
             QPen(QBrush(Qt::gray), 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    QCOMPARE(text.borderRadius(), 3.0);
}

void TestCurveTracker::titleIsNotTakenForAPlaceHolder()
{
    TrackedPlot tracked;
    const QPointF sample = tracked.at(300, 200);
    tracked.plot.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("%3"));
    QVERIFY(tracked.tracker->trackerTextF(sample).text().startsWith(QLatin1String("\n%3\n ")));
}

void TestCurveTracker::unknownChannelIsEnteredWithoutUnit()
{
    TrackedPlot tracked;
    const QPointF sample(double(kStart + 30000), 5.0);
    tracked.plot.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("317"));
    QCOMPARE(tracked.tracker->trackerTextF(sample).text(),
             readout(QStringLiteral("317"), kStart + 30000, QStringLiteral("5.00000"), QString()));
    QVERIFY(g_scanChannels.contains(317));
    QCOMPARE(g_scanChannels.value(317), QString());
}

void TestCurveTracker::hiddenCurveHasNoReadout()
{
    TrackedPlot tracked;
    const QPointF sample = tracked.at(300, 200);
    QwtPlotCurve* curve =
        tracked.plot.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("101"));
    curve->hide();
    QVERIFY(tracked.tracker->trackerTextF(sample).isEmpty());
    curve->show();
    QVERIFY(!tracked.tracker->trackerTextF(sample).isEmpty());
}

void TestCurveTracker::curveOfAnotherPlotHasNoReadout()
{
    TrackedPlot tracked;
    CCurvePlot other;
    const QPointF sample = tracked.at(300, 200);
    QwtPlotCurve* curve =
        other.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("101"));
    tracked.tracker->setCurves({nullptr, curve});
    QVERIFY(tracked.tracker->trackerTextF(sample).isEmpty());
}

void TestCurveTracker::earlierOfTwoEqualCurvesWins()
{
    TrackedPlot tracked;
    QwtPlotCurve* first = tracked.plot.addCurve(m_pool->loaded(0, {tracked.at(295, 200)}), Qt::red,
                                                QStringLiteral("101"));
    tracked.plot.addCurve(m_pool->loaded(1, {tracked.at(305, 200)}), Qt::blue,
                          QStringLiteral("102"));
    double distance = 0.0;
    QCOMPARE(tracked.tracker->nearestCurve(tracked.at(300, 200), &distance), first);
    QCOMPARE(distance, 5.0);
}

void TestCurveTracker::curveNearerByALittleWins()
{
    TrackedPlot tracked;
    // 17 against 16, as squares.
    tracked.plot.addCurve(m_pool->loaded(0, {tracked.at(301, 204)}), Qt::red,
                          QStringLiteral("101"));
    QwtPlotCurve* nearer = tracked.plot.addCurve(m_pool->loaded(1, {tracked.at(304, 200)}),
                                                 Qt::blue, QStringLiteral("102"));
    double distance = 0.0;
    QCOMPARE(tracked.tracker->nearestCurve(tracked.at(300, 200), &distance), nearer);
    QCOMPARE(distance, 4.0);
}

void TestCurveTracker::offsetMovesTheTargetAndNotTheValue()
{
    TrackedPlot tracked;
    const QPointF reading(double(kStart + 30000), 2.0);
    tracked.plot.addCurve(m_pool->loaded(0, {reading}, 5.0), Qt::red, QStringLiteral("101"));
    QVERIFY(tracked.tracker->trackerTextF(reading).isEmpty());
    QCOMPARE(tracked.tracker->trackerTextF(reading + QPointF(0.0, 5.0)).text(),
             readout(QStringLiteral("101"), kStart + 30000, QStringLiteral("2.00000"),
                     QStringLiteral("VDC")));
}

void TestCurveTracker::sampleClosestInTimeIsRead()
{
    // Near the first sample on screen, but the second is closer in time and is the one read.
    TrackedPlot tracked;
    const QPointF pos = tracked.at(300, 200);
    const QPointF near = pos + QPointF(400.0, 0.0);
    const QPointF inTime = pos + QPointF(100.0, 4.5);
    tracked.plot.addCurve(m_pool->loaded(0, {inTime, near}), Qt::red, QStringLiteral("102"));
    QCOMPARE(tracked.tracker->trackerTextF(pos).text(),
             readout(QStringLiteral("102"), qint64(inTime.x()), QString::number(inTime.y(), 'f', 5),
                     QStringLiteral("°C")));
}

void TestCurveTracker::readingsDecideBetweenTheSamples()
{
    TrackedPlot tracked;
    tracked.plot.setAxisScale(QwtPlot::yLeft, 0.0, 4000.0);
    tracked.plot.replot();
    const qint64 time = kStart + 30000;
    const QPointF byReading(double(time - 300), 1000.0);
    const QPointF byLine(double(time + 100), 0.0);
    tracked.plot.addCurve(m_pool->loaded(0, {byReading, byLine}, 1000.0), Qt::red,
                          QStringLiteral("101"));
    QCOMPARE(tracked.tracker->trackerTextF(QPointF(double(time), 1000.0)).text(),
             readout(QStringLiteral("101"), time - 300, QStringLiteral("1000.00000"),
                     QStringLiteral("VDC")));
}

void TestCurveTracker::firstOfEquallyDistantSamplesIsRead()
{
    TrackedPlot tracked;
    const qint64 time = kStart + 30000;
    tracked.plot.setAxisScale(QwtPlot::xBottom, double(time) - 43e6, double(time) + 43e6);
    tracked.plot.replot();
    // The squares of the two distances differ, but have the same root.
    const QPointF first(double(time) - 700000.0, 0.0078);
    const QPointF second(double(time) + 700000.0, 0.0);
    QVERIFY(700000.0 * 700000.0 + 0.0078 * 0.0078 > 700000.0 * 700000.0);
    QVERIFY(std::sqrt(700000.0 * 700000.0 + 0.0078 * 0.0078) == 700000.0);
    tracked.plot.addCurve(m_pool->loaded(0, {first, second}), Qt::red, QStringLiteral("101"));
    QCOMPARE(tracked.tracker->trackerTextF(QPointF(double(time), 0.0)).text(),
             readout(QStringLiteral("101"), time - 700000, QStringLiteral("0.00780"),
                     QStringLiteral("VDC")));
}

void TestCurveTracker::sampleFarInDataUnitsReadsAsTheEpoch()
{
    TrackedPlot tracked;
    tracked.plot.setAxisScale(QwtPlot::yLeft, 0.0, 1e9);
    tracked.plot.replot();
    const QPointF sample(double(kStart + 30000), 5e8);
    tracked.plot.addCurve(m_pool->loaded(0, {sample}), Qt::red, QStringLiteral("101"));
    QCOMPARE(tracked.tracker->trackerTextF(sample + QPointF(0.0, 999999.0)).text(),
             readout(QStringLiteral("101"), kStart + 30000, QStringLiteral("500000000.00000"),
                     QStringLiteral("VDC")));
    QCOMPARE(tracked.tracker->trackerTextF(sample + QPointF(0.0, 1000000.0)).text(),
             readout(QStringLiteral("101"), 0, QStringLiteral("0.00000"), QStringLiteral("VDC")));
}

void TestCurveTracker::samplesFarOffScreenAreHarmless()
{
    TrackedPlot tracked;
    const QPointF sample = tracked.at(300, 200);
    const QPointF above(sample.x(), 1e30);
    const QPointF below(sample.x(), -1e300);
    const QPointF overload(sample.x(), 9.9e37);
    QwtPlotCurve* curve = tracked.plot.addCurve(m_pool->loaded(0, {above, below, overload, sample}),
                                                Qt::red, QStringLiteral("101"));
    double distance = -1.0;
    QCOMPARE(tracked.tracker->nearestCurve(sample, &distance), curve);
    QCOMPARE(distance, 0.0);
    QVERIFY(!tracked.tracker->nearestCurve(above, &distance));
    QCOMPARE(distance, 1000000.0);
}

void TestCurveTracker::samplesOfAnyOtherSeriesAreReadAsTheyAre()
{
    TrackedPlot tracked;
    const QPointF sample(double(kStart + 30000), 5.0);
    QwtPlotCurve curve(QStringLiteral("101"));
    curve.setSamples(QVector<QPointF>{QPointF(0.0, 0.0), sample});
    curve.attach(&tracked.plot);
    tracked.tracker->setCurves({&curve});
    COMPARE_EXACTLY(tracked.tracker->displaySample(&curve, 1), sample);
    COMPARE_EXACTLY(tracked.tracker->rawSample(&curve, 1), sample);
    QCOMPARE(tracked.tracker->trackerTextF(sample).text(),
             readout(QStringLiteral("101"), kStart + 30000, QStringLiteral("5.00000"),
                     QStringLiteral("VDC")));
    tracked.tracker->setCurves({});
    curve.detach();
}

void TestCurveTracker::curveThatOwnsItsSeriesIsReadWithoutTheOffset()
{
    TrackedPlot tracked;
    const QPointF reading(double(kStart + 30000), 2.0);
    auto series = std::make_unique<CurveSeriesData>(QStringLiteral("150(VDC)"),
                                                    QStringLiteral("test_curvetracker_Data"));
    series->addPoints({reading});
    series->loadWindow(kStart, kStart + 60000, 0, 5.0);
    QwtPlotCurve curve(QStringLiteral("101"));
    curve.setSamples(series.release());
    curve.attach(&tracked.plot);
    tracked.tracker->setCurves({&curve});
    COMPARE_EXACTLY(tracked.tracker->displaySample(&curve, 0), reading + QPointF(0.0, 5.0));
    COMPARE_EXACTLY(tracked.tracker->rawSample(&curve, 0), reading);
    QCOMPARE(tracked.tracker->trackerTextF(reading + QPointF(0.0, 5.0)).text(),
             readout(QStringLiteral("101"), kStart + 30000, QStringLiteral("2.00000"),
                     QStringLiteral("VDC")));
    tracked.tracker->setCurves({});
    curve.detach();
}

void TestCurveTracker::samplesOutOfRangeAreZero()
{
    TrackedPlot tracked;
    const QPointF reading(double(kStart + 30000), 2.0);
    QwtPlotCurve* curve =
        tracked.plot.addCurve(m_pool->loaded(0, {reading}, 5.0), Qt::red, QStringLiteral("101"));
    COMPARE_EXACTLY(tracked.tracker->displaySample(curve, 0), reading + QPointF(0.0, 5.0));
    COMPARE_EXACTLY(tracked.tracker->rawSample(curve, 0), reading);
    for (int index : {-1, 1}) {
        COMPARE_EXACTLY(tracked.tracker->displaySample(curve, index), QPointF());
        COMPARE_EXACTLY(tracked.tracker->rawSample(curve, index), QPointF());
    }
    COMPARE_EXACTLY(tracked.tracker->displaySample(nullptr, 0), QPointF());
    COMPARE_EXACTLY(tracked.tracker->rawSample(nullptr, 0), QPointF());
}

void TestCurveTracker::picksWhatBruteForcePicks()
{
    constexpr double kBesideMs = 2000.0;
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo() << "seed" << seed;
    QRandomGenerator random(seed);
    TrackedPlot tracked;
    QList<QwtPlotCurve*> curves;
    for (size_t c = 0; c < 5; ++c) {
        QVector<QPointF> points;
        for (int i = 0; i < 400; ++i) {
            // Few distinct values, so that many samples share a pixel and many distances are equal;
            // the third curve is not in order of time. Some are outside the canvas.
            const double x = (c == 2 ? random.bounded(kWidthMs) : 150.0 * i) - kBesideMs;
            points.append(QPointF(std::floor(double(kStart) + x), random.bounded(12)));
        }
        const double offset = c == 3 ? 1.5 : 0.0;
        curves.append(tracked.plot.addCurve(m_pool->loaded(c, points, offset), Qt::red,
                                            QString::number(101 + int(c))));
    }
    curves.at(1)->hide();

    int readouts = 0;
    for (int i = 0; i < 1000; ++i) {
        const QPointF pos(double(kStart) - kBesideMs + random.bounded(kWidthMs),
                          random.bounded(kTop + 2.0) - 1.0);
        const Pick pick = pickByBruteForce(tracked.plot, curves, pos);
        QString expected;
        if (pick.curve) {
            const QString title = pick.curve->title().text();
            expected = readout(title, pick.timeMs, QString::number(pick.value, 'f', 5),
                               g_scanChannels.value(title.toInt()));
            ++readouts;
        }
        QCOMPARE(tracked.tracker->trackerTextF(pos).text(), expected);
    }
    QVERIFY(readouts > 100);
    QVERIFY(readouts < 1000);
}

/// Where samples lie some pixels apart, and at the edge where pixels are cut off from both sides, the search
/// must look a little further in time than the nearest sample so far.
void TestCurveTracker::nearestOfFewSamplesIsThatOfBruteForce()
{
    constexpr double kReachPixels = 9.0;
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo() << "seed" << seed;
    QRandomGenerator random(seed);
    TrackedPlot tracked;
    QList<QwtPlotCurve*> curves;
    for (size_t c = 0; c < 2; ++c) {
        curves.append(tracked.plot.addCurve(m_pool->loaded(c, {}), Qt::red, QStringLiteral("101")));
    }
    const auto somewhere = [&](double left) {
        return tracked.at(
            QPointF(left + random.bounded(kReachPixels) - 1.0, random.bounded(kReachPixels) - 1.0));
    };
    for (int i = 0; i < 5000; ++i) {
        const double left = i % 2 == 0 ? 0.0 : 200.0;
        for (QwtPlotCurve* curve : qAsConst(curves)) {
            QVector<QPointF> points;
            for (int k = 0; k < 4; ++k) {
                points.append(somewhere(left));
            }
            curve->setSamples(points);
        }
        const QPointF pos = somewhere(left);
        const Nearest expected = nearestByBruteForce(tracked.plot, curves, pos);
        double distance = -1.0;
        QVERIFY(tracked.tracker->nearestCurve(pos, &distance) == expected.curve);
        QVERIFY2(
            distance == expected.distance,
            qPrintable(QStringLiteral("%1 in place of %2").arg(distance).arg(expected.distance)));
    }
}

void TestCurveTracker::pointerOnTheCanvasShowsTheReadout()
{
    TrackedPlot tracked;
    tracked.plot.addCurve(m_pool->loaded(0, {tracked.at(300, 200)}), Qt::red,
                          QStringLiteral("101"));
    Mouse mouse(tracked.plot);
    const auto readoutRect = [&tracked] {
        return tracked.tracker->trackerRect(tracked.tracker->trackerFont());
    };
    mouse.move(QPoint(100, 100));
    settle();
    QVERIFY(readoutRect().isEmpty());
    mouse.move(QPoint(303, 204));
    QTRY_VERIFY(!readoutRect().isEmpty());
    QVERIFY(tracked.tracker->isActive());
}

SCN_TEST(TestCurveTracker, QApplication)
#include "test_curvetracker.moc"
