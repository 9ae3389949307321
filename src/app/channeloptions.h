#pragma once

#include "app/channelrow.h"

#include <QVariant>

namespace scn {

enum class ChannelOption;

/// Shows an option in a channel's row or in one of its two panels, without sending a command. GUI thread.
void showChannelOption(const ChannelRow& row, ChannelOption option, const QVariant& value);

/// Enables the controls of the row's scale function: gain and offset, or the button of the references. Leaves
/// a disabled row disabled. GUI thread.
void enableScaleControls(const ChannelRow& row);

} // namespace scn
