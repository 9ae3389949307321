#pragma once

#include <QString>
#include <Qt>

class QLineEdit;
class QWidget;

/// What a hand does to a window. The events go to the window, which finds who takes them.
namespace userhand {

/// A click with the left button on a widget's centre.
void click(const QWidget* widget);

/// A key, to whoever has the window's focus.
void press(const QWidget* window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// Replaces what is in the edit; as an input method does, which takes any script.
void enterText(QLineEdit* edit, const QString& text);

} // namespace userhand
