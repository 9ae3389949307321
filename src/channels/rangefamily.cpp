#include "channels/rangefamily.h"

#include <algorithm>
#include <cmath>

namespace scn {

namespace {

constexpr FixedRanges kVoltage = {
    RangeFamily::Voltage, 0.1, {"+/-100mV", "+/-1V", "+/-10V", "+/-100V", "+/-300V"}};
constexpr FixedRanges kResistance = {
    RangeFamily::Resistance, 100.0, {"100", "1K", "10K", "100K", "1M", "10M", "100M", "1G"}};
constexpr FixedRanges kCapacitance = {
    RangeFamily::Capacitance, 1e-9, {"1nF", "10nF", "100nF", "1μF", "10μF", "100μF"}};
constexpr FixedRanges kCurrent = {
    RangeFamily::Current, 1e-6, {"1μA", "10μA", "100μA", "1mA", "10mA", "100mA", "1A"}};

constexpr std::array<double, 10> kDecades = {0.1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};

// The top voltage range is no decade.
constexpr int kTopVoltageRow = 5;
constexpr double kTopVoltage = 300.0;

constexpr double kRelativePrecision = 1e12;

} // namespace

double FixedRanges::valueOf(int row) const
{
    if (row < 0 || row >= static_cast<int>(kDecades.size())) {
        return 0.0;
    }
    if (family == RangeFamily::Voltage && row == kTopVoltageRow) {
        return kTopVoltage;
    }
    return base * kDecades[static_cast<std::size_t>(row)];
}

int FixedRanges::rowOf(double value) const
{
    // The instrument writes the top range exactly.
    if (family == RangeFamily::Voltage && value == kTopVoltage) {
        return kTopVoltageRow;
    }
    const double ratio = value / base;
    const auto* const decade =
        std::find_if(kDecades.cbegin(), kDecades.cend(), [ratio](double power) {
            return std::abs(ratio - power) * kRelativePrecision <= std::min(std::abs(ratio), power);
        });
    return decade != kDecades.cend() ? static_cast<int>(decade - kDecades.cbegin()) : -1;
}

const FixedRanges* rangesOf(const MeasurementFunction* function)
{
    if (!function) {
        return nullptr;
    }
    switch (function->ranges) {
    case RangeFamily::Voltage:
        return &kVoltage;
    case RangeFamily::Resistance:
        return &kResistance;
    case RangeFamily::Capacitance:
        return &kCapacitance;
    case RangeFamily::Current:
        return &kCurrent;
    case RangeFamily::None:
        break;
    }
    return nullptr;
}

} // namespace scn
