#include "dialogue/commands.h"
#include "scpi/response.h"

namespace scnsim {

namespace {

constexpr unsigned kOperationComplete = 0x01;
constexpr unsigned kErrorsWaiting = 0x04;
constexpr unsigned kEventSummary = 0x20;
constexpr unsigned kMasterSummary = 0x40;

void clearStatus(CommandContext& s)
{
    s.errors.clear();
    s.status.eventStatus = 0;
    s.instrument.clearOperationEvents();
}

std::string identity(CommandContext& s)
{
    return s.identity;
}

void reset(CommandContext& s)
{
    s.instrument.reset();
}

void markComplete(CommandContext& s)
{
    s.status.eventStatus |= kOperationComplete;
}

/// Every command is carried out at once, so there is never anything to wait for.
std::string allComplete(CommandContext&)
{
    return "1";
}
void wait(CommandContext&) {}

std::string testPassed(CommandContext&)
{
    return signedInteger(0);
}

CommandResult triggerBus(CommandContext& s, Arguments& a)
{
    return a.ok() ? outcomeOf(s.instrument.scan().trigger(TriggerSource::Bus, 0, s.now))
                  : refuse(a.error());
}

std::string takeEventStatus(CommandContext& s)
{
    const unsigned events = s.status.eventStatus;
    s.status.eventStatus = 0;
    return signedInteger(events);
}

template <unsigned StatusRegisters::*Register>
CommandResult setRegister(CommandContext& s, Arguments& a)
{
    const int bits = a.integer(0, 255);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.status.*Register = static_cast<unsigned>(bits);
    return done();
}

template <unsigned StatusRegisters::*Register>
std::string registerText(CommandContext& s)
{
    return signedInteger(s.status.*Register);
}

std::string statusByte(CommandContext& s)
{
    unsigned bits = s.errors.count() > 0 ? kErrorsWaiting : 0;
    if ((s.status.eventStatus & s.status.eventEnable) != 0) {
        bits |= kEventSummary;
    }
    if ((bits & s.status.serviceEnable) != 0) {
        bits |= kMasterSummary;
    }
    return signedInteger(bits);
}

CommandResult saveState(CommandContext& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.saveState(number);
    return done();
}

CommandResult recallState(CommandContext& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    return a.ok() ? outcomeOf(s.instrument.recallState(number)) : refuse(a.error());
}

using S = StatusRegisters;

constexpr CommandRow kCommands[] = {
    {"*CLS", perform<clearStatus>, nullptr},
    {"*ESE", setRegister<&S::eventEnable>, ask<registerText<&S::eventEnable>>},
    {"*ESR", nullptr, ask<takeEventStatus>},
    {"*IDN", nullptr, ask<identity>},
    {"*OPC", perform<markComplete>, ask<allComplete>},
    {"*RCL", recallState, nullptr},
    {"*RST", perform<reset>, nullptr},
    {"*SAV", saveState, nullptr},
    {"*SRE", setRegister<&S::serviceEnable>, ask<registerText<&S::serviceEnable>>},
    {"*STB", nullptr, ask<statusByte>},
    {"*TRG", triggerBus, nullptr},
    {"*TST", nullptr, ask<testPassed>},
    {"*WAI", perform<wait>, nullptr},
};

} // namespace

Facts<CommandRow> commonCommands()
{
    return kCommands;
}

} // namespace scnsim
