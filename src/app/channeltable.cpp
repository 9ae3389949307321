#include "app/channeltable.h"

#include "app/channelform.h"
#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTreeWidget>

namespace scn {

ChannelTable::ChannelTable(const ChannelForm& form)
    : m_form(form)
{
}

QTreeWidgetItem* ChannelTable::item(int channel) const
{
    const ChannelNumber number = ChannelNumber::fromLabel(channel);
    const QTreeWidgetItem* const module = m_form.slotItems.value(number.slot());
    return module ? module->child(number.row()) : nullptr;
}

ChannelRow ChannelTable::row(int channel) const
{
    assertGuiThread();
    QTreeWidgetItem* const rowItem = item(channel);
    if (!rowItem) {
        return {};
    }
    const auto cell = [this, rowItem](int column) {
        return m_form.m_channelTree->itemWidget(rowItem, column);
    };
    ChannelRow row;
    row.number = qobject_cast<QPushButton*>(cell(NumberColumn));
    row.name = qobject_cast<CustomLineEdit*>(cell(NameColumn));
    row.function = qobject_cast<CustomComboBox*>(cell(FunctionColumn));
    row.range = qobject_cast<CustomComboBox*>(cell(RangeColumn));
    row.resolution = qobject_cast<CustomComboBox*>(cell(ResolutionColumn));
    row.more = qobject_cast<QPushButton*>(cell(MoreColumn));
    row.scale = qobject_cast<QCheckBox*>(cell(ScaleColumn));
    row.scaleFunction = qobject_cast<CustomComboBox*>(cell(ScaleFunctionColumn));
    row.gain = qobject_cast<CustomLineEdit*>(cell(GainColumn));
    row.offset = qobject_cast<CustomLineEdit*>(cell(OffsetColumn));
    row.unit = qobject_cast<CustomComboBox*>(cell(UnitColumn));
    row.scaleMore = qobject_cast<QPushButton*>(cell(ScaleMoreColumn));
    row.functionPanel = m_form.moreButtonPanels.value(row.more);
    row.scalePanel = m_form.moreButtonPanels.value(row.scaleMore);
    return row;
}

int ChannelTable::channelOf(QTreeWidgetItem* item) const
{
    const QWidget* const cell = m_form.m_channelTree->itemWidget(item, NumberColumn);
    const auto* number = qobject_cast<const QPushButton*>(cell);
    return number ? number->text().toInt() : 0;
}

int ChannelTable::functionOf(const ChannelRow& row) const
{
    return m_catalogue.functionIndex(row.function->currentText());
}

bool ChannelTable::isChannelChecked(int slot, int channelRow) const
{
    const QTreeWidgetItem* module = m_form.slotItems.value(slot);
    const QTreeWidgetItem* item = module ? module->child(channelRow) : nullptr;
    return item && item->checkState(ScanColumn) == Qt::Checked;
}

void ChannelTable::setRowEnabled(QTreeWidgetItem* item, bool enabled) const
{
    for (int column = NumberColumn; column < ChannelColumnCount; ++column) {
        if (QWidget* control = m_form.m_channelTree->itemWidget(item, column)) {
            control->setEnabled(enabled);
        }
    }
}

} // namespace scn
