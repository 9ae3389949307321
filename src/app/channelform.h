#pragma once

#include <QMap>

class AdvancedSetting;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

namespace scn {

/// The tree of the channel table and its bookkeeping. Empty until the table is built; modules are never added
/// or removed later. MainWidget derives from it, so these are its members.
struct ChannelForm
{
    QTreeWidget* m_channelTree = nullptr;
    QMap<int, QTreeWidgetItem*> slotItems;    ///< slot to the module's item
    QMap<QTreeWidgetItem*, bool> moduleItems; ///< the module items; the value is not used
    QMap<QWidget*, int> rowWidgetChannels;    ///< a row's control to its channel number
    QMap<QPushButton*, AdvancedSetting*> moreButtonPanels; ///< a row's "..." button to its panel
};

} // namespace scn
