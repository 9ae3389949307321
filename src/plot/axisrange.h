#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

/// Largest bound and largest width of an axis: what lies beyond overflows in the plot library's ticks.
constexpr double kLargestAxisValue = 1.75e308;

/// True for bounds that the plot library can divide. With others it complains, or fills the memory
/// with ticks.
inline bool isUsableRange(double lower, double upper)
{
    return std::abs(lower) <= kLargestAxisValue && std::abs(upper) <= kLargestAxisValue &&
           lower < upper && upper - lower <= kLargestAxisValue;
}

/// True for bounds with room for ticks between them: numbers are only so close to each other.
inline bool isDistinctRange(double lower, double upper)
{
    constexpr double leastShare = 128 * std::numeric_limits<double>::epsilon();
    return upper - lower >= leastShare * std::max(std::abs(lower), std::abs(upper));
}
