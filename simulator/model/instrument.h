#pragma once

#include "model/configuration.h"
#include "model/instrumentclock.h"
#include "model/meter.h"
#include "model/readingmemory.h"
#include "model/refusal.h"
#include "model/scanengine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace scnsim {

constexpr int kStoredStateCount = 5;
constexpr std::size_t kReadingMemoryCapacity = 100000;

/// The mainframe's modules and inputs; fixed at power-on.
struct InstrumentSetup
{
    /// Module type by slot, 1 to kLastSlot.
    std::map<int, int> modules;
    std::uint64_t seed = 1;
    /// Total reading rate; none: as the channel settings ask for.
    std::optional<double> readingsPerSecond;
    std::set<int> openChannels;
    DateTime powerOnTime;
    std::size_t memoryCapacity = kReadingMemoryCapacity;
};

/// Bits of the operation status register.
enum OperationBit : unsigned {
    kOperationMeasuring = 16,
    kOperationWaiting = 32,
    kOperationIdle = 256,
    kOperationUsedElsewhere = 2048,
};

/// The instrument without its command language: modules, channels and their settings, scan engine,
/// memory, clock, stored states. It does no input or output. Channel numbers are 100 × slot +
/// position, both counted from 1.
class Instrument
{
public:
    explicit Instrument(const InstrumentSetup& setup);

    /// Catches up with everything due by now. Call it before any other member.
    void advance(Instant now) { m_engine.advance(now); }

    /// Ends the scan and restores the factory settings. The clock, the stored states and the memory
    /// stay.
    void reset();

    /// Module type in a slot; none for an empty or missing slot.
    std::optional<int> moduleType(int slot) const;

    /// Appends the channels from first to last, across slots if need be.
    /// @return NoModule or OutOfRange if one of the ends does not exist
    Refusal expand(int first, int last, std::vector<int>& channels) const;

    /// The channel must exist.
    const ChannelSettings& channel(int number) const { return m_configuration.channels.at(number); }

    /// The channel in the second half that senses for this channel's four-wire function.
    std::optional<int> partnerOf(int number) const;

    /// Selects a function. A change turns scaling off; a four-wire function takes its partner
    /// channel, which leaves the scan list.
    /// @return Conflict if a channel does not offer it or is itself a partner in use
    Refusal setFunction(const std::vector<int>& channels, const FunctionInfo& function);

    Refusal setOption(const std::vector<int>& channels, Option option, double wanted);
    void setLabel(const std::vector<int>& channels, const std::string& label);
    void setScaledUnit(const std::vector<int>& channels, const std::string& unit);

    /// @return Conflict if a channel measures nothing or is a partner in use
    Refusal setScanList(std::vector<int> channels);

    /// Sets the alarm field of a channel's future readings.
    /// @return NoModule or OutOfRange if there is no such channel
    Refusal setAlarm(int channel, int alarm);

    /// Mainframe settings, writable.
    Configuration& configuration() { return m_configuration; }

    InstrumentClock& clock() { return m_clock; }
    ReadingMemory& memory() { return m_memory; }
    ScanEngine& scan() { return m_engine; }

    unsigned operationCondition() const;
    /// Reads and clears the operation event register, which latches only "used elsewhere".
    unsigned takeOperationEvents();
    void clearOperationEvents() { m_operationEvents = 0; }
    /// Whether someone else is using the instrument.
    void setUsedElsewhere(bool used);

    /// Stored states are counted from 1.
    void saveState(int number) { storedState(number).configuration = m_configuration; }
    /// Ends the scan and restores the state.
    /// @return Conflict if nothing is stored there
    Refusal recallState(int number);
    bool isStateStored(int number) { return storedState(number).configuration.has_value(); }
    std::string& stateName(int number) { return storedState(number).name; }

private:
    struct StoredState
    {
        std::string name;
        std::optional<Configuration> configuration;
    };

    StoredState& storedState(int number)
    {
        return m_states.at(static_cast<std::size_t>(number - 1));
    }
    Configuration factoryConfiguration() const;
    Refusal checkChannel(int number) const;
    ChannelKind kindOf(int number) const;
    std::optional<int> ownerOf(int number) const;
    bool isPartnerInUse(int number) const;
    void applyFunction(int number, const FunctionInfo& function);

    std::map<int, int> m_slots;
    Configuration m_configuration;
    InstrumentClock m_clock;
    Meter m_meter;
    ReadingMemory m_memory;
    ScanEngine m_engine;
    bool m_usedElsewhere = false;
    unsigned m_operationEvents = 0;
    std::array<StoredState, kStoredStateCount> m_states;
};

} // namespace scnsim
