#include "plot/curveoffsetcontroller.h"

#include "common/threadassert.h"
#include "plot/ccurveplot.h"
#include "plot/curvelabel.h"

#include <qwt_scale_div.h>

#include <cmath>
#include <cstdlib>

namespace {
constexpr int kStripWidth = 45;
constexpr QSize kMinimumSizeHint(40, 80);

/// How far rounding may put a tag beside the place where a drag left it.
constexpr int kRoundingPixels = 1;
} // namespace

CurveOffsetController::CurveOffsetController(CCurvePlot* plot, QWidget* parent)
    : QWidget(parent)
    , m_labelLayer(new QWidget(this))
    , m_plot(plot)
{
    assertGuiThread();
    setMinimumWidth(kStripWidth);
    setMaximumWidth(kStripWidth);
    m_labelLayer->setAttribute(Qt::WA_TranslucentBackground);
    m_labelLayer->setAutoFillBackground(false);
    m_labelLayer->setGeometry(rect());
    if (m_plot) {
        connectPlot();
    }
}

void CurveOffsetController::addCurveLabel(const QString& text, QwtPlotCurve* curve,
                                          const QColor& color, double baseValue)
{
    assertGuiThread();
    if (!curve || m_labels.contains(curve)) {
        return;
    }
    m_baseValues[curve] = baseValue;

    auto* label = new CurveLabel(text, curve, m_labelLayer);
    label->setColor(color);
    label->setValue(0.0);
    // The initial position may lie outside the strip until the range or size next changes.
    label->move(0, valueToPixel(0.0, baseValue) - label->height() / 2);
    label->show();

    connect(label, &CurveLabel::labelPressed, this, &CurveOffsetController::onLabelPressed);
    connect(label, &CurveLabel::dragStarted, this, &CurveOffsetController::onDragStarted);
    connect(label, &CurveLabel::dragged, this, &CurveOffsetController::onLabelDragged);
    connect(label, &CurveLabel::dragEnded, this, &CurveOffsetController::onDragEnded);
    m_labels[curve] = label;
    m_labelOrder.append(curve);
}

void CurveOffsetController::setLabelValue(QwtPlotCurve* curve, double value)
{
    assertGuiThread();
    if (CurveLabel* label = m_labels.value(curve)) {
        label->setValue(value);
        placeLabel(curve, label);
    }
}

double CurveOffsetController::labelValue(QwtPlotCurve* curve) const
{
    assertGuiThread();
    const CurveLabel* label = m_labels.value(curve);
    return label ? label->value() : 0.0;
}

void CurveOffsetController::hideCurveLabel(QwtPlotCurve* curve)
{
    assertGuiThread();
    if (CurveLabel* label = m_labels.value(curve)) {
        label->hide();
    }
}

void CurveOffsetController::showCurveLabel(QwtPlotCurve* curve)
{
    assertGuiThread();
    if (CurveLabel* label = m_labels.value(curve)) {
        label->show();
    }
}

void CurveOffsetController::setLabelColor(QwtPlotCurve* curve, const QColor& color)
{
    assertGuiThread();
    if (CurveLabel* label = m_labels.value(curve)) {
        label->setColor(color);
    }
}

void CurveOffsetController::clearLabels()
{
    assertGuiThread();
    // A tag being dragged lives until the event loop deletes it; it must not report any more, as its
    // curve is about to be deleted.
    m_activeLabel = nullptr;
    for (CurveLabel* label : qAsConst(m_labels)) {
        label->disconnect(this);
        label->deleteLater();
    }
    m_labels.clear();
    m_labelOrder.clear();
}

void CurveOffsetController::setPlot(CCurvePlot* plot)
{
    assertGuiThread();
    if (m_plot && m_plot != plot) {
        disconnect(m_plot, nullptr, this, nullptr);
    }
    m_plot = plot;
    if (m_plot) {
        connectPlot();
    }
}

QSize CurveOffsetController::minimumSizeHint() const
{
    assertGuiThread();
    return kMinimumSizeHint;
}

void CurveOffsetController::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    QWidget::resizeEvent(event);
    m_labelLayer->setGeometry(rect());
    placeLabels();
}

void CurveOffsetController::onLabelPressed(CurveLabel* label)
{
    assertGuiThread();
    m_activeLabel = label;
}

void CurveOffsetController::onDragStarted()
{
    // The press has already identified the tag; there is nothing to prepare.
}

void CurveOffsetController::onLabelDragged(int deltaY)
{
    assertGuiThread();
    if (!m_activeLabel || !m_activeLabel->curve()) {
        return;
    }
    QwtPlotCurve* curve = m_activeLabel->curve();
    const double base = m_baseValues.value(curve, m_defaultBase);
    const int labelHeight = m_activeLabel->height();
    const int newTop = qBound(0, m_activeLabel->y() + deltaY, height() - labelHeight);
    m_activeLabel->move(m_activeLabel->x(), newTop);

    double value = 0.0;
    if (height() > 0) {
        const int centre = newTop + labelHeight / 2;
        value = m_yMin + (1.0 - static_cast<double>(centre) / height()) * (m_yMax - m_yMin) - base;
    }
    m_activeLabel->setValue(value);
    emit offsetChanged(curve, value);
}

void CurveOffsetController::onDragEnded()
{
    assertGuiThread();
    m_activeLabel = nullptr;
}

void CurveOffsetController::connectPlot()
{
    readRange();
    connect(m_plot, &CCurvePlot::yAxisRangeChanged, this,
            &CurveOffsetController::onYAxisRangeChanged, Qt::UniqueConnection);
    connect(m_plot, &CCurvePlot::valueAxisSet, this, &CurveOffsetController::readRange,
            Qt::UniqueConnection);
}

void CurveOffsetController::readRange()
{
    const QwtScaleDiv& scale = m_plot->axisScaleDiv(QwtPlot::yLeft);
    onYAxisRangeChanged(scale.lowerBound(), scale.upperBound());
}

void CurveOffsetController::onYAxisRangeChanged(double yMin, double yMax)
{
    assertGuiThread();
    m_yMin = yMin;
    m_yMax = yMax;
    placeLabels();
}

void CurveOffsetController::placeLabels()
{
    for (auto it = m_labels.cbegin(); it != m_labels.cend(); ++it) {
        if (it.value()) {
            placeLabel(it.key(), it.value());
        }
    }
}

void CurveOffsetController::placeLabel(QwtPlotCurve* curve, CurveLabel* label)
{
    const double base = m_baseValues.value(curve, m_defaultBase);
    const int level = valueToPixel(label->value(), base) - label->height() / 2;
    const int top = qBound(0, level, height() - label->height());
    // The drag goes on from where the tag is: a pixel lost with each report would add up.
    const bool isInPlace = label == m_activeLabel && std::abs(top - label->y()) <= kRoundingPixels;
    if (!isInPlace) {
        label->move(0, top);
    }
}

/// Height of `value` above `base` in the strip, 0 at the top. Values outside the y range are clamped to
/// the strip before the conversion to int, which a narrow range would overflow.
int CurveOffsetController::valueToPixel(double value, double base) const
{
    const double share = (value + base - m_yMin) / (m_yMax - m_yMin);
    const double pixel = height() - std::trunc(share * height());
    if (std::isnan(pixel)) {
        return 0;
    }
    return static_cast<int>(qBound(0.0, pixel, static_cast<double>(height())));
}
