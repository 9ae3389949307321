#pragma once

#include <chrono>

class QPainter;
class QRect;

namespace scn {

/// Two dashed circles that turn while the program is busy: 150 degrees a second in steps.
class BusyRing
{
public:
    /// Time of a step.
    static constexpr std::chrono::milliseconds kStep{80};

    /// Turns by one step.
    void turn();

    /// Draws the ring a little over the middle of `area`. Moves the painter's origin.
    void paint(QPainter& painter, const QRect& area) const;

private:
    int m_degrees = 0;
};

} // namespace scn
