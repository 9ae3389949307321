#pragma once

#include <QtGlobal>

#include <atomic>
#include <thread>

/// Ends the program when its threads have come to a standstill, after writing all their stacks to
/// standard error.
class StandstillWatchdog
{
public:
    explicit StandstillWatchdog(int timeoutMs);
    ~StandstillWatchdog();
    Q_DISABLE_COPY_MOVE(StandstillWatchdog)

    /// Reports progress. Any thread.
    void progress() { ++m_progress; }

private:
    void watch(int timeoutMs);

    std::atomic<quint64> m_progress{0};
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};
