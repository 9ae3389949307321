#pragma once

#include "app/channelrow.h"
#include "channels/commfunc.h"

namespace scn {

class ChannelTable;
class ScanMarks;

/// The pairs of the channel table: a four-wire function on a channel of a module's first bank takes over
/// the channel at the same place of the second bank for sensing. The partner's row shows the function and is out of
/// use until the channel gets another one. Sends nothing. GUI thread.
class FourWirePartners
{
public:
    FourWirePartners(const ChannelTable& table, const ScanMarks& marks);

    /// The channel that a four-wire function on `channel` would take over; 0 when it has none.
    int candidateOf(int channel) const;

    /// The channel that `channel` has while it measures `function`; 0 when none.
    int partnerOf(int channel, int function) const;

    /// The row of the channel that `channel` has by the function in its row; no row when none.
    ChannelRow partnerRow(int channel) const;

    /// True while a four-wire function has the channel; a row of its own is left alone.
    bool isTakenOver(int channel) const;

    /// Takes the partner over or gives it back, as the function in the row of `channel` asks.
    void match(int channel) const;

private:
    void takeOver(int partner, int channel) const;
    void giveBack(int partner) const;

    const ChannelTable& m_table;
    const ScanMarks& m_marks;
    const CommFunc m_catalogue;
};

} // namespace scn
