#include "launcher/runkeeper.h"

#include "launcher/place/fileuse.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <algorithm>
#include <utility>

namespace scnlauncher {
namespace {

const QString kWal = QStringLiteral("-wal");
const QString kJournal = QStringLiteral("-journal");

QString text(const char* source)
{
    return QCoreApplication::translate("RunKeeper", source);
}

QString pathIn(const QString& directory, const QString& name)
{
    return directory + QLatin1Char('/') + name;
}

bool isSameFile(const QString& one, const QString& other)
{
    const auto first = factsOf(one);
    const auto second = factsOf(other);
    return first && second && first->isSameFile(*second);
}

/// When the run in a data directory began: the oldest of its files was made then.
QDateTime startOf(const QString& directory)
{
    QDateTime start = QDateTime::currentDateTime();
    for (const QString& name : dayFileNames(directory)) {
        const QFileInfo file(pathIn(directory, name));
        const QDateTime born = file.birthTime();
        start = std::min(start, born.isValid() ? born : file.lastModified());
    }
    return start;
}

/// The run that has a second name of this file; null if none does.
KeptRun* runWith(QVector<KeptRun>& runs, const QString& directory, const QString& name)
{
    const auto run = std::find_if(runs.begin(), runs.end(), [&](const KeptRun& candidate) {
        return isSameFile(candidate.path(name), pathIn(directory, name));
    });
    return run == runs.end() ? nullptr : &*run;
}

/// Writes down that a name in the run's folder is the archive's.
void record(KeptRun& run, const QString& name)
{
    const auto facts = factsOf(run.path(name));
    const QString number = facts ? QString::number(facts->number) : QString();
    if (run.files.value(name) != number) {
        run.files.insert(name, number);
        run.write();
    }
}

/// Whether a name is one that the archive gave.
bool isOwn(const KeptRun& run, const QString& name)
{
    const auto facts = factsOf(run.path(name));
    return facts && run.files.value(name) == QString::number(facts->number);
}

/// Takes a name away that the archive gave.
void unlink(KeptRun& run, const QString& name)
{
    if (isOwn(run, name) && QFile::remove(run.path(name))) {
        run.files.remove(name);
        run.write();
    }
}

} // namespace

RunKeeper::RunKeeper(const QString& folder, QString instrument, const QDateTime& since,
                     std::chrono::milliseconds vanishedFor)
    : m_folder(QFileInfo(folder).canonicalFilePath())
    , m_runsFolder(keptRunsFolder(m_folder))
    , m_instrument(std::move(instrument))
    , m_since(since)
    , m_vanishedFor(vanishedFor)
{
    probe();
}

QStringList RunKeeper::dataDirectories() const
{
    QStringList paths;
    const QDir folder(m_folder);
    for (const QString& name : folder.entryList(
             {QStringLiteral("*_Data")},
             QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name)) {
        paths.append(folder.filePath(name));
    }
    return paths;
}

/// Tells before the first run whether there are links.
void RunKeeper::probe()
{
    QTemporaryFile file(pathIn(m_folder, QStringLiteral(".scn4070a-XXXXXX")));
    if (!file.open()) {
        return;
    }
    const QString second = pathIn(QFileInfo::exists(m_runsFolder) ? m_runsFolder : m_folder,
                                  QFileInfo(file).fileName() + QStringLiteral("-link"));
    const std::error_code error = addName(file.fileName(), second);
    if (error == std::errc::operation_not_permitted) {
        // A file of its own: the file system permits no links at all.
        tellMissingLinks();
    } else if (error) {
        tellFailure(error, m_folder);
    } else {
        QFile::remove(second);
    }
}

void RunKeeper::keep(Writer writer)
{
    if (m_isWithoutLinks) {
        return;
    }
    m_problem.clear();
    const QStringList directories = dataDirectories();
    for (const QString& directory : directories) {
        keepDirectory(directory, writer);
    }
    for (const QString& known : m_runs.keys()) {
        if (!directories.contains(known)) {
            m_runs.remove(known);
        }
    }
}

void RunKeeper::keepDirectory(const QString& directory, Writer writer)
{
    const QStringList names = dayFileNames(directory);
    if (!m_runs.contains(directory)) {
        m_runs.insert(directory, keptRunsIn(m_runsFolder));
    }
    QVector<KeptRun>& runs = m_runs[directory];
    runs.erase(std::remove_if(
                   runs.begin(), runs.end(),
                   [&](const KeptRun& run) {
                       return std::none_of(names.begin(), names.end(), [&](const QString& name) {
                           return isSameFile(run.path(name), pathIn(directory, name));
                       });
                   }),
               runs.end());
    for (KeptRun& run : runs) {
        // The folder was moved with the runs in it.
        if (run.source != directory) {
            run.source = directory;
            run.write();
        }
    }
    for (const QString& name : names) {
        KeptRun* run = runWith(runs, directory, name);
        if (!run) {
            const bool isNew = runs.isEmpty() || QFileInfo::exists(runs.constLast().path(name));
            if ((isNew && !addRun(runs, directory)) || !link(runs.last(), directory, name)) {
                continue;
            }
            run = &runs.last();
        }
        record(*run, name);
        keepSideFile(*run, directory, {name, kWal, true});
        keepSideFile(*run, directory, {name, kJournal, writer == Writer::Ended});
    }
}

bool RunKeeper::addRun(QVector<KeptRun>& runs, const QString& directory)
{
    KeptRun run;
    run.serial = serialOfDataDirectory(directory);
    run.start = startOf(directory);
    run.instrument = run.start >= m_since ? m_instrument : QString();
    run.source = directory;
    run.folder = newKeptRunFolder(m_runsFolder, run.serial, run.start);
    if (!QDir().mkpath(run.folder) || !run.write()) {
        QDir().rmdir(run.folder);
        m_problem = text("无法写入 %1，测量数据没有保留").arg(m_runsFolder);
        return false;
    }
    runs.append(run);
    return true;
}

bool RunKeeper::link(KeptRun& run, const QString& directory, const QString& name)
{
    const std::error_code error = addName(pathIn(directory, name), run.path(name));
    if (!error) {
        return true;
    }
    tellFailure(error, directory);
    if (run.files.isEmpty()) {
        QFile::remove(keptRunFacts(run.folder));
        QDir().rmdir(run.folder);
        QDir().rmdir(QFileInfo(run.folder).path());
    }
    return false;
}

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
    return file.ending == kJournal && isOpenElsewhere(run.path(file.dayFile));
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

void RunKeeper::tellFailure(const std::error_code& error, const QString& directory)
{
    if (error == std::errc::no_such_file_or_directory) {
        return; // deleted meanwhile
    }
    if (isWithoutLinks(error)) {
        tellMissingLinks();
    } else if (error == std::errc::operation_not_permitted) {
        m_problem = text("没有权限为 %1 中的文件建立硬链接，其测量数据没有保留").arg(directory);
    } else {
        m_problem = text("无法写入 %1，测量数据没有保留").arg(m_runsFolder);
    }
}

void RunKeeper::tellMissingLinks()
{
    m_isWithoutLinks = true;
    m_problem = text("此处的文件系统没有硬链接，测量数据不会保留");
}

} // namespace scnlauncher
