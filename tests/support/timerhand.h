#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <QTimerEvent>

/// Makes an active timer expire now.
inline void runOut(QTimer* timer)
{
    Q_ASSERT(timer->isActive());
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}
