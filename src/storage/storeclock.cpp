#include "storage/storeclock.h"

#include <QDateTime>

#include <atomic>

namespace {

std::atomic<StoreClock> g_storeClock{&QDateTime::currentMSecsSinceEpoch};

} // namespace

qint64 storeNow()
{
    return g_storeClock.load(std::memory_order_relaxed)();
}

void setStoreClock(StoreClock clock)
{
    g_storeClock.store(clock ? clock : &QDateTime::currentMSecsSinceEpoch,
                       std::memory_order_relaxed);
}
