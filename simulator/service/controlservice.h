#pragma once

#include "faults/faultplan.h"
#include "model/instrument.h"
#include "service/instrumentservice.h"
#include "transport/lineservice.h"

#include <string>

namespace scnsim {

/// Executes the orders from the control port, one per line:
///     fault KIND [VALUE] [for PATTERN] [times COUNT]
///     clear [NUMBER]
///     list
///     trigger external | trigger alarm NUMBER
///     alarm CHANNEL NUMBER
///     jump SECONDS
/// Each gets one line back: "ok" with any result, or "error" with the reason.
class ControlService : public LineService
{
public:
    ControlService(Instrument& instrument, FaultPlan& faults, InstrumentService::Clock clock);

    Reply answer(const std::string& line) override;
    Reply lineTooLong() override;
    void replyInterrupted() override {}
    void tick() override {}
    bool isReachable() override { return true; }
    bool admitsClient() override { return true; }

private:
    using Order = std::string (ControlService::*)(const std::string& argument);

    struct OrderRow
    {
        const char* name;
        Order order;
    };
    static const OrderRow kOrders[];

    std::string addFault(const std::string& text);
    std::string clearFaults(const std::string& number);
    std::string listFaults(const std::string& nothing);
    std::string trigger(const std::string& source);
    std::string setAlarm(const std::string& channelAndNumber);
    std::string jumpClock(const std::string& seconds);

    Instrument& m_instrument;
    FaultPlan& m_faults;
    InstrumentService::Clock m_clock;
};

} // namespace scnsim
