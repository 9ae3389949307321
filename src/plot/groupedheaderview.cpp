#include "plot/groupedheaderview.h"

#include "common/threadassert.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace {
constexpr int kHeaderHeight = 60;
constexpr int kSectionSize = 60;
constexpr int kLineWidth = 2;

const QLatin1String kSectionColor("#5D5D5D");
const QLatin1String kGroupColor("#4A4A4A");
const QLatin1String kLineColor("#333333");
const QLatin1String kTitleColor("white");
} // namespace

GroupedHeaderView::GroupedHeaderView(const QVector<HeaderGroup>& groups, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
    , m_groups(groups)
{
    assertGuiThread();
    setDefaultSectionSize(kSectionSize);
    setSectionsClickable(false);
    setHighlightSections(false);
    setSectionsMovable(false);
    setStyleSheet(QStringLiteral("QHeaderView::section { background:#5D5D5D; color:white; }"));
    setAttribute(Qt::WA_Hover, false);
}

QSize GroupedHeaderView::sizeHint() const
{
    assertGuiThread();
    return {QHeaderView::sizeHint().width(), kHeaderHeight};
}

bool GroupedHeaderView::event(QEvent* event)
{
    assertGuiThread();
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverLeave:
    case QEvent::HoverMove:
        return false;
    default:
        return QHeaderView::event(event);
    }
}

void GroupedHeaderView::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    assertGuiThread();
    const int usable = rect.height() - m_gap;
    const int upper = usable * 2 / 3;
    const int lower = usable / 3;
    const int lineY = rect.top() + upper;

    painter->save();
    painter->fillRect(rect, QColor(kSectionColor));
    if (const HeaderGroup* group = groupOf(logicalIndex)) {
        paintGroup(painter, *group, rect.top(), lineY);
    }
    painter->setPen(
        QPen(QColor(kLineColor), kLineWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter->drawLine(rect.left(), lineY, rect.right(), lineY);
    painter->restore();

    painter->save();
    QHeaderView::paintSection(painter, QRect(rect.left(), lineY + m_gap, rect.width(), lower),
                              logicalIndex);
    painter->restore();
}

const HeaderGroup* GroupedHeaderView::groupOf(int logicalIndex) const
{
    const auto found =
        std::find_if(m_groups.cbegin(), m_groups.cend(), [logicalIndex](const HeaderGroup& group) {
            return group.startColumn <= logicalIndex &&
                   logicalIndex < group.startColumn + group.columnCount;
        });
    return found == m_groups.cend() ? nullptr : &*found;
}

/// Draws the caption across its whole group. Every section of the group draws the same cell, so the
/// result is one merged cell even if only part of it is repainted.
void GroupedHeaderView::paintGroup(QPainter* painter, const HeaderGroup& group, int top,
                                   int lineY) const
{
    const int last = group.startColumn + group.columnCount - 1;
    // Section positions are relative to the header, the painter's to the viewport.
    const int left = sectionPosition(group.startColumn) - offset();
    const int right = sectionPosition(last) + sectionSize(last) - 1 - offset();
    const QRect cell(QPoint(left, top), QPoint(right, lineY - 1));
    painter->fillRect(cell, QColor(kGroupColor));
    painter->setPen(QColor(kTitleColor));
    painter->drawText(cell, Qt::AlignCenter, group.title);
}
