#include "launcher/runwatcher.h"

#include "launcher/folderlock.h"

#include <QDateTime>

namespace scnlauncher {
namespace {

/// For what the file system does not tell.
constexpr std::chrono::milliseconds kLookInterval{1000};
constexpr std::chrono::milliseconds kTidyInterval{10000};

} // namespace

RunWatcher::RunWatcher(const LauncherSettings& settings)
    : m_settings(settings)
    , m_changes(this)
    , m_timer(this)
{
    m_timer.setInterval(kLookInterval);
    connect(&m_timer, &QTimer::timeout, this, &RunWatcher::look);
    connect(&m_changes, &QFileSystemWatcher::directoryChanged, this, &RunWatcher::look);
}

RunWatcher::~RunWatcher() = default;

void RunWatcher::watch(const QString& folder, const QString& instrument, const QDateTime& since)
{
    m_folder = folder;
    m_keeper = std::make_unique<RunKeeper>(folder, instrument, since);
    m_sinceTidy.invalidate();
    m_timer.start();
    // What an earlier program left is as it will be.
    keep(RunKeeper::Writer::Ended);
}

void RunWatcher::leave()
{
    if (!m_keeper) {
        return;
    }
    m_sinceTidy.invalidate();
    keep(RunKeeper::Writer::Ended);
    m_timer.stop();
    const QStringList watched = m_changes.directories();
    if (!watched.isEmpty()) {
        m_changes.removePaths(watched);
    }
    m_keeper.reset();
}

void RunWatcher::look()
{
    if (m_keeper) {
        keep(RunKeeper::Writer::Running);
    }
}

void RunWatcher::keep(RunKeeper::Writer writer)
{
    watchFolders();
    const FolderLock lock(m_folder);
    if (!lock.isFree()) {
        return;
    }
    m_keeper->keep(writer);
    if (!m_sinceTidy.isValid() || m_sinceTidy.hasExpired(kTidyInterval.count())) {
        tidyRuns(m_keeper->runsFolder(), m_settings.runLimits(), QDateTime::currentDateTime());
        m_sinceTidy.start();
    }
    if (m_keeper->problem() != m_problem) {
        m_problem = m_keeper->problem();
        emit problemChanged(m_problem);
    }
}

/// A directory that was deleted is no longer watched.
void RunWatcher::watchFolders()
{
    const QStringList watched = m_changes.directories();
    for (const QString& folder : QStringList(m_folder) + m_keeper->dataDirectories()) {
        if (!watched.contains(folder)) {
            m_changes.addPath(folder);
        }
    }
}

} // namespace scnlauncher
