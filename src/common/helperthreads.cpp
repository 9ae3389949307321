#include "common/helperthreads.h"

#include <QThreadPool>

#include <limits>

namespace scn::helperthreads {
namespace {

/// A helper may wait for the instrument for long, so none queues behind another. Never destroyed: the
/// destructor would wait for a helper that does not return.
QThreadPool& pool()
{
    static QThreadPool* const shared = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(std::numeric_limits<int>::max());
        return made;
    }();
    return *shared;
}

} // namespace

void start(std::function<void()> work)
{
    pool().start(std::move(work));
}

bool waitForAll(std::chrono::milliseconds timeout)
{
    return pool().waitForDone(static_cast<int>(timeout.count()));
}

} // namespace scn::helperthreads
