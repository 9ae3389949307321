#include "model/signalsource.h"

#include "model/channelnumber.h"
#include "model/mains.h"

#include <cmath>

namespace scnsim {

namespace {

constexpr double kTwoPi = 6.283185307179586;
/// The noise figures are for this aperture.
constexpr double kUsualApertureS = 0.02;

/// The heater under the thermocouples: on for the first half of its cycle, off for the second.
constexpr double kHeatingS = 600;
constexpr double kRiseKelvin = 30;
constexpr double kRiseStepKelvin = 5;
constexpr double kFastestHeatingS = 40;

/// The capacitor on direct voltage at every n-th position.
constexpr int kCapacitorEvery = 4;
constexpr double kChargedVolts = 10;
constexpr double kRechargeS = 240;
constexpr double kFastestDischargeS = 30;

/// Spreads a number's bits over all 64 (the finalizer of the splitmix generator).
std::uint64_t scrambled(std::uint64_t x)
{
    x += 0x9E3779B97F4A7C15U;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
}

/// The number as a fraction from 0 up to 1.
double fraction(std::uint64_t x)
{
    return static_cast<double>(x >> 11) * 0x1.0p-53;
}

/// How far the heater is towards its final temperature, 0 to 1.
double warmth(double seconds, double timeConstantS)
{
    const double inCycle = std::fmod(seconds, 2 * kHeatingS);
    return inCycle < kHeatingS ? 1 - std::exp(-inCycle / timeConstantS)
                               : std::exp(-(inCycle - kHeatingS) / timeConstantS);
}

/// What the shapes of a signal depend on.
struct Place
{
    double level;
    int position;
    std::uint64_t own; ///< a number of the channel's own
};

double drifting(const Signal& signal, const Place& place, double seconds)
{
    const double periodS = 60 + 120 * fraction(scrambled(place.own));
    const double turns = seconds / periodS + fraction(place.own);
    return place.level * (1 + signal.drift * std::sin(kTwoPi * turns));
}

double heated(const Place& place, double seconds)
{
    const double rise = kRiseKelvin + kRiseStepKelvin * (place.position - 1);
    const double timeConstantS = kFastestHeatingS * (1 + 0.5 * fraction(place.own));
    return place.level + rise * warmth(seconds, timeConstantS);
}

double discharging(const Place& place, double seconds)
{
    const double timeConstantS = kFastestDischargeS * (1 + fraction(place.own));
    return kChargedVolts * std::exp(-std::fmod(seconds, kRechargeS) / timeConstantS);
}

/// The input signal before noise and hum.
double cleanValue(const Signal& signal, const Place& place, double seconds)
{
    switch (signal.shape) {
    case SignalShape::Heated:
        return heated(place, seconds);
    case SignalShape::Discharging:
        if (place.position % kCapacitorEvery == 0) {
            return discharging(place, seconds);
        }
        break;
    case SignalShape::Drifting:
        break;
    }
    return drifting(signal, place, seconds);
}

/// Mean of the mains sine over the aperture, -1 to 1; zero for whole cycles.
double hum(double seconds, double apertureS, std::uint64_t own)
{
    const double begin = kTwoPi * (std::fmod(seconds * kLineFrequencyHz, 1.0) + fraction(own));
    const double turn = kTwoPi * kLineFrequencyHz * apertureS;
    return (std::cos(begin) - std::cos(begin + turn)) / turn;
}

/// From -1 to 1, most often near 0.
double noise(std::uint64_t own, std::uint64_t ordinal)
{
    const std::uint64_t dice = scrambled(own + ordinal * 2 + 1);
    // The sum of two uniform distributions is a triangle.
    return fraction(dice) + fraction(scrambled(dice)) - 1;
}

} // namespace

double SignalSource::value(int channel, const Signal& signal, Instant at, double apertureS,
                           std::uint64_t ordinal) const
{
    const std::uint64_t own = scrambled(m_seed ^ scrambled(static_cast<std::uint64_t>(channel)));
    const int position = positionOf(channel);
    const Place place = {signal.level + signal.step * (position - 1), position, own};
    const double seconds = std::chrono::duration<double>(at).count();
    const double noisePart =
        signal.noise * std::sqrt(kUsualApertureS / apertureS) * noise(own, ordinal);
    const double humPart = signal.hum * hum(seconds, apertureS, own);
    return cleanValue(signal, place, seconds) + place.level * (noisePart + humPart);
}

} // namespace scnsim
