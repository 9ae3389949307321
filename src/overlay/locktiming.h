#pragma once

#include <chrono>

namespace scn {

/// How long the lock takes to open. The defaults are the program's own; a test may shorten them.
struct LockTiming
{
    std::chrono::milliseconds hold{1000}; ///< The bar must be held this long.
    std::chrono::milliseconds fade{500};  ///< The veil then takes this long to go.
};

} // namespace scn
