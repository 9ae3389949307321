#include "plot/curvelabel.h"

#include "common/threadassert.h"

#include <QMouseEvent>
#include <QPainter>

namespace {
constexpr int kLabelWidth = 40;
constexpr int kLabelHeight = 20;
constexpr int kFontPointSize = 10;
constexpr int kFontWeight = 75;
} // namespace

CurveLabel::CurveLabel(const QString& text, QwtPlotCurve* curve, QWidget* parent)
    : QWidget(parent)
    , m_text(text)
    , m_curve(curve)
{
    assertGuiThread();
    setFixedSize(kLabelWidth, kLabelHeight);
    setMouseTracking(true);
    setAttribute(Qt::WA_TranslucentBackground);
    setAutoFillBackground(false);
}

void CurveLabel::setValue(double value)
{
    assertGuiThread();
    m_value = value;
    update();
}

void CurveLabel::setColor(const QColor& color)
{
    assertGuiThread();
    m_color = color;
    update();
}

void CurveLabel::paintEvent(QPaintEvent*)
{
    assertGuiThread();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_color);
    QFont font = painter.font();
    font.setPointSize(kFontPointSize);
    font.setWeight(kFontWeight);
    painter.setFont(font);
    painter.drawText(rect(), Qt::AlignCenter, m_text + QLatin1Char('>'));
}

void CurveLabel::mousePressEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (event->button() == Qt::LeftButton) {
        m_dragging = true;
        m_lastX = event->globalX();
        m_lastY = event->globalY();
        emit labelPressed(this);
        emit dragStarted();
    }
    QWidget::mousePressEvent(event);
}

void CurveLabel::mouseMoveEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (!m_dragging) {
        return;
    }
    const int deltaY = event->globalY() - m_lastY;
    m_lastX = event->globalX();
    m_lastY = event->globalY();
    emit dragged(deltaY);
}

void CurveLabel::mouseReleaseEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (event->button() == Qt::LeftButton) {
        endDrag();
    }
    QWidget::mouseReleaseEvent(event);
}

/// A hidden tag gets no release.
void CurveLabel::hideEvent(QHideEvent* event)
{
    assertGuiThread();
    endDrag();
    QWidget::hideEvent(event);
}

void CurveLabel::endDrag()
{
    if (m_dragging) {
        m_dragging = false;
        emit dragEnded();
    }
}
