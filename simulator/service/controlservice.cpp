#include "service/controlservice.h"

#include "model/channelnumber.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>
#include <utility>

namespace scnsim {

namespace {

constexpr double kFarthestJumpS = 1e9;
constexpr int kHighestAlarmField = 9;

std::string ok(const std::string& text = {})
{
    return text.empty() ? "ok" : "ok " + text;
}

std::string error(const std::string& text)
{
    return "error " + text;
}

std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string::npos
               ? std::string()
               : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

/// Splits off the first word.
std::pair<std::string, std::string> splitWord(const std::string& text)
{
    const std::string line = trimmed(text);
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    return {line.substr(0, end), trimmed(line.substr(end))};
}

template <typename Number>
std::optional<Number> numberFrom(const std::string& text, Number minimum, Number maximum)
{
    Number number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    const bool fits =
        result.ec == std::errc() && result.ptr == end && number >= minimum && number <= maximum;
    return fits ? std::optional<Number>(number) : std::nullopt;
}

} // namespace

const ControlService::OrderRow ControlService::kOrders[] = {
    {"alarm", &ControlService::setAlarm},  {"clear", &ControlService::clearFaults},
    {"fault", &ControlService::addFault},  {"jump", &ControlService::jumpClock},
    {"list", &ControlService::listFaults}, {"trigger", &ControlService::trigger},
};

ControlService::ControlService(Instrument& instrument, FaultPlan& faults,
                               InstrumentService::Clock clock)
    : m_instrument(instrument)
    , m_faults(faults)
    , m_clock(std::move(clock))
{
}

Reply ControlService::answer(const std::string& line)
{
    Reply reply;
    const auto [name, argument] = splitWord(line);
    // What was due before the order arrived is not affected by it.
    m_instrument.advance(m_clock());
    reply.text = error("unknown order " + name);
    for (const OrderRow& row : kOrders) {
        if (name == row.name) {
            reply.text = (this->*row.order)(argument);
        }
    }
    return reply;
}

Reply ControlService::lineTooLong()
{
    Reply reply;
    reply.text = error("line too long");
    return reply;
}

std::string ControlService::addFault(const std::string& text)
{
    Fault fault;
    std::string reason;
    if (!parseFault(text, fault, reason)) {
        return error(reason);
    }
    return ok(std::to_string(m_faults.add(fault)));
}

std::string ControlService::clearFaults(const std::string& number)
{
    if (number.empty()) {
        m_faults.clear();
        return ok();
    }
    const std::optional<int> wanted = numberFrom<int>(number, 1, 1000000000);
    return wanted && m_faults.remove(*wanted) ? ok() : error("no fault " + number);
}

std::string ControlService::listFaults(const std::string& nothing)
{
    return nothing.empty() ? ok(m_faults.list()) : error("list takes nothing");
}

std::string ControlService::trigger(const std::string& source)
{
    const auto [name, number] = splitWord(source);
    const bool external = name == "external" && number.empty();
    const std::optional<int> alarm =
        name == "alarm" ? numberFrom(number, 1, kAlarmCount) : std::nullopt;
    if (!external && !alarm) {
        return error("trigger wants external or alarm 1 to 4");
    }
    const Refusal refusal =
        external ? m_instrument.scan().trigger(TriggerSource::External, 0, m_clock())
                 : m_instrument.scan().trigger(TriggerSource::Alarm, *alarm, m_clock());
    return refusal == Refusal::None ? ok() : error("not waiting for this trigger");
}

std::string ControlService::setAlarm(const std::string& channelAndNumber)
{
    const auto [channelText, numberText] = splitWord(channelAndNumber);
    const std::optional<int> channel = numberFrom(channelText, 1, kLastChannel);
    const std::optional<int> number = numberFrom(numberText, 0, kHighestAlarmField);
    if (!channel || !number) {
        return error("alarm wants a channel and a number from 0 to 9");
    }
    return m_instrument.setAlarm(*channel, *number) == Refusal::None
               ? ok()
               : error("no channel " + channelText);
}

std::string ControlService::jumpClock(const std::string& seconds)
{
    const std::optional<double> wanted =
        numberFrom<double>(seconds, -kFarthestJumpS, kFarthestJumpS);
    if (!wanted) {
        return error("jump wants seconds from -1e9 to 1e9");
    }
    m_instrument.clock().jump(std::llround(*wanted * 1000), m_clock());
    return ok();
}

} // namespace scnsim
