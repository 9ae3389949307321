#include "model/signalsource.h"

#include <cmath>

namespace scnsim {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kLineFrequencyHz = 50;
/// The noise figures are for this aperture.
constexpr double kUsualApertureS = 0.02;

/// The heater under the thermocouples: on for the first half of its cycle, off for the second.
constexpr double kRoomCelsius = 21;
constexpr double kHeatingS = 600;
constexpr double kRiseKelvin = 30;
constexpr double kRiseStepKelvin = 5;
constexpr double kFastestHeatingS = 40;

/// The capacitor on direct voltage at every n-th position.
constexpr int kCapacitorEvery = 4;
constexpr double kChargedVolts = 10;
constexpr double kRechargeS = 240;
constexpr double kFastestDischargeS = 30;

/// Level at position 1, its step per position, and how far drift, noise and mains hum move it, as
/// fractions of the level.
struct SignalRow
{
    Function function;
    double level;
    double step;
    double drift;
    double noise;
    double hum;
};

using F = Function;

constexpr SignalRow kSignals[] = {
    {F::VoltageDc, 1, 0.25, 0.02, 1e-4, 0.02},
    {F::VoltageAc, 2, 0.1, 0.02, 5e-4, 0},
    {F::Period, 0.02, 0.001, 1e-3, 1e-6, 0},
    {F::Frequency, 50, 10, 1e-3, 1e-6, 0},
    {F::Resistance, 100, 100, 0.005, 1e-5, 2e-3},
    {F::Resistance4W, 100, 100, 0.005, 1e-6, 1e-3},
    {F::Thermocouple, kRoomCelsius, 0, 0, 1e-3, 0.05},
    {F::Rtd, 22, 0.5, 0.05, 2e-4, 5e-3},
    {F::Rtd4W, 22, 0.5, 0.05, 1e-4, 2e-3},
    {F::Thermistor, 23, 0.4, 0.05, 5e-4, 1e-3},
    {F::Thermistor4W, 23, 0.4, 0.05, 3e-4, 1e-3},
    {F::Capacitance, 1e-7, 1e-8, 0.003, 1e-4, 0},
    {F::Diode, 0.6, 0.002, 0.01, 1e-5, 1e-3},
    {F::StrainDirect, 1e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainDirect4W, 1e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainQuarter, 2e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainHalfBending, 2e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainHalfPoisson, 2e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainFullBending, 4e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainFullPoisson, 4e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::StrainFullBendingPoisson, 4e-4, 1e-5, 0.2, 1e-3, 0.02},
    {F::CurrentDc, 0.01, 0.002, 0.02, 1e-4, 5e-3},
    {F::CurrentAc, 0.02, 0.002, 0.02, 5e-4, 0},
};

const SignalRow* rowOf(Function function)
{
    for (const SignalRow& row : kSignals) {
        if (row.function == function) {
            return &row;
        }
    }
    return nullptr;
}

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

/// The input signal before noise and hum.
/// @param own a number of the channel's own
double cleanValue(const SignalRow& row, double level, int position, std::uint64_t own,
                  double seconds)
{
    const double variety = fraction(own);
    if (row.function == F::Thermocouple) {
        const double rise = kRiseKelvin + kRiseStepKelvin * (position - 1);
        return kRoomCelsius + rise * warmth(seconds, kFastestHeatingS * (1 + 0.5 * variety));
    }
    if (row.function == F::VoltageDc && position % kCapacitorEvery == 0) {
        const double timeConstantS = kFastestDischargeS * (1 + variety);
        return kChargedVolts * std::exp(-std::fmod(seconds, kRechargeS) / timeConstantS);
    }
    const double periodS = 60 + 120 * fraction(scrambled(own));
    return level * (1 + row.drift * std::sin(kTwoPi * (seconds / periodS + variety)));
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

double SignalSource::value(int channel, Function function, Instant at, double apertureS,
                           std::uint64_t ordinal) const
{
    const SignalRow* const row = rowOf(function);
    if (row == nullptr) {
        return 0;
    }
    const int position = channel % 100;
    const std::uint64_t own = scrambled(m_seed ^ scrambled(static_cast<std::uint64_t>(channel)));
    const double level = row->level + row->step * (position - 1);
    const double seconds = std::chrono::duration<double>(at).count();
    const double noisePart =
        row->noise * std::sqrt(kUsualApertureS / apertureS) * noise(own, ordinal);
    const double humPart = row->hum * hum(seconds, apertureS, own);
    return cleanValue(*row, level, position, own, seconds) + level * (noisePart + humPart);
}

} // namespace scnsim
