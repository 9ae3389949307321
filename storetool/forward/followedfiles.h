#pragma once

#include "storetool/forward/filefaults.h"
#include "storetool/forward/followedfile.h"
#include "storetool/runs/runaccess.h"
#include "storetool/runs/storedrun.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <optional>
#include <vector>

namespace scnstore {

/// The day files below some directories. Those that are written to stay open, so that what is deleted under
/// this program can be read to its end.
class FollowedFiles
{
public:
    using Clock = FollowedFile::Clock;

    explicit FollowedFiles(const QStringList& directories);

    /// Looks for new directories and files and opens those that have something new. Any number of times,
    /// also while nothing can be read.
    void update();

    /// Closes files that are forwarded to the end and not written to.
    void closeFinished();

    /// The server may have less than this program believes: everything is compared with it once more.
    void doubt();

    const std::vector<std::unique_ptr<FollowedFile>>& open() const { return m_open; }

    /// A file that cannot be read is not looked at again until it changes. Its first damage is told.
    void setAside(const FollowedFile& file);

    /// A file that is read although some of it is damaged.
    void noteSpoilt(const FollowedFile& file);

    /// A file that was read to its end without a damage: the next one is news.
    void noteWhole(const FollowedFile& file);
    bool sawDamage() const { return !m_damaged.isEmpty(); }

    /// Damaged files that nobody was told of yet.
    QStringList takeDamageNews();

    /// What could not be read for a while and is not damaged, and what can be read again.
    QStringList takeFaultNews() { return m_faults.takeNews(); }

    /// Those of the directories below which no run was found.
    const QStringList& emptyDirectories() const { return m_empty; }

    /// Whether everything in the files has been forwarded.
    bool isComplete() const;

    /// The files that are not.
    QStringList unread() const;

    /// Since when there have been readings that are not forwarded; none if there are none.
    std::optional<Clock::time_point> waitingSince() const;

    int instruments() const;
    int unusableReadings() const;

    /// Of the files that have a second name where nobody follows it.
    const QVector<RunRefusal>& refusals() const { return m_refusals; }

private:
    void findRuns();
    void lookAt(const QString& path, const StoredRun& run);
    void openFile(const QString& path, const StoredRun& run, const FileSignature& signature);
    void refuse(const QString& path, const StoredRun& run, const FileSignature& signature);
    bool isFollowedElsewhere(const QString& name, const StoredRun& run,
                             const FileSignature& signature) const;
    void noteUnopened(const QString& path);
    bool hasRoomFor(const QString& path) const;
    bool mayClose(const FollowedFile& file) const;
    bool isOpen(const FileSignature& signature) const;
    void noteDamage(const QString& path);

    const QStringList m_directories;
    const int m_mostOpen;
    QVector<StoredRun> m_runs;
    QStringList m_closed; ///< Folders that there is no right to look into.
    QStringList m_empty;
    Clock::time_point m_runsFoundAt;
    std::vector<std::unique_ptr<FollowedFile>> m_open;
    /// The files that are forwarded to the end, or damaged, as they were then.
    QHash<QString, FileSignature> m_done;
    QSet<QString> m_newest;
    QSet<QString> m_unopened;
    FileFaults m_faults;
    QSet<QString> m_damaged;
    QStringList m_damageNews;
    QVector<RunRefusal> m_refusals;
    int m_unusableOfClosed = 0;
};

} // namespace scnstore
