#include "widgets/pathlabel.h"

#include "common/threadassert.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace scn {
namespace {

/// Share of the lines' total width that a text may take: breaks leave room at the ends of lines.
constexpr double kFilling = 0.95;
/// Allowance for rounding along a text of several fonts, in pixels.
constexpr int kRoundingRoom = 2;

} // namespace

PathLabel::PathLabel(int maximumLines, int maximumWidth, QWidget* parent)
    : QLabel(parent)
    , m_maximumLines(maximumLines)
    , m_maximumWidth(maximumWidth)
{
    assertGuiThread();
    setTextFormat(Qt::PlainText);
}

/// The style's margins around the text.
QSize PathLabel::frameSize() const
{
    return size() - contentsRect().size();
}

QSize PathLabel::sizeHint() const
{
    ensurePolished();
    const QFontMetrics metrics = fontMetrics();
    const int needed = metrics.horizontalAdvance(text()) + kRoundingRoom;
    const int width = std::min(needed, m_maximumWidth);
    if (m_maximumLines == 1 || needed <= m_maximumWidth) {
        return QSize(width, metrics.height()) + frameSize();
    }
    const QRect wrapped =
        metrics.boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), Qt::TextWrapAnywhere, text());
    // A line in another script is slightly taller.
    const int highest = m_maximumLines * metrics.lineSpacing() + metrics.lineSpacing() / 2;
    return QSize(width, std::min(wrapped.height(), highest)) + frameSize();
}

QSize PathLabel::minimumSizeHint() const
{
    return m_maximumLines > 1 ? sizeHint() : QSize(0, sizeHint().height());
}

bool PathLabel::event(QEvent* event)
{
    assertGuiThread();
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        QString tip = (toolTip().isEmpty() ? text() : toolTip()).toHtmlEscaped();
        tip.replace(QLatin1Char('\n'), QLatin1String("<br>"));
        QToolTip::showText(help->globalPos(), QStringLiteral("<p>%1</p>").arg(tip), this);
        return true;
    }
    return QLabel::event(event);
}

void PathLabel::paintEvent(QPaintEvent*)
{
    assertGuiThread();
    QPainter painter(this);
    drawFrame(&painter);
    const QRect area = contentsRect();
    const QFontMetrics metrics = fontMetrics();
    const int textWidth = metrics.horizontalAdvance(text());
    int lines = 1;
    if (textWidth > area.width()) {
        lines = std::clamp(area.height() / std::max(metrics.lineSpacing(), 1), 1, m_maximumLines);
    }
    const int room = lines > 1 ? static_cast<int>(lines * area.width() * kFilling) : area.width();
    const int wrapping = lines > 1 ? Qt::TextWrapAnywhere : Qt::TextSingleLine;
    style()->drawItemText(
        &painter, area, static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter) | wrapping, palette(),
        isEnabled(), metrics.elidedText(text(), Qt::ElideMiddle, room), foregroundRole());
}

} // namespace scn
