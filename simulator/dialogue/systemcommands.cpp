#include <algorithm>
#include <cmath>

#include "dialogue/commands.h"
#include "model/module.h"
#include "scpi/response.h"

namespace scnsim {

namespace {

constexpr const char* kModuleMaker = "SCN";
constexpr const char* kModuleRevision = "01.02";
constexpr const char* kPersonality = "SCN4070A";
constexpr int kLeastRowLimit = 65536;
constexpr int kGreatestRowLimit = 100000;
constexpr std::size_t kLongestStateName = 40;
constexpr const char* kTimeTypes[] = {"RELative", "ABSolute"};

Outcome takeError(Session& s, Arguments& a)
{
    return a.ok() ? answer(s.errors.pop()) : refuse(a.error());
}

Outcome errorCount(Session& s, Arguments& a)
{
    return a.ok() ? answer(signedInteger(static_cast<long long>(s.errors.count())))
                  : refuse(a.error());
}

Outcome moduleInSlot(Session& s, Arguments& a)
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

Outcome setDate(Session& s, Arguments& a)
{
    const int year = a.integer(2000, 2099);
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

Outcome date(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    // The first ten characters are the date.
    return answer(timeStampText(s.instrument.clock().read(s.now)).substr(0, 10));
}

Outcome setTime(Session& s, Arguments& a)
{
    const int hour = a.integer(0, 23);
    const int minute = a.integer(0, 59);
    const double seconds = a.number(0, 59.9999);
    if (!a.ok()) {
        return refuse(a.error());
    }
    const int milliseconds = std::min(59999, static_cast<int>(std::lround(seconds * 1000)));
    s.instrument.clock().setTime(hour, minute, milliseconds / 1000, milliseconds % 1000, s.now);
    return done();
}

Outcome time(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    return answer(timeStampText(s.instrument.clock().read(s.now)).substr(11));
}

Outcome scanStartTime(Session& s, Arguments& a)
{
    return a.ok() ? answer(timeStampText(fromMilliseconds(s.instrument.scan().startStampMs())))
                  : refuse(a.error());
}

Outcome personality(Session&, Arguments& a)
{
    return a.ok() ? answer(quoted(kPersonality)) : refuse(a.error());
}

Outcome setStateName(Session& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    const std::string name = a.text(kLongestStateName);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.stateName(number) = name;
    return done();
}

Outcome stateName(Session& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    return a.ok() ? answer(quoted(s.instrument.stateName(number))) : refuse(a.error());
}

Outcome isStateStored(Session& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    return a.ok() ? answer(switchText(s.instrument.isStateStored(number))) : refuse(a.error());
}

Outcome setSwitch(Arguments& a, bool& target)
{
    const bool on = a.onOff();
    if (!a.ok()) {
        return refuse(a.error());
    }
    target = on;
    return done();
}

Outcome querySwitch(Arguments& a, bool value)
{
    return a.ok() ? answer(switchText(value)) : refuse(a.error());
}

/// A switch of the instrument as a whole, found by the path to it.
template <auto Group, auto Member>
Outcome setGroupSwitch(Session& s, Arguments& a)
{
    return setSwitch(a, s.instrument.configuration().*Group.*Member);
}

template <auto Group, auto Member>
Outcome queryGroupSwitch(Session& s, Arguments& a)
{
    return querySwitch(a, s.instrument.configuration().*Group.*Member);
}

Outcome setTimeType(Session& s, Arguments& a)
{
    const std::size_t type = a.word(kTimeTypes);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.configuration().format.absoluteTime = type == 1;
    return done();
}

Outcome timeType(Session& s, Arguments& a)
{
    const bool absolute = s.instrument.configuration().format.absoluteTime;
    return a.ok() ? answer(absolute ? "ABS" : "REL") : refuse(a.error());
}

Outcome setRowLimitCount(Session& s, Arguments& a)
{
    const double rows = a.number(kLeastRowLimit, kGreatestRowLimit, kLeastRowLimit);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.configuration().log.rowLimitCount = static_cast<int>(std::lround(rows));
    return done();
}

Outcome rowLimitCount(Session& s, Arguments& a)
{
    return a.ok() ? answer(longNumber(s.instrument.configuration().log.rowLimitCount))
                  : refuse(a.error());
}

Outcome setMonitor(Session& s, Arguments& a)
{
    return setSwitch(a, s.instrument.configuration().monitor);
}

Outcome monitor(Session& s, Arguments& a)
{
    return querySwitch(a, s.instrument.configuration().monitor);
}

Outcome operationCondition(Session& s, Arguments& a)
{
    return a.ok() ? answer(signedInteger(s.instrument.operationCondition())) : refuse(a.error());
}

Outcome operationEvents(Session& s, Arguments& a)
{
    return a.ok() ? answer(signedInteger(s.instrument.takeOperationEvents())) : refuse(a.error());
}

using C = Configuration;
using R = ReadingFormat;
using L = LogSettings;

constexpr CommandRow kCommands[] = {
    {"FORMat:READing:ALARm", setGroupSwitch<&C::format, &R::alarm>,
     queryGroupSwitch<&C::format, &R::alarm>},
    {"FORMat:READing:CHANnel", setGroupSwitch<&C::format, &R::channel>,
     queryGroupSwitch<&C::format, &R::channel>},
    {"FORMat:READing:TIME", setGroupSwitch<&C::format, &R::time>,
     queryGroupSwitch<&C::format, &R::time>},
    {"FORMat:READing:TIME:TYPE", setTimeType, timeType},
    {"FORMat:READing:UNIT", setGroupSwitch<&C::format, &R::unit>,
     queryGroupSwitch<&C::format, &R::unit>},
    {"MEMory:STATe:NAME", setStateName, stateName},
    {"MEMory:STATe:VALid", nullptr, isStateStored},
    {"MMEMory:FORMat:READing:RLIMit[:STATe]", setGroupSwitch<&C::log, &L::rowLimit>,
     queryGroupSwitch<&C::log, &L::rowLimit>},
    {"MMEMory:FORMat:READing:RLIMit:COUNt", setRowLimitCount, rowLimitCount},
    {"MMEMory:LOG[:ENABle]", setGroupSwitch<&C::log, &L::enabled>,
     queryGroupSwitch<&C::log, &L::enabled>},
    {"ROUTe:MONitor[:STATe]", setMonitor, monitor},
    {"STATus:OPERation:CONDition", nullptr, operationCondition},
    {"STATus:OPERation[:EVENt]", nullptr, operationEvents},
    {"SYSTem:CTYPe", nullptr, moduleInSlot},
    {"SYSTem:DATE", setDate, date},
    {"SYSTem:ERRor[:NEXT]", nullptr, takeError},
    {"SYSTem:ERRor:COUNt", nullptr, errorCount},
    {"SYSTem:PERSonality:MODel", nullptr, personality},
    {"SYSTem:PERSonality:MODel:DEFault", nullptr, personality},
    {"SYSTem:TIME", setTime, time},
    {"SYSTem:TIME:SCAN", nullptr, scanStartTime},
};

} // namespace

Facts<CommandRow> systemCommands()
{
    return kCommands;
}

} // namespace scnsim
