#pragma once

#include "model/function.h"
#include "model/option.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace scnsim {

/// Everything that can be set on one channel.
struct ChannelSettings
{
    /// The factory settings of a channel that starts with this function.
    explicit ChannelSettings(Function initialFunction);

    double value(Option option) const { return options[static_cast<std::size_t>(option)]; }
    bool isOn(Option option) const { return value(option) != 0; }
    void set(Option option, double value) { options[static_cast<std::size_t>(option)] = value; }

    Function function;
    std::array<double, kOptionCount> options;
    std::string label;
    /// The unit text of scaled readings.
    std::string scaledUnit;
};

enum class TriggerSource { Immediate, Timer, External, Bus, Alarm };

constexpr int kAlarmCount = 4;

struct TriggerSettings
{
    TriggerSource source = TriggerSource::Immediate;
    /// The alarm that triggers, 1 to kAlarmCount; only for the source Alarm.
    int alarm = 1;
    double timerS = 10;
    /// Number of sweeps; none: until aborted.
    std::optional<int> count;
};

/// Which fields a fetched reading carries beside its value.
struct ReadingFormat
{
    bool unit = false;
    bool time = false;
    bool absoluteTime = false;
    bool channel = false;
    bool alarm = false;
};

/// Settings of the instrument's own log file, which this double does not write.
struct LogSettings
{
    bool enabled = false;
    bool rowLimit = true;
    int rowLimitCount = 65536;
};

/// The instrument's whole state that can be stored and recalled.
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
