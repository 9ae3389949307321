#pragma once

#include "launcher/launchersettings.h"
#include "launcher/runkeeper.h"

#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <memory>

namespace scnlauncher {

/// Keeps the runs of one folder at a time, whenever something changes there, on the thread that it lives
/// on.
class RunWatcher : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RunWatcher)

public:
    explicit RunWatcher(const LauncherSettings& settings);
    ~RunWatcher() override;

    void watch(const QString& folder, const QString& instrument, const QDateTime& since);

    /// Looks once more, for a program that has ended, and no longer.
    void leave();

signals:
    void problemChanged(const QString& problem);

private:
    void look();
    void keep(RunKeeper::Writer writer);
    void watchFolders();

    const LauncherSettings m_settings;
    QFileSystemWatcher m_changes;
    QTimer m_timer;
    QElapsedTimer m_sinceTidy;
    QString m_folder;
    QString m_problem;
    std::unique_ptr<RunKeeper> m_keeper;
};

} // namespace scnlauncher
