#pragma once

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace scnlauncher {

/// A run that was kept: a folder "runs/<serial>/<start>" beside the data directory, with second names of
/// its files and "run.json", which says what they are.
struct KeptRun
{
    QString folder;
    QString instrument; ///< Its resource; empty if nobody knows.
    QString serial;
    QDateTime start;
    QString source; ///< The data directory.
    /// The names that were given, each with the number of its file.
    QMap<QString, QString> files;

    /// What "run.json" in a folder says; nothing if there is none that can be read.
    static std::optional<KeptRun> in(const QString& folder);

    /// Writes "run.json" in one step. False if that failed.
    bool write() const;

    QString path(const QString& name) const { return folder + QLatin1Char('/') + name; }

    /// Where a file stands until it is known to be this run's.
    QString pathBefore(const QString& name) const { return path(name) + QStringLiteral("-new"); }
};

/// The file that tells a kept run.
QString keptRunFacts(const QString& folder);

/// Where the runs of the data directories in a folder are kept.
QString keptRunsFolder(const QString& folder);

/// Whether a directory has the name of a data directory.
bool isDataDirectory(const QString& directory);

/// The serial number in the name of a data directory.
QString serialOfDataDirectory(const QString& directory);

/// The serial number in the place of a kept run, as a folder's name.
QString serialOfKeptRun(const QString& folder);

/// A folder for a run that starts then, which does not exist yet.
QString newKeptRunFolder(const QString& runsFolder, const QString& serial, const QDateTime& start);

/// The kept runs in a folder of runs.
QVector<KeptRun> keptRunsIn(const QString& runsFolder);

/// The names of the day files in a data directory, oldest first, without links.
QStringList dayFileNames(const QString& directory);

} // namespace scnlauncher
