#include "launcher/runarchive.h"

#include "launcher/runwatcher.h"

#include <QDateTime>

namespace scnlauncher {
namespace {

constexpr unsigned long kEndWaitMs = 2000;

} // namespace

RunArchive::RunArchive(const LauncherSettings& settings, QObject* parent)
    : QObject(parent)
    , m_thread(new QThread)
    , m_watcher(new RunWatcher(settings))
{
    m_watcher->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_watcher, &QObject::deleteLater);
    connect(m_watcher, &RunWatcher::problemChanged, this, [this](const QString& problem) {
        m_problem = problem;
        emit problemChanged();
    });
    m_thread->start();
}

RunArchive::~RunArchive()
{
    QThread* const thread = m_thread;
    // Behind what was asked for, which a quit() from here would overtake.
    QMetaObject::invokeMethod(
        m_watcher, [thread] { thread->quit(); }, Qt::QueuedConnection);
    if (thread->wait(kEndWaitMs)) {
        delete thread;
    }
    // Else the disk hangs. A thread cannot be deleted while it runs.
}

void RunArchive::watch(const QString& folder, const QString& instrument)
{
    RunWatcher* const watcher = m_watcher;
    QMetaObject::invokeMethod(
        watcher,
        [watcher, folder, instrument, since = QDateTime::currentDateTime()] {
            watcher->watch(folder, instrument, since);
        },
        Qt::QueuedConnection);
}

void RunArchive::leave()
{
    RunWatcher* const watcher = m_watcher;
    QMetaObject::invokeMethod(
        watcher, [watcher] { watcher->leave(); }, Qt::QueuedConnection);
}

} // namespace scnlauncher
