#include "common/helperthreads.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace HelperThreads {
namespace {

struct Count
{
    std::mutex mutex;
    std::condition_variable changed;
    int running = 0;
};

/// Never destroyed: a helper may outlive the static objects.
Count& count()
{
    static Count* const shared = new Count;
    return *shared;
}

} // namespace

void start(std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(count().mutex);
        ++count().running;
    }
    std::thread([work = std::move(work)] {
        work();
        const std::lock_guard<std::mutex> lock(count().mutex);
        --count().running;
        count().changed.notify_all();
    }).detach();
}

bool waitForAll(int timeoutMs)
{
    std::unique_lock<std::mutex> lock(count().mutex);
    return count().changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                    [] { return count().running == 0; });
}

} // namespace HelperThreads
