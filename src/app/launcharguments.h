#pragma once

#include <QString>
#include <QStringList>

/// Returns the VISA resource from the command line: the first argument up to its first ';'. Empty if
/// there is no argument.
QString resourceFromArguments(const QStringList& arguments);

/// Returns true if the first argument equals g_resourceName; otherwise logs a critical line. Not
/// called: the launcher is trusted.
bool validateLaunchArguments(const QStringList& arguments);
