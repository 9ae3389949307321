#pragma once

#include "model/option.h"

#include <cstdint>

namespace scnsim {

/// What a channel measures. None is what a channel of a switch module has.
enum class Function {
    VoltageDc,
    VoltageAc,
    Period,
    Frequency,
    Resistance,
    Resistance4W,
    Thermocouple,
    Rtd,
    Rtd4W,
    Thermistor,
    Thermistor4W,
    Capacitance,
    Diode,
    StrainDirect,
    StrainDirect4W,
    StrainQuarter,
    StrainHalfBending,
    StrainHalfPoisson,
    StrainFullBending,
    StrainFullPoisson,
    StrainFullBendingPoisson,
    CurrentDc,
    CurrentAc,
    None,
};

/// A set of functions, one bit for each.
using FunctionSet = std::uint32_t;

constexpr FunctionSet functionBit(Function function)
{
    return FunctionSet{1} << static_cast<unsigned>(function);
}

/// The facts of one function.
struct FunctionInfo
{
    Function function;
    /// The name in the command tables' spelling; its short form is what a query answers.
    const char* spelling;
    /// The unit text of an unscaled reading. Temperatures take theirs from the channel.
    const char* unit;
    /// The unit text that a channel's scaling starts with.
    const char* scaledUnit;
    bool fourWire;
    /// The integration time in power line cycles; Option::Count for a function without one.
    Option nplc;
    /// The lowest frequency in hertz; Option::Count for a function without one.
    Option lowFrequency;
    /// Offset compensation, which takes two measurements; Option::Count for a function without it.
    Option offsetCompensation;
    /// The fixed range; Option::Count for a function without ranges.
    Option range;
    /// Whether the range is automatic; Option::Count for a function without ranges.
    Option rangeAuto;
};

constexpr int kFunctionCount = 24;

/// The rows in the order of the enumeration, None included.
const FunctionInfo& functionInfo(Function function);

/// Thermocouples, resistance thermometers and thermistors.
bool isTemperature(Function function);

} // namespace scnsim
