#pragma once

#include "channels/commfunc.h"

#include <QList>
#include <QMap>
#include <QString>

#include <functional>

struct ChannelRow;
class QTreeWidgetItem;

namespace scn {

class ChannelTable;

/// The check marks of the channel table and the scan list in g_scanChannels that they make up. Setting a
/// mark here reports no changed item, so no command follows. GUI thread.
class ScanMarks
{
public:
    using Marks = QMap<QTreeWidgetItem*, Qt::CheckState>;

    /// `onScanListChanged` runs after each change of g_scanChannels.
    ScanMarks(const ChannelTable& table, std::function<void()> onScanListChanged);

    /// Checks exactly the listed channels; an entry without a row is passed over. The scan list is left
    /// to rebuildScanChannels().
    void check(const QList<int>& channels) const;

    /// Gives the channels of a module its mark, except those that a four-wire function has taken over.
    void copyToChannels(QTreeWidgetItem* module) const;

    /// Gives a module the mark that its channels add up to.
    void updateModule(QTreeWidgetItem* module) const;

    /// The marks of the channels that a change of `item` is about, as they were: a channel's from the
    /// scan list so far, those of a module's channels as they still are.
    Marks marksBefore(QTreeWidgetItem* item) const;

    /// Takes a change back and rebuilds the scan list.
    void putBack(const Marks& marks) const;

    /// Fills g_scanChannels from the marks.
    void rebuildScanChannels() const;

    /// Unchecks a channel and takes it out of the scan list; its mark is then fixed until release().
    void withdraw(int channel) const;

    /// Lets the user check a channel again.
    void release(int channel) const;

    /// True while a channel is withdrawn.
    bool isWithdrawn(int channel) const;

    /// The unit that a row's readings are shown in: the scaled one while scaling is on.
    QString displayUnit(const ChannelRow& row) const;

    /// Has whoever shows the scan list show it anew.
    void announce() const { m_onScanListChanged(); }

private:
    const ChannelTable& m_table;
    const std::function<void()> m_onScanListChanged;
    const CommFunc m_catalogue;
};

} // namespace scn
