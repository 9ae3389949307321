#pragma once

#include "launcher/foundinstrument.h"

namespace scnlauncher {

/// The serial ports of the machine, those with a name first. `root` is the root of the file system.
FoundInstruments findSerialPorts(const QString& root = QStringLiteral("/"));

} // namespace scnlauncher
