#include "plot/ccurveplot.h"

#include "app/globals.h"
#include "common/threadassert.h"
#include "plot/axisrange.h"
#include "plot/curvetracker.h"
#include "plot/custommagnifier.h"
#include "plot/custompanner.h"
#include "plot/seriescurve.h"
#include "storage/curveseriesdata.h"
#include "storage/nonowningcurvedata.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QScopedValueRollback>
#include <QTimer>
#include <qwt_date_scale_draw.h>
#include <qwt_interval.h>
#include <qwt_painter.h>
#include <qwt_picker_machine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr qint64 kWindowSpanMs = 60000;
constexpr int kReloadDelayMs = 100;
constexpr int kRangeCheckPeriodMs = 100;
constexpr double kRangeThresholdX = 1.0; // ms
constexpr double kRangeThresholdY = 1e-6;
constexpr qint64 kLoadMarginMs = 5000;
constexpr int kMaxPointsPerCurve = 10000;
constexpr double kWidestRangeMs = 36000000.0; // ten hours
constexpr double kDataShareOfY = 0.8;
constexpr double kFlatMargin = 0.9999999999999998; // bits 0x3FEFFFFFFFFFFFFE
constexpr double kOverload = 9.9e37;
constexpr double kClearedLowerY = -10.0;
constexpr double kClearedUpperY = 10.0;
constexpr double kEmptyLowerY = 0.0;
constexpr double kEmptyUpperY = 1.0;
constexpr int kPixelsPerMajorTick = 90;

/// Share of a flat curve's value that widens the y axis where kFlatMargin is lost in rounding.
constexpr double kFlatShare = 1e-6;

CurveSeriesData* seriesOf(const QwtPlotCurve* curve)
{
    const auto* data = dynamic_cast<const NonOwningCurveData*>(curve->data());
    return data ? data->series() : nullptr;
}

/// Bounds of y over the loaded samples of `curves`; invalid without a sample that counts.
QwtInterval valueBounds(const QList<QwtPlotCurve*>& curves)
{
    double min = std::numeric_limits<double>::max();
    double max = std::numeric_limits<double>::lowest();
    for (const QwtPlotCurve* curve : curves) {
        const CurveSeriesData* series = seriesOf(curve);
        if (!series) {
            continue;
        }
        for (const QPointF& point : series->visiblePoints()) {
            const double y = point.y();
            if (y == kOverload || !std::isfinite(y)) {
                continue;
            }
            min = qMin(min, y);
            max = qMax(max, y);
        }
    }
    return min <= max ? QwtInterval(min, max) : QwtInterval();
}

/// Space above and below the data, so that they fill kDataShareOfY of the axis.
double valueMargin(double min, double max)
{
    const double range = max - min;
    // At the ends of the number range there is less room than that.
    const double room = std::max((kLargestAxisValue - range) * 0.49, 0.0);
    if (!qFuzzyCompare(range + 1.0, 1.0)) {
        return std::min((range / kDataShareOfY - range) * 0.5, room);
    }
    const bool lost = !(max + kFlatMargin > min - kFlatMargin);
    return lost ? std::abs(max) * kFlatShare : kFlatMargin;
}

/// Divides the value axis. As long as no reading has set the axis the base class does, by the curves'
/// bounds, which may be infinite or too far apart.
class ValueScaleEngine : public QwtLinearScaleEngine
{
public:
    void autoScale(int maxSteps, double& lower, double& upper, double& stepSize) const override
    {
        constexpr double limit = kLargestAxisValue / 4; // the base rounds up, to even steps
        lower = qBound(-limit, lower, limit);
        upper = qBound(-limit, upper, limit);
        QwtLinearScaleEngine::autoScale(maxSteps, lower, upper, stepSize);
    }
};

} // namespace

CCurvePlot::CCurvePlot(QWidget* parent)
    : QwtPlot(parent)
{
    assertGuiThread();
    // The base would draw itself as soon as events are processed, visible or not; all else that is
    // asked for here is done when the plot is shown.
    QCoreApplication::removePostedEvents(this, QEvent::PolishRequest);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    initCanvas();
    initInteraction();
    initAxes();
    initGrid();
    initTimeAxis();
    initTracker();
    initTimers();
    setMinimumSize(100, 100);
    noteTimeAxis();
    onNewSample(QDateTime::currentMSecsSinceEpoch());
}

