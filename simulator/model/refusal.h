#pragma once

namespace scnsim {

/// Why the instrument refused. Nothing has changed then.
enum class Refusal {
    None,
    OutOfRange,     ///< a number outside its limits, or a channel that its module does not have
    IllegalValue,   ///< not one of the listed values
    Conflict,       ///< it conflicts with another setting
    NoModule,       ///< the channel's slot is empty
    AlreadyRunning, ///< a scan is running
    NotWaiting,     ///< a trigger came when none was awaited
    TooMany,        ///< an absurdly long list
};

} // namespace scnsim
