#include "pastviews.h"

#include "plot/curvesamples.h"
#include "rawstore.h"
#include "storage/storeclock.h"
#include "support/hand.h"

#include <QColor>
#include <QCoreApplication>
#include <QEvent>
#include <QWindow>
#include <QtTest>
#include <qwt_interval.h>
#include <qwt_plot_curve.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int kBeatMs = 5;
constexpr int kSweepMs = 100;
constexpr qint64 kPauseMs = 150;
constexpr qint64 kIdleMs = 7000;
constexpr qint64 kLongestLoadMs = 120000;
constexpr double kLoadMarginMs = 5000.0;
constexpr double kReadingMs = 1000.0; // the longer interval of the files
constexpr int kPixelsPerMove = 60;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "benchmark is wrong: %s\n", what);
    std::exit(1);
}

double toMs(qint64 nanoseconds)
{
    return static_cast<double>(nanoseconds) * 1e-6;
}

/// Processor time of this process.
double processorMs()
{
    return static_cast<double>(std::clock()) * 1000.0 / CLOCKS_PER_SEC;
}

/// Whether points that reach so far beyond the view are the ends of what it loads: of the margin or, where
/// the files end, of the view itself.
bool isEdgeOfLoad(double beyondMs)
{
    const double ofMargin = kLoadMarginMs - beyondMs;
    return (ofMargin >= -1.0 && ofMargin <= kReadingMs) || std::abs(beyondMs) <= kReadingMs;
}

} // namespace

PastViews::PastViews(const QString& directory, int curves, int shown)
    : m_store(std::make_unique<CurveDataDB>(directory))
    , m_shown(shown)
{
    m_plot.clearCurves();
    for (int curve = 1; curve <= curves; ++curve) {
        m_series.push_back(std::make_unique<CurveSeriesData>(rawCurveName(curve), m_store.get()));
        if (m_series.back()->curveId() != curve) {
            fail("a curve has not the number expected");
        }
        if (curve <= shown) {
            m_plot
                .addCurve(m_series.back().get(), QColor::fromHsv(curve * 37 % 360, 200, 220),
                          QString::number(100 + curve))
                ->setPen(QColor::fromHsv(curve * 37 % 360, 200, 220), 0.0);
        }
    }
    m_plot.resize(900, 500);
    m_plot.show();
    m_plot.onMagnifierZoomed(1.0); // holds the view: it does not follow the clock
    m_plot.setAxisScale(QwtPlot::yLeft, -5.0, 65.0);
    m_plot.canvas()->installEventFilter(this);
    connect(&m_heart, &QTimer::timeout, this, &PastViews::beat);
    connect(&m_scan, &QTimer::timeout, this, &PastViews::storeReadings);
    m_heart.setTimerType(Qt::PreciseTimer);
    m_scan.setTimerType(Qt::PreciseTimer);
    m_sinceBeat.start();
    m_heart.start(kBeatMs);
    wait(kPauseMs);
    m_largestGap = {0.0, 0.0};
}

PastViews::~PastViews()
{
    m_plot.clearCurves();
}

TimeTaken PastViews::show(qint64 from, qint64 to)
{
    beginGesture();
    m_plot.setAxisScale(QwtPlot::xBottom, static_cast<double>(from), static_cast<double>(to));
    m_plot.updateVisibleData();
    return timeToPixels();
}

TimeTaken PastViews::turnWheel(int notches)
{
    beginGesture();
    hand::turnWheel(m_plot.canvas(), notches);
    return timeToPixels();
}

TimeTaken PastViews::drag(int pixels)
{
    QWindow* const window = m_plot.windowHandle();
    QPoint place = m_plot.canvas()->mapTo(&m_plot, m_plot.canvas()->rect().center());
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, place);
    for (int moved = 0; moved < std::abs(pixels); moved += kPixelsPerMove) {
        place.rx() += pixels < 0 ? -kPixelsPerMove : kPixelsPerMove;
        beginGesture();
        QTest::mouseMove(window, place);
        wait(kBeatMs);
    }
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, place);
    return timeToPixels();
}

void PastViews::beginGesture()
{
    m_isPainted = false;
    m_former = loadedPoints(0);
    m_sinceGesture.start();
    m_processorMsBefore = processorMs();
}

/// Waits for them, then for a hand to move on.
TimeTaken PastViews::timeToPixels()
{
    while (!m_isPainted) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (m_sinceGesture.elapsed() > kLongestLoadMs) {
            fail("a view is not loaded");
        }
    }
    const TimeTaken time{toMs(m_sinceGesture.nsecsElapsed()), processorMs() - m_processorMsBefore};
    wait(kPauseMs);
    return time;
}

const QVector<QPointF>& PastViews::loadedPoints(int curve) const
{
    QwtPlotItem* const item = m_plot.itemList(QwtPlotItem::Rtti_PlotCurve).at(curve);
    return scn::loadedData(static_cast<QwtPlotCurve*>(item))->points();
}

/// Whether each curve has new points, from the beginning to the end of the view.
bool PastViews::isViewLoaded() const
{
    const QwtInterval view = m_plot.axisInterval(QwtPlot::xBottom);
    for (int curve = 0; curve < m_shown; ++curve) {
        const QVector<QPointF>& points = loadedPoints(curve);
        if (points.isEmpty() || !isEdgeOfLoad(view.minValue() - points.constFirst().x()) ||
            !isEdgeOfLoad(points.constLast().x() - view.maxValue())) {
            return false;
        }
    }
    return loadedPoints(0).constData() != m_former.constData();
}

bool PastViews::eventFilter(QObject* object, QEvent* event)
{
    m_isPainted = m_isPainted || (event->type() == QEvent::Paint && isViewLoaded());
    return QObject::eventFilter(object, event);
}

void PastViews::waitUntilIdle()
{
    wait(kIdleMs);
}

void PastViews::wait(qint64 milliseconds)
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < milliseconds) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void PastViews::beat()
{
    const double worked = processorMs() - m_processorMsAtBeat;
    m_largestGap = {std::max(m_largestGap.ms, toMs(m_sinceBeat.nsecsElapsed()) - kBeatMs),
                    std::max(m_largestGap.processorMs, worked)};
    m_sinceBeat.start();
    m_processorMsAtBeat += worked;
}

void PastViews::startScan()
{
    m_sinceScan.start();
    m_scan.start(kSweepMs);
}

void PastViews::storeReadings()
{
    ++m_sweeps;
    for (const auto& series : m_series) {
        series->addPoint(static_cast<double>(scn::storeNow() + m_sweeps * kSweepMs), 1.0);
    }
    const double late = toMs(m_sinceScan.nsecsElapsed()) - static_cast<double>(m_sweeps * kSweepMs);
    m_largestDelayMs = std::max(m_largestDelayMs, late);
}
