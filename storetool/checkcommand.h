#pragma once

#include <QStringList>

namespace scnstore {

/// Checks one run, and says what is wrong with it.
int runCheckCommand(const QStringList& arguments);

} // namespace scnstore
