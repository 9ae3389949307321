#include "plot/ccurveplot.h"

#include "common/threadassert.h"
#include "plot/curvetracker.h"
#include "plot/custommagnifier.h"
#include "plot/custompanner.h"
#include "plot/plotsetup.h"
#include "plot/valuescale.h"
#include "plot/viewload.h"
#include "plot/viewsurroundings.h"
#include "state/globals.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTimer>
#include <qwt_interval.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>

namespace {

constexpr int kReloadDelayMs = 100;
constexpr int kRangeCheckPeriodMs = 100;
constexpr double kWidestRangeMs = 36000000.0; // ten hours
constexpr double kClearedLowerY = -10.0;
constexpr double kClearedUpperY = 10.0;

} // namespace

CCurvePlot::CCurvePlot(QWidget* parent)
    : QwtPlot(parent)
{
    assertGuiThread();
    // The base would draw itself as soon as events are processed, visible or not; showing the plot does
    // the rest of what the polishing is for.
    QCoreApplication::removePostedEvents(this, QEvent::PolishRequest);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    scn::setUpCanvas(this);
    setAutoReplot(false);
    initInteraction();
    scn::hideScales(this);
    setAxisScaleEngine(QwtPlot::yLeft, new scn::ValueScaleEngine);
    m_grid = scn::addGrid(this);
    m_timeScaleDraw = scn::addTimeScale(this);
    m_tracker = scn::makeTracker(canvas());
    connect(
        this, &CCurvePlot::curvesUpdated, this, [this] { m_tracker->setCurves(m_curves); },
        Qt::DirectConnection);
    initTimers();
    setMinimumSize(100, 100);
    noteTimeAxis();
    onNewSample(QDateTime::currentMSecsSinceEpoch());
}

void CCurvePlot::initInteraction()
{
    auto* panner = new CustomPanner(canvas());
    panner->setSnapToTicks(true);
    connect(panner, qOverload<>(&CustomPanner::panned), this, &CCurvePlot::onPanned);

    m_magnifier = new CustomMagnifier(canvas());
    m_magnifier->setAxisEnabled(QwtPlot::yLeft, false);
    // Nothing shows these and nothing resets them: zoomed along, they would become too narrow one day
    // and end all zooming.
    m_magnifier->setAxisEnabled(QwtPlot::xTop, false);
    m_magnifier->setAxisEnabled(QwtPlot::yRight, false);
    connect(m_magnifier, &CustomMagnifier::zoomed, this, &CCurvePlot::onMagnifierZoomed);
}

void CCurvePlot::initTimers()
{
    m_reloadTimer = new QTimer(this);
    m_reloadTimer->setSingleShot(true);
    m_reloadTimer->setInterval(kReloadDelayMs);
    connect(m_reloadTimer, &QTimer::timeout, this, &CCurvePlot::updateVisibleData);

    m_rangeCheckTimer = new QTimer(this);
    m_rangeCheckTimer->setInterval(kRangeCheckPeriodMs);
    connect(m_rangeCheckTimer, &QTimer::timeout, this, &CCurvePlot::checkAxisRangeChange);
    m_rangeCheckTimer->start();
}

CCurvePlot::~CCurvePlot()
{
    assertGuiThread();
    giveUpLoad();
    delete m_tracker;
    delete m_magnifier;
    delete m_reloadTimer;
    m_rangeCheckTimer->stop();
    delete m_rangeCheckTimer;
    m_curveOffsets.clear();
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        curve->detach();
        delete curve;
    }
    delete m_grid;
}

QwtPlotCurve* CCurvePlot::addCurve(CurveSeriesData* series, const QColor& color,
                                   const QString& title)
{
    assertGuiThread();
    QwtPlotCurve* curve = scn::makeCurve(series, color, title);
    curve->attach(this);
    m_curves.append(curve);
    m_curveOffsets[curve] = 0.0;
    emit curvesUpdated();
    return curve;
}

