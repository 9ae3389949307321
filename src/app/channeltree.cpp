#include "app/channeltree.h"

#include "common/threadassert.h"

#include <QEvent>

namespace scn {

ChannelTree::ChannelTree(QWidget* parent)
    : QTreeWidget(parent)
{
    assertGuiThread();
}

bool ChannelTree::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    // The base class takes a cell's control for an open editor and focuses it on every mouse move that the
    // control ignores.
    if (event && event->type() == QEvent::MouseMove) {
        return false;
    }
    return QTreeWidget::edit(index, trigger, event);
}

} // namespace scn
