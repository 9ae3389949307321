#pragma once

#include "launcher/foundinstrument.h"

namespace scnlauncher {

/// The USB instruments that the kernel's test-and-measurement driver serves. `root` is the root of the file
/// system.
FoundInstruments findUsbInstruments(const QString& root = QStringLiteral("/"));

} // namespace scnlauncher
