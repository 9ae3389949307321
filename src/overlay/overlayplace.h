#pragma once

namespace scn {

/// Left edge that centres a width in an overlay's.
constexpr int centredLeft(int overlayWidth, int width)
{
    return (overlayWidth - width) / 2;
}

} // namespace scn
