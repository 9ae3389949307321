#pragma once

#include <QtGlobal>

namespace scn {

/// The parameters of a read.
struct ReadRange
{
    int curveId;
    qint64 start; ///< Milliseconds since the epoch.
    qint64 end;
    int maxPoints; ///< 0 or less: no limit.
};

} // namespace scn
