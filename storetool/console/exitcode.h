#pragma once

namespace scnstore {

/// How the program ends.
enum ExitCode {
    kFine = 0,
    kFailed = 1,  ///< A wrong command line, or a failure outside the run: a disk, a server.
    kDamaged = 2, ///< The run is damaged, or must not be opened.
    kInUse = 3,   ///< The run must not be opened yet: a program still writes to its files.
};

} // namespace scnstore
