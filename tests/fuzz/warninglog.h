#pragma once

#include <QStringList>

/// Keeps what Qt logs from standard error, where it would cost more than the code under test.
/// Clears the log and, the first time, installs itself.
void beginWarningLog();

/// The warnings since the log was begun. A message of another severity ends the process.
const QStringList& warningLog();
