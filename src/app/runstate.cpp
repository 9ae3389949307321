#include "app/runstate.h"

#include "common/threadassert.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace scn {

namespace {

using State = RunState;
using Event = RunEvent;

/// A set of states, one bit each.
using States = unsigned;

template <typename... Members>
constexpr States setOf(Members... states)
{
    return (... | (1U << static_cast<unsigned>(states)));
}

constexpr bool contains(States set, State state)
{
    return (set & setOf(state)) != 0;
}

constexpr States kRuns = setOf(State::Idle, State::Starting, State::Running, State::Draining);
constexpr States kUnsought = kRuns | setOf(State::Lost);
constexpr States kConnected = kRuns | setOf(State::Reconnected);
constexpr States kSought = setOf(State::Reconnecting, State::Reconnected);
constexpr States kAll = kUnsought | kSought;

/// Ends the suspension: the state is that of the run again, or Lost.
constexpr std::optional<State> kSuspendedRun;

struct Transition
{
    Event event;
    States states; ///< as state() tells
    States runs;   ///< as run() tells
    std::optional<State> to;
};

/// Slots are also called by name, so some events can come at any time.
constexpr Transition kTransitions[] = {
    {Event::StartRequested, kRuns, setOf(State::Idle), State::Starting},
    {Event::StartDropped, kAll, setOf(State::Starting), State::Idle},
    {Event::ScanStarted, kRuns, kRuns, State::Running},
    {Event::ScanEnded, kAll, setOf(State::Idle), State::Idle},
    {Event::ScanEnded, kAll, setOf(State::Starting), State::Starting},
    {Event::StopRequested, kAll, setOf(State::Running, State::Draining), State::Draining},
    // The recovery stops a lost instrument and fetches its readings.
    {Event::TimeElapsed, kConnected, setOf(State::Starting), State::Starting},
    {Event::TimeElapsed, kConnected, setOf(State::Idle, State::Running, State::Draining),
     State::Idle},
    {Event::Unlocked, kAll, setOf(State::Running), State::Idle},
    // The search under way decides whether the instrument is there.
    {Event::LossReported, kUnsought, kRuns, State::Lost},
    {Event::RecoveryRequested, kUnsought, kRuns, State::Reconnecting},
    {Event::RecoveryEnded, kSought, kRuns, kSuspendedRun},
};

const Transition* transitionFor(RunEvent event, RunState state, RunState run)
{
    const auto* found =
        std::find_if(std::begin(kTransitions), std::end(kTransitions), [&](const Transition& row) {
            return row.event == event && contains(row.states, state) && contains(row.runs, run);
        });
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
    return stateOver(run());
}

RunState RunStateMachine::stateOver(RunState run) const
{
    if (m_isReconnecting) {
        return m_connected ? State::Reconnected : State::Reconnecting;
    }
    return m_connected ? run : State::Lost;
}

RunState RunStateMachine::run() const
{
    assertGuiThread();
    if (m_scanRunning) {
        return m_isStoppedByButton ? State::Draining : State::Running;
    }
    return m_run == State::Starting ? State::Starting : State::Idle;
}

bool RunStateMachine::isConnected() const
{
    return contains(kConnected, state());
}

bool RunStateMachine::allows(RunEvent event) const
{
    const RunState current = run();
    return transitionFor(event, stateOver(current), current) != nullptr;
}

bool RunStateMachine::take(RunEvent event)
{
    // Read once: the acquisition thread may end the run meanwhile.
    const RunState current = run();
    const Transition* const transition = transitionFor(event, stateOver(current), current);
    if (!transition) {
        return false;
    }
    if (transition->to == kSuspendedRun) {
        m_isReconnecting = false;
    } else {
        enter(*transition->to);
    }
    return true;
}

void RunStateMachine::enter(RunState state)
{
    switch (state) {
    case State::Lost:
        m_connected = false;
        break;
    case State::Reconnecting:
        m_isReconnecting = true;
        break;
    default:
        enterRun(state);
    }
}

/// Writes the flag only where it must change: the acquisition thread may be clearing it.
void RunStateMachine::enterRun(RunState run)
{
    if (run == State::Running) {
        m_scanRunning = true;
    } else if (run == State::Idle) {
        m_scanRunning = false;
    }
    m_run = run;
    if (run == State::Draining || run == State::Running) {
        m_isStoppedByButton = run == State::Draining;
    }
}

} // namespace scn
