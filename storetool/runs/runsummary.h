#pragma once

#include "storetool/runs/storedrun.h"

#include <QMap>
#include <QString>
#include <QVector>

namespace scnstore {

/// The readings of one curve over all files of a run.
struct CurveSummary
{
    qint64 readings = 0;
    qint64 first = 0; ///< Times in ms since the epoch; of no meaning without readings.
    qint64 last = 0;
    double lowest = 0;
    double highest = 0;
};

struct FileSummary
{
    QString name;
    qint64 bytes = 0; ///< With its WAL.
};

/// What a run holds.
struct RunSummary
{
    QVector<FileSummary> files;
    QMap<QString, CurveSummary> curves;
    qint64 readings = 0;
    qint64 first = 0; ///< Times in ms since the epoch; of no meaning without readings.
    qint64 last = 0;
    qint64 bytes = 0;
    QString damage; ///< The first failure, as a sentence; what stands above is what could be read.

    bool metLock = false; ///< The failure, if there is one, may be another program's lock.

    /// The run's start: that written down, else the first reading's.
    QDateTime startOf(const StoredRun& run) const;

    /// The last reading's time; invalid without readings.
    QDateTime end() const;
};

enum class SummaryDetail { Counts, Values };

/// Reads every table of the run. Counts leave the lowest and highest values out, and read the indexes
/// alone. A table that a file lists and does not have counts as empty.
RunSummary summaryOf(const StoredRun& run, SummaryDetail detail);

} // namespace scnstore
