#include "app/scanmarks.h"

#include "app/channelform.h"
#include "app/channelrow.h"
#include "app/channeltable.h"
#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>

#include <utility>

namespace scn {

ScanMarks::ScanMarks(const ChannelTable& table, std::function<void()> onScanListChanged)
    : m_table(table)
    , m_onScanListChanged(std::move(onScanListChanged))
{
}

void ScanMarks::check(const QList<int>& channels) const
{
    assertGuiThread();
    const ChannelForm& form = m_table.form();
    const QSignalBlocker blocker(form.m_channelTree);
    for (QTreeWidgetItem* module : form.slotItems) {
        for (int row = 0; row < module->childCount(); ++row) {
            if (module->child(row)->checkState(ScanColumn) == Qt::Checked) {
                module->child(row)->setCheckState(ScanColumn, Qt::Unchecked);
            }
        }
    }
    for (const int channel : channels) {
        if (QTreeWidgetItem* item = m_table.item(channel)) {
            item->setCheckState(ScanColumn, Qt::Checked);
        }
    }
    for (QTreeWidgetItem* module : form.slotItems) {
        updateModule(module);
    }
}

void ScanMarks::copyToChannels(QTreeWidgetItem* module) const
{
    const QSignalBlocker blocker(m_table.form().m_channelTree);
    for (int row = 0; row < module->childCount(); ++row) {
        QTreeWidgetItem* const child = module->child(row);
        if (child->flags() & Qt::ItemIsUserCheckable) {
            child->setCheckState(ScanColumn, module->checkState(ScanColumn));
        }
    }
}

void ScanMarks::updateModule(QTreeWidgetItem* module) const
{
    int checked = 0;
    int partly = 0;
    for (int row = 0; row < module->childCount(); ++row) {
        const Qt::CheckState state = module->child(row)->checkState(ScanColumn);
        checked += state == Qt::Checked ? 1 : 0;
        partly += state == Qt::PartiallyChecked ? 1 : 0;
    }
    const QSignalBlocker blocker(m_table.form().m_channelTree);
    if (checked > 0 && checked == module->childCount()) {
        module->setCheckState(ScanColumn, Qt::Checked);
    } else {
        module->setCheckState(ScanColumn,
                              checked + partly > 0 ? Qt::PartiallyChecked : Qt::Unchecked);
    }
}

ScanMarks::Marks ScanMarks::marksBefore(QTreeWidgetItem* item) const
{
    Marks marks;
    if (m_table.form().moduleItems.contains(item)) {
        for (int row = 0; row < item->childCount(); ++row) {
            marks.insert(item->child(row), item->child(row)->checkState(ScanColumn));
        }
        return marks;
    }
    if (const int channel = m_table.channelOf(item); channel != 0) {
        marks.insert(item, g_scanChannels.contains(channel) ? Qt::Checked : Qt::Unchecked);
    }
    return marks;
}

void ScanMarks::putBack(const Marks& marks) const
{
    {
        const QSignalBlocker blocker(m_table.form().m_channelTree);
        for (auto mark = marks.cbegin(); mark != marks.cend(); ++mark) {
            mark.key()->setCheckState(ScanColumn, mark.value());
            updateModule(mark.key()->parent());
        }
    }
    rebuildScanChannels();
}

void ScanMarks::rebuildScanChannels() const
{
    assertGuiThread();
    g_scanChannels.clear();
    const auto& modules = m_table.form().slotItems;
    for (auto module = modules.cbegin(); module != modules.cend(); ++module) {
        for (int index = 0; index < module.value()->childCount(); ++index) {
            if (!m_table.isChannelChecked(module.key(), index)) {
                continue;
            }
            const ChannelRow row = m_table.row(ChannelNumber::fromRow(module.key(), index).label());
            if (row.number && row.function) {
                g_scanChannels.insert(row.number->text().toInt(), displayUnit(row));
            }
        }
    }
    announce();
}

void ScanMarks::withdraw(int channel) const
{
    QTreeWidgetItem* const item = m_table.item(channel);
    // setFlags() always emits itemChanged().
    const QSignalBlocker blocker(m_table.form().m_channelTree);
    item->setCheckState(ScanColumn, Qt::Unchecked);
    item->setFlags(item->flags() & ~Qt::ItemIsUserCheckable);
    updateModule(item->parent());
    if (g_scanChannels.remove(channel) > 0) {
        announce();
    }
}

void ScanMarks::release(int channel) const
{
    QTreeWidgetItem* const item = m_table.item(channel);
    const QSignalBlocker blocker(m_table.form().m_channelTree);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
}

bool ScanMarks::isWithdrawn(int channel) const
{
    return !(m_table.item(channel)->flags() & Qt::ItemIsUserCheckable);
}

QString ScanMarks::displayUnit(const ChannelRow& row) const
{
    if (!row.scale || !row.scale->isChecked() || !row.unit) {
        return m_catalogue.baseUnit(m_table.functionOf(row));
    }
    const QString text = row.unit->currentText();
    return text == m_catalogue.unitList().constFirst() ? QStringLiteral(" ") : text;
}

} // namespace scn
