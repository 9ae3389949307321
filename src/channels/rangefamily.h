#pragma once

#include "channels/measurementfunction.h"

#include <array>

namespace scn {

/// The fixed ranges of a family. Row 0 of a range box is the automatic range; row r stands for
/// base * 10^(r - 1) base units.
struct FixedRanges
{
    static constexpr int kMaxRows = 8;

    RangeFamily family;
    double base;
    std::array<const char*, kMaxRows> texts; ///< from row 1 on; null after the last

    /// Value of a row; 0 for one that no box can have.
    double valueOf(int row) const;

    /// Row for a value in base units; -1 if none matches. It is the number of the decade, which may lie
    /// beyond the end of the box.
    int rowOf(double value) const;
};

/// The ranges of a function; null if it has none.
const FixedRanges* rangesOf(const MeasurementFunction* function);

} // namespace scn