void CCurvePlot::clearCurves()
{
    assertGuiThread();
    m_reloadTimer->stop();
    giveUpLoad();
    m_surroundings.reset();
    m_curveOffsets.clear();
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        curve->hide();
        curve->detach();
        delete curve;
    }
    m_curves.clear();

    m_userMovedX = false;
    releaseValues();
    m_followTime = true;
    m_autoScaleY = true;
    m_hasShownValues = false;

    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    setTimeAxis({now - scn::TimeWindow::kSpan.count(), now});
    setBounds(QwtPlot::yLeft, kClearedLowerY, kClearedUpperY);
    resetTimeWindow();
    noteTimeAxis();
    emit curvesUpdated();
    redraw();
}

void CCurvePlot::onNewSample(qint64 timeMs)
{
    assertGuiThread();
    if (!m_updatingAxes) {
        updateAxes(timeMs);
    }
}

void CCurvePlot::resumeLive()
{
    assertGuiThread();
    giveUpLoad();
    m_userMovedX = false;
    releaseValues();
    m_followTime = true;
    m_autoScaleY = true;
    onNewSample(QDateTime::currentMSecsSinceEpoch());
    autoScaleY();
    showCurrentView();
}

void CCurvePlot::setFollowTime(bool on)
{
    assertGuiThread();
    m_followTime = on;
    if (!on) {
        return;
    }
    m_userMovedX = false;
    updateVisibleData();
}

void CCurvePlot::setAutoScaleY(bool on)
{
    assertGuiThread();
    m_autoScaleY = on;
    if (!on) {
        m_keepsValues = true;
        return;
    }
    releaseValues();
    autoScaleY();
    redraw();
}

void CCurvePlot::resetTimeWindow()
{
    assertGuiThread();
    m_window = {};
}

void CCurvePlot::setCurveOffset(QwtPlotCurve* curve, double offset)
{
    assertGuiThread();
    if (!m_curveOffsets.contains(curve)) {
        return;
    }
    m_curveOffsets[curve] = offset;
    // During a scan the next batch arms the reload anyway.
    if (!g_scanRunning.load(std::memory_order_relaxed)) {
        m_reloadTimer->start();
    }
}

double CCurvePlot::curveOffset(QwtPlotCurve* curve)
{
    assertGuiThread();
    return m_curveOffsets[curve];
}

void CCurvePlot::setZoomMode(short mode)
{
    assertGuiThread();
    struct ZoomMode
    {
        short mode;
        bool time;
        bool value;
    };
    constexpr ZoomMode kZoomModes[] = {{1, true, false}, {2, false, true}, {3, true, true}};
    for (const ZoomMode& row : kZoomModes) {
        if (row.mode != mode) {
            continue;
        }
        m_magnifier->setAxisEnabled(QwtPlot::xBottom, row.time);
        m_magnifier->setAxisEnabled(QwtPlot::yLeft, row.value);
    }
}

void CCurvePlot::onMagnifierZoomed(double)
{
    assertGuiThread();
    holdView();
    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    if (time.width() > kWidestRangeMs) {
        const double centre = (time.maxValue() + time.minValue()) * 0.5;
        setBounds(QwtPlot::xBottom, centre - kWidestRangeMs * 0.5, centre + kWidestRangeMs * 0.5);
        noteTimeAxis();
        // The zoom has just requested a repaint, which must find the scale already limited.
        QwtPlot::updateAxes();
    }
    if (m_magnifier->isAxisEnabled(QwtPlot::yLeft)) {
        m_keepsValues = true;
        emit valueAxisSet();
    }
    armReloadOfMove();
}

void CCurvePlot::onPanned()
{
    assertGuiThread();
    holdView();
    armReloadOfMove();
}

/// The user has moved the view. Nothing needs to be fetched any more when the reload is due.
void CCurvePlot::armReloadOfMove()
{
    noteTimeAxis();
    m_surroundings.reset();
    m_reloadTimer->start();
    if (isVisible()) {
        loadAhead();
    }
}

/// The user has zoomed or panned: the axes stop following the readings.
void CCurvePlot::holdView()
{
    m_userMovedX = true;
    m_userMovedY = true;
    if (m_followTime || m_autoScaleY) {
        m_followTime = false;
        m_autoScaleY = false;
    }
}

/// The y axis is the plot's own again, as it is.
void CCurvePlot::releaseValues()
{
    m_userMovedY = false;
    m_keepsValues = false;
    m_ownValues = axisInterval(QwtPlot::yLeft);
}
