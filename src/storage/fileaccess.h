#pragma once

namespace scn {

/// What a store does with its day files.
enum class FileAccess {
    Write, ///< Writes today's, reads the others, and creates what is missing.
    Read,  ///< Reads them as they are: creates, changes, checkpoints and deletes nothing.
};

} // namespace scn
