#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

/// Carries work from helper threads to the GUI thread for as long as the window lives. Shared by
/// the window and its helpers; when the window goes it closes the gate, and work that has not
/// begun by then is dropped.
class GuiGate
{
public:
    /// Made on the GUI thread.
    GuiGate();
    ~GuiGate();
    GuiGate(const GuiGate&) = delete;
    GuiGate& operator=(const GuiGate&) = delete;

    /// Lets nothing through from now on and wakes the helpers that wait. GUI thread.
    void close();

    /// The window is about to go: work that asks isOpen() ends itself, what is queued still runs.
    /// Any thread.
    void announceEnd() { m_open.store(false, std::memory_order_relaxed); }

    /// True until announceEnd() or close(). Any thread.
    bool isOpen() const { return m_open.load(std::memory_order_relaxed); }

    /// Runs `work` on the GUI thread and returns when it has run: at once when already there, else
    /// by a queued call that the caller waits for. False when the gate closed before it ran. The
    /// caller holds no lock that the GUI thread may want.
    bool run(const std::function<void()>& work);

    /// Queues `work` for the GUI thread and returns. Dropped when the gate closes before it runs.
    void post(const std::function<void()>& work);

private:
    std::mutex m_mutex; ///< guards m_context against close()
    std::unique_ptr<QObject> m_context;
    std::atomic<bool> m_open{true};
};
