#pragma once

#include <cstdint>

#include "model/function.h"
#include "model/instant.h"

namespace scnsim {

/// What lies on the inputs: for each channel and function a level of its own that drifts slowly,
/// and a little noise. The same seed, channel, function, time and reading number give the same
/// value on every machine.
class SignalSource
{
public:
    explicit SignalSource(std::uint64_t seed)
        : m_seed(seed)
    {
    }

    /// @param ordinal the number of the reading on this channel, for the noise
    /// @return the value in base units; temperatures in degrees Celsius
    double value(int channel, Function function, Instant at, std::uint64_t ordinal) const;

private:
    std::uint64_t m_seed;
};

} // namespace scnsim
