#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <QTimerEvent>

/// Lets a timer that is active run out, as if its time were over.
inline void runOut(QTimer* timer)
{
    Q_ASSERT(timer->isActive());
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}
