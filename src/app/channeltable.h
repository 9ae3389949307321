#pragma once

#include "app/channelrow.h"
#include "channels/commfunc.h"

#include <Qt>

class QTreeWidgetItem;

namespace scn {

struct ChannelForm;

/// Finds the rows of the channel table and their controls by channel number. GUI thread.
class ChannelTable
{
public:
    /// Refers to `form`, which may be filled later: an empty one has no rows.
    explicit ChannelTable(const ChannelForm& form);

    const ChannelForm& form() const { return m_form; }

    /// The item of a channel; null when the channel has no row.
    QTreeWidgetItem* item(int channel) const;

    /// The controls of a channel's row.
    ChannelRow row(int channel) const;

    /// The channel number that an item's row shows; 0 where no number is shown.
    int channelOf(QTreeWidgetItem* item) const;

    /// The index of the function that a row shows.
    int functionOf(const ChannelRow& row) const;

    /// True when the item at this place is checked; false where there is none.
    bool isChannelChecked(int slot, int channelRow) const;

    /// Enables or disables the controls of a row.
    void setRowEnabled(QTreeWidgetItem* item, bool enabled) const;

private:
    const ChannelForm& m_form;
    mutable CommFunc m_catalogue;
};

} // namespace scn
