#pragma once

#include <QString>
#include <QStringList>

/// The VISA resource that the launch arguments name: the first ';'-separated section of the first
/// argument behind the program's name. Empty when there is no such argument.
QString resourceFromArguments(const QStringList& arguments);

/// Holds when a first argument is there and equals g_resourceName; otherwise one critical log line.
/// Nothing calls it: the launcher is trusted.
bool validateLaunchArguments(const QStringList& arguments);
