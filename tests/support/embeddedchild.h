#pragma once

#include <QColor>
#include <QPoint>
#include <QRect>

class QWidget;

/// The window of the program in that of the launcher on the display of the test; 0 if none shows.
qulonglong childWindow();
QRect childPlace();

/// Where a widget is on the screen.
QRect placeOf(const QWidget* widget);

// Points of the program's window.
void clickInChild(const QPoint& point);
QColor colorInChild(const QPoint& point);
/// Drags with the left button, in a few steps.
void dragInChild(const QPoint& from, const QPoint& by);
