#include "app/mainwidget.h"

#include "app/channeltable.h"
#include "app/globals.h"
#include "channels/advancedsetting.h"
#include "channels/commfunc.h"
#include "channels/scanlist.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "overlay/loadingview.h"
#include "plot/graphicsettingwidget.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QCheckBox>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QTreeWidget>

namespace {

constexpr int kExchangeTimeoutMs = 5000;

/// Set while onItemChanged() works, so that it does not re-enter.
bool scanEditGuard = false;

/// Sends the scan list; false when the instrument refuses it.
bool sendScanList()
{
    const QString list = compressScanList(g_scanChannels.keys());
    g_visa->sendCommand(QStringLiteral("ROUT:SCAN (@%1)").arg(list), kExchangeTimeoutMs);
    const QString error = g_visa->sendCommand(QStringLiteral("SYST:ERR?"), kExchangeTimeoutMs);
    return error.section(QLatin1Char(','), 0, 0).toInt() >= 0;
}

} // namespace

/// Connects the finished rows, so that nothing is sent while they are built.
void MainWidget::connectRows()
{
    for (auto module = slotItems.cbegin(); module != slotItems.cend(); ++module) {
        for (int position = 1; position <= module.value()->childCount(); ++position) {
            connectRow(m_table->row(module.key() * 100 + position));
        }
    }
}

void MainWidget::connectRow(const ChannelRow& row)
{
    const auto onIndex = [this](CustomComboBox* box, void (MainWidget::*slot)(int)) {
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, slot);
    };
    connect(row.name, &CustomLineEdit::textChangedAndFocusOut, this, &MainWidget::onTitleEdited);
    onIndex(row.function, &MainWidget::onMeasTypeChanged);
    onIndex(row.range, &MainWidget::onRangeTypeChanged);
    onIndex(row.resolution, &MainWidget::onResTypeChanged);
    connect(row.more, &QPushButton::clicked, this, &MainWidget::onMoreButton1Clicked);
    connect(row.scale, &QCheckBox::toggled, this, &MainWidget::onZoomStateChanged);
    onIndex(row.scaleFunction, &MainWidget::onFuncTypeChanged);
    connect(row.gain, &CustomLineEdit::textChangedAndFocusOut, this,
            &MainWidget::onModificationEdited);
    connect(row.offset, &CustomLineEdit::textChangedAndFocusOut, this, &MainWidget::onLowerEdited);
    onIndex(row.unit, &MainWidget::onUnitChanged);
    connect(row.scaleMore, &QPushButton::clicked, this, &MainWidget::onMoreButton2Clicked);
    for (AdvancedSetting* panel : {row.functionPanel, row.scalePanel}) {
        connect(panel, &AdvancedSetting::sigComponentChanged, this,
                &MainWidget::recvAdvancedSettingChanged);
    }
}

void MainWidget::onItemChanged(QTreeWidgetItem* item, int column)
{
    assertGuiThread();
    if (scanEditGuard || column != ScanColumn) {
        return;
    }
    m_startupView->showLoading();
    // Now: the exchanges keep the event loop from painting it.
    m_startupView->repaint();
    {
        const QScopedValueRollback<bool> guard(scanEditGuard, true);
        const CheckMarks before = marksBefore(item);
        if (moduleItems.contains(item)) {
            onModuleItemChanged(item, ScanColumn);
        } else if (moduleItems.contains(item->parent())) {
            onChannelItemChanged(item, ScanColumn);
        }
        rebuildScanChannels();
        if (g_instrumentConnected && !sendScanList()) {
            putMarksBack(before);
        }
    }
    m_startupView->stopLoading();
}

/// The marks of the channels that a change of `item` is about, as they were: a channel's from the scan
/// list so far, those of a module's channels as they still are.
MainWidget::CheckMarks MainWidget::marksBefore(QTreeWidgetItem* item) const
{
    CheckMarks marks;
    if (moduleItems.contains(item)) {
        for (int row = 0; row < item->childCount(); ++row) {
            marks.insert(item->child(row), item->child(row)->checkState(ScanColumn));
        }
        return marks;
    }
    if (const int channel = m_table->channelOf(item); channel != 0) {
        const bool wasScanned = g_scanChannels.contains(channel);
        marks.insert(item, wasScanned ? Qt::Checked : Qt::Unchecked);
    }
    return marks;
}

/// Takes back a change that the instrument refused: it would refuse every later list with it. Sends nothing.
void MainWidget::putMarksBack(const CheckMarks& marks)
{
    {
        const QSignalBlocker blocker(m_channelTree);
        for (auto mark = marks.cbegin(); mark != marks.cend(); ++mark) {
            mark.key()->setCheckState(ScanColumn, mark.value());
            updateModuleCheckState(mark.key()->parent());
        }
    }
    rebuildScanChannels();
}

void MainWidget::onModuleItemChanged(QTreeWidgetItem* item, int column)
{
    assertGuiThread();
    if (column != ScanColumn || !moduleItems.contains(item)) {
        return;
    }
    const QSignalBlocker blocker(m_channelTree);
    for (int row = 0; row < item->childCount(); ++row) {
        QTreeWidgetItem* const child = item->child(row);
        if (child->flags() & Qt::ItemIsUserCheckable) {
            child->setCheckState(ScanColumn, item->checkState(ScanColumn));
        }
    }
}

void MainWidget::onChannelItemChanged(QTreeWidgetItem* item, int column)
{
    assertGuiThread();
    if (column != ScanColumn || !moduleItems.contains(item->parent())) {
        return;
    }
    const QSignalBlocker blocker(m_channelTree);
    updateModuleCheckState(item->parent());
}

/// Gives a module's box the state that its channels add up to. The caller blocks the tree's signals.
void MainWidget::updateModuleCheckState(QTreeWidgetItem* module)
{
    int checked = 0;
    int partly = 0;
    for (int row = 0; row < module->childCount(); ++row) {
        const Qt::CheckState state = module->child(row)->checkState(ScanColumn);
        checked += state == Qt::Checked ? 1 : 0;
        partly += state == Qt::PartiallyChecked ? 1 : 0;
    }
    if (checked > 0 && checked == module->childCount()) {
        module->setCheckState(ScanColumn, Qt::Checked);
    } else {
        module->setCheckState(ScanColumn,
                              checked + partly > 0 ? Qt::PartiallyChecked : Qt::Unchecked);
    }
}

/// Fills g_scanChannels from the check marks and tells the workspace.
void MainWidget::rebuildScanChannels()
{
    assertGuiThread();
    g_scanChannels.clear();
    for (auto entry = slotItems.cbegin(); entry != slotItems.cend(); ++entry) {
        for (int index = 0; index < entry.value()->childCount(); ++index) {
            if (!m_table->isChannelChecked(entry.key(), index)) {
                continue;
            }
            const ChannelRow row = m_table->row(entry.key() * 100 + index + 1);
            if (row.number && row.function) {
                g_scanChannels.insert(row.number->text().toInt(), displayUnit(row));
            }
        }
    }
    tellWorkspace();
}

/// The unit that a channel's readings are shown in: the scaled one while scaling is on.
QString MainWidget::displayUnit(const ChannelRow& row) const
{
    if (!row.scale || !row.scale->isChecked() || !row.unit) {
        return m_commFunc->baseUnit(m_table->functionOf(row));
    }
    const QString text = row.unit->currentText();
    return text == m_commFunc->unitList().constFirst() ? QStringLiteral(" ") : text;
}

void MainWidget::tellWorkspace()
{
    if (m_graphicSetting) {
        m_graphicSetting->rebuildChannelLists();
    }
}
