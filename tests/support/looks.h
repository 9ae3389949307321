#pragma once

#include <QStringList>

class QImage;

/// What is wrong with the look of the program's windows.
namespace looks {

/// One line for each fault in the layout of the visible windows: widgets that overlap or stick out of their
/// parent, texts that do not fit, English texts.
QStringList layoutProblems();

/// The same, and light areas; `picture` is the display.
QStringList problems(const QImage& picture);

} // namespace looks
