#pragma once

#include "launcher/launchersettings.h"

#include <QObject>
#include <QString>
#include <QThread>

namespace scnlauncher {

class RunWatcher;

/// Keeps the runs of a child, on a thread of its own: see RunKeeper. No call waits for the disk.
class RunArchive : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RunArchive)

public:
    RunArchive(const LauncherSettings& settings, QObject* parent);
    /// Waits a while for what was asked for.
    ~RunArchive() override;

    /// From now on, the runs of the instrument in a child's folder. Call it before the child starts.
    void watch(const QString& folder, const QString& instrument);

    /// The child has ended.
    void leave();

    /// Why runs are not kept, for the user; empty if they are.
    QString problem() const { return m_problem; }

signals:
    void problemChanged();

private:
    QThread* m_thread;
    RunWatcher* m_watcher;
    QString m_problem;
};

} // namespace scnlauncher
