#pragma once

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
    void addRecentResource(const QString& resource) const;

    /// The rate last chosen for a serial line; 0 if none was.
    int serialRate() const;
    void setSerialRate(int rate) const;

    /// How much is kept of deleted runs; without a limit until the user sets one.
    RunLimits runLimits() const;
    void setRunLimits(const RunLimits& limits) const;

private:
    const QString m_file;
};

} // namespace scnlauncher
