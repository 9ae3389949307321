#include "model/meter.h"

#include "model/mains.h"
#include "model/readingmemory.h"

#include <cmath>
#include <utility>

namespace scnsim {

namespace {

constexpr double kSwitchingS = 0.003;
/// A fixed range overloads a fifth beyond its nominal end.
constexpr double kOverRange = 1.2;
/// AC measurements last this many cycles of the lowest frequency.
constexpr double kCyclesOfLowestFrequency = 5;
/// Aperture of functions that have no setting for it.
constexpr double kFixedApertureS = 0.1;
constexpr double kMilliwatt = 1e-3;

constexpr const char* kScaledUnits[] = {"", "PCT", "DBM", "DB"};
constexpr const char* kTemperatureUnits[] = {"C", "F", "K"};

double inTemperatureUnit(double celsius, double unit)
{
    if (unit == kFahrenheit) {
        return celsius * 1.8 + 32;
    }
    return unit == kKelvin ? celsius + 273.15 : celsius;
}

bool isBeyondRange(const ChannelSettings& settings, double value)
{
    const RangeOptions& range = settings.function->range;
    return range.of == RangeOf::Reading && !settings.isOn(range.automatic) &&
           std::fabs(value) > kOverRange * settings.value(range.fixed);
}

/// Power in the reference resistance, in decibels above a milliwatt.
double decibelMilliwatt(const ChannelSettings& settings, double value)
{
    const double resistance = settings.value(Option::DbmReference);
    const double power = settings.function->power == PowerFrom::Current
                             ? value * value * resistance
                             : value * value / resistance;
    return 10 * std::log10(power / kMilliwatt);
}

double withinLimits(double value)
{
    if (std::isnan(value)) {
        return kOverload;
    }
    return std::fabs(value) > kOverload ? std::copysign(kOverload, value) : value;
}

std::string unitOf(const ChannelSettings& settings)
{
    if (settings.isOn(Option::ScaleState)) {
        const auto function = static_cast<std::size_t>(settings.value(Option::ScaleFunction));
        const std::string unit =
            function == kScaleLinear ? settings.scaledUnit : kScaledUnits[function];
        // A reading always has a unit: an empty text leaves the function's own.
        if (!unit.empty()) {
            return unit;
        }
    }
    if (settings.function->transducer) {
        return kTemperatureUnits[static_cast<std::size_t>(settings.value(Option::TemperatureUnit))];
    }
    return settings.function->unit;
}

double apertureS(const ChannelSettings& settings)
{
    const TimeOptions& time = settings.function->time;
    if (time.nplc != Option::Count) {
        return settings.value(time.nplc) / kLineFrequencyHz;
    }
    if (time.lowFrequency != Option::Count) {
        return kCyclesOfLowestFrequency / settings.value(time.lowFrequency);
    }
    return kFixedApertureS;
}

bool measuresTwice(const ChannelSettings& settings)
{
    const TimeOptions& time = settings.function->time;
    return time.offsetCompensation != Option::Count && settings.isOn(time.offsetCompensation);
}

} // namespace

Meter::Meter(std::uint64_t seed, std::set<int> openChannels)
    : m_source(seed)
    , m_openChannels(std::move(openChannels))
{
}

Meter::Result Meter::measure(int channel, const ChannelSettings& settings, Instant at)
{
    double value = unscaled(channel, settings, at);
    if (settings.isOn(Option::ScaleState) && std::fabs(value) < kOverload) {
        value = scaled(channel, settings, value);
    }
    return {withinLimits(value), unitOf(settings)};
}

Instant Meter::measuringTime(const ChannelSettings& settings)
{
    const double delayS = settings.isOn(Option::DelayAuto) ? 0 : settings.value(Option::Delay);
    const double measuringS = apertureS(settings) * (measuresTwice(settings) ? 2 : 1);
    const std::chrono::duration<double> seconds(kSwitchingS + delayS + measuringS);
    return std::chrono::round<Instant>(seconds);
}

double Meter::unscaled(int channel, const ChannelSettings& settings, Instant at)
{
    const double value = m_source.value(channel, settings.function->signal, at, apertureS(settings),
                                        m_ordinals[channel]++);
    if (m_openChannels.count(channel) != 0) {
        return kOverload;
    }
    if (isBeyondRange(settings, value)) {
        return std::copysign(kOverload, value);
    }
    return settings.function->transducer
               ? inTemperatureUnit(value, settings.value(Option::TemperatureUnit))
               : value;
}

double Meter::scaled(int channel, const ChannelSettings& settings, double value)
{
    switch (static_cast<int>(settings.value(Option::ScaleFunction))) {
    case kScalePercent: {
        double reference = settings.value(Option::ScaleReference);
        if (settings.isOn(Option::ScaleReferenceAuto)) {
            reference = m_references.emplace(channel, value).first->second;
        }
        return 100 * (value - reference) / reference;
    }
    case kScaleDbm:
        return decibelMilliwatt(settings, value);
    case kScaleDb:
        return decibelMilliwatt(settings, value) - settings.value(Option::DbReference);
    default:
        return value * settings.value(Option::ScaleGain) + settings.value(Option::ScaleOffset);
    }
}

} // namespace scnsim
