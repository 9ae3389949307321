#pragma once

#include "model/function.h"

#include <string>

namespace scnsim {

/// A module is known by its type, the last three digits of its model number.
/// Types without a row in the table have one channel that measures nothing.
namespace module {

/// Number of channels.
int channelCount(int type);

/// What the channel at a position, counted from 1, can measure. Empty for a switch channel.
FunctionSet functionsAt(int type, int position);

/// How far apart the two channels of a four-wire measurement are; positions 1 to this number are
/// the ones that carry the function.
int bankSize(int type);

/// The model text, e.g. "SCN4001A" for type 1.
std::string modelText(int type);

} // namespace module

} // namespace scnsim
