#include "widgets/imagebutton.h"

#include "common/threadassert.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace {

/// Half of a possibly negative length, rounded down.
int halfDown(int length)
{
    return (length - (length < 0 ? 1 : 0)) / 2;
}

/// A rectangle of this size, centred in the outer one.
QRect centred(const QSize& size, const QRect& outer)
{
    return QRect(outer.left() + halfDown(outer.width() - size.width()),
                 outer.top() + halfDown(outer.height() - size.height()), size.width(),
                 size.height());
}

} // namespace

ImageButton::ImageButton(QWidget* parent)
    : QPushButton(parent)
{
    assertGuiThread();
}

ImageButton::ImageButton(const QString& text, QWidget* parent)
    : QPushButton(parent)
    , m_text(text)
{
    assertGuiThread();
}

ImageButton::ImageButton(const QIcon& leftIcon, const QString& text, const QIcon& rightIcon,
                         QWidget* parent)
    : QPushButton(parent)
    , m_leftIcon(leftIcon)
    , m_rightIcon(rightIcon)
    , m_text(text)
    , m_position(LeftAndRight)
{
    assertGuiThread();
}

void ImageButton::setLeftIcon(const QIcon& icon)
{
    assertGuiThread();
    m_leftIcon = icon;
    update();
}

void ImageButton::setRightIcon(const QIcon& icon)
{
    assertGuiThread();
    m_rightIcon = icon;
    update();
}

void ImageButton::setText(const QString& text)
{
    assertGuiThread();
    m_text = text;
    update();
}

void ImageButton::setIconSize(const QSize& size)
{
    setIconSize(size.width(), size.height());
}

void ImageButton::setIconSize(int width, int height)
{
    assertGuiThread();
    m_iconSize.width = width;
    m_iconSize.height = height;
    update();
}

void ImageButton::setIconPosition(IconPosition position)
{
    assertGuiThread();
    m_position = position;
    update();
}

void ImageButton::setSpacing(int spacing)
{
    assertGuiThread();
    m_spacing = spacing;
    update();
}

QSize ImageButton::blockSize(int textWidth, int fontHeight) const
{
    const int besideHeight = std::max(fontHeight, m_iconSize.height);
    const int leftGap = m_leftIcon.isNull() ? 0 : m_spacing;
    const int rightGap = m_rightIcon.isNull() ? 0 : m_spacing;
    switch (m_position) {
    case Left:
        return QSize(m_iconSize.width + textWidth + 1 + leftGap, besideHeight);
    case Right:
        return QSize(m_iconSize.width + textWidth + 1 + rightGap, besideHeight);
    case Top:
    case Bottom:
        return QSize(std::max(m_iconSize.width, textWidth),
                     m_iconSize.height + fontHeight + leftGap);
    case LeftAndRight:
        break;
    }
    return QSize(textWidth + (m_leftIcon.isNull() ? 0 : m_iconSize.width + leftGap) +
                     (m_rightIcon.isNull() ? 0 : m_iconSize.width + rightGap),
                 besideHeight);
}

ImageButton::Parts ImageButton::placeBeside(const QRect& block, int textWidth) const
{
    const bool onTheLeft = m_position == Left;
    Parts parts;
    if ((onTheLeft ? m_leftIcon : m_rightIcon).isNull()) {
        parts.text = block;
        return parts;
    }
    // One pixel more than measured, for glyphs that overhang their advance.
    const QSize icon(m_iconSize.width, block.height());
    const QSize text(textWidth + 1, block.height());
    if (onTheLeft) {
        parts.leftIcon = QRect(block.topLeft(), icon);
        parts.text = QRect(QPoint(block.left() + icon.width() + m_spacing, block.top()), text);
    } else {
        parts.text = QRect(block.topLeft(), text);
        parts.rightIcon = QRect(QPoint(block.left() + text.width() + m_spacing, block.top()), icon);
    }
    return parts;
}

ImageButton::Parts ImageButton::placeStacked(const QRect& block, int fontHeight) const
{
    Parts parts;
    if (m_leftIcon.isNull()) {
        parts.text = block;
        return parts;
    }
    const QSize icon(block.width(), m_iconSize.height);
    const QSize text(block.width(), fontHeight);
    if (m_position == Top) {
        parts.leftIcon = QRect(block.topLeft(), icon);
        parts.text = QRect(QPoint(block.left(), block.top() + icon.height() + m_spacing), text);
    } else {
        parts.text = QRect(block.topLeft(), text);
        parts.leftIcon = QRect(QPoint(block.left(), block.top() + text.height() + m_spacing), icon);
    }
    return parts;
}

ImageButton::Parts ImageButton::placeBetween(const QRect& block, int textWidth) const
{
    Parts parts;
    const QSize icon(m_iconSize.width, block.height());
    int x = block.left();
    if (!m_leftIcon.isNull()) {
        parts.leftIcon = QRect(QPoint(x, block.top()), icon);
        x += icon.width() + m_spacing;
    }
    parts.text = QRect(x, block.top(), textWidth, block.height());
    x += textWidth + m_spacing;
    if (!m_rightIcon.isNull()) {
        parts.rightIcon = QRect(QPoint(x, block.top()), icon);
    }
    return parts;
}

ImageButton::Parts ImageButton::placeParts(const QRect& block, int textWidth, int fontHeight) const
{
    switch (m_position) {
    case Left:
    case Right:
        return placeBeside(block, textWidth);
    case Top:
    case Bottom:
        return placeStacked(block, fontHeight);
    case LeftAndRight:
        break;
    }
    return placeBetween(block, textWidth);
}

void ImageButton::paintEvent(QPaintEvent* event)
{
    assertGuiThread();
    Q_UNUSED(event)
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    painter.drawControl(QStyle::CE_PushButton, option);

    const int fontHeight = fontMetrics().height();
    const int textWidth = fontMetrics().boundingRect(QRect(), Qt::TextSingleLine, m_text).width();
    const QRect block = centred(blockSize(textWidth, fontHeight), rect());
    const Parts parts = placeParts(block, textWidth, fontHeight);

    // A disabled button keeps its icons as they are: normal mode, off.
    const QSize icon = iconSize();
    if (!parts.leftIcon.isNull()) {
        m_leftIcon.paint(&painter, centred(icon, parts.leftIcon), Qt::AlignCenter, QIcon::Normal,
                         QIcon::Off);
    }
    if (!parts.rightIcon.isNull()) {
        m_rightIcon.paint(&painter, centred(icon, parts.rightIcon), Qt::AlignCenter, QIcon::Normal,
                          QIcon::Off);
    }
    if (!m_text.isEmpty()) {
        painter.drawItemText(parts.text, Qt::AlignCenter | Qt::TextSingleLine, option.palette,
                             isEnabled(), m_text, QPalette::ButtonText);
    }
}
