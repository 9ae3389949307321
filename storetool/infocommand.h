#pragma once

#include <QStringList>

namespace scnstore {

/// Describes one run: its files and its curves.
int runInfoCommand(const QStringList& arguments);

} // namespace scnstore
