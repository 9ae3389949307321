#pragma once

namespace scnsim {

/// A channel is numbered by its slot and its position in the module, both from 1: 101 for the first
/// channel of slot 1.
constexpr int kNumbersPerSlot = 100;

constexpr int kLastSlot = 99;

constexpr int channelAt(int slot, int position)
{
    return slot * kNumbersPerSlot + position;
}

constexpr int slotOf(int channel)
{
    return channel / kNumbersPerSlot;
}

constexpr int positionOf(int channel)
{
    return channel % kNumbersPerSlot;
}

/// The highest number that a channel can have.
constexpr int kLastChannel = channelAt(kLastSlot, kNumbersPerSlot - 1);

} // namespace scnsim
