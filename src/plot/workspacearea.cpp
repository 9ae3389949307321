#include "plot/workspacearea.h"

#include <QEvent>
#include <QPainter>

namespace scn {
namespace {

const QColor kHintColor(0x8a, 0x8f, 0x96);
constexpr int kHintFlags = Qt::AlignCenter | Qt::TextWordWrap;

QString hint()
{
    return WorkspaceArea::tr("点击左侧“小工具”，再点击图标，打开图形或数据网格");
}

} // namespace

WorkspaceArea::WorkspaceArea(QWidget* parent)
    : QMdiArea(parent)
{
}

void WorkspaceArea::paintEvent(QPaintEvent* event)
{
    QMdiArea::paintEvent(event);
    if (!subWindowList().isEmpty()) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(kHintColor);
    painter.drawText(viewport()->rect(), kHintFlags, hint());
}

bool WorkspaceArea::viewportEvent(QEvent* event)
{
    const bool isHandled = QMdiArea::viewportEvent(event);
    // The first window covers only a part of the hint, the last one uncovers only a part.
    const bool isChange =
        event->type() == QEvent::ChildAdded || event->type() == QEvent::ChildRemoved;
    if (isChange && subWindowList().size() <= 1) {
        updateHint();
    }
    return isHandled;
}

/// Not the whole area: that would paint all windows anew.
void WorkspaceArea::updateHint()
{
    viewport()->update(fontMetrics().boundingRect(viewport()->rect(), kHintFlags, hint()));
}

} // namespace scn
