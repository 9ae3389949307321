#pragma once

#include <QMap>

class AdvancedSetting;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

namespace scn {

/// The channel table's tree and what finds its parts. Empty until the table is built; modules are neither
/// added nor removed later. The window derives from it, so these are its members.
struct ChannelForm
{
    QTreeWidget* m_channelTree = nullptr;
    QMap<int, QTreeWidgetItem*> slotItems;    ///< slot to the module's item
    QMap<QTreeWidgetItem*, bool> moduleItems; ///< the module items; the value is not used
    QMap<QWidget*, int> rowWidgetChannels;    ///< control of a row to its channel number
    QMap<QPushButton*, AdvancedSetting*> moreButtonPanels; ///< "..." button of a row to its panel
};

} // namespace scn
