#pragma once

#include "channels/commfunc.h"

#include <QList>
#include <QMap>
#include <QString>

#include <functional>

class QTreeWidgetItem;

namespace scn {

class ChannelTable;
struct ChannelRow;

/// The ticks of the channel table, and the scan list in g_scanChannels that follows from them. Sets ticks with
/// the tree's signals blocked, so no command is sent. GUI thread.
class ScanMarks
{
public:
    using Marks = QMap<QTreeWidgetItem*, Qt::CheckState>;

    /// `onScanListChanged` tells the workspace of a change of g_scanChannels.
    ScanMarks(const ChannelTable& table, std::function<void()> onScanListChanged);

    /// Ticks exactly the listed channels and skips those without a row. Leaves g_scanChannels alone.
    void check(const QList<int>& channels) const;

    /// Copies a module's tick to its channels, except to those taken by a four-wire function.
    void copyToChannels(QTreeWidgetItem* module) const;

    /// Derives a module's tick from its channels.
    void updateModule(QTreeWidgetItem* module) const;

    /// The ticks before a change of `item`: a channel's as g_scanChannels has it, those of a module's channels
    /// as they still are.
    Marks marksBefore(QTreeWidgetItem* item) const;

    /// Undoes a change and rebuilds the scan list.
    void putBack(const Marks& marks) const;

    /// Fills g_scanChannels from the ticks.
    void rebuildScanChannels() const;

    /// Unticks a channel, removes it from the scan list and lets nobody tick it until release().
    void withdraw(int channel) const;

    /// Lets the user tick a channel again.
    void release(int channel) const;

    /// True between withdraw() and release().
    bool isWithdrawn(int channel) const;

    /// The unit of a row's readings: the scaled one while scaling is on.
    QString displayUnit(const ChannelRow& row) const;

    /// Tells the workspace that the scan list has changed.
    void announce() const { m_onScanListChanged(); }

private:
    const ChannelTable& m_table;
    const std::function<void()> m_onScanListChanged;
    const CommFunc m_catalogue;
};

} // namespace scn
