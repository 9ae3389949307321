#include "plot/windowplace.h"

namespace scn {

namespace {

constexpr int kTileReach = 69; // from first to last pixel
constexpr int kKeptInView = 35;

} // namespace

QPoint heldToPositive(const QPoint& corner)
{
    return {qMax(0, corner.x()), qMax(0, corner.y())};
}

QRect tileAt(const QPoint& corner)
{
    return {corner, corner + QPoint(kTileReach, kTileReach)};
}

QPoint heldInArea(const QPoint& topLeft, int width, const QRect& area)
{
    const int y = qMin(qMax(topLeft.y(), area.top()), area.bottom() - kKeptInView);
    int x = topLeft.x();
    if (x + width <= kKeptInView) {
        x = kKeptInView - width;
    }
    x = qMin(x, area.right() - kKeptInView);
    return {x, y};
}

} // namespace scn
