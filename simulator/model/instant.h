#pragma once

#include <chrono>

namespace scnsim {

/// Time since the instrument was switched on. It only moves forward, and whoever drives the
/// instrument hands it in: nothing in the model looks at a clock.
using Instant = std::chrono::nanoseconds;

} // namespace scnsim
