#include "app/channeltablebuilder.h"

#include "app/channelrow.h"
#include "app/channeltree.h"
#include "channels/advancedsetting.h"
#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "plot/groupedheaderview.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/wheelguard.h"

#include <QCheckBox>
#include <QPushButton>

namespace scn {

namespace {

struct ColumnFact
{
    const char* header;
    int width; ///< pixels; 0 stretches
};

constexpr ColumnFact kColumns[ChannelColumnCount] = {
    {"扫描 ", 60},   {"编号", 130}, {"名称", 110}, {"函数", 160}, {"范围", 110},
    {"Res", 90},     {"更多", 60},  {"缩放", 60},  {"函数", 90},  {"增益(M)", 90},
    {"偏移(B)", 90}, {"单位", 90},  {"更多", 60},  {" ", 0},
};

constexpr int kFunctionItemSpacing = 15;

} // namespace

ChannelForm ChannelTableBuilder::build(QWidget* parent, const Place& place)
{
    assertGuiThread();
    m_form = {};
    m_form.m_channelTree = new ChannelTree(parent);
    m_form.m_channelTree->setColumnCount(ChannelColumnCount);
    m_form.m_channelTree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_form.m_channelTree->setSelectionMode(QAbstractItemView::NoSelection);
    m_form.m_channelTree->setAlternatingRowColors(true);
    m_form.m_channelTree->setIndentation(10);
    m_form.m_channelTree->setRootIsDecorated(true);
    m_form.m_channelTree->setStyleSheet(m_catalogue.treeStyle());
    buildHeader();
    if (place) {
        place(m_form.m_channelTree);
    }
    for (int slot = 1; slot <= kSlotCount; ++slot) {
        if (slotPresent[slot]) {
            addModuleRow(slot);
        }
    }
    // A module's row makes the table lay out all channels that it has so far, so these come after.
    for (auto module = m_form.slotItems.cbegin(); module != m_form.slotItems.cend(); ++module) {
        addChannelRows(module.key(), module.value());
    }
    return m_form;
}

void ChannelTableBuilder::buildHeader()
{
    const QVector<HeaderGroup> groups = {
        {tr("通道"), 0, 3}, {tr("测量"), 3, 5}, {tr("定标(Mx+B)"), 8, 6}};
    auto* header = new GroupedHeaderView(groups, m_form.m_channelTree);
    m_form.m_channelTree->setHeader(header);
    QStringList titles;
    for (const ColumnFact& column : kColumns) {
        titles.append(tr(column.header));
    }
    m_form.m_channelTree->setHeaderLabels(titles);
    header->setDefaultAlignment(Qt::AlignCenter);
    header->setStretchLastSection(false);
    for (int column = 0; column < ChannelColumnCount; ++column) {
        if (kColumns[column].width > 0) {
            m_form.m_channelTree->setColumnWidth(column, kColumns[column].width);
        } else {
            header->setSectionResizeMode(column, QHeaderView::Stretch);
        }
    }
}

void ChannelTableBuilder::addModuleRow(int slot)
{
    auto* module = new QTreeWidgetItem(m_form.m_channelTree);
    module->setFirstColumnSpanned(true);
    module->setText(ScanColumn, m_catalogue.moduleName(slotModuleType[slot]));
    module->setTextAlignment(ScanColumn, Qt::AlignLeft | Qt::AlignVCenter);
    // It has three states, but a click only checks or unchecks.
    module->setFlags(module->flags() | Qt::ItemIsUserCheckable);
    module->setCheckState(ScanColumn, Qt::Unchecked);
    m_form.moduleItems.insert(module, true);
    m_form.slotItems.insert(slot, module);
}

void ChannelTableBuilder::addChannelRows(int slot, QTreeWidgetItem* module)
{
    for (int row = 0; row <= slotLastChannel[slot]; ++row) {
        addChannelRow(module, ChannelNumber::fromRow(slot, row).label());
    }
    module->setExpanded(true);
}

/// Adds a channel's row: its tick and the controls of columns 1 to 12.
void ChannelTableBuilder::addChannelRow(QTreeWidgetItem* module, int channel)
{
    auto* item = new QTreeWidgetItem(module);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(ScanColumn, Qt::Unchecked);
    item->setForeground(ScanColumn, QBrush(Qt::white));

    const auto add = [this, item, channel](int column, auto* control) {
        place(item, column, channel, control);
        return control;
    };
    const auto addButton = [this, &add](int column, const QString& text) {
        return add(column, new QPushButton(text, m_form.m_channelTree));
    };
    addButton(NumberColumn, QString::number(channel));
    add(NameColumn, makeEdit(QString()));
    CustomComboBox* function = add(FunctionColumn, makeBox(m_catalogue.functionList(channel)));
    function->setItemSpacing(kFunctionItemSpacing);
    const int index = m_catalogue.functionIndex(function->currentText());
    add(RangeColumn, makeBox(m_catalogue.rangeList(index)));
    add(ResolutionColumn, makeBox(m_catalogue.temperatureUnitList(index)))->setCurrentIndex(1);
    QPushButton* more = addButton(MoreColumn, QStringLiteral("..."));
    add(ScaleColumn, new QCheckBox(m_form.m_channelTree));
    CustomComboBox* scaleFunction =
        add(ScaleFunctionColumn, makeBox(m_catalogue.scaleFunctionList(index)));
    add(GainColumn, makeEdit(QStringLiteral("1")));
    add(OffsetColumn, makeEdit(QStringLiteral("0")));
    add(UnitColumn, makeBox(m_catalogue.unitList()));
    QPushButton* scaleMore = addButton(ScaleMoreColumn, QStringLiteral("..."));
    scaleMore->setEnabled(false);

    auto* functionPanel = new AdvancedSetting(m_form.m_channelTree);
    m_form.moreButtonPanels.insert(more, functionPanel);
    functionPanel->showFunctionOptions(function->currentText(), index, channel);
    auto* scalePanel = new AdvancedSetting(m_form.m_channelTree);
    m_form.moreButtonPanels.insert(scaleMore, scalePanel);
    scalePanel->showScaleOptions(scaleFunction->currentText(), channel);
}

/// Puts a control into its cell. The button with the number is not looked up by slots.
void ChannelTableBuilder::place(QTreeWidgetItem* item, int column, int channel, QWidget* control)
{
    m_form.m_channelTree->setItemWidget(item, column, control);
    if (column != NumberColumn) {
        m_form.rowWidgetChannels.insert(control, channel);
    }
}

CustomLineEdit* ChannelTableBuilder::makeEdit(const QString& text) const
{
    auto* edit = new CustomLineEdit(m_form.m_channelTree);
    edit->setText(text);
    edit->setAlignment(Qt::AlignCenter);
    return edit;
}

CustomComboBox* ChannelTableBuilder::makeBox(const QStringList& items) const
{
    auto* box = new CustomComboBox(m_form.m_channelTree);
    box->addFunctionItems(items);
    WheelGuard::install(box);
    return box;
}

} // namespace scn
