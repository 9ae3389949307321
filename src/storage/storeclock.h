#pragma once

#include <QtGlobal>

#include <chrono>

/// A source of the present time, in milliseconds since the epoch.
using StoreClock = qint64 (*)();

/// The present time as the store sees it, in milliseconds since the epoch: what decides which day
/// file is today's, whether a reading lies in the future, and how long a connection has been idle.
/// Any thread.
qint64 storeNow();

/// Replaces the clock behind storeNow(); a null pointer puts the system's clock back. It is there
/// so that midnight can be reached without waiting for it.
void setStoreClock(StoreClock clock);

/// Decides how long a wait of the store really takes.
using StoreWait = std::chrono::milliseconds (*)(std::chrono::milliseconds);

/// How long a wait of the given length takes: that long, unless setStoreWait() says otherwise.
/// Every pause and delay of the store goes through here or storeSleep(). Any thread.
std::chrono::milliseconds storeWait(std::chrono::milliseconds wait);

/// Blocks the calling thread for storeWait(wait).
void storeSleep(std::chrono::milliseconds wait);

/// Replaces what storeWait() gives; a null pointer puts the real waits back. It is there so that
/// tests do not sit the pauses out.
void setStoreWait(StoreWait wait);
