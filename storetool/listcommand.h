#pragma once

#include <QStringList>

namespace scnstore {

/// Lists the runs below a folder, or below those of the programs.
int runListCommand(const QStringList& arguments);

} // namespace scnstore
