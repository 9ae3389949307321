#pragma once

#include <QPoint>
#include <QRect>

// Where windows of the workspace may be placed.
namespace scn {

/// The corner with negative coordinates raised to 0.
QPoint heldToPositive(const QPoint& corner);

/// Geometry of a window that is collapsed to a tile at `corner`.
QRect tileAt(const QPoint& corner);

/// Where a window of this width goes when dragged to `topLeft`: never above `area`, and always with a
/// strip in view.
QPoint heldInArea(const QPoint& topLeft, int width, const QRect& area);

} // namespace scn
