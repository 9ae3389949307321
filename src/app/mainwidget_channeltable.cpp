#include "app/mainwidget.h"

#include "app/channeltree.h"
#include "app/globals.h"
#include "channels/advancedsetting.h"
#include "channels/commfunc.h"
#include "channels/scanlist.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "overlay/loadingview.h"
#include "plot/graphicsettingwidget.h"
#include "plot/groupedheaderview.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/wheelguard.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int kExchangeTimeoutMs = 5000;

/// Set while onItemChanged() works, so that it does not re-enter.
bool scanEditGuard = false;

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
constexpr int kPanelSlots = 3;

/// Sends the scan list; false when the instrument refuses it.
bool sendScanList()
{
    const QString list = compressScanList(g_scanChannels.keys());
    g_visa->sendCommand(QStringLiteral("ROUT:SCAN (@%1)").arg(list), kExchangeTimeoutMs);
    const QString error = g_visa->sendCommand(QStringLiteral("SYST:ERR?"), kExchangeTimeoutMs);
    return error.section(QLatin1Char(','), 0, 0).toInt() >= 0;
}

} // namespace

QWidget* MainWidget::buildInstrumentPage()
{
    m_instrumentPage = new QScrollArea(m_settingsTabs);
    m_instrumentPage->setWidgetResizable(true);
    m_instrumentPageContent = new QWidget(m_instrumentPage);
    m_instrumentPageContent->setStyleSheet(QStringLiteral("background:rgb(63,63,63);"));
    auto* layout = new QVBoxLayout(m_instrumentPageContent);
    for (int slot = 1; slot <= kPanelSlots; ++slot) {
        layout->addWidget(buildSlotPanel(slot));
    }
    auto* setupButton = new QPushButton(tr("更多设置..."), m_instrumentPageContent);
    setupButton->setObjectName(QStringLiteral("setupButton"));
    layout->addWidget(setupButton);
    layout->addStretch();
    m_instrumentPage->setWidget(m_instrumentPageContent);
    return m_instrumentPage;
}

/// One slot's panel, display only: nothing hangs on its controls.
QWidget* MainWidget::buildSlotPanel(int slot)
{
    auto* panel = new QWidget(m_instrumentPageContent);
    auto* layout = new QVBoxLayout(panel);
    auto* header = new QHBoxLayout;
    header->addWidget(new QLabel(tr("时隙 %1:").arg(slot), panel));
    auto* box = new QComboBox(panel);
    box->addItem(tr("无"));
    WheelGuard::install(box);
    header->addWidget(box, 1);
    layout->addLayout(header);
    auto* modes = new QHBoxLayout;
    auto* scanMode = new QRadioButton(tr("扫描模式"), panel);
    scanMode->setChecked(true);
    modes->addWidget(scanMode);
    modes->addWidget(new QRadioButton(tr("开关模式"), panel));
    layout->addLayout(modes);
    layout->addWidget(
        new QLabel(QStringLiteral("20-Channel Armature Multiplexer...\n版本: 01.02"), panel));
    return panel;
}

void MainWidget::buildChannelTree()
{
    m_channelTree = new ChannelTree(m_workTabs);
    m_channelTree->setColumnCount(ChannelColumnCount);
    m_channelTree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_channelTree->setSelectionMode(QAbstractItemView::NoSelection);
    m_channelTree->setAlternatingRowColors(true);
    m_channelTree->setIndentation(10);
    m_channelTree->setRootIsDecorated(true);
    m_channelTree->setStyleSheet(m_commFunc->treeStyle());

    const QVector<HeaderGroup> groups = {
        {tr("通道"), 0, 3}, {tr("测量"), 3, 5}, {tr("定标(Mx+B)"), 8, 6}};
    auto* header = new GroupedHeaderView(groups, m_channelTree);
    m_channelTree->setHeader(header);
    QStringList titles;
    for (const ColumnFact& column : kColumns) {
        titles.append(tr(column.header));
    }
    m_channelTree->setHeaderLabels(titles);
    header->setDefaultAlignment(Qt::AlignCenter);
    header->setStretchLastSection(false);
    for (int column = 0; column < ChannelColumnCount; ++column) {
        if (kColumns[column].width > 0) {
            m_channelTree->setColumnWidth(column, kColumns[column].width);
        } else {
            header->setSectionResizeMode(column, QHeaderView::Stretch);
        }
    }

    for (int slot = 1; slot <= kSlotCount; ++slot) {
        if (slotPresent[slot]) {
            addModuleRow(slot);
        }
    }
}

