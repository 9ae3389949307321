#pragma once

#include <QtGlobal>

/// A source of the present time, in milliseconds since the epoch.
using StoreClock = qint64 (*)();

/// The present time as the store sees it, in milliseconds since the epoch: what decides which day
/// file is today's, whether a reading lies in the future, and how long a connection has been idle.
/// Any thread.
qint64 storeNow();

/// Replaces the clock behind storeNow(); a null pointer puts the system's clock back. It is there
/// so that midnight can be reached without waiting for it.
void setStoreClock(StoreClock clock);
