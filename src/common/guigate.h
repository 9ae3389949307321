#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace scn {

/// Carries work from helper threads to the GUI thread while the window lives. The window and its
/// helpers share it; the window closes it at its end, and work that has not begun by then is
/// dropped.
class GuiGate
{
public:
    /// GUI thread only.
    GuiGate();
    ~GuiGate();
    GuiGate(const GuiGate&) = delete;
    GuiGate& operator=(const GuiGate&) = delete;

    /// Drops all work from now on and wakes the waiting helpers. GUI thread only.
    void close();

    /// The window is about to close: work that checks isOpen() ends by itself, queued work still
    /// runs. Any thread.
    void announceEnd() { m_open.store(false, std::memory_order_relaxed); }

    /// True until announceEnd() or close(). Any thread.
    bool isOpen() const { return m_open.load(std::memory_order_relaxed); }

    /// Runs `work` on the GUI thread and waits for it: directly if already there, otherwise by a
    /// queued call. False if the gate closed first. The caller must hold no lock that the GUI
    /// thread may need.
    bool run(const std::function<void()>& work);

    /// Queues `work` for the GUI thread and returns. Dropped if the gate closes first.
    void post(const std::function<void()>& work);

private:
    std::mutex m_mutex; ///< guards m_context against close()
    std::unique_ptr<QObject> m_context;
    std::atomic<bool> m_open{true};
};

} // namespace scn
