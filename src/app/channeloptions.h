#pragma once

#include "app/channelrow.h"

#include <QVariant>

namespace scn {

enum class ChannelOption;

/// Shows one option that the instrument reports in a channel's row and its two panels. No control sends a
/// command while it is set. GUI thread.
void showChannelOption(const ChannelRow& row, ChannelOption option, const QVariant& value);

/// Enables what the scale function in a row has: gain and offset, or else the button of its references.
/// A row that is out of use stays so. GUI thread.
void enableScaleControls(const ChannelRow& row);

} // namespace scn
