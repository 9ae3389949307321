#include "dialogue/commands.h"
#include "scpi/response.h"

#include <limits>

namespace scnsim {

namespace {

constexpr double kLongestTimerS = 360000;
constexpr int kMostSweeps = 1000000;

constexpr const char* kSources[] = {"IMMediate", "TIMer",  "EXTernal", "BUS",
                                    "ALARm1",    "ALARm2", "ALARm3",   "ALARm4"};
constexpr const char* kSourceAnswers[] = {"IMM",   "TIM",   "EXT",   "BUS",
                                          "ALAR1", "ALAR2", "ALAR3", "ALAR4"};
constexpr std::size_t kFirstAlarm = 4;

CommandResult start(CommandContext& s, Arguments& a)
{
    return a.ok() ? outcomeOf(s.instrument.scan().start(s.now)) : refuse(a.error());
}

void abort(CommandContext& s)
{
    s.instrument.scan().abort();
}

CommandResult setScanList(CommandContext& s, Arguments& a)
{
    std::vector<int> channels = a.channelsOrNone(s.instrument);
    return a.ok() ? outcomeOf(s.instrument.setScanList(std::move(channels))) : refuse(a.error());
}

/// Plain channel numbers, no ranges.
std::string scanList(CommandContext& s)
{
    std::string list;
    for (const int channel : s.instrument.configuration().scanList) {
        list += (list.empty() ? "" : ",") + std::to_string(channel);
    }
    return definiteBlock("(@" + list + ")");
}

CommandResult setSource(CommandContext& s, Arguments& a)
{
    const std::size_t index = a.word(kSources);
    if (!a.ok()) {
        return refuse(a.error());
    }
    TriggerSettings& trigger = s.instrument.configuration().trigger;
    if (index < kFirstAlarm) {
        trigger.source = static_cast<TriggerSource>(index);
    } else {
        trigger.source = TriggerSource::Alarm;
        trigger.alarm = static_cast<int>(index - kFirstAlarm) + 1;
    }
    return done();
}

std::string source(CommandContext& s)
{
    const TriggerSettings& trigger = s.instrument.configuration().trigger;
    auto index = static_cast<std::size_t>(trigger.source);
    if (trigger.source == TriggerSource::Alarm) {
        index = kFirstAlarm + static_cast<std::size_t>(trigger.alarm - 1);
    }
    return kSourceAnswers[index];
}

CommandResult setCount(CommandContext& s, Arguments& a)
{
    const std::optional<int> count = a.countOrInfinity(1, kMostSweeps);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.configuration().trigger.count = count;
    return done();
}

std::string count(CommandContext& s)
{
    const std::optional<int> sweeps = s.instrument.configuration().trigger.count;
    return longNumber(sweeps ? *sweeps : kOverload);
}

CommandResult setTimer(CommandContext& s, Arguments& a)
{
    const double seconds = a.number(0, kLongestTimerS, TriggerSettings().timerS);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.configuration().trigger.timerS = seconds;
    return done();
}

std::string timer(CommandContext& s)
{
    return longNumber(s.instrument.configuration().trigger.timerS);
}

std::string readingCount(CommandContext& s)
{
    return signedInteger(static_cast<long long>(s.instrument.memory().count()));
}

/// One record: the value, then unit, time, channel and alarm as the format settings say. The value
/// has a sign, so a record at the front of a block never starts with a digit.
std::string record(const MemoryReading& reading, const ReadingFormat& format)
{
    std::string text = longNumber(reading.value);
    if (format.unit) {
        text += ' ' + reading.unit;
    }
    if (format.time && format.absoluteTime) {
        text += ',' + timeStampText(fromMilliseconds(reading.stampMs));
    } else if (format.time) {
        text += ',' + longNumber(static_cast<double>(reading.sinceStartMs) / 1000);
    }
    if (format.channel) {
        text += ',' + std::to_string(reading.channel);
    }
    if (format.alarm) {
        text += ',' + std::to_string(reading.alarm);
    }
    return text;
}

CommandResult takeReadings(CommandContext& s, Arguments& a)
{
    const int wanted = a.hasMore() ? a.integer(1, std::numeric_limits<int>::max())
                                   : std::numeric_limits<int>::max();
    if (!a.ok()) {
        return refuse(a.error());
    }
    std::string records;
    for (const MemoryReading& reading :
         s.instrument.memory().take(static_cast<std::size_t>(wanted))) {
        if (!records.empty()) {
            records += ',';
        }
        records += record(reading, s.instrument.configuration().format);
    }
    return answer(definiteBlock(records));
}

constexpr CommandRow kCommands[] = {
    {"ABORt", perform<abort>, nullptr},         {"DATA:POINts", nullptr, ask<readingCount>},
    {"INITiate[:IMMediate]", start, nullptr},   {"R", nullptr, takeReadings},
    {"ROUTe:SCAN", setScanList, ask<scanList>}, {"TRIGger:COUNt", setCount, ask<count>},
    {"TRIGger:SOURce", setSource, ask<source>}, {"TRIGger:TIMer", setTimer, ask<timer>},
};

} // namespace

Facts<CommandRow> scanCommands()
{
    return kCommands;
}

} // namespace scnsim
