#pragma once

#include "app/channelrow.h"
#include "channels/commfunc.h"

namespace scn {

class ChannelTable;
class ScanMarks;

/// Pairs of channels: a four-wire function on a channel of a module's first bank takes the channel at the same
/// place of the second bank, its partner, for sensing. The partner's row then shows the function and is disabled
/// until the channel gets a two-wire function. Sends nothing. GUI thread.
class FourWirePartners
{
public:
    FourWirePartners(const ChannelTable& table, const ScanMarks& marks);

    /// The channel that a four-wire function on `channel` would take; 0 if there is none.
    int candidateOf(int channel) const;

    /// The partner of `channel` while it measures `function`; 0 if it has none.
    int partnerOf(int channel, int function) const;

    /// The row of the partner that the function in the row of `channel` takes, if any.
    ChannelRow partnerRow(int channel) const;

    /// True while a four-wire function has taken the channel.
    bool isTakenOver(int channel) const;

    /// Takes the partner or gives it back, depending on the function in the row of `channel`.
    void match(int channel) const;

private:
    void takeOver(int partner, int channel) const;
    void giveBack(int partner) const;

    const ChannelTable& m_table;
    const ScanMarks& m_marks;
    const CommFunc m_catalogue;
};

} // namespace scn
