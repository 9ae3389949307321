#pragma once

#include <QPoint>
#include <QString>

class QWidget;

/// Acts as a user's hand on the windows of this process. Each event enters at the window, so it
/// reaches what a hand would reach: whatever covers a control gets the click, and whatever has the
/// focus gets the keys.
namespace hand {

/// Moves the pointer to a point of the widget.
void movePointer(const QWidget* widget, const QPoint& point);

/// Clicks the left button; without a point, in the middle of the widget.
void click(const QWidget* widget);
void click(const QWidget* widget, const QPoint& point);

/// Turns the wheel over the middle of the widget, one notch at a time; positive is away from the
/// user.
void turnWheel(const QWidget* widget, int notches);

/// Presses and releases a key.
void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// Types a text character by character.
void type(const QString& text);

} // namespace hand
