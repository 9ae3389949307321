#pragma once

#include <QStringList>

namespace scnstore {

/// Writes a run as text: as the program exports it, or one reading a line.
int runExportCommand(const QStringList& arguments);

} // namespace scnstore
