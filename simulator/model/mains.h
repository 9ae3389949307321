#pragma once

namespace scnsim {

/// Frequency of the mains, whose cycles integration times count and whose hum is in the signals.
constexpr double kLineFrequencyHz = 50;

} // namespace scnsim
