#pragma once

#include <chrono>
#include <cstddef>

namespace scnsim {

/// Lets bytes out at the speed of a serial line. It has no clock of its own.
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

    /// How many bytes may go out now. What was not used in the past counts up to the size of a
    /// serial port's own buffer.
    std::size_t allowance(Time now);

    /// So many bytes went out.
    void spend(std::size_t bytes) { m_credit -= static_cast<double>(bytes); }

private:
    double m_bytesPerSecond;
    double m_credit = 0;
    Time m_last{0};
};

} // namespace scnsim