void CCurvePlot::initCanvas()
{
    auto* canvas = new QwtPlotCanvas(this);
    canvas->setFrameStyle(QFrame::Box | QFrame::Plain);
    canvas->setLineWidth(1);
    canvas->setPalette(QPalette(Qt::white));
    canvas->setPaintAttribute(QwtPlotCanvas::BackingStore, true);
    canvas->setPaintAttribute(QwtPlotCanvas::ImmediatePaint, false);
    canvas->setAttribute(Qt::WA_PaintOnScreen, false);
    setCanvas(canvas);
    QwtPainter::setPolylineSplitting(true);
    setAutoReplot(false);
}

void CCurvePlot::initInteraction()
{
    auto* panner = new CustomPanner(canvas());
    panner->setSnapToTicks(true);
    connect(panner, qOverload<>(&CustomPanner::panned), this, &CCurvePlot::onPanned);

    m_magnifier = new CustomMagnifier(canvas());
    m_magnifier->setAxisEnabled(QwtPlot::yLeft, false);
    connect(m_magnifier, &CustomMagnifier::zoomed, this, &CCurvePlot::onMagnifierZoomed);
}

void CCurvePlot::initAxes()
{
    setAxisScaleEngine(QwtPlot::yLeft, new ValueScaleEngine);
    for (int axis = 0; axis < QwtPlot::axisCnt; ++axis) {
        axisWidget(axis)->setMargin(0);
        QwtScaleDraw* draw = axisScaleDraw(axis);
        draw->enableComponent(QwtAbstractScaleDraw::Backbone, false);
        draw->enableComponent(QwtAbstractScaleDraw::Ticks, false);
        draw->enableComponent(QwtAbstractScaleDraw::Labels, false);
    }
    plotLayout()->setAlignCanvasToScales(true);
}

void CCurvePlot::initGrid()
{
    m_grid = new QwtPlotGrid;
    m_grid->enableX(true);
    m_grid->enableY(true);
    m_grid->setMajorPen(QColor(100, 100, 100), 1.0, Qt::SolidLine);
    m_grid->show();
    m_grid->attach(this);
}

void CCurvePlot::initTimeAxis()
{
    m_timeScaleDraw = new QwtDateScaleDraw(Qt::LocalTime);
    const QString format = QStringLiteral("yyyy/MM/dd\nhh:mm:ss");
    for (const auto type :
         {QwtDate::Millisecond, QwtDate::Second, QwtDate::Minute, QwtDate::Hour}) {
        m_timeScaleDraw->setDateFormat(type, format);
    }
    setAxisScaleDraw(QwtPlot::xBottom, m_timeScaleDraw);
    setAxisLabelAlignment(QwtPlot::xBottom, Qt::AlignHCenter | Qt::AlignBottom);

    auto* engine = new QwtLinearScaleEngine(10);
    engine->setAttribute(QwtScaleEngine::Floating, true);
    setAxisScaleEngine(QwtPlot::xBottom, engine);

    QFont font = axisFont(QwtPlot::xBottom);
    font.setPointSize(6);
    setAxisFont(QwtPlot::xBottom, font);
}

void CCurvePlot::initTracker()
{
    m_tracker = new CurveTracker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::CrossRubberBand,
                                 QwtPicker::ActiveOnly, canvas());
    m_tracker->setStateMachine(new QwtPickerTrackerMachine);
    m_tracker->setRubberBandPen(
        QPen(QBrush(Qt::gray), 0.0, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin));
    m_tracker->setTrackerPen(QPen(Qt::black));
    m_tracker->setTrackerMode(QwtPicker::AlwaysOn);
    connect(
        this, &CCurvePlot::curvesUpdated, this, [this] { m_tracker->setCurves(m_curves); },
        Qt::DirectConnection);
}

void CCurvePlot::initTimers()
{
    m_reloadTimer = new QTimer(this);
    m_reloadTimer->setSingleShot(true);
    connect(m_reloadTimer, &QTimer::timeout, this, &CCurvePlot::updateVisibleData);

    m_rangeCheckTimer = new QTimer(this);
    m_rangeCheckTimer->setInterval(kRangeCheckPeriodMs);
    connect(m_rangeCheckTimer, &QTimer::timeout, this, &CCurvePlot::checkAxisRangeChange);
    m_rangeCheckTimer->start();
}

