#include "model/scanengine.h"

#include <algorithm>

namespace scnsim {

namespace {

using std::chrono::duration_cast;

/// Minimum sweep time, so that the time stamps of a channel differ.
constexpr Instant kShortestSweep = std::chrono::milliseconds(1);

Instant fromSeconds(double seconds)
{
    return std::chrono::round<Instant>(std::chrono::duration<double>(seconds));
}

} // namespace

ScanEngine::ScanEngine(const Configuration& configuration, const InstrumentClock& clock,
                       Meter& meter, ReadingMemory& memory, std::optional<double> readingsPerSecond)
    : m_configuration(configuration)
    , m_clock(clock)
    , m_meter(meter)
    , m_memory(memory)
    , m_startStampMs(clock.milliseconds(Instant::zero()))
{
    if (readingsPerSecond) {
        m_timePerReading = fromSeconds(1 / *readingsPerSecond);
    }
}

Refusal ScanEngine::start(Instant now)
{
    if (m_state != State::Idle) {
        return Refusal::AlreadyRunning;
    }
    if (m_configuration.scanList.empty()) {
        return Refusal::Conflict;
    }
    m_memory.clear();
    m_meter.beginScan();
    m_channels = m_configuration.scanList;
    m_trigger = m_configuration.trigger;
    m_timer = fromSeconds(m_trigger.timerS);
    m_start = now;
    m_startStampMs = m_clock.milliseconds(now);
    m_nextTick = now;
    m_sweepsDone = 0;
    m_state = State::Waiting;
    if (m_trigger.source == TriggerSource::Immediate) {
        beginSweep(now);
    }
    advance(now);
    return Refusal::None;
}

Refusal ScanEngine::trigger(TriggerSource source, int alarm, Instant now)
{
    const bool expected =
        m_trigger.source == source && (source != TriggerSource::Alarm || m_trigger.alarm == alarm);
    if (m_state != State::Waiting || !expected) {
        return Refusal::NotWaiting;
    }
    beginSweep(now);
    return Refusal::None;
}

void ScanEngine::advance(Instant now)
{
    for (;;) {
        if (m_state == State::Waiting && m_trigger.source == TriggerSource::Timer &&
            m_nextTick <= now) {
            beginSweep(m_nextTick);
        }
        if (m_state != State::Sweeping) {
            return;
        }
        while (m_nextStep < m_steps.size() && m_steps[m_nextStep].end <= now) {
            takeReading(m_steps[m_nextStep]);
            ++m_nextStep;
        }
        if (!finishSweep(now)) {
            return;
        }
    }
}

void ScanEngine::beginSweep(Instant at)
{
    m_steps.clear();
    m_nextStep = 0;
    Instant begin = at;
    for (const int channel : m_channels) {
        const Instant end = begin + timeFor(m_configuration.channels.at(channel));
        m_steps.push_back({channel, begin, end});
        begin = end;
    }
    m_sweepEnd = std::max(begin, at + kShortestSweep);
    m_state = State::Sweeping;
}

bool ScanEngine::finishSweep(Instant now)
{
    if (m_sweepEnd > now) {
        return false;
    }
    ++m_sweepsDone;
    if (m_trigger.count && m_sweepsDone >= *m_trigger.count) {
        m_state = State::Idle;
        return false;
    }
    m_state = State::Waiting;
    if (m_trigger.source == TriggerSource::Immediate) {
        beginSweep(m_sweepEnd);
    } else if (m_timer > Instant::zero()) {
        // Ticks during the sweep are skipped.
        const auto ticks =
            std::max<Instant::rep>(1, (m_sweepEnd - m_nextTick + m_timer - Instant(1)) / m_timer);
        m_nextTick += ticks * m_timer;
    } else {
        m_nextTick = m_sweepEnd;
    }
    return true;
}

void ScanEngine::takeReading(const Step& step)
{
    const Meter::Result result =
        m_meter.measure(step.channel, m_configuration.channels.at(step.channel), step.begin);
    MemoryReading reading;
    reading.value = result.value;
    reading.unit = result.unit;
    reading.stampMs = m_clock.milliseconds(step.begin);
    reading.sinceStartMs = duration_cast<std::chrono::milliseconds>(step.begin - m_start).count();
    reading.channel = step.channel;
    reading.alarm = alarmOf(step.channel);
    m_memory.store(std::move(reading));
}

int ScanEngine::alarmOf(int channel) const
{
    const auto found = m_alarms.find(channel);
    return found == m_alarms.end() ? 0 : found->second;
}

Instant ScanEngine::timeFor(const ChannelSettings& settings) const
{
    return m_timePerReading ? *m_timePerReading : Meter::measuringTime(settings);
}

} // namespace scnsim
