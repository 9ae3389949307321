#include "app/channeltree.h"

#include "common/threadassert.h"

#include <QEvent>

ChannelTree::ChannelTree(QWidget* parent)
    : QTreeWidget(parent)
{
    assertGuiThread();
}

bool ChannelTree::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    // The base class takes a cell's control for an open editor, and gives it the focus at each move of the
    // pointer that the control leaves to it.
    if (event && event->type() == QEvent::MouseMove) {
        return false;
    }
    return QTreeWidget::edit(index, trigger, event);
}
