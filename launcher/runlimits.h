#pragma once

#include <QDateTime>
#include <QString>

namespace scnlauncher {

/// How much is kept of the runs that the program has deleted; 0 is without a limit.
struct RunLimits
{
    int days = 0; ///< Since the last write.
    int runs = 0;
    int megabytes = 0; ///< Of 1024 * 1024 bytes, all runs together.

    bool areOff() const { return days <= 0 && runs <= 0 && megabytes <= 0; }
};

/// Removes the oldest of the kept runs in a folder until the limits are met, and empty logs. A run counts
/// once the program has deleted it and nobody has it open. What the archive did not make stays.
void tidyRuns(const QString& runsFolder, const RunLimits& limits, const QDateTime& now);

} // namespace scnlauncher
