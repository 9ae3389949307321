#include "overlay/viewportcover.h"

#include <QFrame>

QMargins viewportCoverMargins(const QFrame& area)
{
    const QRect outer = area.rect();
    const QRect inner = area.contentsRect();
    return QMargins(outer.left() - inner.left(), outer.top() - inner.top(),
                    inner.right() - outer.right(), inner.bottom() - outer.bottom());
}
