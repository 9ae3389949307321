#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace scn {

/// Largest bound and largest width of an axis: beyond it the plot library's ticks overflow.
constexpr double kLargestAxisValue = 1.75e308;

/// True for bounds that the plot library can divide. Others make it complain, or fill the memory with
/// ticks.
inline bool isUsableRange(double lower, double upper)
{
    return std::abs(lower) <= kLargestAxisValue && std::abs(upper) <= kLargestAxisValue &&
           lower < upper && upper - lower <= kLargestAxisValue;
}

/// True for bounds with room for ticks in between: doubles are only so dense.
inline bool isDistinctRange(double lower, double upper)
{
    constexpr double kLeastShare = 128 * std::numeric_limits<double>::epsilon();
    return upper - lower >= kLeastShare * std::max(std::abs(lower), std::abs(upper));
}

} // namespace scn
