#pragma once

#include "launcher/place/keptrun.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <system_error>

namespace scnlauncher {

/// Gives the day files in the data directories of a folder second names in "runs/<serial>/<start>" beside
/// them, so that they outlive the program's deletion of a run. Copies nothing and opens no day file.
class RunKeeper
{
public:
    /// A log that has gone is let go after this long: a run is not deleted in one step.
    static constexpr std::chrono::milliseconds kVanishedFor{10000};

    /// Runs that start from `since` on are the instrument's.
    RunKeeper(const QString& folder, QString instrument, const QDateTime& since,
              std::chrono::milliseconds vanishedFor = kVanishedFor);

    /// Whether the program may be writing.
    enum class Writer { Running, Ended };

    /// Links what has no second name yet. A WAL is linked while it is in use, because that of a deleted
    /// run is folded in only afterwards; a rollback journal only of a program that has ended, because
    /// one that is done with would undo what was committed.
    void keep(Writer writer);

    /// Why runs are not kept, for the user; empty if they are.
    QString problem() const { return m_problem; }

    QString runsFolder() const { return m_runsFolder; }

    /// The data directories there are.
    QStringList dataDirectories() const;

private:
    /// What SQLite has beside a day file.
    struct SideFile
    {
        QString dayFile;
        QString ending;
        bool isJournal; ///< For rolling back.
        bool links;     ///< It may have a second name now.
    };

    void probe();
    void keepDirectory(const QString& directory, Writer writer);
    bool isForbidden(const QString& directory, const QString& name);
    bool addRun(QVector<KeptRun>& runs, const QString& directory);
    bool link(KeptRun& run, const QString& directory, const QString& name);
    void keepSideFile(KeptRun& run, const QString& directory, const SideFile& file);
    static void linkSideFile(KeptRun& run, const QString& directory, const SideFile& file);
    static bool belongsTo(const KeptRun& run, const QString& directory, const SideFile& file);
    static bool isDoneWith(const KeptRun& run, const SideFile& file);
    bool hasVanishedFor(const QString& path);
    void tellFailure(const std::error_code& error, const QString& directory);
    void tellMissingRight(const QString& directory);
    void tellMissingLinks();

    const QString m_folder;
    const QString m_runsFolder;
    const QString m_instrument;
    const QDateTime m_since;
    const std::chrono::milliseconds m_vanishedFor;
    /// By data directory: the runs that share a file with it.
    QHash<QString, QVector<KeptRun>> m_runs;
    /// Logs that are no longer beside their day files.
    QHash<QString, QElapsedTimer> m_vanished;
    /// The numbers of files that may have no second name, by path.
    QHash<QString, quint64> m_forbidden;
    QString m_problem;
    bool m_isWithoutLinks = false;
};

} // namespace scnlauncher
