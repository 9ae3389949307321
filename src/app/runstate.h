#pragma once

#include <atomic>

namespace scn {

/// The states of a run.
enum class RunState {
    Idle,
    Starting,     ///< from the click on start until the instrument scans
    Running,      ///< the instrument scans
    Draining,     ///< the button has stopped the scan; the last readings are being fetched
    Lost,         ///< the instrument is not there
    Reconnecting, ///< a helper searches for the instrument
    Reconnected   ///< the helper is still at work, but the instrument is there
};

/// The events that change the state of a run.
enum class RunEvent {
    StartRequested,    ///< the click on start
    StartDropped,      ///< the start has found the link dead
    ScanStarted,       ///< the instrument scans
    ScanEnded,         ///< the acquisition has ended the scan
    StopRequested,     ///< the click on stop
    TimeElapsed,       ///< the set time of the run is over
    Unlocked,          ///< the user has held the lock bar
    LossReported,      ///< the acquisition has lost the instrument
    RecoveryRequested, ///< the click on the recovery button
    RecoveryEnded      ///< the helper has finished, successfully or not
};

/// The state of the run. One table has every event that is taken, with what it leads to; any other is refused.
///
/// A lost link suspends the run: state() then tells of the link, and run() what is suspended.
///
/// The two flags are the truth, because others write them: the acquisition thread ends a run by clearing one,
/// and the read-back sets or clears the other. The state is derived from them. GUI thread; the flags on any.
class RunStateMachine
{
public:
    RunStateMachine(std::atomic<bool>& scanRunning, std::atomic<bool>& connected);

    RunState state() const;

    /// Idle, Starting, Running or Draining: what state() is while the link is up, and again once it is back.
    RunState run() const;

    /// False in the states Lost and Reconnecting.
    bool isConnected() const;

    /// True from the click on stop until the next scan: that click was the end of the run.
    bool isStoppedByButton() const { return m_isStoppedByButton; }

    bool allows(RunEvent event) const;

    /// Applies an event to the state and the flags. Returns false, with nothing changed, if it is refused.
    bool take(RunEvent event);

private:
    RunState stateOver(RunState run) const;
    void enter(RunState state);
    void enterRun(RunState run);

    std::atomic<bool>& m_scanRunning;
    std::atomic<bool>& m_connected;
    RunState m_run = RunState::Idle; ///< as last set here; the flags may have changed since
    bool m_isStoppedByButton = false;
    bool m_isReconnecting = false;
};

} // namespace scn
