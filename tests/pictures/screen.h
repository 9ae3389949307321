#pragma once

#include <QPoint>
#include <QSize>
#include <QStringList>

#include <functional>

class QWidget;

/// The display that the pictures are taken of, with its real pointer, wheel and keys.
namespace screen {

QSize size();

/// Saves the display as the picture `name`, and checks what is on it. With `part` the picture shows only
/// this widget and what is open over it.
void take(const QString& name, const QWidget* part = nullptr);
/// The same without waiting for the windows to come to rest.
void takeAtOnce(const QString& name, const QWidget* part = nullptr);

void movePointer(const QWidget* widget);
void movePointer(const QWidget* widget, const QPoint& point);
/// To a corner where it touches nothing.
void movePointerAway();

/// Moves the pointer to the middle of the widget, or to a point of it, and clicks.
void click(const QWidget* widget);
void click(const QWidget* widget, const QPoint& point);
void doubleClick(const QWidget* widget, const QPoint& point);
void rightClick(const QWidget* widget);
void pressButton();
void releaseButton();

/// Turns the wheel over the widget until the other one is in view.
void scrollTo(const QWidget* over, const QWidget* wanted);

/// Presses keys one after the other, by the names of the X Window System.
void press(const QStringList& keys);
void type(const QString& text);
/// Gives the keys to a window: no window manager is there to do it.
void giveKeysTo(const QWidget* window);

/// Clicks a widget whose menu or dialog runs an event loop of its own, and works in it once it is there.
void inLoopOf(const std::function<void()>& open, const std::function<void()>& work);

} // namespace screen
