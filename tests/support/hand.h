#pragma once

#include <QPoint>
#include <QString>

class QWidget;

/// What a user's hand does to the windows of this process. Each event goes in at the window, so that it
/// reaches what a hand would reach: what covers a control has it, and what has the focus has the keys.
namespace hand {

/// Moves the pointer to a point of the widget.
void movePointer(const QWidget* widget, const QPoint& point);

/// Clicks the left button, where no point is given in the widget's middle.
void click(const QWidget* widget);
void click(const QWidget* widget, const QPoint& point);

/// Turns the wheel over the widget's middle, a notch at a time; positive is away from the hand.
void turnWheel(const QWidget* widget, int notches);

/// Presses and releases a key.
void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// Types a text character by character.
void type(const QString& text);

} // namespace hand
