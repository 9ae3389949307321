#pragma once

#include "model/function.h"
#include "model/instant.h"

#include <cstdint>

namespace scnsim {

/// The input signals. Each channel and function has its own slowly drifting level; thermocouples
/// sit on a heater that warms for ten minutes and cools for ten; every fourth position has a
/// capacitor on direct voltage that discharges and is recharged every four minutes. Added to this
/// are noise, which falls with the square root of the aperture, and mains hum, which whole power
/// line cycles cancel. The same seed, channel, signal, time, aperture and reading number give the
/// same value on every machine.
class SignalSource
{
public:
    explicit SignalSource(std::uint64_t seed)
        : m_seed(seed)
    {
    }

    /// @param at the beginning of the measurement, time since power-on
    /// @param apertureS how long it takes, above 0
    /// @param ordinal the number of the reading on this channel, for the noise
    /// @return the value in base units; temperatures in degrees Celsius
    double value(int channel, const Signal& signal, Instant at, double apertureS,
                 std::uint64_t ordinal) const;

private:
    std::uint64_t m_seed;
};

} // namespace scnsim
