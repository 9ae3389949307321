#pragma once

#include "model/function.h"

#include <string>

namespace scnsim {

/// A module's type is the last three digits of its model number. A type without a row in the table
/// has one channel that measures nothing.
namespace module {

/// Number of channels.
int channelCount(int type);

/// What the channel at a position, counted from 1, can measure.
ChannelKind kindAt(int type, int position);

/// Distance between the two channels of a four-wire measurement; the function belongs to positions
/// 1 to this number.
int bankSize(int type);

/// Model name, e.g. "SCN4001A" for type 1.
std::string modelText(int type);

} // namespace module

} // namespace scnsim
