#include "launcher/runlimits.h"

#include "launcher/place/fileuse.h"
#include "launcher/place/keptrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QVector>

#include <algorithm>

namespace scnlauncher {
namespace {

constexpr qint64 kBytesPerMegabyte = 1024 * 1024;
/// Longer than the program takes to fold the logs of a deleted run into its files.
constexpr qint64 kFoldingSeconds = 60;
const QString kDayFileEnding = QStringLiteral(".db");
const QString kWal = QStringLiteral("-wal");

/// A kept run that nothing else refers to.
struct LeftRun
{
    KeptRun run;
    qint64 bytes = 0;
    QDateTime lastWrite;
};

/// The facts of a file that the archive made; nothing if another has its name.
std::optional<FileFacts> ownFacts(const KeptRun& run, const QString& name)
{
    auto facts = factsOf(run.path(name));
    return facts && QString::number(facts->number) == run.files.value(name) ? facts : std::nullopt;
}

/// Whether only the archive's names are left of a run.
bool isLeft(const KeptRun& run)
{
    const QStringList names = run.files.keys();
    return std::all_of(names.cbegin(), names.cend(), [&run](const QString& name) {
        const auto facts = ownFacts(run, name);
        return !facts || (facts->names == 1 &&
                          !(name.endsWith(kDayFileEnding) && isOpenElsewhere(run.path(name))));
    });
}

/// Drops the logs with nothing in them, and those of an earlier state of their files, which were written
/// long after such a log was let go: it would be replayed over what is newer.
void dropSpentLogs(KeptRun& run)
{
    for (const QString& name : run.files.keys()) {
        const auto log = name.endsWith(kWal) ? ownFacts(run, name) : std::nullopt;
        const auto file = factsOf(run.path(name.chopped(qMin(kWal.size(), name.size()))));
        if (log && file &&
            (log->bytes == 0 || log->changed.secsTo(file->modified) > kFoldingSeconds) &&
            QFile::remove(run.path(name))) {
            run.files.remove(name);
            run.write();
        }
    }
}

QVector<LeftRun> leftRunsIn(const QString& runsFolder)
{
    QVector<LeftRun> left;
    for (KeptRun& run : keptRunsIn(runsFolder)) {
        if (!isLeft(run)) {
            continue;
        }
        dropSpentLogs(run);
        LeftRun entry{run, 0, {}};
        for (const QString& name : run.files.keys()) {
            if (const auto facts = ownFacts(run, name)) {
                entry.bytes += facts->bytes;
                entry.lastWrite = entry.lastWrite.isValid()
                                      ? std::max(entry.lastWrite, facts->modified)
                                      : facts->modified;
            }
        }
        left.append(entry);
    }
    return left;
}

/// Removes what is beside a day file if its reader or the archive is killed: no readings are in it.
void removeReadersFiles(const KeptRun& run)
{
    for (const QString& name : run.files.keys()) {
        if (name.endsWith(kDayFileEnding)) {
            QFile::remove(run.pathBefore(name + kWal));
            QFile::remove(run.path(name + QStringLiteral("-shm")));
            const auto log = factsOf(run.path(name + kWal));
            if (log && log->bytes == 0) {
                QFile::remove(run.path(name + kWal));
            }
        }
    }
}

void removeRun(const KeptRun& run)
{
    bool isGone = true;
    // By name, a day file goes before its log: an interrupted removal leaves no file without its log.
    for (const QString& name : run.files.keys()) {
        if (ownFacts(run, name)) {
            isGone = QFile::remove(run.path(name)) && isGone;
        }
    }
    if (!isGone) {
        return;
    }
    removeReadersFiles(run);
    QFile::remove(keptRunFacts(run.folder));
    QDir().rmdir(run.folder);
    QDir().rmdir(QFileInfo(run.folder).path());
}

} // namespace

void tidyRuns(const QString& runsFolder, const RunLimits& limits, const QDateTime& now)
{
    QVector<LeftRun> left = leftRunsIn(runsFolder);
    if (limits.areOff()) {
        return;
    }
    std::sort(left.begin(), left.end(), [](const LeftRun& one, const LeftRun& other) {
        return one.run.start < other.run.start;
    });
    qint64 bytes = 0;
    for (const LeftRun& entry : qAsConst(left)) {
        bytes += entry.bytes;
    }
    int runs = left.size();
    for (const LeftRun& entry : qAsConst(left)) {
        const bool isOld = limits.days > 0 && entry.lastWrite < now.addDays(-limits.days);
        const bool isOneTooMany = limits.runs > 0 && runs > limits.runs;
        const bool isTooLarge =
            limits.megabytes > 0 && bytes > limits.megabytes * kBytesPerMegabyte;
        if (isOld || isOneTooMany || isTooLarge) {
            removeRun(entry.run);
            bytes -= entry.bytes;
            --runs;
        }
    }
}

} // namespace scnlauncher
