#include "app/mainwidget.h"

#include "app/channeltable.h"
#include "app/runstate.h"
#include "app/scanmarks.h"
#include "channels/advancedsetting.h"
#include "channels/scanlist.h"
#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "instrument/exchange.h"
#include "overlay/loadingview.h"
#include "plot/graphicsettingwidget.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QCheckBox>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTreeWidget>

using namespace scn;

namespace {

/// Set during onItemChanged(), which must not re-enter.
bool scanEditGuard = false;

/// Sends the scan list. Returns false if the instrument refuses it.
bool sendScanList()
{
    const QString list = compressScanList(g_scanChannels.keys());
    exchange(QStringLiteral("ROUT:SCAN (@%1)").arg(list));
    const QString error = exchange(QStringLiteral("SYST:ERR?"));
    return error.section(QLatin1Char(','), 0, 0).toInt() >= 0;
}

} // namespace

/// Only once all rows are built: until then nothing may be sent.
void MainWidget::connectRows()
{
    for (auto module = slotItems.cbegin(); module != slotItems.cend(); ++module) {
        for (int position = 1; position <= module.value()->childCount(); ++position) {
            connectRow(m_table->row(ChannelNumber(module.key(), position).label()));
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
    // At once: the exchanges block the event loop.
    m_startupView->repaint();
    {
        const QScopedValueRollback<bool> guard(scanEditGuard, true);
        const ScanMarks::Marks before = m_marks->marksBefore(item);
        if (moduleItems.contains(item)) {
            onModuleItemChanged(item, ScanColumn);
        } else if (moduleItems.contains(item->parent())) {
            onChannelItemChanged(item, ScanColumn);
        }
        m_marks->rebuildScanChannels();
        if (m_runState->isConnected() && !sendScanList()) {
            // It would refuse every later list with this change, too.
            m_marks->putBack(before);
        }
    }
    m_startupView->stopLoading();
}

void MainWidget::onModuleItemChanged(QTreeWidgetItem* item, int column)
{
    assertGuiThread();
    if (column != ScanColumn || !moduleItems.contains(item)) {
        return;
    }
    m_marks->copyToChannels(item);
}

void MainWidget::onChannelItemChanged(QTreeWidgetItem* item, int column)
{
    assertGuiThread();
    if (column != ScanColumn || !moduleItems.contains(item->parent())) {
        return;
    }
    m_marks->updateModule(item->parent());
}

void MainWidget::tellWorkspace()
{
    if (m_graphicSetting) {
        m_graphicSetting->rebuildChannelLists();
    }
}