void MainWidget::addModuleRow(int slot)
{
    auto* module = new QTreeWidgetItem(m_channelTree);
    module->setFirstColumnSpanned(true);
    module->setText(ScanColumn, m_commFunc->moduleName(slotModuleType[slot]));
    module->setTextAlignment(ScanColumn, Qt::AlignLeft | Qt::AlignVCenter);
    // Shows three states; a click gives checked or unchecked only.
    module->setFlags(module->flags() | Qt::ItemIsUserCheckable);
    module->setCheckState(ScanColumn, Qt::Unchecked);
    moduleItems.insert(module, true);
    slotItems.insert(slot, module);
    for (int row = 0; row <= slotLastChannel[slot]; ++row) {
        addChannelRow(module, slot * 100 + row + 1);
    }
    module->setExpanded(true);
}

/// Builds a channel's row: its check mark and the controls of columns 1 to 12.
void MainWidget::addChannelRow(QTreeWidgetItem* module, int channel)
{
    auto* item = new QTreeWidgetItem(module);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(ScanColumn, Qt::Unchecked);
    item->setForeground(ScanColumn, QBrush(Qt::white));

    const auto place = [this, item, channel](int column, QWidget* control) {
        m_channelTree->setItemWidget(item, column, control);
        if (column != NumberColumn) {
            rowWidgetChannels.insert(control, channel);
        }
    };
    const auto addEdit = [this, &place](int column, const QString& text) {
        auto* edit = new CustomLineEdit(m_channelTree);
        edit->setText(text);
        edit->setAlignment(Qt::AlignCenter);
        place(column, edit);
    };
    const auto addBox = [this, &place](int column, const QStringList& items) {
        auto* box = new CustomComboBox(m_channelTree);
        box->addFunctionItems(items);
        WheelGuard::install(box);
        place(column, box);
        return box;
    };

    place(NumberColumn, new QPushButton(QString::number(channel), m_channelTree));
    addEdit(NameColumn, QString());
    CustomComboBox* functionBox = addBox(FunctionColumn, m_commFunc->functionList(channel));
    functionBox->setItemSpacing(kFunctionItemSpacing);
    const int function = m_commFunc->functionIndex(functionBox->currentText());
    addBox(RangeColumn, m_commFunc->rangeList(function));
    addBox(ResolutionColumn, m_commFunc->temperatureUnitList(function))->setCurrentIndex(1);
    auto* more = new QPushButton(QStringLiteral("..."), m_channelTree);
    place(MoreColumn, more);
    place(ScaleColumn, new QCheckBox(m_channelTree));
    CustomComboBox* scaleFunctionBox =
        addBox(ScaleFunctionColumn, m_commFunc->scaleFunctionList(function));
    addEdit(GainColumn, QStringLiteral("1"));
    addEdit(OffsetColumn, QStringLiteral("0"));
    addBox(UnitColumn, m_commFunc->unitList());
    auto* scaleMore = new QPushButton(QStringLiteral("..."), m_channelTree);
    scaleMore->setEnabled(false);
    place(ScaleMoreColumn, scaleMore);

    auto* functionPanel = new AdvancedSetting(m_channelTree);
    moreButtonPanels.insert(more, functionPanel);
    functionPanel->showFunctionOptions(functionBox->currentText(), function, channel);
    auto* scalePanel = new AdvancedSetting(m_channelTree);
    moreButtonPanels.insert(scaleMore, scalePanel);
    scalePanel->showScaleOptions(scaleFunctionBox->currentText(), channel);
    connectRow(channelRow(channel));
}

/// Connects a finished row, so that nothing is sent while it is built.
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

ChannelRow MainWidget::channelRow(int channel) const
{
    assertGuiThread();
    QTreeWidgetItem* const item = rowForChannel(channel);
    if (!item) {
        return {};
    }
    const auto cell = [this, item](int column) { return m_channelTree->itemWidget(item, column); };
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
    row.functionPanel = moreButtonPanels.value(row.more);
    row.scalePanel = moreButtonPanels.value(row.scaleMore);
    return row;
}

bool MainWidget::isChannelChecked(int slot, int channelRow) const
{
    const QTreeWidgetItem* module = slotItems.value(slot);
    const QTreeWidgetItem* item = module ? module->child(channelRow) : nullptr;
    return item && item->checkState(ScanColumn) == Qt::Checked;
}

QTreeWidgetItem* MainWidget::findChannelItem(int channel) const
{
    QTreeWidgetItem* module = slotItems.value(channel / 100);
    return module ? module->child(channel % 100 - 1) : nullptr;
}

void MainWidget::setRowEnabled(QTreeWidget* tree, QTreeWidgetItem* item, bool enabled)
{
    for (int column = 1; column <= 15; ++column) {
        if (QWidget* control = tree->itemWidget(item, column)) {
            control->setEnabled(enabled);
        }
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
    const auto* number = qobject_cast<QPushButton*>(m_channelTree->itemWidget(item, NumberColumn));
    if (number) {
        const bool wasScanned = g_scanChannels.contains(number->text().toInt());
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
            if (!isChannelChecked(entry.key(), index)) {
                continue;
            }
            const ChannelRow row = channelRow(entry.key() * 100 + index + 1);
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
        return m_commFunc->baseUnit(functionOf(row));
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
