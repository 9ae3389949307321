#pragma once

namespace scnsim {

/// Why the instrument does not do what it was asked to. Nothing has changed then.
enum class Refusal {
    None,
    OutOfRange,     ///< a number outside its limits, or a channel that its module does not have
    IllegalValue,   ///< not one of the listed values
    Conflict,       ///< another setting stands against it
    NoModule,       ///< the slot of a channel is empty
    AlreadyRunning, ///< a scan is running
    NotWaiting,     ///< a trigger came while none was waited for
    TooMany,        ///< a list beyond every sensible length
};

} // namespace scnsim
