#pragma once

#include "model/option.h"

#include <cstdint>

namespace scnsim {

/// What a channel measures. None: a channel of a switch module.
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

/// A set of functions, one bit each.
using FunctionSet = std::uint32_t;

constexpr FunctionSet functionBit(Function function)
{
    return FunctionSet{1} << static_cast<unsigned>(function);
}

/// The facts of one function.
struct FunctionInfo
{
    Function function;
    /// The name as the command tables spell it; a query answers its short form.
    const char* spelling;
    /// Unit of an unscaled reading. Temperatures take it from the channel.
    const char* unit;
    /// Initial unit of a channel's scaling.
    const char* scaledUnit;
    bool fourWire;
    /// Integration time in power line cycles; Option::Count for a function without one.
    Option nplc;
    /// Lowest frequency in hertz; Option::Count for a function without one.
    Option lowFrequency;
    /// Offset compensation, which doubles the measurement; Option::Count for a function without it.
    Option offsetCompensation;
    /// Fixed range; Option::Count for a function without ranges.
    Option range;
    /// Autorange; Option::Count for a function without ranges.
    Option rangeAuto;
};

constexpr int kFunctionCount = 24;

/// The rows in enumeration order, None included.
const FunctionInfo& functionInfo(Function function);

/// Thermocouples, resistance thermometers and thermistors.
bool isTemperature(Function function);

} // namespace scnsim
