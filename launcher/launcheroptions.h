#pragma once

#include <QString>
#include <QStringList>

namespace scnlauncher {

/// The command line.
struct LauncherOptions
{
    QString program;
    QString simulator;
    QStringList simulatorArguments;
    QString resource;
    /// Opens a simulated instrument at once.
    bool isSimulated = false;
    bool asksForHelp = false;
    bool asksForVersion = false;
    QString helpText;
    /// Why the command line is wrong; empty if it is not.
    QString errorText;

    /// Reads it, with the program's name first. An application must exist.
    static LauncherOptions parse(const QStringList& arguments);
};

} // namespace scnlauncher
