#pragma once

#include <QtGlobal>

#include <chrono>

namespace scn {

/// A source of the current time, in milliseconds since the epoch.
using StoreClock = qint64 (*)();

/// The store's current time, in milliseconds since the epoch. It decides which day file is today's,
/// whether a reading is in the future, and how long a connection has been idle. Any thread.
qint64 storeNow();

/// Replaces the clock behind storeNow(); null restores the system clock. It lets tests reach
/// midnight without waiting for it.
void setStoreClock(StoreClock clock);

/// Decides how long a wait really takes.
using StoreWait = std::chrono::milliseconds (*)(std::chrono::milliseconds);

/// How long a wait of this length takes: that long, unless setStoreWait() says otherwise. Every
/// pause and delay of the store goes through here or storeSleep(). Any thread.
std::chrono::milliseconds storeWait(std::chrono::milliseconds wait);

/// Blocks the calling thread for storeWait(wait).
void storeSleep(std::chrono::milliseconds wait);

/// Replaces storeWait()'s result; null restores the real waits. It spares tests the pauses.
void setStoreWait(StoreWait wait);

} // namespace scn
