#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// A simulated instrument that runs as long as this object lives.
class SimulatorProcess
{
public:
    ~SimulatorProcess();

    /// Starts the simulator at `path` and waits until it serves. Gives the VISA resource of its
    /// first transport, empty on failure (errorText() tells why).
    QString start(const QString& path, const QStringList& arguments);

    QString errorText() const { return m_errorText; }

private:
    QProcess m_process;
    QString m_errorText;
};
