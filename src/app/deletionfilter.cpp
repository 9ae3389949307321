#include "app/deletionfilter.h"

#include <QEvent>

DeletionFilter::DeletionFilter() = default;

bool DeletionFilter::eventFilter(QObject*, QEvent* event)
{
    return event->type() == QEvent::DeferredDelete;
}
