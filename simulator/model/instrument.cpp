#include "model/instrument.h"

#include "model/channelnumber.h"
#include "model/module.h"

#include <algorithm>

namespace scnsim {

namespace {

/// A longer channel list is a mistake.
constexpr std::size_t kLongestChannelList = 10000;

} // namespace

Instrument::Instrument(const InstrumentSetup& setup)
    : m_slots(setup.modules)
    , m_configuration(factoryConfiguration())
    , m_clock(setup.powerOnTime)
    , m_meter(setup.seed, setup.openChannels)
    , m_memory(setup.memoryCapacity)
    , m_engine(m_configuration, m_clock, m_meter, m_memory, setup.readingsPerSecond)
{
}

void Instrument::reset()
{
    m_engine.abort();
    m_configuration = factoryConfiguration();
}

std::optional<int> Instrument::moduleType(int slot) const
{
    const auto found = m_slots.find(slot);
    return found == m_slots.end() ? std::nullopt : std::optional<int>(found->second);
}

Refusal Instrument::expand(int first, int last, std::vector<int>& channels) const
{
    for (const int end : {first, last}) {
        const Refusal refusal = checkChannel(end);
        if (refusal != Refusal::None) {
            return refusal;
        }
    }
    const auto begin = m_configuration.channels.lower_bound(std::min(first, last));
    const auto end = m_configuration.channels.upper_bound(std::max(first, last));
    for (auto it = begin; it != end; ++it) {
        if (channels.size() == kLongestChannelList) {
            return Refusal::TooMany;
        }
        channels.push_back(it->first);
    }
    return Refusal::None;
}

std::optional<int> Instrument::partnerOf(int number) const
{
    const int bank = module::bankSize(m_slots.at(slotOf(number)));
    if (channel(number).function->leads != Leads::Four || positionOf(number) > bank) {
        return std::nullopt;
    }
    return number + bank;
}

Refusal Instrument::setFunction(const std::vector<int>& channels, const FunctionInfo& function)
{
    for (const int number : channels) {
        if (!offers(kindOf(number), function)) {
            return Refusal::Conflict;
        }
        const bool ownerChangesToo =
            isPartnerInUse(number) &&
            std::find(channels.begin(), channels.end(), *ownerOf(number)) != channels.end();
        if (isPartnerInUse(number) && !ownerChangesToo) {
            return Refusal::Conflict;
        }
    }
    for (const int number : channels) {
        applyFunction(number, function);
    }
    return Refusal::None;
}

Refusal Instrument::setOption(const std::vector<int>& channels, Option option, double wanted)
{
    double value = 0;
    const Refusal refusal = fitOption(option, wanted, value);
    if (refusal != Refusal::None) {
        return refusal;
    }
    if (option == Option::ScaleFunction && value >= kScaleDbm) {
        for (const int number : channels) {
            if (channel(number).function->power == PowerFrom::Nothing) {
                return Refusal::Conflict;
            }
        }
    }
    const Option turnsOff = optionInfo(option).turnsOff;
    for (const int number : channels) {
        ChannelSettings& settings = m_configuration.channels.at(number);
        settings.set(option, value);
        if (turnsOff != Option::Count) {
            settings.set(turnsOff, 0);
        }
    }
    return Refusal::None;
}

void Instrument::setLabel(const std::vector<int>& channels, const std::string& label)
{
    for (const int number : channels) {
        m_configuration.channels.at(number).label = label;
    }
}

void Instrument::setScaledUnit(const std::vector<int>& channels, const std::string& unit)
{
    for (const int number : channels) {
        m_configuration.channels.at(number).scaledUnit = unit;
    }
}

Refusal Instrument::setScanList(std::vector<int> channels)
{
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    for (const int number : channels) {
        if (channel(number).function == &noFunction() || isPartnerInUse(number)) {
            return Refusal::Conflict;
        }
    }
    m_configuration.scanList = std::move(channels);
    return Refusal::None;
}

Refusal Instrument::setAlarm(int channel, int alarm)
{
    const Refusal refusal = checkChannel(channel);
    if (refusal == Refusal::None) {
        m_engine.setAlarm(channel, alarm);
    }
    return refusal;
}

unsigned Instrument::operationCondition() const
{
    unsigned bits = kOperationIdle;
    if (m_engine.isSweeping()) {
        bits = kOperationMeasuring;
    } else if (m_engine.isWaiting()) {
        bits = kOperationWaiting;
    }
    return m_usedElsewhere ? bits | kOperationUsedElsewhere : bits;
}

unsigned Instrument::takeOperationEvents()
{
    const unsigned events = m_operationEvents;
    m_operationEvents = 0;
    return events;
}

void Instrument::setUsedElsewhere(bool used)
{
    if (used && !m_usedElsewhere) {
        m_operationEvents |= kOperationUsedElsewhere;
    }
    m_usedElsewhere = used;
}

Refusal Instrument::recallState(int number)
{
    if (!isStateStored(number)) {
        return Refusal::Conflict;
    }
    m_engine.abort();
    m_configuration = *storedState(number).configuration;
    return Refusal::None;
}

Configuration Instrument::factoryConfiguration() const
{
    Configuration configuration;
    for (const auto& [slot, type] : m_slots) {
        for (int position = 1; position <= module::channelCount(type); ++position) {
            configuration.channels.emplace(
                channelAt(slot, position),
                ChannelSettings(initialFunction(module::kindAt(type, position))));
        }
    }
    return configuration;
}

Refusal Instrument::checkChannel(int number) const
{
    if (m_configuration.channels.count(number) != 0) {
        return Refusal::None;
    }
    return moduleType(slotOf(number)) ? Refusal::OutOfRange : Refusal::NoModule;
}

ChannelKind Instrument::kindOf(int number) const
{
    return module::kindAt(m_slots.at(slotOf(number)), positionOf(number));
}

std::optional<int> Instrument::ownerOf(int number) const
{
    const int bank = module::bankSize(m_slots.at(slotOf(number)));
    const int position = positionOf(number);
    return position > bank && position <= 2 * bank ? std::optional<int>(number - bank)
                                                   : std::nullopt;
}

bool Instrument::isPartnerInUse(int number) const
{
    const std::optional<int> owner = ownerOf(number);
    return owner && channel(*owner).function->leads == Leads::Four;
}

void Instrument::applyFunction(int number, const FunctionInfo& function)
{
    ChannelSettings& settings = m_configuration.channels.at(number);
    if (settings.function != &function) {
        settings.function = &function;
        settings.scaledUnit = function.scaledUnit;
        settings.set(Option::ScaleState, 0);
        settings.set(Option::ScaleFunction, kScaleLinear);
    }
    if (const std::optional<int> partner = partnerOf(number)) {
        applyFunction(*partner, initialFunction(kindOf(*partner)));
        std::vector<int>& list = m_configuration.scanList;
        list.erase(std::remove(list.begin(), list.end(), *partner), list.end());
    }
}

} // namespace scnsim
