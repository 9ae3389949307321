#pragma once

#include "model/option.h"

namespace scnsim {

/// What a channel of a module can measure: nothing on a switch, or the functions with its letter.
enum class ChannelKind : unsigned { Switch, A, B, C, D, G, I, V };

/// A set of kinds, one bit each.
using ChannelKinds = unsigned;

constexpr ChannelKinds bitOf(ChannelKind kind)
{
    return 1U << static_cast<unsigned>(kind);
}

enum class Leads { Two, Four };

/// The options that decide how long a measurement takes; Option::Count for one that the function does not have.
struct TimeOptions
{
    /// Integration time in power line cycles.
    Option nplc = Option::Count;
    /// Lowest frequency in hertz.
    Option lowFrequency = Option::Count;
    /// Offset compensation, which doubles the measurement.
    Option offsetCompensation = Option::Count;
};

/// What a range limits: the reading, or the voltage at the input.
enum class RangeOf { Input, Reading };

/// The options of the range; Option::Count for a function without ranges.
struct RangeOptions
{
    Option fixed = Option::Count;
    Option automatic = Option::Count;
    RangeOf of = RangeOf::Input;
};

/// Drifting about a level; heated, then cooled; on every fourth position a capacitor, the rest drifting.
enum class SignalShape { Drifting, Heated, Discharging };

/// Level at position 1, its step per position, and how far drift, noise and mains hum move it, as
/// fractions of the level.
struct Signal
{
    SignalShape shape = SignalShape::Drifting;
    double level = 0;
    double step = 0;
    double drift = 0;
    double noise = 0;
    double hum = 0;
};

/// The quantity whose power a reading in decibels tells.
enum class PowerFrom { Nothing, Voltage, Current };

/// Everything about one function.
struct FunctionInfo
{
    /// The name as the command tables spell it; a query answers its short form.
    const char* spelling;
    /// Unit of an unscaled reading. Temperatures take it from the channel.
    const char* unit;
    /// Initial unit of a channel's scaling.
    const char* scaledUnit;
    Leads leads;
    /// The kinds of channels that offer it.
    ChannelKinds kinds;
    TimeOptions time;
    RangeOptions range;
    Signal signal;
    /// The kind of sensor, the same for two and four wires; null if it measures no temperature.
    const char* transducer = nullptr;
    PowerFrom power = PowerFrom::Nothing;
};

/// A function has one row, and its address is its identity.
struct FunctionRows
{
    const FunctionInfo* first;
    const FunctionInfo* last;

    const FunctionInfo* begin() const { return first; }
    const FunctionInfo* end() const { return last; }
};

/// The rows of all functions.
FunctionRows functions();

/// What a channel of a switch measures.
const FunctionInfo& noFunction();

inline bool offers(ChannelKind kind, const FunctionInfo& function)
{
    return (function.kinds & bitOf(kind)) != 0;
}

/// What a channel measures before it is told otherwise.
const FunctionInfo& initialFunction(ChannelKind kind);

} // namespace scnsim