CCurvePlot::~CCurvePlot()
{
    assertGuiThread();
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
    auto* curve = new SeriesCurve(title);
    curve->setPen(color, 1.0, Qt::SolidLine);
    curve->setSamples(new NonOwningCurveData(series));
    curve->setPaintAttribute(QwtPlotCurve::ClipPolygons, true);
    curve->setPaintAttribute(QwtPlotCurve::FilterPoints, true);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased, false);
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
    m_curveOffsets.clear();
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        curve->hide();
        curve->detach();
        delete curve;
    }
    m_curves.clear();

    m_userMovedX = false;
    m_userMovedY = false;
    m_followTime = true;
    m_autoScaleY = true;

    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    setTimeAxis(now - kWindowSpanMs, now);
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

void CCurvePlot::updateAxes(qint64 timeMs)
{
    assertGuiThread();
    {
        const QScopedValueRollback<bool> updating(m_updatingAxes, true);
        if (m_followTime && !m_userMovedX) {
            followTime(timeMs);
        }
        if (m_autoScaleY && !m_userMovedY) {
            autoScaleY();
        }
    }
    // The reload that is armed here serves the move, so the range check shall not put it off. A plot
    // without curves is left to that check: it has the first curve loaded.
    if (!m_curves.isEmpty()) {
        noteTimeAxis();
    }
    m_reloadTimer->start(kReloadDelayMs);
}

/// Sets the x axis for the newest time.
void CCurvePlot::followTime(qint64 timeMs)
{
    if (!m_timeBaseSet) {
        m_windowStart = timeMs;
        m_windowEnd = timeMs + m_windowSpan;
        m_timeBaseSet = true;
    } else if (m_scrolling || timeMs >= m_windowEnd) {
        m_scrolling = true;
        setTimeAxis(timeMs - m_windowSpan, timeMs);
        return;
    }
    setTimeAxis(m_windowStart, m_windowEnd);
}

void CCurvePlot::setTimeAxis(qint64 start, qint64 end)
{
    setBounds(QwtPlot::xBottom, static_cast<double>(start), static_cast<double>(end));
}

/// Takes the bounds of the time axis for seen by the range check.
void CCurvePlot::noteTimeAxis()
{
    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    m_lastLowerX = time.minValue();
    m_lastUpperX = time.maxValue();
}

/// Sets the bounds of an axis. They count at once, and nothing is laid out or painted for them: the
/// scale on screen follows with the next replot, together with the curves.
void CCurvePlot::setBounds(int axis, double lower, double upper)
{
    // The base keeps the bounds, for the next change of the ticks, but divides the scale by them only
    // when it is replotted.
    setAxisScale(axis, lower, upper, 0);
    setAxisScaleDiv(axis, axisScaleEngine(axis)->divideScale(lower, upper, axisMaxMajor(axis),
                                                             axisMaxMinor(axis)));
}

void CCurvePlot::autoScaleY()
{
    assertGuiThread();
    if (m_userMovedY || !m_autoScaleY || m_curves.isEmpty()) {
        return;
    }
    const QwtInterval values = valueBounds(m_curves);
    if (!values.isValid()) {
        setBounds(QwtPlot::yLeft, kEmptyLowerY, kEmptyUpperY);
        return;
    }
    const double margin = valueMargin(values.minValue(), values.maxValue());
    const double lower = std::max(values.minValue() - margin, -kLargestAxisValue);
    const double upper = std::min(values.maxValue() + margin, kLargestAxisValue);
    // Values at both ends of the number range leave the axis as it is: it cannot span them.
    if (isUsableRange(lower, upper)) {
        setBounds(QwtPlot::yLeft, lower, upper);
    }
}

void CCurvePlot::resumeLive()
{
    assertGuiThread();
    m_userMovedX = false;
    m_userMovedY = false;
    m_followTime = true;
    m_autoScaleY = true;
    onNewSample(QDateTime::currentMSecsSinceEpoch());
    autoScaleY();
    redraw();
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
        return;
    }
    m_userMovedY = false;
    autoScaleY();
    redraw();
}

void CCurvePlot::resetTimeWindow()
{
    assertGuiThread();
    m_timeBaseSet = false;
    m_windowStart = 0;
    m_windowSpan = kWindowSpanMs;
    m_windowEnd = 0;
    m_scrolling = false;
}

