#include "widgets/rotatedlabel.h"

#include "common/threadassert.h"

#include <QPainter>

RotatedLabel::RotatedLabel(QWidget* parent)
    : QLabel(parent)
{
    assertGuiThread();
    setAlignment(Qt::AlignCenter);
    setMouseTracking(true);
}

void RotatedLabel::setVertical(bool vertical)
{
    assertGuiThread();
    m_vertical = vertical;
    updateGeometry();
    update();
}

QSize RotatedLabel::sizeHint() const
{
    const QSize hint = QLabel::sizeHint();
    return m_vertical ? hint.transposed() : hint;
}

QSize RotatedLabel::minimumSizeHint() const
{
    const QSize hint = QLabel::minimumSizeHint();
    return m_vertical ? hint.transposed() : hint;
}

void RotatedLabel::paintEvent(QPaintEvent* event)
{
    assertGuiThread();
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::WindowText));
    if (!m_vertical) {
        painter.drawText(rect(), Qt::AlignCenter, text());
        return;
    }
    painter.translate(width() / 2.0, height() / 2.0);
    painter.rotate(90.0);
    const QRectF turned(-height() / 2.0, -width() / 2.0, height(), width());
    painter.drawText(turned, Qt::AlignCenter, text());
}
