#pragma once

#include "app/channelrow.h"
#include "channels/commfunc.h"

#include <Qt>

class QTreeWidgetItem;

namespace scn {

struct ChannelForm;

/// Looks up rows of the channel table and their controls by channel number. GUI thread.
class ChannelTable
{
public:
    /// Keeps a reference to `form`, which may be filled later. An empty form has no rows.
    explicit ChannelTable(const ChannelForm& form);

    const ChannelForm& form() const { return m_form; }

    /// Item of a channel; null if the channel has no row.
    QTreeWidgetItem* item(int channel) const;

    /// Controls of a channel's row.
    ChannelRow row(int channel) const;

    /// Channel number of an item; 0 if its row shows none.
    int channelOf(QTreeWidgetItem* item) const;

    /// Index of the function selected in a row.
    int functionOf(const ChannelRow& row) const;

    /// True if the channel is ticked; false if it does not exist.
    bool isChannelChecked(int slot, int channelRow) const;

    /// Enables or disables all controls of a row.
    void setRowEnabled(QTreeWidgetItem* item, bool enabled) const;

private:
    const ChannelForm& m_form;
    mutable CommFunc m_catalogue;
};

} // namespace scn
