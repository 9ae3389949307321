#include "launcher/runkeeper.h"

#include "launcher/keptnames.h"
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
            if (isForbidden(directory, name) || (isNew && !addRun(runs, directory))) {
                continue;
            }
            if (!link(runs.last(), directory, name)) {
                if (isNew) {
                    runs.removeLast();
                }
                continue;
            }
            run = &runs.last();
        }
        record(*run, name);
        keepSideFile(*run, directory, {name, kWal, false, true});
        keepSideFile(*run, directory, {name, kJournal, true, writer == Writer::Ended});
    }
}

/// Whether a file may have no second name, which does not change while it is there.
bool RunKeeper::isForbidden(const QString& directory, const QString& name)
{
    const QString path = pathIn(directory, name);
    const auto facts = factsOf(path);
    if (!facts || m_forbidden.value(path) != facts->number) {
        return false;
    }
    tellMissingRight(directory);
    return true;
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
    const auto facts = factsOf(pathIn(directory, name));
    if (facts && error == std::errc::operation_not_permitted) {
        m_forbidden.insert(pathIn(directory, name), facts->number);
    }
    if (run.files.isEmpty()) {
        QFile::remove(keptRunFacts(run.folder));
        QDir().rmdir(run.folder);
        QDir().rmdir(QFileInfo(run.folder).path());
    }
    return false;
}

void RunKeeper::tellFailure(const std::error_code& error, const QString& directory)
{
    if (error == std::errc::no_such_file_or_directory) {
        return; // deleted meanwhile
    }
    if (isWithoutLinks(error)) {
        tellMissingLinks();
    } else if (error == std::errc::operation_not_permitted) {
        tellMissingRight(directory);
    } else {
        m_problem = text("无法写入 %1，测量数据没有保留").arg(m_runsFolder);
    }
}

void RunKeeper::tellMissingRight(const QString& directory)
{
    m_problem = text("没有权限为 %1 中的文件建立硬链接，其测量数据没有保留").arg(directory);
}

void RunKeeper::tellMissingLinks()
{
    m_isWithoutLinks = true;
    m_problem = text("此处的文件系统没有硬链接，测量数据不会保留");
}

} // namespace scnlauncher
