#include "lockwaits.h"

#include <QMutex>

#include <sqlite3.h>

#include <utility>

namespace {

QMutex g_mutex;
std::chrono::microseconds g_total{0};
std::chrono::microseconds g_limit{0};
std::function<void()> g_action;

sqlite3_vfs* g_real = nullptr;
sqlite3_vfs g_layer;

int skipWait(sqlite3_vfs*, int microseconds)
{
    std::function<void()> action;
    {
        const QMutexLocker locker(&g_mutex);
        g_total += std::chrono::microseconds(microseconds);
        if (g_total > g_limit) {
            action.swap(g_action);
        }
    }
    if (action) {
        action();
    }
    return microseconds;
}

} // namespace

LockWaits::LockWaits()
{
    forget();
    g_real = sqlite3_vfs_find(nullptr);
    g_layer = *g_real;
    g_layer.zName = "impatient";
    g_layer.pNext = nullptr;
    g_layer.xSleep = skipWait;
    sqlite3_vfs_register(&g_layer, 1);
}

LockWaits::~LockWaits()
{
    sqlite3_vfs_unregister(&g_layer);
    sqlite3_vfs_register(g_real, 1);
    after(std::chrono::milliseconds::zero(), {});
}

std::chrono::milliseconds LockWaits::total() const
{
    const QMutexLocker locker(&g_mutex);
    return std::chrono::duration_cast<std::chrono::milliseconds>(g_total);
}

void LockWaits::forget()
{
    const QMutexLocker locker(&g_mutex);
    g_total = std::chrono::microseconds::zero();
}

void LockWaits::after(std::chrono::milliseconds wait, std::function<void()> action)
{
    const QMutexLocker locker(&g_mutex);
    g_limit = wait;
    g_action = std::move(action);
}
