#pragma once

#include <QString>

namespace scnlauncher {

/// The device file of a serial resource, e.g. /dev/ttyUSB0 of ASRL/dev/ttyUSB0::INSTR, or of a USB
/// instrument that is plugged in; empty for others. `root` is the root of the file system.
QString deviceOf(const QString& resource, const QString& root = QStringLiteral("/"));

/// Why this user cannot open a device file: empty if it can be opened or is not there; otherwise a sentence
/// with the group to join.
QString rightsProblem(const QString& device);

} // namespace scnlauncher
