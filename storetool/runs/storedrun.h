#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace scnstore {

/// A directory with the day files of a run: a program's own data directory, or one that was kept.
struct StoredRun
{
    QString directory; ///< Absolute, without links.
    bool isKept = false;
    QString instrument; ///< Its resource; empty if that is not written anywhere.
    QString serial;
    QDateTime start; ///< Invalid unless it is written down: then it is that of the first reading.
    QString source;  ///< The data directory that a kept run is from.

    /// Whether a program may write here. In any other place a file with several names is one of a run that
    /// a program may still have open under another.
    bool isDataDirectory() const;

    /// Whether a day file of a kept run is known to have had no WAL any more when it was left.
    bool knowsFileToBeWhole(const QString& path) const;

    /// Paths of the day files, oldest first.
    QStringList dayFiles() const;

    /// The run in a directory that has day files.
    static StoredRun in(const QString& directory);
};

} // namespace scnstore
