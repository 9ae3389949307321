#pragma once

#include "model/configuration.h"
#include "model/signalsource.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace scnsim {

/// Turns the input signal into what the instrument reports: overload, temperature unit, scaling. It
/// also knows how long a measurement takes.
class Meter
{
public:
    struct Result
    {
        double value;
        std::string unit;
    };

    /// @param openChannels channels with nothing connected, which read as overload
    Meter(std::uint64_t seed, std::set<int> openChannels);

    /// A new scan begins: automatic scaling references are taken again.
    void beginScan() { m_references.clear(); }

    Result measure(int channel, const ChannelSettings& settings, Instant at);

    /// How long one reading takes with these settings: switching, channel delay, aperture.
    static Instant measuringTime(const ChannelSettings& settings);

private:
    double unscaled(int channel, const ChannelSettings& settings, Instant at);
    double scaled(int channel, const ChannelSettings& settings, double value);

    SignalSource m_source;
    std::set<int> m_openChannels;
    std::map<int, std::uint64_t> m_ordinals;
    /// First value of the scan, for each channel with an automatic reference.
    std::map<int, double> m_references;
};

} // namespace scnsim
