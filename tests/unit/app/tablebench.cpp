#include "tablebench.h"

#include "app/channeltablebuilder.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"

#include <QTreeWidget>
#include <QVBoxLayout>
#include <QtTest>

using namespace scn;

namespace {

constexpr int kSlot = 1;
constexpr int kModuleType = 2;
constexpr int kLastChannelIndex = 15;
constexpr QSize kWholeRow(1600, 600);

void emptySlots()
{
    for (int slot = 0; slot <= kSlotCount; ++slot) {
        slotPresent[slot] = false;
        slotModuleType[slot] = 0;
        slotLastChannel[slot] = 0;
    }
}

} // namespace

TableBench::TableBench()
{
    emptySlots();
    slotPresent[kSlot] = true;
    slotModuleType[kSlot] = kModuleType;
    slotLastChannel[kSlot] = kLastChannelIndex;
    g_scanChannels.clear();
    g_resourceName = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");
    g_visa->connectDevice(g_resourceName);
    g_instrumentConnected = true;

    form = ChannelTableBuilder().build(&window);
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(form.m_channelTree);
    instrument.takeLines();
}

TableBench::~TableBench()
{
    g_instrumentConnected = false;
    g_scanChannels.clear();
    emptySlots();
}

void TableBench::showRow(int channel)
{
    window.resize(kWholeRow);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    form.m_channelTree->expandAll();
    form.m_channelTree->scrollToItem(table.item(channel));
    QTRY_VERIFY(table.row(channel).function->isVisible());
}

bool TableBench::isTicked(int channel) const
{
    return table.item(channel)->checkState(ScanColumn) == Qt::Checked;
}

void TableBench::tick(int channel) const
{
    table.item(channel)->setCheckState(ScanColumn, Qt::Checked);
}

bool TableBench::isRowEnabled(int channel) const
{
    return table.row(channel).function->isEnabled();
}
