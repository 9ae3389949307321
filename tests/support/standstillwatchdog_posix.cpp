#include "support/standstillwatchdog.h"

#include <dirent.h>
#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

// Linux only: lists the process's threads.

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(50);
constexpr auto kStackTime = std::chrono::seconds(2);
constexpr int kMostFrames = 64;
constexpr int kSignal = SIGUSR2;

std::atomic<int> g_stacks{0};

/// Runs on each thread in turn: the dump signals the next when this one is done.
void writeStack(int)
{
    void* frames[kMostFrames];
    const int count = backtrace(frames, kMostFrames);
    char title[64];
    const int length = std::snprintf(title, sizeof title, "\nthread %ld\n", syscall(SYS_gettid));
    if (write(STDERR_FILENO, title, static_cast<size_t>(length)) == length) {
        backtrace_symbols_fd(frames, count, STDERR_FILENO);
    }
    ++g_stacks;
}

void writeAllStacks()
{
    void* frame = nullptr;
    backtrace(&frame, 1); // loads what it needs before a handler asks for it
    struct sigaction action = {};
    action.sa_handler = writeStack;
    sigaction(kSignal, &action, nullptr);
    DIR* const threads = opendir("/proc/self/task");
    if (!threads) {
        return;
    }
    while (const dirent* entry = readdir(threads)) {
        const long thread = std::atol(entry->d_name);
        const int before = g_stacks;
        if (thread <= 0 || syscall(SYS_tgkill, getpid(), thread, kSignal) != 0) {
            continue;
        }
        const auto end = std::chrono::steady_clock::now() + kStackTime;
        while (g_stacks == before && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
    }
    closedir(threads);
}

} // namespace

StandstillWatchdog::StandstillWatchdog(int timeoutMs)
    : m_thread([this, timeoutMs] { watch(timeoutMs); })
{
}

StandstillWatchdog::~StandstillWatchdog()
{
    m_done = true;
    m_thread.join();
}

void StandstillWatchdog::watch(int timeoutMs)
{
    quint64 seen = m_progress;
    auto lastProgress = std::chrono::steady_clock::now();
    while (!m_done) {
        std::this_thread::sleep_for(kPollInterval);
        const auto now = std::chrono::steady_clock::now();
        if (m_progress != seen) {
            seen = m_progress;
            lastProgress = now;
        } else if (now - lastProgress > std::chrono::milliseconds(timeoutMs)) {
            std::fprintf(stderr, "standstill for %d ms; the stacks of all threads:\n", timeoutMs);
            writeAllStacks();
            std::abort();
        }
    }
}
