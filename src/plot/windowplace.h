#pragma once

#include <QPoint>
#include <QRect>

// Where the windows of the workspace may stand.
namespace scn {

/// The corner, moved to where no coordinate is negative.
QPoint heldToPositive(const QPoint& corner);

/// A window's place while it is collapsed to a tile at `corner`.
QRect tileAt(const QPoint& corner);

/// Where a drag to `topLeft` takes a window of this width: never above `area`, and always with a strip
/// in view.
QPoint heldInArea(const QPoint& topLeft, int width, const QRect& area);

} // namespace scn
