#pragma once

#include <QString>

namespace scnlauncher {

/// The device file of a serial resource, e.g. /dev/ttyUSB0 of ASRL/dev/ttyUSB0::INSTR; empty for others.
QString deviceOf(const QString& resource);

/// Why this user cannot open a device file: empty if it can be opened or is not there; otherwise a sentence
/// with the group to join.
QString rightsProblem(const QString& device);

} // namespace scnlauncher
