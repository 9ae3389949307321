#pragma once

namespace scnlauncher {

/// Gives the launcher's windows the dark look of the program's. Once, after the application exists.
void applyLook();

} // namespace scnlauncher
