#include "launcher/runkeeper.h"

#include "launcher/keptnames.h"
#include "launcher/place/fileuse.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

namespace scnlauncher {

/// Gives a log the second name that goes with its day file's, if it may, and takes that of another away.
void RunKeeper::keepSideFile(KeptRun& run, const QString& directory, const SideFile& file)
{
    const QString name = file.dayFile + file.ending;
    const QString original = pathIn(directory, name);
    const QString second = run.path(name);
    if (isSameFile(original, second)) {
        m_vanished.remove(second);
        record(run, name);
        return;
    }
    const bool isThere = QFileInfo::exists(original);
    const bool hasSecond = factsOf(second).has_value();
    if (isThere) {
        m_vanished.remove(second);
    }
    if (isThere && file.links && (!hasSecond || isOwn(run, name))) {
        linkSideFile(run, directory, file);
    } else if (hasSecond && (isThere || isDoneWith(run, file) || hasVanishedFor(second)) &&
               belongsTo(run, directory, file)) {
        unlink(run, name);
        m_vanished.remove(second);
    }
}

/// The log of the next run may have come since the day file was looked at, and a program may have begun to
/// write. SQLite would play either back into the kept file.
void RunKeeper::linkSideFile(KeptRun& run, const QString& directory, const SideFile& file)
{
    const QString name = file.dayFile + file.ending;
    const QString fresh = run.pathBefore(name);
    QFile::remove(fresh);
    if (addName(pathIn(directory, name), fresh)) {
        return;
    }
    if (belongsTo(run, directory, file) && !isDoneWith(run, file) &&
        isSameFile(pathIn(directory, name), fresh) && !moveName(fresh, run.path(name))) {
        record(run, name);
    }
    QFile::remove(fresh);
}

/// Whether what is beside the day file of a directory is beside the same one as in the kept run.
bool RunKeeper::belongsTo(const KeptRun& run, const QString& directory, const SideFile& file)
{
    return isSameFile(pathIn(directory, file.dayFile), run.path(file.dayFile));
}

/// Whether a rollback journal is not one that a killed program left: the others would undo what was
/// committed.
bool RunKeeper::isDoneWith(const KeptRun& run, const SideFile& file)
{
    return file.isJournal && isOpenElsewhere(run.path(file.dayFile));
}

/// The deletion of a run may have got as far as its log: then the kept one is needed.
bool RunKeeper::hasVanishedFor(const QString& path)
{
    QElapsedTimer& since = m_vanished[path];
    if (!since.isValid()) {
        since.start();
    }
    return since.elapsed() >= m_vanishedFor.count();
}

} // namespace scnlauncher
