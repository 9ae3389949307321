#include "dialogue/commands.h"
#include "scpi/response.h"

namespace scnsim {

namespace {

constexpr unsigned kOperationComplete = 0x01;
constexpr unsigned kErrorsWaiting = 0x04;
constexpr unsigned kEventSummary = 0x20;
constexpr unsigned kMasterSummary = 0x40;

Outcome clearStatus(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.errors.clear();
    s.status.eventStatus = 0;
    s.instrument.clearOperationEvents();
    return done();
}

Outcome identify(Session& s, Arguments& a)
{
    return a.ok() ? answer(s.identity) : refuse(a.error());
}

Outcome reset(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.reset();
    return done();
}

Outcome markComplete(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.status.eventStatus |= kOperationComplete;
    return done();
}

Outcome answerOne(Session&, Arguments& a)
{
    return a.ok() ? answer("1") : refuse(a.error());
}

Outcome answerTestPassed(Session&, Arguments& a)
{
    return a.ok() ? answer(signedInteger(0)) : refuse(a.error());
}

/// All commands are carried out at once, so there is nothing to wait for.
Outcome wait(Session&, Arguments& a)
{
    return a.ok() ? done() : refuse(a.error());
}

Outcome triggerBus(Session& s, Arguments& a)
{
    return a.ok() ? outcomeOf(s.instrument.scan().trigger(TriggerSource::Bus, 0, s.now))
                  : refuse(a.error());
}

Outcome takeEventStatus(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    const unsigned events = s.status.eventStatus;
    s.status.eventStatus = 0;
    return answer(signedInteger(events));
}

Outcome setRegister(Arguments& a, unsigned& target)
{
    const int bits = a.integer(0, 255);
    if (!a.ok()) {
        return refuse(a.error());
    }
    target = static_cast<unsigned>(bits);
    return done();
}

Outcome setEventEnable(Session& s, Arguments& a)
{
    return setRegister(a, s.status.eventEnable);
}

Outcome eventEnable(Session& s, Arguments& a)
{
    return a.ok() ? answer(signedInteger(s.status.eventEnable)) : refuse(a.error());
}

Outcome setServiceEnable(Session& s, Arguments& a)
{
    return setRegister(a, s.status.serviceEnable);
}

Outcome serviceEnable(Session& s, Arguments& a)
{
    return a.ok() ? answer(signedInteger(s.status.serviceEnable)) : refuse(a.error());
}

Outcome statusByte(Session& s, Arguments& a)
{
    if (!a.ok()) {
        return refuse(a.error());
    }
    unsigned bits = s.errors.count() > 0 ? kErrorsWaiting : 0;
    if ((s.status.eventStatus & s.status.eventEnable) != 0) {
        bits |= kEventSummary;
    }
    if ((bits & s.status.serviceEnable) != 0) {
        bits |= kMasterSummary;
    }
    return answer(signedInteger(bits));
}

Outcome saveState(Session& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.saveState(number);
    return done();
}

Outcome recallState(Session& s, Arguments& a)
{
    const int number = a.integer(1, kStoredStateCount);
    return a.ok() ? outcomeOf(s.instrument.recallState(number)) : refuse(a.error());
}

constexpr CommandRow kCommands[] = {
    {"*CLS", clearStatus, nullptr},
    {"*ESE", setEventEnable, eventEnable},
    {"*ESR", nullptr, takeEventStatus},
    {"*IDN", nullptr, identify},
    {"*OPC", markComplete, answerOne},
    {"*RCL", recallState, nullptr},
    {"*RST", reset, nullptr},
    {"*SAV", saveState, nullptr},
    {"*SRE", setServiceEnable, serviceEnable},
    {"*STB", nullptr, statusByte},
    {"*TRG", triggerBus, nullptr},
    {"*TST", nullptr, answerTestPassed},
    {"*WAI", wait, nullptr},
};

} // namespace

Facts<CommandRow> commonCommands()
{
    return kCommands;
}

} // namespace scnsim
