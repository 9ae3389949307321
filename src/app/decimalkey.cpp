#include "app/decimalkey.h"

#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QKeyEvent>

namespace scn {

bool DecimalKey::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !qobject_cast<QDoubleSpinBox*>(watched)) {
        return false;
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->text() != QLatin1String(",")) {
        return false;
    }
    QKeyEvent point(QEvent::KeyPress, Qt::Key_Period, key->modifiers(), QStringLiteral("."));
    QCoreApplication::sendEvent(watched, &point);
    return true;
}

} // namespace scn
