#include "app/runstate.h"

#include "common/threadassert.h"

#include <QtGlobal>

#include <algorithm>
#include <iterator>

namespace scn {

namespace {

struct Transition
{
    RunState from;
    RunEvent event;
    RunState to;
};

using State = RunState;
using Event = RunEvent;

/// The transitions of run(). Slots are also called by name, so some events can come at any time.
constexpr Transition kTransitions[] = {
    {State::Idle, Event::StartRequested, State::Starting},
    {State::Starting, Event::StartDropped, State::Idle},
    {State::Idle, Event::ScanStarted, State::Running},
    {State::Starting, Event::ScanStarted, State::Running},
    {State::Running, Event::ScanStarted, State::Running},
    {State::Draining, Event::ScanStarted, State::Running},
    {State::Running, Event::StopRequested, State::Draining},
    {State::Draining, Event::StopRequested, State::Draining},
    {State::Idle, Event::TimeElapsed, State::Idle},
    {State::Starting, Event::TimeElapsed, State::Starting},
    {State::Running, Event::TimeElapsed, State::Idle},
    {State::Draining, Event::TimeElapsed, State::Idle},
    {State::Running, Event::Unlocked, State::Idle},
};

const Transition* transitionFrom(RunState from, RunEvent event)
{
    const auto* found =
        std::find_if(std::begin(kTransitions), std::end(kTransitions),
                     [&](const Transition& row) { return row.from == from && row.event == event; });
    return found != std::end(kTransitions) ? found : nullptr;
}

} // namespace

RunStateMachine::RunStateMachine(std::atomic<bool>& scanRunning, std::atomic<bool>& connected)
    : m_scanRunning(scanRunning)
    , m_connected(connected)
{
}

RunState RunStateMachine::state() const
{
    if (m_isReconnecting) {
        return State::Reconnecting;
    }
    return m_connected ? run() : State::Lost;
}

RunState RunStateMachine::run() const
{
    assertGuiThread();
    if (m_scanRunning) {
        return m_isStoppedByButton ? State::Draining : State::Running;
    }
    return m_run == State::Starting ? State::Starting : State::Idle;
}

bool RunStateMachine::isLinkUp() const
{
    return m_connected && !m_isReconnecting;
}

bool RunStateMachine::allows(RunEvent event) const
{
    return allows(event, run());
}

bool RunStateMachine::allows(RunEvent event, RunState from) const
{
    switch (event) {
    case Event::LossReported:
    case Event::RecoveryRequested:
        // The search under way decides whether the instrument is there.
        return !m_isReconnecting;
    case Event::RecoveryEnded:
        return m_isReconnecting;
    case Event::StartRequested:
    case Event::ScanStarted:
        return transitionFrom(from, event) && isLinkUp();
    case Event::TimeElapsed:
        // The recovery stops a lost instrument and fetches its readings.
        return m_connected;
    case Event::StartDropped:
    case Event::StopRequested:
    case Event::Unlocked:
        return transitionFrom(from, event);
    }
    Q_UNREACHABLE();
}

bool RunStateMachine::take(RunEvent event)
{
    // Read once: the acquisition thread may end the run meanwhile.
    const RunState from = run();
    if (!allows(event, from)) {
        return false;
    }
    switch (event) {
    case Event::LossReported:
        m_connected = false;
        break;
    case Event::RecoveryRequested:
        m_isReconnecting = true;
        break;
    case Event::RecoveryEnded:
        m_isReconnecting = false;
        break;
    default:
        moveRun(transitionFrom(from, event)->to);
    }
    return true;
}

/// Writes the flag only where it must change: the acquisition thread may be clearing it.
void RunStateMachine::moveRun(RunState to)
{
    if (to == State::Running) {
        m_scanRunning = true;
    } else if (to == State::Idle) {
        m_scanRunning = false;
    }
    m_run = to;
    if (to == State::Draining || to == State::Running) {
        m_isStoppedByButton = to == State::Draining;
    }
}

} // namespace scn
