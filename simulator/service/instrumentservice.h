#pragma once

#include "dialogue/dialogue.h"
#include "faults/faultplan.h"
#include "transport/lineservice.h"

#include <cstdint>
#include <functional>
#include <string>

namespace scnsim {

/// Passes lines from the ports to the instrument and applies the active faults to it and to its
/// replies.
class InstrumentService : public LineService
{
public:
    /// Time since power-on.
    using Clock = std::function<Instant()>;

    /// @param seed the seed of the garbage
    InstrumentService(Instrument& instrument, Dialogue& dialogue, FaultPlan& faults, Clock clock,
                      std::uint64_t seed);

    Reply answer(const std::string& line) override;
    Reply lineTooLong() override;
    void replyInterrupted() override { m_dialogue.report(ErrorCode::QueryInterrupted); }
    void tick() override { m_dialogue.advance(m_clock()); }
    bool isReachable() override { return !m_faults.standsFor(FaultKind::Refuse); }
    bool admitsClient() override { return !m_faults.take(FaultKind::Refuse, {}); }

private:
    std::optional<Fault> take(FaultKind kind, const std::string& line, Reply& reply);
    bool isHandled(const std::string& line, Reply& reply);
    void spoil(const std::string& line, Reply& reply);
    void damageRecord(const std::string& line, Reply& reply);

    Instrument& m_instrument;
    Dialogue& m_dialogue;
    FaultPlan& m_faults;
    Clock m_clock;
    std::uint64_t m_seed;
    std::uint64_t m_garbageCount = 0;
};

} // namespace scnsim
