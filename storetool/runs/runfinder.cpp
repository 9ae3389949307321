#include "storetool/runs/runfinder.h"

#include "launcher/place/programplace.h"

#include <QDir>
#include <QFileInfo>

namespace scnstore {
namespace {

constexpr int kFoldersDown = 4;

void collectRuns(const QString& folder, int foldersDown, QVector<StoredRun>& runs)
{
    const StoredRun run = StoredRun::in(folder);
    if (!run.dayFiles().isEmpty()) {
        runs.append(run);
        return;
    }
    if (foldersDown == 0) {
        return;
    }
    const QDir parent(folder);
    const QStringList names =
        parent.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name);
    for (const QString& name : names) {
        collectRuns(parent.filePath(name), foldersDown - 1, runs);
    }
}

/// The directories that the text may mean.
QStringList candidates(const QString& text)
{
    QStringList paths{text};
    for (const QString& folder : defaultFolders()) {
        paths.append(folder + QStringLiteral("/runs/") + text);
        paths.append(folder + QLatin1Char('/') + text);
    }
    return paths;
}

} // namespace

QStringList defaultFolders()
{
    QStringList folders{
        QFileInfo(scnlauncher::companionProgram(QStringLiteral("scn4070a"))).path()};
    const QString root = scnlauncher::perUserRoot();
    const QDir ofUser(root);
    if (!root.isEmpty()) {
        for (const QString& name :
             ofUser.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            folders.append(ofUser.filePath(name));
        }
    }
    return folders;
}

QVector<StoredRun> runsBelow(const QString& folder)
{
    QVector<StoredRun> runs;
    collectRuns(folder, kFoldersDown, runs);
    return runs;
}

std::optional<StoredRun> findRun(const QString& text, QString& sentence)
{
    for (const QString& path : candidates(text)) {
        const QFileInfo place(path);
        if (text.isEmpty() || !place.exists()) {
            continue;
        }
        if (!place.isDir()) {
            sentence =
                QStringLiteral("%1 is no directory. Name the one that it lies in.").arg(path);
            return std::nullopt;
        }
        StoredRun run = StoredRun::in(path);
        if (run.dayFiles().isEmpty()) {
            sentence = QStringLiteral("%1 holds no day files (yyyyMMdd.db). 'scn4070a-store list' "
                                      "shows where runs are.")
                           .arg(path);
            return std::nullopt;
        }
        return run;
    }
    sentence = QStringLiteral("there is no run '%1'. 'scn4070a-store list' shows those there are.")
                   .arg(text);
    return std::nullopt;
}

} // namespace scnstore