void CCurvePlot::setCurveOffset(QwtPlotCurve* curve, double offset)
{
    assertGuiThread();
    if (!m_curveOffsets.contains(curve)) {
        return;
    }
    m_curveOffsets[curve] = offset;
    // While a scan runs the next batch arms the reload anyway.
    if (!g_scanRunning.load(std::memory_order_relaxed)) {
        m_reloadTimer->start(kReloadDelayMs);
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

void CCurvePlot::updateVisibleData()
{
    assertGuiThread();
    if (!m_updatingAxes) {
        reloadVisibleData();
    }
}

void CCurvePlot::reloadVisibleData()
{
    if (isVisible() && loadVisibleCurves()) {
        redraw();
    }
}

/// Has the series of each shown curve load the visible window; false if there is no such curve.
bool CCurvePlot::loadVisibleCurves()
{
    QList<QwtPlotCurve*> shown;
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        if (curve->isVisible() && seriesOf(curve)) {
            shown.append(curve);
        }
    }
    if (shown.isEmpty()) {
        return false;
    }

    // Bounds that others set since the last replot count from here on; the replot follows.
    QwtPlot::updateAxes();
    // What is loaded now needs no second reload by the range check.
    noteTimeAxis();
    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    const qint64 start = static_cast<qint64>(time.minValue()) - kLoadMarginMs;
    const qint64 end = static_cast<qint64>(time.maxValue()) + kLoadMarginMs;
    for (QwtPlotCurve* curve : qAsConst(shown)) {
        seriesOf(curve)->loadWindow(start, end, kMaxPointsPerCurve, m_curveOffsets[curve]);
    }
    return true;
}

/// Draws the plot; a plot that is not visible only has its scales brought up to date and is drawn
/// when it is shown.
void CCurvePlot::redraw()
{
    m_redrawWhenShown = !isVisible();
    if (m_redrawWhenShown) {
        QwtPlot::updateAxes();
    } else {
        replot();
    }
}

void CCurvePlot::checkAxisRangeChange()
{
    assertGuiThread();
    if (m_curves.isEmpty()) {
        return;
    }

    const QwtInterval time = axisInterval(QwtPlot::xBottom);
    if (std::abs(time.minValue() - m_lastLowerX) > kRangeThresholdX ||
        std::abs(time.maxValue() - m_lastUpperX) > kRangeThresholdX) {
        noteTimeAxis();
        m_reloadTimer->start(kReloadDelayMs);
    }

    // Common to all plots of the process: each compares with what any of them reported last.
    static double lastLowerY = 0.0;
    static double lastUpperY = 0.0;
    const QwtInterval values = axisInterval(QwtPlot::yLeft);
    if (std::abs(values.minValue() - lastLowerY) > kRangeThresholdY ||
        std::abs(values.maxValue() - lastUpperY) > kRangeThresholdY) {
        lastLowerY = values.minValue();
        lastUpperY = values.maxValue();
        emit yAxisRangeChanged(lastLowerY, lastUpperY);
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
        // The zoom has just asked for a repaint: it shall find the scale cut already.
        QwtPlot::updateAxes();
    }
    m_reloadTimer->start(kReloadDelayMs);
}

void CCurvePlot::onPanned()
{
    assertGuiThread();
    holdView();
    m_reloadTimer->start(kReloadDelayMs);
}

/// The user has taken the view: the axes stop following the readings.
void CCurvePlot::holdView()
{
    m_userMovedX = true;
    m_userMovedY = true;
    if (m_followTime || m_autoScaleY) {
        m_followTime = false;
        m_autoScaleY = false;
    }
}

void CCurvePlot::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    QwtPlot::resizeEvent(event);
    if (!m_scrolling && m_timeBaseSet && !m_userMovedX && m_followTime) {
        stretchTimeWindow();
    }
    setAxisMaxMajor(QwtPlot::xBottom, width() / kPixelsPerMajorTick);
    redraw();
}

/// Gives a window that still fills as much more time as the plot is wider than the first plot of
/// the process was.
void CCurvePlot::stretchTimeWindow()
{
    // Set once, by whichever plot comes here first.
    static const int referenceWidth = width();
    if (referenceWidth <= 0) {
        return;
    }
    m_windowSpan = width() * kWindowSpanMs / referenceWidth;
    m_windowEnd = m_windowStart + m_windowSpan;
    setTimeAxis(m_windowStart, m_windowEnd);
    updateVisibleData();
}

void CCurvePlot::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QwtPlot::showEvent(event);
    if (m_updatingAxes) {
        return;
    }
    const bool loaded = loadVisibleCurves();
    if (loaded) {
        autoScaleY();
    }
    if (loaded || m_redrawWhenShown) {
        redraw();
    }
}
