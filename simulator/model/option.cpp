#include "model/option.h"

#include <algorithm>
#include <iterator>

namespace scnsim {

namespace {

using O = Option;
using K = OptionKind;

constexpr double kVoltRanges[] = {0.1, 1, 10, 100, 300};
constexpr double kOhmRanges[] = {1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr double kFaradRanges[] = {1e-9, 1e-8, 1e-7, 1e-6, 1e-5, 1e-4};
constexpr double kAmpereRanges[] = {1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1};
constexpr double kPowerLineCycles[] = {0.02, 0.2, 1, 10, 100};
constexpr double kBandwidths[] = {3, 20, 200};
constexpr double kThermistorOhms[] = {2252, 5000, 10000};
constexpr double kRtdTypes[] = {85, 91};
constexpr double kDbmOhms[] = {50,  75,  93,  110, 124, 125,  135,  150, 250,
                               300, 500, 600, 800, 900, 1000, 1200, 8000};
constexpr const char* kThermocouples[] = {"B", "E", "J", "K", "N", "R", "S", "T"};
constexpr const char* kJunctions[] = {"INTernal", "FIXed"};
constexpr const char* kTemperatureUnits[] = {"C", "F", "K"};
constexpr const char* kScaleFunctions[] = {"SCALe", "PCT", "DBM", "DB"};

/// The highest frequency that a bandwidth's lower limit accepts.
constexpr double kHighestBand = 300000;
constexpr double kLongestDelayS = 60;
/// Scaling values and references are limited to what fifteen digits can show.
constexpr double kScaleLimit = 1e15;

constexpr OptionInfo range(O option, Facts<double> values, double initial, O automatic)
{
    return {option, K::StepUp, 0, values.data[values.size - 1], initial, values, {}, automatic};
}

constexpr OptionInfo onOff(O option, bool initial)
{
    return {option, K::Switch, 0, 1, initial ? 1.0 : 0.0, {}, {}, O::Count};
}

constexpr OptionInfo cycles(O option)
{
    return {option, K::StepUp, 0.02, 100, 1, kPowerLineCycles, {}, O::Count};
}

constexpr OptionInfo band(O option)
{
    return {option, K::StepDown, 3, kHighestBand, 20, kBandwidths, {}, O::Count};
}

constexpr OptionInfo listed(O option, Facts<double> values, double initial)
{
    return {option, K::Listed, values.data[0], values.data[values.size - 1], initial,
            values, {},        O::Count};
}

constexpr OptionInfo choice(O option, Facts<const char*> words, double initial)
{
    return {option,  K::Choice, 0,     static_cast<double>(words.size - 1),
            initial, {},        words, O::Count};
}

constexpr OptionInfo number(O option, double minimum, double maximum, double initial,
                            O turnsOff = O::Count)
{
    return {option, K::Number, minimum, maximum, initial, {}, {}, turnsOff};
}

constexpr OptionInfo kOptions[] = {
    range(O::VoltDcRange, kVoltRanges, 10, O::VoltDcRangeAuto),
    onOff(O::VoltDcRangeAuto, true),
    range(O::VoltAcRange, kVoltRanges, 10, O::VoltAcRangeAuto),
    onOff(O::VoltAcRangeAuto, true),
    range(O::PeriodRange, kVoltRanges, 10, O::PeriodRangeAuto),
    onOff(O::PeriodRangeAuto, true),
    range(O::FreqRange, kVoltRanges, 10, O::FreqRangeAuto),
    onOff(O::FreqRangeAuto, true),
    range(O::ResRange, kOhmRanges, 1e3, O::ResRangeAuto),
    onOff(O::ResRangeAuto, true),
    range(O::FresRange, kOhmRanges, 1e3, O::FresRangeAuto),
    onOff(O::FresRangeAuto, true),
    range(O::CapRange, kFaradRanges, 1e-6, O::CapRangeAuto),
    onOff(O::CapRangeAuto, true),
    range(O::CurrDcRange, kAmpereRanges, 1e-1, O::CurrDcRangeAuto),
    onOff(O::CurrDcRangeAuto, true),
    range(O::CurrAcRange, kAmpereRanges, 1e-1, O::CurrAcRangeAuto),
    onOff(O::CurrAcRangeAuto, true),
    range(O::StrainRange, kVoltRanges, 0.1, O::StrainRangeAuto),
    onOff(O::StrainRangeAuto, true),
    cycles(O::VoltDcNplc),
    cycles(O::ResNplc),
    cycles(O::FresNplc),
    cycles(O::TempNplc),
    cycles(O::StrainNplc),
    cycles(O::CurrDcNplc),
    cycles(O::DiodeNplc),
    band(O::VoltAcBand),
    band(O::CurrAcBand),
    band(O::PeriodBand),
    band(O::FreqBand),
    onOff(O::ResCompensation, false),
    onOff(O::FresCompensation, false),
    number(O::Delay, 0, kLongestDelayS, 0, O::DelayAuto),
    onOff(O::DelayAuto, true),
    onOff(O::InputImpedanceAuto, false),
    number(O::VoltReference, -kScaleLimit, kScaleLimit, 0),
    choice(O::TcType, kThermocouples, 2),
    choice(O::TcJunctionType, kJunctions, 0),
    number(O::TcJunctionTemperature, -20, 80, 20),
    onOff(O::TcCheck, false),
    onOff(O::TcReference, false),
    onOff(O::RtdReference, false),
    onOff(O::FrtdReference, false),
    onOff(O::TherReference, false),
    onOff(O::FthReference, false),
    number(O::RtdResistance, 99, 1010, 100),
    number(O::FrtdResistance, 99, 1010, 100),
    listed(O::RtdType, kRtdTypes, 85),
    listed(O::FrtdType, kRtdTypes, 85),
    listed(O::TherType, kThermistorOhms, 5000),
    listed(O::FthType, kThermistorOhms, 5000),
    choice(O::TemperatureUnit, kTemperatureUnits, kCelsius),
    number(O::GaugeFactor, 0.5, 5, 2),
    number(O::StrainResistance, 80, 1100, 120),
    number(O::Excitation, 0.9, 12, 5),
    number(O::Poisson, -0.999, 0.5, 0.3),
    number(O::ScaleGain, -kScaleLimit, kScaleLimit, 1),
    number(O::ScaleOffset, -kScaleLimit, kScaleLimit, 0),
    onOff(O::ScaleState, false),
    choice(O::ScaleFunction, kScaleFunctions, kScaleLinear),
    number(O::ScaleReference, -kScaleLimit, kScaleLimit, 0, O::ScaleReferenceAuto),
    onOff(O::ScaleReferenceAuto, true),
    listed(O::DbmReference, kDbmOhms, 600),
    number(O::DbReference, -200, 200, 0),
};

constexpr bool rowsStandInOrder()
{
    for (std::size_t i = 0; i < std::size(kOptions); ++i) {
        if (static_cast<std::size_t>(kOptions[i].option) != i) {
            return false;
        }
    }
    return std::size(kOptions) == kOptionCount;
}
static_assert(rowsStandInOrder());

} // namespace

const OptionInfo& optionInfo(Option option)
{
    return kOptions[static_cast<std::size_t>(option)];
}

const std::array<double, kOptionCount>& initialOptions()
{
    static const std::array<double, kOptionCount> values = [] {
        std::array<double, kOptionCount> initial{};
        for (std::size_t i = 0; i < kOptionCount; ++i) {
            initial[i] = kOptions[i].initial;
        }
        return initial;
    }();
    return values;
}

Refusal fitOption(Option option, double wanted, double& taken)
{
    const OptionInfo& info = optionInfo(option);
    const bool outside = wanted < info.minimum || wanted > info.maximum;
    switch (info.kind) {
    case OptionKind::Number:
        taken = wanted;
        break;
    case OptionKind::StepUp:
        if (!outside) {
            taken = *std::lower_bound(info.values.begin(), info.values.end(), wanted);
        }
        break;
    case OptionKind::StepDown:
        if (!outside) {
            taken = *std::prev(std::upper_bound(info.values.begin(), info.values.end(), wanted));
        }
        break;
    case OptionKind::Listed:
        if (!std::binary_search(info.values.begin(), info.values.end(), wanted)) {
            return Refusal::IllegalValue;
        }
        taken = wanted;
        break;
    case OptionKind::Switch:
    case OptionKind::Choice:
        taken = wanted;
        break;
    }
    return outside ? Refusal::OutOfRange : Refusal::None;
}

} // namespace scnsim
