#pragma once

#include "storetool/runs/storedrun.h"

#include <QString>
#include <QtGlobal>

#include <optional>

namespace scnstore {

/// The times of the first and the last reading of a run, ms since the epoch.
struct RunBounds
{
    qint64 first = 0;
    qint64 last = -1; ///< Before the first if there are no readings.

    bool hasReadings() const { return first <= last; }
};

/// Why a file could not be read, as a sentence.
struct BoundsFailure
{
    QString sentence;
    bool metLock = false;
};

/// The bounds, from the ends of each table. Nothing if a file cannot be read.
std::optional<RunBounds> boundsOf(const StoredRun& run, BoundsFailure& failure);

} // namespace scnstore
