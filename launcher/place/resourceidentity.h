#pragma once

#include <QString>

namespace scnlauncher {

/// One spelling for all texts that mean the same instrument, for comparing only: key words and hosts
/// in one case, numbers and addresses in one form, the defaults of the standard filled in, the board
/// left out where another part names the instrument, a serial port by the device that its links lead
/// to. Host names are not looked up. What follows the first ';' does not count.
QString resourceIdentity(const QString& resource);

/// A short name for a file or folder that tells which text it stands for: letters, digits, '.', '_'
/// and '-' only. Texts that differ by more than their separators have names that differ.
QString readableName(const QString& text);

} // namespace scnlauncher
