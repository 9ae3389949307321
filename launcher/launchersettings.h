#pragma once

#include "launcher/instrumentchoice.h"
#include "launcher/runlimits.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace scnlauncher {

/// What the launcher remembers, in the user's configuration folder. The program has no settings.
class LauncherSettings
{
public:
    static constexpr int kMostRecent = 8;

    /// `$XDG_CONFIG_HOME/scn4070a/launcher.ini`.
    static QString path();

    explicit LauncherSettings(const QString& file = path());

    QByteArray geometry() const;
    void setGeometry(const QByteArray& geometry) const;

    /// The newest first.
    QStringList recentResources() const;
    /// What is opened becomes the newest; its rate is kept too.
    void remember(const InstrumentChoice& choice) const;
    void forget(const QString& resource) const;

    /// The rate that a serial line had last; 0 if it was never open.
    int serialRate(const QString& resource) const;

    /// How much is kept of deleted runs; without a limit until the user sets one.
    RunLimits runLimits() const;
    void setRunLimits(const RunLimits& limits) const;

private:
    const QString m_file;
};

} // namespace scnlauncher
