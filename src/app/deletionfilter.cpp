#include "app/deletionfilter.h"

#include <QEvent>

namespace scn {

DeletionFilter::DeletionFilter() = default;

bool DeletionFilter::eventFilter(QObject*, QEvent* event)
{
    return event->type() == QEvent::DeferredDelete;
}

} // namespace scn
