#pragma once

#include <QString>
#include <Qt>

class QLineEdit;
class QWidget;

/// Acts as a hand on a window. The events go to the window, which finds their target.
namespace userhand {

/// A click with the left button on a widget's centre.
void click(const QWidget* widget);

/// A key, to whatever has the window's focus.
void press(const QWidget* window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// Replaces the edit's text as an input method does, in any script.
void enterText(QLineEdit* edit, const QString& text);

} // namespace userhand
