#pragma once

#include <QtGlobal>

#include <vector>

namespace scn {

/// One stored reading of a curve.
struct Sample
{
    qint64 timestamp; ///< Milliseconds since the epoch.
    double value;
};

/// Consecutive samples of one curve, oldest first.
using SampleColumn = std::vector<Sample>;

} // namespace scn
