#include "storetool/runs/runfinder.h"

#include "launcher/place/programplace.h"

#include <QDir>
#include <QFileInfo>

namespace scnstore {
namespace {

constexpr int kFoldersDown = 4;

bool mayBeEntered(const QFileInfo& folder)
{
    return folder.isReadable() && folder.isExecutable();
}

void collectRuns(const QString& folder, int foldersDown, FoundRuns& found)
{
    const QFileInfo place(folder);
    if (place.isDir() && !mayBeEntered(place)) {
        found.closed.append(folder);
        return;
    }
    const StoredRun run = StoredRun::in(folder);
    const bool isRun = !run.dayFiles().isEmpty();
    if (isRun) {
        found.runs.append(run);
    }
    // A copied day file may lie among the folders of runs.
    if (foldersDown == 0 || (isRun && (run.isKept || run.isDataDirectory()))) {
        return;
    }
    const QDir parent(folder);
    const QStringList names =
        parent.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name);
    for (const QString& name : names) {
        collectRuns(parent.filePath(name), foldersDown - 1, found);
    }
}

/// Where a short name may lie.
QStringList placesOf(const QString& name)
{
    QStringList paths;
    for (const QString& folder : defaultFolders()) {
        paths.append(folder + QStringLiteral("/runs/") + name);
        paths.append(folder + QLatin1Char('/') + name);
    }
    return paths;
}

bool holdsRun(const QString& path)
{
    return QFileInfo(path).isDir() && !StoredRun::in(path).dayFiles().isEmpty();
}

/// The directories of the runs with that short name, each once.
QStringList runsNamed(const QString& name)
{
    QStringList directories;
    for (const QString& path : placesOf(name)) {
        if (holdsRun(path)) {
            directories.append(QFileInfo(path).canonicalFilePath());
        }
    }
    directories.removeDuplicates();
    return directories;
}

/// Why no run is found, as a sentence.
QString reasonFor(const QString& text)
{
    for (const QString& path : QStringList{text} + placesOf(text)) {
        const QFileInfo place(path);
        if (place.isDir() && !mayBeEntered(place)) {
            return QStringLiteral("there is no right to read %1.").arg(path);
        }
        if (!text.isEmpty() && place.exists()) {
            return place.isDir()
                       ? QStringLiteral("%1 holds no day files (yyyyMMdd.db). 'scn4070a-store "
                                        "list' shows where runs are.")
                             .arg(path)
                       : QStringLiteral("%1 is no directory. Name the one that it lies in.")
                             .arg(path);
        }
    }
    return QStringLiteral("there is no run '%1'. 'scn4070a-store list' shows those there are.")
        .arg(text);
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

FoundRuns runsBelow(const QString& folder)
{
    FoundRuns found;
    collectRuns(folder, kFoldersDown, found);
    return found;
}

std::optional<StoredRun> findRun(const QString& text, QString& sentence)
{
    if (!text.isEmpty() && holdsRun(text)) {
        return StoredRun::in(text);
    }
    const QStringList directories = text.isEmpty() ? QStringList() : runsNamed(text);
    if (directories.size() == 1) {
        return StoredRun::in(directories.constFirst());
    }
    sentence = directories.isEmpty()
                   ? reasonFor(text)
                   : QStringLiteral("there are several runs '%1'. Give the path of one: %2.")
                         .arg(text, directories.join(QStringLiteral(", ")));
    return std::nullopt;
}

} // namespace scnstore
