#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

/// Mouse events at a screen position. A dragged widget moves under the pointer, so positions
/// relative to it would move too.
inline void sendMouseAt(QWidget* widget, QEvent::Type type, const QPoint& globalPos,
                        Qt::MouseButton button, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, widget->mapFromGlobal(globalPos), globalPos, button, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

inline void pressAt(QWidget* widget, const QPoint& globalPos,
                    Qt::MouseButton button = Qt::LeftButton)
{
    sendMouseAt(widget, QEvent::MouseButtonPress, globalPos, button, button);
}

inline void dragTo(QWidget* widget, const QPoint& globalPos,
                   Qt::MouseButton button = Qt::LeftButton)
{
    sendMouseAt(widget, QEvent::MouseMove, globalPos, Qt::NoButton, button);
}

inline void releaseAt(QWidget* widget, const QPoint& globalPos,
                      Qt::MouseButton button = Qt::LeftButton)
{
    sendMouseAt(widget, QEvent::MouseButtonRelease, globalPos, button, Qt::NoButton);
}
