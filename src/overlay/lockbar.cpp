#include "overlay/lockbar.h"

#include <QFont>
#include <QFontMetrics>
#include <QGraphicsProxyWidget>
#include <QGraphicsScene>
#include <QPushButton>

#include <algorithm>

namespace scn {

namespace {

constexpr int kHeight = 50;

constexpr int kTextSize = 16;
constexpr int kSmallTextSize = 11; ///< Below this size, widen the bar instead.
constexpr int kLeastTextSize = 9;  ///< Still readable.
constexpr int kTextMargin = 12;    ///< Left and right of the text together.

QString styleFor(int textSize)
{
    return QStringLiteral("color:#13C4FF;font-weight:bold;font-size:%1px;").arg(textSize);
}

/// Bar width that shows a text completely.
int widthFor(const QString& text, QFont font, int textSize)
{
    font.setBold(true);
    font.setPixelSize(textSize);
    return QFontMetrics(font).horizontalAdvance(text) + kTextMargin;
}

struct BarFit
{
    qreal width;
    int textSize;
};

/// The bar is half as wide as the veil; if its text would be too small there, it gets the width the
/// text needs. `room` is the visible part of the veil's width.
BarFit fitBar(const QString& text, const QFont& font, qreal veilWidth, qreal room)
{
    const auto largestText = [&text, &font](qreal width, int from, int to) {
        int size = from;
        while (size >= to && widthFor(text, font, size) > width) {
            --size;
        }
        return size;
    };
    const qreal half = veilWidth / 2;
    const qreal width = std::min(half, room);
    const int size = largestText(width, kTextSize, kSmallTextSize);
    if (size >= kSmallTextSize) {
        return {width, size};
    }
    const int wideSize = largestText(room, kTextSize, kLeastTextSize);
    if (wideSize >= kLeastTextSize) {
        return {static_cast<qreal>(widthFor(text, font, wideSize)), wideSize};
    }
    return {half, kTextSize};
}

/// The start of a length nearest to `wanted` within a room; centred if it does not fit.
qreal placeWithin(qreal wanted, qreal length, qreal roomStart, qreal roomLength)
{
    if (length > roomLength) {
        return roomStart + (roomLength - length) / 2;
    }
    return std::clamp(wanted, roomStart, roomStart + roomLength - length);
}

} // namespace

LockBar::LockBar(QGraphicsScene* scene)
    : m_button(new QPushButton(holdText()))
{
    m_button->setStyleSheet(styleFor(kTextSize));
    m_proxy = scene->addWidget(m_button);
    m_proxy->setPos(0, 0);
    // The bar keeps half of the width on a narrow page too, even if its text needs more.
    m_proxy->setMinimumSize(0, 0);
}

QString LockBar::holdText()
{
    return tr("点击并按住解锁,并清除数据");
}

void LockBar::askForHold()
{
    m_button->setText(holdText());
}

void LockBar::tellOfUnlocking()
{
    m_button->setText(tr("正在解锁..."));
}

void LockBar::layOut(const QRectF& veil, const QRectF& room)
{
    const BarFit fit = fitBar(holdText(), m_button->font(), veil.width(), room.width());
    const QString style = styleFor(fit.textSize);
    if (m_button->styleSheet() != style) {
        m_button->setStyleSheet(style);
    }
    const qreal left =
        placeWithin((veil.width() - fit.width) / 2, fit.width, room.left(), room.width());
    const qreal top =
        placeWithin((veil.height() - kHeight) / 2, kHeight, room.top(), room.height());
    m_proxy->setGeometry(QRectF(left, top, fit.width, kHeight));
}

} // namespace scn
