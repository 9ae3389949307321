#include "widgets/customitemdelegate.h"

#include "common/threadassert.h"

#include <QPainter>

namespace {

/// Gap between an icon and its text, and on either side of the text, in pixels.
constexpr int kTextMargin = 3;

QPalette::ColorGroup colorGroup(QStyle::State state)
{
    if (!(state & QStyle::State_Enabled)) {
        return QPalette::Disabled;
    }
    return (state & QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

QIcon::Mode iconMode(QStyle::State state)
{
    if (!(state & QStyle::State_Enabled)) {
        return QIcon::Disabled;
    }
    return (state & QStyle::State_Selected) ? QIcon::Selected : QIcon::Normal;
}

} // namespace

CustomItemDelegate::CustomItemDelegate(int spacing, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_spacing(spacing)
{
}

void CustomItemDelegate::setSpacing(int spacing)
{
    if (spacing == m_spacing) {
        return;
    }
    m_spacing = spacing;
    // A view with uniform item sizes caches one row's size; this makes it measure again.
    emit sizeHintChanged(QModelIndex());
}

void CustomItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const
{
    assertGuiThread();
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);

    painter->save();
    painter->setClipRect(item.rect);
    const QPalette::ColorGroup group = colorGroup(item.state);
    const bool selected = item.state & QStyle::State_Selected;
    if (selected) {
        painter->fillRect(item.rect, item.palette.brush(group, QPalette::Highlight));
    }

    QRect textRect = item.rect.adjusted(kTextMargin, 0, -kTextMargin, 0);
    if (!item.icon.isNull()) {
        const QSize size = item.decorationSize.boundedTo(item.rect.size());
        const QRect iconRect(
            QPoint(textRect.left(), item.rect.top() + (item.rect.height() - size.height()) / 2),
            size);
        item.icon.paint(painter, iconRect, Qt::AlignCenter, iconMode(item.state));
        textRect.setLeft(iconRect.right() + 1 + kTextMargin);
    }

    painter->setFont(item.font);
    painter->setPen(
        item.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                      item.fontMetrics.elidedText(item.text, Qt::ElideRight, textRect.width()));
    painter->restore();
}

QSize CustomItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const
{
    assertGuiThread();
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, m_spacing);
}
