#pragma once

#include "app/channelrow.h"

#include <functional>

class LinkWatch;

/// Enables what the scale function in a row has: gain and offset, or else the button of its references.
/// A row that is out of use stays so. GUI thread.
void enableScaleControls(const ChannelRow& row);

/// Asks the instrument for everything but the function of one channel and shows it in the channel's
/// row and its two panels. No control sends a command while it is set.
///
/// Runs on any thread: the questions are asked here, in the order of the read-back, and what they
/// give is shown through `link`. `rowOf` is called on the GUI thread only. `function` is the function
/// index whose header and options apply. An unanswered question reads as 0 or as no match.
void readBackChannelOptions(LinkWatch& link, const std::function<ChannelRow(int channel)>& rowOf,
                            int function, int channel);
