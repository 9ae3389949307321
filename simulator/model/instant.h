#pragma once

#include <chrono>

namespace scnsim {

/// Time since power-on. It only moves forward and is passed in by the caller: nothing in the model
/// reads a clock.
using Instant = std::chrono::nanoseconds;

} // namespace scnsim
