#pragma once

#include "channels/measurementfunction.h"

#include <array>

namespace scn {

/// Positions of a module that offer the same list of functions.
struct PositionSpan
{
    int first;
    int last;
    FunctionList list;
};

/// What the program knows about one module type.
struct ModuleRow
{
    int moduleType;
    int lastChannelIndex; ///< counts from 0
    std::array<PositionSpan, 3> positions;

    /// What a position, counted from 1, offers; nothing outside all spans.
    FunctionList listAt(int position) const;

    /// Number of positions in the first half: position p pairs with p + bankSize().
    int bankSize() const;
};

/// Type of "no module".
constexpr int kNoModuleType = -1;

/// The module of a type; null for an unknown type.
const ModuleRow* moduleOfType(int moduleType);

} // namespace scn
