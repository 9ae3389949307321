#include "overlay/busyring.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QRectF>

#include <algorithm>
#include <array>

namespace scn {

namespace {

constexpr int kStepDegrees = 12;
constexpr int kFullTurn = 360;

const QColor kColour(153, 153, 153);
constexpr qreal kPenWidth = 4.0;
constexpr qreal kSmoothing = 1.0;   ///< Pixels beyond the pen that its smooth edge may touch.
constexpr qreal kInnerRadius = 0.7; ///< Of the outer radius.
constexpr qreal kRise = 20;         ///< Of the centre over the middle of the area, in pixels.

/// Dashes of the two circles: start and length in sixteenths of a degree.
constexpr int kDashLength = 720;
constexpr std::array<int, 3> kOuterDashes = {0, 1920, 3840};
constexpr std::array<int, 3> kInnerDashes = {960, 2880, 4800};

int radiusIn(const QRect& area)
{
    return std::min(area.width(), area.height()) / 8;
}

QPointF centreOf(const QRect& area)
{
    return {area.width() * 0.5, area.height() * 0.5 - kRise};
}

void drawCircle(QPainter& painter, int radius, const std::array<int, 3>& dashes)
{
    const QRect circle(-radius, -radius, 2 * radius, 2 * radius);
    for (const int start : dashes) {
        painter.drawArc(circle, start, kDashLength);
    }
}

} // namespace

void BusyRing::turn()
{
    m_degrees = (m_degrees + kStepDegrees) % kFullTurn;
}

QRect BusyRing::bounds(const QRect& area)
{
    const qreal reach = radiusIn(area) + kPenWidth / 2 + kSmoothing;
    const QPointF away(reach, reach);
    return QRectF(centreOf(area) - away, centreOf(area) + away).toAlignedRect();
}

void BusyRing::paint(QPainter& painter, const QRect& area) const
{
    const int radius = radiusIn(area);
    painter.setPen(QPen(kColour, kPenWidth, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin));
    painter.translate(centreOf(area));
    painter.rotate(m_degrees);
    drawCircle(painter, radius, kOuterDashes);
    drawCircle(painter, static_cast<int>(radius * kInnerRadius), kInnerDashes);
}

} // namespace scn
