#pragma once

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>

/// Delivers events until none is pending, those that the events bring about included: all that
/// becomes of a click or of a show, but for timers.
inline void settle()
{
    constexpr int kPatienceMs = 5000;
    const QDeadlineTimer patience(kPatienceMs);
    do {
        QCoreApplication::processEvents();
    } while (QAbstractEventDispatcher::instance()->hasPendingEvents() && !patience.hasExpired());
}
