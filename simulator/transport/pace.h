#pragma once

#include <chrono>
#include <cstddef>

namespace scnsim {

/// Limits output to the speed of a serial line. It has no clock of its own.
class Pace
{
public:
    using Time = std::chrono::nanoseconds;

    /// @param bitsPerSecond the line's speed, with ten bits to a byte; 0 for no limit
    explicit Pace(int bitsPerSecond)
        : m_bytesPerSecond(bitsPerSecond / 10.0)
    {
    }

    bool isLimited() const { return m_bytesPerSecond > 0; }

    /// How many bytes may be sent now. Unused time counts for at most a serial port's own buffer.
    std::size_t allowance(Time now);

    /// Records that this many bytes were sent.
    void spend(std::size_t bytes) { m_credit -= static_cast<double>(bytes); }

private:
    double m_bytesPerSecond;
    double m_credit = 0;
    Time m_last{0};
};

} // namespace scnsim
