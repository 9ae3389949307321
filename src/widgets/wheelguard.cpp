#include "widgets/wheelguard.h"

#include "common/threadassert.h"

#include <QEvent>
#include <QWidget>

namespace scn {

WheelGuard::WheelGuard(QWidget* control)
    : QObject(control)
{
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(this);
}

void WheelGuard::install(QWidget* control)
{
    assertGuiThread();
    new WheelGuard(control);
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    const auto* control = qobject_cast<QWidget*>(watched);
    if (event->type() != QEvent::Wheel || !control || control->hasFocus()) {
        return QObject::eventFilter(watched, event);
    }
    // Ignored, so that the page gets it.
    event->ignore();
    return true;
}

} // namespace scn
