#pragma once

#include "model/configuration.h"
#include "model/instrumentclock.h"
#include "model/meter.h"
#include "model/readingmemory.h"
#include "model/refusal.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace scnsim {

/// Runs sweeps over the scan list and puts the readings into the memory. It has no clock of its
/// own: each call says what time it is, and advance() catches up with all that was due since.
///
/// The scan list and the trigger settings of a scan are those of its start; the settings of the
/// channels are looked up anew for each sweep.
class ScanEngine
{
public:
    /// @param readingsPerSecond the total rate over all channels; none: each channel takes the
    ///        time that its settings ask for
    ScanEngine(const Configuration& configuration, const InstrumentClock& clock, Meter& meter,
               ReadingMemory& memory, std::optional<double> readingsPerSecond);

    ScanEngine(const ScanEngine&) = delete;
    ScanEngine& operator=(const ScanEngine&) = delete;

    /// Empties the memory and begins a scan.
    /// @return AlreadyRunning, or Conflict with an empty scan list
    Refusal start(Instant now);

    /// Ends the scan; the readings taken so far stay in the memory.
    void abort() { m_state = State::Idle; }

    /// A trigger of this source comes in.
    /// @param alarm the alarm's number for the source Alarm
    /// @return NotWaiting unless the scan waits for just this trigger
    Refusal trigger(TriggerSource source, int alarm, Instant now);

    /// What the readings of a channel have in their alarm field from now on; 0 at first.
    void setAlarm(int channel, int alarm) { m_alarms[channel] = alarm; }

    /// Takes all readings that are due by now.
    void advance(Instant now);

    bool isSweeping() const { return m_state == State::Sweeping; }
    bool isWaiting() const { return m_state == State::Waiting; }

    /// The clock's time at the last start; at power-on before the first.
    std::int64_t startStampMs() const { return m_startStampMs; }

private:
    enum class State { Idle, Waiting, Sweeping };

    /// One channel of the running sweep.
    struct Step
    {
        int channel;
        Instant begin;
        Instant end;
    };

    void beginSweep(Instant at);
    bool finishSweep(Instant now);
    void takeReading(const Step& step);
    Instant timeFor(const ChannelSettings& settings) const;
    int alarmOf(int channel) const;

    const Configuration& m_configuration;
    const InstrumentClock& m_clock;
    Meter& m_meter;
    ReadingMemory& m_memory;
    std::optional<Instant> m_timePerReading;
    std::map<int, int> m_alarms;

    State m_state = State::Idle;
    std::vector<int> m_channels;
    TriggerSettings m_trigger;
    Instant m_timer{0};
    Instant m_start{0};
    std::int64_t m_startStampMs;
    Instant m_nextTick{0};
    int m_sweepsDone = 0;
    std::vector<Step> m_steps;
    std::size_t m_nextStep = 0;
    Instant m_sweepEnd{0};
};

} // namespace scnsim
