#pragma once

#include "model/refusal.h"

#include <array>
#include <cstddef>

namespace scnsim {

/// Every channel setting that is a number, a switch or a choice. A function keeps its settings
/// while another is selected.
enum class Option : unsigned {
    VoltDcRange,
    VoltDcRangeAuto,
    VoltAcRange,
    VoltAcRangeAuto,
    PeriodRange,
    PeriodRangeAuto,
    FreqRange,
    FreqRangeAuto,
    ResRange,
    ResRangeAuto,
    FresRange,
    FresRangeAuto,
    CapRange,
    CapRangeAuto,
    CurrDcRange,
    CurrDcRangeAuto,
    CurrAcRange,
    CurrAcRangeAuto,
    StrainRange,
    StrainRangeAuto,
    VoltDcNplc,
    ResNplc,
    FresNplc,
    TempNplc,
    StrainNplc,
    CurrDcNplc,
    DiodeNplc,
    VoltAcBand,
    CurrAcBand,
    PeriodBand,
    FreqBand,
    ResCompensation,
    FresCompensation,
    Delay,
    DelayAuto,
    InputImpedanceAuto,
    VoltReference,
    TcType,
    TcJunctionType,
    TcJunctionTemperature,
    TcCheck,
    TcReference,
    RtdReference,
    FrtdReference,
    TherReference,
    FthReference,
    RtdResistance,
    FrtdResistance,
    RtdType,
    FrtdType,
    TherType,
    FthType,
    TemperatureUnit,
    GaugeFactor,
    StrainResistance,
    Excitation,
    Poisson,
    ScaleGain,
    ScaleOffset,
    ScaleState,
    ScaleFunction,
    ScaleReference,
    ScaleReferenceAuto,
    DbmReference,
    DbReference,
    Count,
};

constexpr std::size_t kOptionCount = static_cast<std::size_t>(Option::Count);

/// How a setting takes a value.
enum class OptionKind {
    Number,   ///< any number between the limits
    StepUp,   ///< rounded up to the next listed value
    StepDown, ///< rounded down to the next listed value
    Listed,   ///< one of the listed numbers, kept and answered as an integer
    Switch,   ///< 0 or 1
    Choice,   ///< the index of one of the words
};

/// A static sequence of constants.
template <typename T>
struct Facts
{
    const T* data = nullptr;
    std::size_t size = 0;

    constexpr Facts() = default;
    template <std::size_t N>
    constexpr Facts(const T (&array)[N])
        : data(array)
        , size(N)
    {
    }

    constexpr const T* begin() const { return data; }
    constexpr const T* end() const { return data + size; }
};

/// One setting. Numbers are in base units: volts, ohms, seconds, hertz, kelvins or degrees Celsius.
struct OptionInfo
{
    Option option;
    OptionKind kind;
    double minimum;
    double maximum;
    double initial;
    /// Listed values in ascending order (StepUp, StepDown, Listed).
    Facts<double> values;
    /// Words of a choice, as the command tables spell them.
    Facts<const char*> words;
    /// The switch turned off by setting this value; Option::Count for none.
    Option turnsOff;
};

const OptionInfo& optionInfo(Option option);

/// Factory values, indexed by option.
const std::array<double, kOptionCount>& initialOptions();

/// The value the setting takes: the one asked for, or the listed one it is rounded to.
/// @return OutOfRange or IllegalValue if the setting cannot take it
Refusal fitOption(Option option, double wanted, double& taken);

/// Indices of the choice words that the instrument itself uses.
enum TemperatureUnitWord { kCelsius, kFahrenheit, kKelvin };
enum ScaleFunctionWord { kScaleLinear, kScalePercent, kScaleDbm, kScaleDb };

} // namespace scnsim
