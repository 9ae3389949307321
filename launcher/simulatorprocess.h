#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace scnlauncher {

/// A simulated instrument that runs for the lifetime of this object.
class SimulatorProcess
{
public:
    ~SimulatorProcess();

    /// Starts the simulator at `path` and waits until it serves. Returns the VISA resource of its
    /// first transport, or empty on failure (see errorText()).
    QString start(const QString& path, const QStringList& arguments);

    QString errorText() const { return m_errorText; }

private:
    QProcess m_process;
    QString m_errorText;
};

} // namespace scnlauncher
