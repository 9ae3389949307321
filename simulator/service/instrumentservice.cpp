#include "service/instrumentservice.h"

#include "faults/spoil.h"

#include <cmath>
#include <utility>

namespace scnsim {

namespace {

std::size_t bytesOf(const Fault& fault)
{
    return static_cast<std::size_t>(fault.value);
}

/// Cuts the text to this many bytes.
void cut(std::string& text, std::size_t bytes)
{
    if (text.size() > bytes) {
        text.resize(bytes);
    }
}

} // namespace

InstrumentService::InstrumentService(Instrument& instrument, Dialogue& dialogue, FaultPlan& faults,
                                     Clock clock, std::uint64_t seed)
    : m_instrument(instrument)
    , m_dialogue(dialogue)
    , m_faults(faults)
    , m_clock(std::move(clock))
    , m_seed(seed)
{
}

Reply InstrumentService::answer(const std::string& line)
{
    Reply reply;
    // What was due before the line arrived is not affected by its faults.
    m_dialogue.advance(m_clock());
    const std::string normalized = normalizedLine(line);
    if (const auto fault = take(FaultKind::ClockJump, normalized, reply)) {
        m_instrument.clock().jump(std::llround(fault->value * 1000), m_clock());
    }
    if (!isHandled(normalized, reply)) {
        return reply;
    }
    m_instrument.setUsedElsewhere(take(FaultKind::Elsewhere, normalized, reply).has_value());
    reply.text = m_dialogue.handle(line, m_clock());
    m_instrument.setUsedElsewhere(false);
    if (!reply.text.empty()) {
        spoil(normalized, reply);
    }
    return reply;
}

Reply InstrumentService::lineTooLong()
{
    m_dialogue.report(ErrorCode::InputBufferOverrun);
    return {};
}

/// Adds the fault to the reply's notes.
std::optional<Fault> InstrumentService::take(FaultKind kind, const std::string& line, Reply& reply)
{
    std::optional<Fault> fault = m_faults.take(kind, line);
    if (fault) {
        reply.notes.push_back(faultText(*fault));
    }
    return fault;
}

/// Whether the line reaches the instrument.
bool InstrumentService::isHandled(const std::string& line, Reply& reply)
{
    if (take(FaultKind::Drop, line, reply)) {
        reply.breaksLink = true;
        return false;
    }
    if (take(FaultKind::Silence, line, reply)) {
        return false;
    }
    if (const auto fault = take(FaultKind::Reject, line, reply)) {
        m_dialogue.report(static_cast<ErrorCode>(static_cast<int>(fault->value)));
        return false;
    }
    return true;
}

void InstrumentService::spoil(const std::string& line, Reply& reply)
{
    damageRecord(line, reply);
    if (const auto fault = take(FaultKind::Oversize, line, reply)) {
        reply.text = oversized(reply.text, bytesOf(*fault));
    }
    if (const auto fault = take(FaultKind::Garbage, line, reply)) {
        reply.text = garbage(bytesOf(*fault), m_seed + ++m_garbageCount);
    }
    if (const auto fault = take(FaultKind::Shorten, line, reply)) {
        cut(reply.text, bytesOf(*fault));
    }
    if (const auto fault = take(FaultKind::Truncate, line, reply)) {
        cut(reply.text, bytesOf(*fault));
        reply.isComplete = false;
    }
    if (const auto fault = take(FaultKind::Delay, line, reply)) {
        reply.delay = std::chrono::milliseconds(static_cast<int>(fault->value));
    }
}

/// Faults of this kind wait for a reply with records.
void InstrumentService::damageRecord(const std::string& line, Reply& reply)
{
    if (!withBadRecord(reply.text, kBadMonth)) {
        return;
    }
    if (const auto fault = take(FaultKind::BadRecord, line, reply)) {
        const auto form = static_cast<BadRecordForm>(static_cast<int>(fault->value));
        reply.text = *withBadRecord(reply.text, form);
    }
}

} // namespace scnsim
