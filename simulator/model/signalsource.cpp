#include "model/signalsource.h"

#include <cmath>

namespace scnsim {

namespace {

constexpr double kTwoPi = 6.283185307179586;

/// Level at position 1, its growth from one position to the next, and how far drift and noise
/// move it, as parts of the level.
struct SignalRow
{
    Function function;
    double level;
    double step;
    double drift;
    double noise;
};

using F = Function;

constexpr SignalRow kSignals[] = {
    {F::VoltageDc, 1, 0.25, 0.02, 1e-4},
    {F::VoltageAc, 2, 0.1, 0.02, 5e-4},
    {F::Period, 0.02, 0.001, 1e-3, 1e-6},
    {F::Frequency, 50, 10, 1e-3, 1e-6},
    {F::Resistance, 100, 100, 0.005, 1e-5},
    {F::Resistance4W, 100, 100, 0.005, 1e-6},
    {F::Thermocouple, 25, 1.5, 0.05, 1e-3},
    {F::Rtd, 22, 0.5, 0.05, 2e-4},
    {F::Rtd4W, 22, 0.5, 0.05, 1e-4},
    {F::Thermistor, 23, 0.4, 0.05, 5e-4},
    {F::Thermistor4W, 23, 0.4, 0.05, 3e-4},
    {F::Capacitance, 1e-7, 1e-8, 0.003, 1e-4},
    {F::Diode, 0.6, 0.002, 0.01, 1e-5},
    {F::StrainDirect, 1e-4, 1e-5, 0.2, 1e-3},
    {F::StrainDirect4W, 1e-4, 1e-5, 0.2, 1e-3},
    {F::StrainQuarter, 2e-4, 1e-5, 0.2, 1e-3},
    {F::StrainHalfBending, 2e-4, 1e-5, 0.2, 1e-3},
    {F::StrainHalfPoisson, 2e-4, 1e-5, 0.2, 1e-3},
    {F::StrainFullBending, 4e-4, 1e-5, 0.2, 1e-3},
    {F::StrainFullPoisson, 4e-4, 1e-5, 0.2, 1e-3},
    {F::StrainFullBendingPoisson, 4e-4, 1e-5, 0.2, 1e-3},
    {F::CurrentDc, 0.01, 0.002, 0.02, 1e-4},
    {F::CurrentAc, 0.02, 0.002, 0.02, 5e-4},
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

/// Spreads the bits of a number over all 64 (the finalizer of the splitmix generator).
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

} // namespace

double SignalSource::value(int channel, Function function, Instant at, std::uint64_t ordinal) const
{
    const SignalRow* const row = rowOf(function);
    if (row == nullptr) {
        return 0;
    }
    const std::uint64_t own = scrambled(m_seed ^ scrambled(static_cast<std::uint64_t>(channel)));
    const double level = row->level + row->step * (channel % 100 - 1);
    const double periodS = 60 + 120 * fraction(scrambled(own));
    const double seconds = std::chrono::duration<double>(at).count();
    const double drift = std::sin(kTwoPi * (seconds / periodS + fraction(own)));
    const std::uint64_t dice = scrambled(own + ordinal * 2 + 1);
    // The sum of two even distributions is a triangle from -1 to 1.
    const double noise = fraction(dice) + fraction(scrambled(dice)) - 1;
    return level * (1 + row->drift * drift + row->noise * noise);
}

} // namespace scnsim
