#pragma once

#include <QString>

namespace scnlauncher {

/// What the user wants to open.
struct InstrumentChoice
{
    /// A simulated one has none: it gets its resource when it starts.
    QString resource;
    bool isSimulated = false;
    /// Bits per second of a serial line; 0 for the program's own.
    int serialRate = 0;
};

} // namespace scnlauncher
