#pragma once

#include "model/function.h"
#include "model/option.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace scnsim {

/// All settings of one channel.
struct ChannelSettings
{
    /// Factory settings of a channel whose default function this is.
    explicit ChannelSettings(const FunctionInfo& initial);

    double value(Option option) const { return options[static_cast<std::size_t>(option)]; }
    bool isOn(Option option) const { return value(option) != 0; }
    void set(Option option, double value) { options[static_cast<std::size_t>(option)] = value; }

    const FunctionInfo* function;
    std::array<double, kOptionCount> options;
    std::string label;
    /// Unit of scaled readings.
    std::string scaledUnit;
};

enum class TriggerSource { Immediate, Timer, External, Bus, Alarm };

constexpr int kAlarmCount = 4;

struct TriggerSettings
{
    TriggerSource source = TriggerSource::Immediate;
    /// The triggering alarm, 1 to kAlarmCount; only for the source Alarm.
    int alarm = 1;
    double timerS = 10;
    /// Number of sweeps; none: until aborted.
    std::optional<int> count;
};

/// Which fields a fetched reading has beside its value.
struct ReadingFormat
{
    bool unit = false;
    bool time = false;
    bool absoluteTime = false;
    bool channel = false;
    bool alarm = false;
};

/// Settings of the instrument's own log file, which the simulator stores but never writes.
struct LogSettings
{
    bool enabled = false;
    bool rowLimit = true;
    int rowLimitCount = 65536;
};

/// The complete instrument state, as saved and recalled.
struct Configuration
{
    std::map<int, ChannelSettings> channels;
    /// Channel numbers in ascending order.
    std::vector<int> scanList;
    TriggerSettings trigger;
    ReadingFormat format;
    LogSettings log;
    bool monitor = false;
};

} // namespace scnsim
