#pragma once

#include <atomic>

namespace scn {

/// Where a run stands.
enum class RunState {
    Idle,
    Starting,    ///< from the click on start until the instrument scans
    Running,     ///< the instrument scans
    Draining,    ///< the button has stopped the scan; its last readings are being fetched
    Lost,        ///< the instrument is not there
    Reconnecting ///< a helper looks for the instrument
};

/// What can happen to a run.
enum class RunEvent {
    StartRequested,    ///< the click on start
    StartDropped,      ///< the start has met a dead link
    ScanStarted,       ///< the instrument scans
    StopRequested,     ///< the click on stop
    TimeElapsed,       ///< the set time of the run is over
    Unlocked,          ///< the lock's bar was held long enough
    LossReported,      ///< the acquisition finds no instrument
    RecoveryRequested, ///< the click on the recovery button
    RecoveryEnded      ///< the helper is done, with the instrument or without
};

/// The states of a run, and which event leads from one to which; what is not listed is refused.
///
/// The window is not alone in this: the acquisition thread ends a run by clearing the flag of the scan, and
/// whoever finds or misses the instrument sets or clears the flag of the link. So these two flags count,
/// and the state follows them. GUI thread; the flags on any.
class RunStateMachine
{
public:
    RunStateMachine(std::atomic<bool>& scanRunning, std::atomic<bool>& connected);

    RunState state() const;

    /// What lies below Lost and Reconnecting, and goes on when the link is back: Idle, Starting, Running or
    /// Draining.
    RunState run() const;

    /// True from the click on stop until the next run: the end of the run was the click.
    bool isStoppedByButton() const { return m_run == RunState::Draining; }

    bool allows(RunEvent event) const;

    /// Brings the run and the flags to where the event leads. False, and nothing has changed, when the
    /// event is refused.
    bool take(RunEvent event);

private:
    bool isLinkUp() const;
    void moveRun(RunState to);

    std::atomic<bool>& m_scanRunning;
    std::atomic<bool>& m_connected;
    RunState m_run = RunState::Idle; ///< where the window has brought the run to
    bool m_isReconnecting = false;
};

} // namespace scn
