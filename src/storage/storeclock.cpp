#include "storage/storeclock.h"

#include <QDateTime>
#include <QThread>

#include <atomic>

namespace scn {
namespace {

std::chrono::milliseconds waitInFull(std::chrono::milliseconds wait)
{
    return wait;
}

std::atomic<StoreClock> g_storeClock{&QDateTime::currentMSecsSinceEpoch};
std::atomic<StoreWait> g_storeWait{&waitInFull};

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

std::chrono::milliseconds storeWait(std::chrono::milliseconds wait)
{
    return g_storeWait.load(std::memory_order_relaxed)(wait);
}

void storeSleep(std::chrono::milliseconds wait)
{
    const std::chrono::milliseconds real = storeWait(wait);
    if (real.count() > 0) {
        QThread::msleep(static_cast<unsigned long>(real.count()));
    }
}

void setStoreWait(StoreWait wait)
{
    g_storeWait.store(wait ? wait : &waitInFull, std::memory_order_relaxed);
}

} // namespace scn
