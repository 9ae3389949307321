#pragma once

#include <QStringList>

/// Keeps Qt's log off standard error, where it would cost more than the code under test. Clears the
/// log and, the first time, installs itself.
void beginWarningLog();

/// The warnings since the log was cleared. A message of any other severity ends the process.
const QStringList& warningLog();
