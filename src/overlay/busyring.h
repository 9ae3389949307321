#pragma once

#include <QRect>

#include <chrono>

class QPainter;

namespace scn {

/// Two dashed circles that turn while the program is busy: 150 degrees a second in steps.
class BusyRing
{
public:
    /// Time of a step.
    static constexpr std::chrono::milliseconds kStep{80};

    /// Turns by one step.
    void turn();

    /// The part of `area` that the ring is drawn on, however it is turned.
    static QRect bounds(const QRect& area);

    /// Draws the ring a little over the middle of `area`. Moves the painter's origin.
    void paint(QPainter& painter, const QRect& area) const;

private:
    int m_degrees = 0;
};

} // namespace scn
