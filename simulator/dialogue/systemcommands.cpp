#include "dialogue/commands.h"
#include "model/channelnumber.h"
#include "model/module.h"
#include "scpi/response.h"

#include <algorithm>
#include <cmath>

namespace scnsim {

namespace {

constexpr const char* kModuleMaker = "SCN";
constexpr const char* kModuleRevision = "01.02";
constexpr const char* kPersonality = "SCN4070A";
constexpr int kLeastRowLimit = 65536;
constexpr int kGreatestRowLimit = 100000;
constexpr std::size_t kLongestStateName = 40;
constexpr int kMsPerMinute = 60000;
constexpr const char* kTimeTypes[] = {"RELative", "ABSolute"};
/// Where the time of day starts in a time stamp, behind the date and a comma.
constexpr std::size_t kTimeOfDay = 11;

std::string takeError(CommandContext& s)
{
    return s.errors.pop();
}

std::string errorCount(CommandContext& s)
{
    return signedInteger(static_cast<long long>(s.errors.count()));
}

/// Maker, model, serial number, revision. An empty slot has "0" as its model.
CommandResult moduleInSlot(CommandContext& s, Arguments& a)
{
    const int slot = a.integer(1, kLastSlot);
    if (!a.ok()) {
        return refuse(a.error());
    }
    const std::optional<int> type = s.instrument.moduleType(slot);
    const std::string model = type ? module::modelText(*type) : "0";
    const std::string revision = type ? kModuleRevision : "0";
    return answer(std::string(kModuleMaker) + "," + model + ",0," + revision);
}

CommandResult setDate(CommandContext& s, Arguments& a)
{
    const int year = a.integer(0, 9999);
    const int month = a.integer(1, 12);
    const int day = a.integer(1, 31);
    if (!a.ok()) {
        return refuse(a.error());
    }
    if (!isValidDate(year, month, day)) {
        return refuse(ErrorCode::DataOutOfRange);
    }
    s.instrument.clock().setDate(year, month, day, s.now);
    return done();
}

std::string clockText(const CommandContext& s)
{
    return timeStampText(s.instrument.clock().read(s.now));
}

std::string date(CommandContext& s)
{
    return clockText(s).substr(0, kTimeOfDay - 1);
}

CommandResult setTime(CommandContext& s, Arguments& a)
{
    const int hour = a.integer(0, 23);
    const int minute = a.integer(0, 59);
    const double seconds = a.number(0, 59.9999);
    if (!a.ok()) {
        return refuse(a.error());
    }
    const int ms = std::min(kMsPerMinute - 1, static_cast<int>(std::lround(seconds * 1000)));
    s.instrument.clock().setTime(hour, minute, ms / 1000, ms % 1000, s.now);
    return done();
}

std::string timeOfDay(CommandContext& s)
{
    return clockText(s).substr(kTimeOfDay);
}

std::string scanStartTime(CommandContext& s)
{
    return timeStampText(fromMilliseconds(s.instrument.scan().startStampMs()));
}

std::string personality(CommandContext&)
{
    return quoted(kPersonality);
}

CommandResult setStateName(CommandContext& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    const std::string name = a.text(kLongestStateName);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.stateName(number) = name;
    return done();
}

CommandResult stateName(CommandContext& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    return a.ok() ? answer(quoted(s.instrument.stateName(number))) : refuse(a.error());
}

CommandResult isStateStored(CommandContext& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    return a.ok() ? answer(switchText(s.instrument.isStateStored(number))) : refuse(a.error());
}

CommandResult setSwitch(Arguments& a, bool& target)
{
    const bool on = a.onOff();
    if (!a.ok()) {
        return refuse(a.error());
    }
    target = on;
    return done();
}

/// An on/off setting of the mainframe, found through the members that lead to it.
template <auto Group, auto Member>
CommandResult setGroupSwitch(CommandContext& s, Arguments& a)
{
    return setSwitch(a, s.instrument.configuration().*Group.*Member);
}

template <auto Group, auto Member>
std::string groupSwitch(CommandContext& s)
{
    return switchText(s.instrument.configuration().*Group.*Member);
}

CommandResult setMonitor(CommandContext& s, Arguments& a)
{
    return setSwitch(a, s.instrument.configuration().monitor);
}

std::string monitor(CommandContext& s)
{
    return switchText(s.instrument.configuration().monitor);
}

CommandResult setTimeType(CommandContext& s, Arguments& a)
{
    const std::size_t type = a.word(kTimeTypes);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.configuration().format.absoluteTime = type == 1;
    return done();
}

std::string timeType(CommandContext& s)
{
    return s.instrument.configuration().format.absoluteTime ? "ABS" : "REL";
}

CommandResult setRowLimitCount(CommandContext& s, Arguments& a)
{
    const double rows = a.number(kLeastRowLimit, kGreatestRowLimit, kLeastRowLimit);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.configuration().log.rowLimitCount = static_cast<int>(std::lround(rows));
    return done();
}

std::string rowLimitCount(CommandContext& s)
{
    return longNumber(s.instrument.configuration().log.rowLimitCount);
}

std::string operationCondition(CommandContext& s)
{
    return signedInteger(s.instrument.operationCondition());
}

std::string operationEvents(CommandContext& s)
{
    return signedInteger(s.instrument.takeOperationEvents());
}

using C = Configuration;
using R = ReadingFormat;
using L = LogSettings;

constexpr CommandRow kCommands[] = {
    {"FORMat:READing:ALARm", setGroupSwitch<&C::format, &R::alarm>,
     ask<groupSwitch<&C::format, &R::alarm>>},
    {"FORMat:READing:CHANnel", setGroupSwitch<&C::format, &R::channel>,
     ask<groupSwitch<&C::format, &R::channel>>},
    {"FORMat:READing:TIME", setGroupSwitch<&C::format, &R::time>,
     ask<groupSwitch<&C::format, &R::time>>},
    {"FORMat:READing:TIME:TYPE", setTimeType, ask<timeType>},
    {"FORMat:READing:UNIT", setGroupSwitch<&C::format, &R::unit>,
     ask<groupSwitch<&C::format, &R::unit>>},
    {"MEMory:STATe:NAME", setStateName, stateName},
    {"MEMory:STATe:VALid", nullptr, isStateStored},
    {"MMEMory:FORMat:READing:RLIMit[:STATe]", setGroupSwitch<&C::log, &L::rowLimit>,
     ask<groupSwitch<&C::log, &L::rowLimit>>},
    {"MMEMory:FORMat:READing:RLIMit:COUNt", setRowLimitCount, ask<rowLimitCount>},
    {"MMEMory:LOG[:ENABle]", setGroupSwitch<&C::log, &L::enabled>,
     ask<groupSwitch<&C::log, &L::enabled>>},
    {"ROUTe:MONitor[:STATe]", setMonitor, ask<monitor>},
    {"STATus:OPERation:CONDition", nullptr, ask<operationCondition>},
    {"STATus:OPERation[:EVENt]", nullptr, ask<operationEvents>},
    {"SYSTem:CTYPe", nullptr, moduleInSlot},
    {"SYSTem:DATE", setDate, ask<date>},
    {"SYSTem:ERRor[:NEXT]", nullptr, ask<takeError>},
    {"SYSTem:ERRor:COUNt", nullptr, ask<errorCount>},
    {"SYSTem:PERSonality:MODel", nullptr, ask<personality>},
    {"SYSTem:PERSonality:MODel:DEFault", nullptr, ask<personality>},
    {"SYSTem:TIME", setTime, ask<timeOfDay>},
    {"SYSTem:TIME:SCAN", nullptr, ask<scanStartTime>},
};

} // namespace

Facts<CommandRow> systemCommands()
{
    return kCommands;
}

} // namespace scnsim
