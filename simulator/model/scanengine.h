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

/// Sweeps the scan list and fills the memory with readings. It has no clock of its own: each call
/// passes the time, and advance() catches up with everything due since the last.
///
/// A scan uses the scan list and trigger settings from when it started; channel settings are read
/// again for each sweep.
class ScanEngine
{
public:
    /// @param readingsPerSecond the total rate over all channels; none: each channel takes the
    ///        time that its settings ask for
    ScanEngine(const Configuration& configuration, const InstrumentClock& clock, Meter& meter,
               ReadingMemory& memory, std::optional<double> readingsPerSecond);

    ScanEngine(const ScanEngine&) = delete;
    ScanEngine& operator=(const ScanEngine&) = delete;

    /// Empties the memory and starts a scan.
    /// @return AlreadyRunning, or Conflict with an empty scan list
    Refusal start(Instant now);

    /// Ends the scan; the readings taken so far stay in the memory.
    void abort() { m_state = State::Idle; }

    /// Delivers a trigger from this source.
    /// @param alarm the alarm's number for the source Alarm
    /// @return NotWaiting unless the scan waits for just this trigger
    Refusal trigger(TriggerSource source, int alarm, Instant now);

    /// Sets the alarm field of a channel's future readings; 0 at first.
    void setAlarm(int channel, int alarm) { m_alarms[channel] = alarm; }

    /// Takes all readings due by now.
    void advance(Instant now);

    bool isSweeping() const { return m_state == State::Sweeping; }
    bool isWaiting() const { return m_state == State::Waiting; }

    /// Clock time of the last start; before the first, of power-on.
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
